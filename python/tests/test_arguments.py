"""Every function with every argument wrong in turn: an error that names the argument, and never a crash."""

import inspect
import re

import numpy as np
import pytest
import xarray as xr

import tidora

TOPOGRAPHY = tidora.grid(140, 141, 38, 39, 0.25) - 3000
PLACES = tidora.grid(140, 141, 38, 39, 0.25)
POINTS = tidora.points([140, 141], [38, 39])
FAULTS = tidora.make_faults(140.5, 38.5, 1e4, 200, 15, 90, 4e4, 2e4, 3, [0, 30, 30], 30)
PLANE_FAULTS = tidora.make_faults(0, 0, 1e4, 200, 15, 90, 4e4, 2e4, 3, coord="plane")
UPLIFT = TOPOGRAPHY + 3001
SERIES = xr.concat([UPLIFT, UPLIFT], xr.DataArray([0.0, 30.0], dims="time", name="time"))


def changed(table, name, value):
    values = table[name].values.copy()
    values[-1] = value
    return table.assign({name: ("element", values)})


def with_axis(field, axis, values, units="degrees_north"):
    return field.assign_coords({axis: (axis, np.asarray(values, float), {"units": units})})


HOLES = TOPOGRAPHY.copy(data=np.where(np.eye(5), np.nan, TOPOGRAPHY.values).astype(np.float32))
NO_FIELD = [3, "a", None, np.zeros((5, 5))]
NO_NUMBER = ["1", None, [], 1j, object(), True]
NOT_FINITE = [np.nan, np.inf, -np.inf]
NO_GRID = [
    TOPOGRAPHY.rename(x="lon"), TOPOGRAPHY.drop_vars("x"), TOPOGRAPHY.isel(x=0), TOPOGRAPHY.isel(x=slice(0, 0)),
    TOPOGRAPHY.expand_dims("band"), TOPOGRAPHY.astype(str), TOPOGRAPHY.astype(complex),
    TOPOGRAPHY.assign_coords(x=list("abcde")), TOPOGRAPHY.assign_coords(x=TOPOGRAPHY["x"].values),
    with_axis(TOPOGRAPHY, "y", [1, 2, 2, 3, 4]), with_axis(TOPOGRAPHY, "y", [1, 3, 2, 4, 5]),
    with_axis(TOPOGRAPHY, "y", [1, 2, np.nan, 3, 4]), with_axis(TOPOGRAPHY, "y", [87, 88, 89, 90, 91]),
]  # fmt: skip
NO_WHERE = [
    *NO_FIELD, *NO_GRID, SERIES, xr.Dataset(), TOPOGRAPHY.to_dataset(name="z"), FAULTS, HOLES,
    POINTS.assign_coords(x=("point", [140, np.nan])), POINTS.assign_coords(y=("point", [38, 91.0])),
    POINTS.assign(topography=("point", ["a", "b"])), tidora.points([140, 141], 38, -1).assign(topography=3.0),
    POINTS.assign(topography=("point", [np.nan, 1.0])),
]  # fmt: skip
NO_FAULTS = [
    *NO_FIELD, TOPOGRAPHY, xr.Dataset(), FAULTS.drop_vars("dip"), FAULTS.rename(element="row"), POINTS,
    FAULTS.assign_attrs(coord="polar"), FAULTS.assign(dip=("element", ["a", "b", "c"])), PLANE_FAULTS,
    changed(FAULTS, "x", np.nan), changed(FAULTS, "slip", np.inf), changed(FAULTS, "length", -1.0),
    changed(FAULTS, "width", -1.0), changed(FAULTS, "y", 91.0),
]  # fmt: skip
NO_PROGRESS = [3, "a", [len]]
NO_THREADS = [0, -1, 1.0, "2", True, 2**31, [1]]
NO_FLAG = [1, None, "yes", np.zeros(2)]
NO_WORD = ["other", "", 3, b"plane", ["plane"]]
DEFORM = {
    "faults": NO_FAULTS,
    "where": NO_WHERE,
    "frame": [*NO_WORD, "plane"],
    "depth": NO_WORD,
    "times": [
        "other", 3, 3.0, True, object(), [], [1], [[0, 1], [1, 2]], [0, 0], [2, 1], [0, np.nan], [0, np.inf],
        ["a", "b"], [[1], [1, 2]], {0: 1}, {0, 1},
    ],
    "components": [[], "", "zx", ["uz"], 3, None, [1], [["z"]]],
    "slope": NO_FLAG,
    "min_depth": [*NO_NUMBER, *NOT_FINITE],
    "tolerance": [*NO_NUMBER, *NOT_FINITE, -1e-9],
    "threads": NO_THREADS,
    "progress": NO_PROGRESS,
}  # fmt: skip
NO_UPLIFT = [
    *NO_FIELD, *NO_GRID, xr.Dataset(), FAULTS, HOLES, UPLIFT.isel(x=slice(0, 4)), with_axis(UPLIFT, "y", range(5)),
    tidora.grid(0, 1, 0, 1, 0.25, coord="plane"),
]  # fmt: skip
NO_PARENT = [
    *NO_FIELD[:2], NO_FIELD[3], *NO_GRID, xr.Dataset(), HOLES, tidora.grid(0, 1, 0, 1, 0.25, coord="plane"), SERIES,
    with_axis(UPLIFT, "y", [0, 1, 2, 3, 5]),
]  # fmt: skip
NUMBERS = ("x", "y", "strike", "dip", "rake", "length", "width", "slip", "lag_time", "duration")
NO_NUMBERS = ["a", None, 1j, True, ["a"], [None], [[1], [1, 2]], np.datetime64("2011-03-11"), *NOT_FINITE,
              np.ma.array([1.0], mask=[True]), [1, 2, 3, 4]]  # fmt: skip

CASES = {
    # function: arguments that are right, and for each of them what is wrong
    "make_faults": (
        dict(x=[140.0, 141.0, 142.0], y=38, depth=1e4, strike=0, dip=10, rake=90, length=1e4, width=1e4, slip=1,
             lag_time=0, duration=0, coord="geographic", reference="centroid"),
        {
            **{name: NO_NUMBERS for name in NUMBERS[1:]},
            "x": [value for value in NO_NUMBERS if not isinstance(value, list) or len(value) != 4],
            "depth": [*NO_NUMBERS, 10, -1],
            "y": [*NO_NUMBERS, 91, -90.1],
            "dip": [*NO_NUMBERS, -1, 90.1],
            "length": [*NO_NUMBERS, -1],
            "width": [*NO_NUMBERS, -1],
            "duration": [*NO_NUMBERS, -1],
            "coord": NO_WORD[:-1],
            "reference": NO_WORD,
        },
    ),
    "grid": (
        dict(west=0, east=1, south=0, north=1, spacing=0.5, coord="geographic"),
        {
            "west": [*NO_NUMBER, *NOT_FINITE, 1.1],
            "east": [*NO_NUMBER, *NOT_FINITE, -0.1],
            "south": [*NO_NUMBER, *NOT_FINITE, -91, 1.1],
            "north": [*NO_NUMBER, *NOT_FINITE, 91, -0.1],
            "spacing": [*NO_NUMBER, *NOT_FINITE, 0, -1, 1e-6, 1e-300],
            "coord": NO_WORD,
        },
    ),
    "points": (
        dict(x=[140.0, 141.0, 142.0], y=[38.0, 39.0, 40.0], topography=[1.0, 2.0, 3.0], coord="geographic"),
        {
            "x": NO_NUMBERS[:-1],
            "y": [*NO_NUMBERS, 91],
            "topography": [value for value in NO_NUMBERS if value is not None],
            "coord": NO_WORD,
        },
    ),
    "deform": (
        dict(faults=FAULTS, where=TOPOGRAPHY, frame=None, depth="floor", times=None, components=("z",), slope=False,
             min_depth=50.0, tolerance=0.0, threads=None, progress=None),
        DEFORM,
    ),
    "source": (
        dict(faults=FAULTS, topography=TOPOGRAPHY, times=None, slope=False, kajiura=True, parent=None, frame=None,
             depth="floor", components=("z",), min_depth=50.0, tolerance=0.0, threads=None, progress=None),
        {
            **{name: wrong for name, wrong in DEFORM.items() if name != "where"},
            "topography": NO_WHERE,
            "components": [*DEFORM["components"], ["e", "n"]],
            "kajiura": NO_FLAG,
            "parent": NO_PARENT,
        },
    ),
    "kajiura": (
        dict(uplift=UPLIFT, topography=TOPOGRAPHY, parent=None, kernel="converged", threads=None, progress=None),
        {
            "uplift": NO_UPLIFT,
            "topography": [*NO_UPLIFT, PLACES, SERIES, POINTS],
            "parent": NO_PARENT,
            "kernel": [*NO_WORD, None],
            "threads": NO_THREADS,
            "progress": NO_PROGRESS,
        },
    ),
    "read_faults": (
        dict(path="no such file", coord="geographic", reference=None),
        {"path": [3, None, b"a"], "coord": NO_WORD, "reference": ["other", "middle", 3]},
    ),
    "write_faults": (
        dict(faults=FAULTS, path="no such folder/f.txt"),
        {"faults": [wrong for wrong in NO_FAULTS if wrong is not PLANE_FAULTS][:-3], "path": [3, None, b"a"]},
    ),
    "open_grid": (
        dict(path="no such file", coord="geographic", region=None, spacing=None),
        {
            "path": [3, None, b"a"],
            "coord": NO_WORD,
            "region": ["a", 3, (1, 2, 3), (2, 1, 0, 1), (0, 1, np.nan, 1), (0, 1, "a", 1)],
            "spacing": [0, -1, np.nan, "a", []],
        },
    ),
}  # fmt: skip
ROWS = [(function, name, at) for function, (_, table) in CASES.items() for name, wrong in table.items()
        for at in range(len(wrong))]  # fmt: skip


@pytest.mark.parametrize("function, name, at", ROWS, ids=[f"{row[0]}-{row[1]}-{row[2]}" for row in ROWS])
def test_an_argument_that_is_wrong_is_named(function, name, at):
    right, table = CASES[function]
    with pytest.raises((tidora.TidoraError, TypeError)) as failure:
        getattr(tidora, function)(**{**right, name: table[name][at]})
    assert re.search(rf"\b{name}\b", str(failure.value)), failure.value


@pytest.mark.parametrize("function", CASES)
def test_every_argument_of_a_function_stands_in_the_table(function):
    own = set(inspect.signature(getattr(tidora, function)).parameters) - {"as_deform"}
    if function == "source":
        own |= set(inspect.signature(tidora.deform).parameters) - {"where"}
    right, table = CASES[function]
    assert own == set(right) == set(table)


@pytest.mark.parametrize("function", [name for name, (right, _) in CASES.items() if "path" not in right])
def test_the_right_arguments_of_the_table_are_right(function):
    getattr(tidora, function)(**CASES[function][0])


WANTING = [
    ("where", dict(where=PLACES, depth="floor"), "depth floor needs a topography as where"),
    ("several elements", dict(where=PLACES, depth="program"), "depth program needs a topography as where"),
    ("a slope of zeros", dict(where=PLACES, slope=True, depth=None), "slope needs a topography on a grid as where"),
    ("a slope of points", dict(where=tidora.points(140, 38, -1), slope=True), "slope needs a topography on a grid"),
    ("metres and degrees", dict(faults=PLANE_FAULTS), "faults has plane co-ordinates, where geographic ones"),
    ("a length below 0", dict(faults=changed(FAULTS, "length", -1.0)), "faults: length is below 0 in element 2"),
    ("no latitude", dict(faults=changed(FAULTS, "y", 91.0)), "faults: y is no latitude in element 2"),
    (
        "a duration below 0",
        dict(faults=changed(FAULTS, "duration", -1.0), times="intervals"),
        "faults: duration of element 2 is -1",
    ),
    ("missing values", dict(where=HOLES), "where: 5 of 25 values are missing"),
    ("an edge above", dict(faults=changed(FAULTS, "base_offset", -1.0), depth="datum"), "faults: .* above the surface"),
]


@pytest.mark.parametrize("change, said", [row[1:] for row in WANTING], ids=[row[0] for row in WANTING])
def test_arguments_that_do_not_fit_together_are_told_by_their_names(change, said):
    with pytest.raises(tidora.TidoraError, match=said):
        tidora.deform(**{**CASES["deform"][0], **change})


def test_a_filter_needs_a_topography_and_a_parent_the_filter():
    with pytest.raises(tidora.TidoraError, match="kajiura needs a topography on a grid"):
        tidora.source(FAULTS, PLACES, kajiura=True)
    with pytest.raises(tidora.TidoraError, match="parent is for kajiura, which is off"):
        tidora.source(FAULTS, TOPOGRAPHY, parent=UPLIFT)
    with pytest.raises(TypeError, match="unexpected keyword argument 'colour'"):
        tidora.source(FAULTS, TOPOGRAPHY, colour=3)
    with pytest.raises(tidora.TidoraError, match="parent has other layers in time"):
        tidora.kajiura(SERIES, TOPOGRAPHY, parent=SERIES.assign_coords(time=[0.0, 60.0]))


def test_slip_beyond_all_numbers_is_no_sea_surface():
    with pytest.raises(tidora.TidoraError, match="faults moves the surface by what is no finite number"):
        tidora.source(changed(FAULTS, "slip", 1e300), TOPOGRAPHY, kajiura=True)


def test_missing_values_do_not_matter_where_the_topography_is_not_needed():
    assert np.isfinite(tidora.deform(FAULTS, HOLES, depth="datum")["uz"].values).all()
