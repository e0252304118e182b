"""What is computed of scenarios, against the direct way and against plain numpy."""

import shutil
import warnings

import numpy as np
import pyproj
import pytest
import xarray as xr

import ensemblefiles as files
import tidora

CASES = [
    # frame, co-ordinates, options of the units, difference allowed as a part of the greatest height
    ("globe", "geographic", {}, 2e-6),
    ("globe", "geographic", {"slope": True}, 2e-6),
    ("globe", "geographic", {"slope": True, "kajiura": True}, 3e-6),
    ("globe", "geographic", {"kajiura": True, "depth": "datum"}, 3e-6),
    ("utm", "geographic", {"slope": True}, 2e-6),
    ("plane", "plane", {"slope": True, "kajiura": True}, 3e-6),
    ("plane", "plane", {"depth": "datum"}, 2e-6),
]


def scenario_table(elements, slip, rake):
    """The element table of one scenario in which all units slip."""
    return elements.assign(slip=("element", slip), rake=("element", rake))


@pytest.mark.parametrize("frame, coord, options, part", CASES)
def test_stored_units_add_up_to_what_is_computed_at_once(frame, coord, options, part, tmp_path):
    elements, floor = files.faults(coord=coord), files.topography(coord=coord)
    floor["x"].attrs["units"] = floor["y"].attrs["units"] = "degrees" if coord == "geographic" else "m"
    tidora.unit_sources(elements, floor, tmp_path / "u.zarr", frame=frame, **options)
    random = np.random.default_rng(5)
    slip, rake = random.random(files.UNITS) * 12, random.random(files.UNITS) * 360
    table = tidora.make_slip_table([0, files.UNITS], np.arange(files.UNITS), slip, rake)
    direct = tidora.source(scenario_table(elements, slip, rake), floor, frame=frame, **options)["eta"].values
    top = np.abs(direct).max()
    assert top > 0.05
    run = tidora.ensemble(table, tmp_path / "u.zarr", tmp_path / "r.zarr", fields=True)
    for found in (
        tidora.combine(tmp_path / "u.zarr", table)[0],
        run["field"][0],
        tidora.scenario(tmp_path / "r.zarr", 0),
    ):
        assert np.abs(found.values - direct).max() <= part * top


def test_a_tolerance_bounds_what_far_units_lack(tmp_path):
    elements, floor, tolerance = files.faults(), files.topography(40, 50), 1e-3
    floor["x"].attrs["units"] = floor["y"].attrs["units"] = "degrees"
    table = tidora.make_slip_table([0, 5], np.arange(5), 1.0, 90.0)
    fields = []
    for name, value in (("exact", 0.0), ("rough", tolerance)):
        tidora.unit_sources(elements, floor, tmp_path / name, tolerance=value)
        fields.append(tidora.combine(tmp_path / name, table)[0].values)
    off = np.abs(fields[1] - fields[0]).max()
    assert 0 < off <= 5 * tolerance


@pytest.fixture(scope="module")
def small(tmp_path_factory):
    """Folder with units on the globe and a run with fields and points at all kinds of places; the run in memory."""
    folder = files.inputs(tmp_path_factory.mktemp("small"))
    files.units_by_threads(folder)
    x, y = np.meshgrid([140.0, 140.0625, 140.1, 142.125], [36.0, 36.07, 37.0, 37.625])  # corners, edges, nodes, between
    at = {"x": np.append(x.ravel(), 140.1 - 360.0), "y": np.append(y.ravel(), 37.0)}
    run = files.run_by_threads(folder, at=at).load()
    return folder, run, at


def test_extremes_and_their_places_are_those_of_the_fields(small):
    _, run, _ = small
    flat = run["field"].values.reshape(files.SCENARIOS, -1)
    y, x = (axis.ravel() for axis in np.meshgrid(run["y"], run["x"], indexing="ij"))
    for name, at in (("highest", flat.argmax(axis=1)), ("lowest", flat.argmin(axis=1))):
        assert np.array_equal(run[name].values, flat[np.arange(len(at)), at])
        assert np.array_equal(run[f"{name}_x"].values, x[at]) and np.array_equal(run[f"{name}_y"].values, y[at])


def test_volumes_and_energy_are_sums_over_the_true_areas_of_cells(small):
    _, run, _ = small
    geod, half = pyproj.Geod(ellps="GRS80"), 0.125 / 2
    # Edges of a polygon are geodesics: many points along the parallels make them so.
    along = np.linspace(-half, half, 101)
    rows = []
    for latitude in run["y"].values:
        lon, lat = np.concatenate([along, along[::-1]]), np.repeat([latitude - half, latitude + half], along.size)
        rows.append(geod.polygon_area_perimeter(140 + lon, lat)[0])
    area = np.abs(rows)[:, None]
    field = run["field"].values.astype(np.float64)
    expected = {
        "raised": (np.maximum(field, 0) * area).sum(axis=(1, 2)),
        "lowered": (np.maximum(-field, 0) * area).sum(axis=(1, 2)),
        "energy": 0.5 * 1025.0 * 9.8 * (field**2 * area).sum(axis=(1, 2)),
    }
    for name, values in expected.items():
        assert np.allclose(run[name].values, values, rtol=2e-6, atol=0), name


def test_heights_at_points_are_bilinear(small):
    _, run, at = small
    field, y, x = (run[name].values.astype(np.float64) for name in ("field", "y", "x"))
    for number, (px, py) in enumerate(zip(at["x"] % 360.0, at["y"])):
        i, j = min(int((px - x[0]) / 0.125), x.size - 2), min(int((py - y[0]) / 0.125), y.size - 2)
        u, v = (px - x[i]) / 0.125, (py - y[j]) / 0.125
        low, high = ((1 - u) * field[:, row, i] + u * field[:, row, i + 1] for row in (j, j + 1))
        assert np.allclose(run["eta"].values[:, number], (1 - v) * low + v * high, rtol=2e-7, atol=1e-7)
    assert np.array_equal(run["eta"].values[:, 0], run["field"].values[:, 0, 0])
    assert np.array_equal(run["eta"].values[:, 15], run["field"].values[:, -1, -1])


def test_points_are_found_across_the_date_line(tmp_path):
    elements = tidora.make_faults(179.9, 10.0, 8e3, 0.0, 20.0, 90.0, 50e3, 30e3, 1.0)
    tidora.unit_sources(elements, tidora.grid(179, 181, 9, 11, 0.125), tmp_path / "u.zarr")
    table = tidora.make_slip_table([0, 1], [0], 3.0, 90.0)
    at = {"x": [-179.5, 180.5, 540.5, 179.25], "y": [10.1] * 4}
    run = tidora.ensemble(table, tmp_path / "u.zarr", tmp_path / "r.zarr", at=at, fields=True)
    eta = run["eta"].values[0]
    assert eta[0] == eta[1] == eta[2] != eta[3] and abs(eta[0]) > 0.01
    expected = run["field"][0].astype(float).interp(x=180.5, y=10.1)
    assert abs(eta[0] - float(expected)) < 1e-6


def test_of_equal_heights_the_southernmost_then_the_westernmost_counts(tmp_path):
    x = 1e3 * np.arange(-20, 21)
    floor = xr.DataArray(np.full((41, 41), -4e3, "f4"), {"y": x, "x": x}, ("y", "x"))
    floor["x"].attrs["units"] = floor["y"].attrs["units"] = "m"
    # Upright and along north: the uplift of pure strike slip is antisymmetric, in east and in north.
    elements = tidora.make_faults(0.0, -5e3, 2e3, 0.0, 90.0, 0.0, 10e3, 8e3, 1.0, coord="plane")
    tidora.unit_sources(elements, floor, tmp_path / "u.zarr", chunks={"unit": 1, "mechanism": 1, "y": 7, "x": 5})
    run = tidora.ensemble(
        tidora.make_slip_table([0, 1], [0], 1.0, 0.0), tmp_path / "u.zarr", tmp_path / "r.zarr", fields=True
    )
    field = run["field"][0].values
    for name, best in (("highest", field.max()), ("lowest", field.min())):
        row, column = np.argwhere(field == best)[0]
        assert float(run[f"{name}_y"][0]) == x[row] and float(run[f"{name}_x"][0]) == x[column]


def test_the_filter_of_a_sum_is_the_sum_of_filtered_units(small):
    folder, _, _ = small
    floor = tidora.open_grid(folder / "floor.nc", "geographic")
    elements = tidora.read_faults(folder / "model.txt", "geographic")
    tidora.unit_sources(elements, floor, folder / "plain.zarr", slope=True)
    table = tidora.read_slip_table(folder / "table.nc")
    plain, smooth = (tidora.combine(folder / name, table, scenarios=[3, 77]) for name in ("plain.zarr", "units.zarr"))
    for one, other in zip(plain, smooth):
        filtered = tidora.kajiura(one.drop_vars("scenario").load(), floor)
        assert np.abs(filtered.values - other.values).max() <= 3e-6 * float(np.abs(other).max())


def test_combine_is_the_sum_and_takes_the_scenarios_that_are_asked_for(small):
    folder, run, _ = small
    table = tidora.read_slip_table(folder / "table.nc")
    response = xr.open_zarr(folder / "units.zarr")["response"].values.astype(np.float64)
    share = np.zeros((files.SCENARIOS, files.UNITS, 2))
    scenario = np.repeat(np.arange(files.SCENARIOS), np.diff(table["indptr"]))
    turn = np.radians(table["rake"].values)
    for mechanism, part in enumerate((np.cos(turn), np.sin(turn))):
        np.add.at(share[:, :, mechanism], (scenario, table["unit"].values), table["slip"].values * part)
    expected = np.einsum("sum,umyx->syx", share, response)
    scale = 2e-6 * np.abs(expected).max()
    whole = tidora.combine(folder / "units.zarr", table)
    assert np.abs(whole.values - expected).max() <= scale and np.abs(run["field"].values - expected).max() <= scale
    for asked in ([5], 5, slice(10, 300, 70), [599, 0, 0], []):
        found = tidora.combine(folder / "units.zarr", table, scenarios=asked)
        numbers = np.atleast_1d(np.arange(files.SCENARIOS)[asked]) if asked != [] else np.zeros(0, int)
        assert found["scenario"].values.tolist() == numbers.tolist()
        assert (
            found.shape == (numbers.size, 14, 18) and np.abs(found.values - expected[numbers]).max(initial=0) <= scale
        )
    for asked in (600, [-1], [0.5], "all", [[1]]):
        with pytest.raises((TypeError, tidora.TidoraError), match="scenarios"):
            tidora.combine(folder / "units.zarr", table, scenarios=asked)


def test_combine_reads_nothing_before_it_is_asked_and_then_only_what_it_needs(small, tmp_path):
    folder, _, _ = small
    units = shutil.copytree(folder / "units.zarr", tmp_path / "units.zarr")
    table = tidora.make_slip_table([0, 2], [1, 3], [1.0, 2.0], 80.0)
    expected = tidora.combine(units, table).values
    lazy = tidora.combine(units, table)
    for chunk in (units / "response").glob("[024].*"):
        chunk.write_bytes(b"")  # to read it is an error
    assert np.array_equal(lazy.values, expected)
    with pytest.raises(Exception):
        tidora.combine(units, tidora.make_slip_table([0, 1], [2], 1.0, 80.0)).compute()


def test_stores_open_without_a_warning_and_say_what_they_hold(small):
    folder, _, _ = small
    for store, units in (("units.zarr", "m"), ("run.zarr", None)):
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            opened = xr.open_zarr(folder / store)
        assert opened.attrs["Conventions"] == "CF-1.8" and "tidora" in opened.attrs["history"]
        for name, variable in opened.variables.items():
            assert (
                variable.attrs.get("long_name") or variable.attrs.get("standard_name") or variable.attrs.get("units")
            ), name
    assert opened["raised"].attrs["units"] == "m3" and opened["energy"].attrs["units"] == "J"
    assert opened["highest_x"].attrs["units"].startswith("degree") and opened["highest"].attrs["units"] == "m"


def test_what_is_not_there_yet_is_not_a_number(small, tmp_path):
    folder, run, _ = small
    for name in ("units.zarr", "table.nc", "points.csv"):
        (shutil.copytree if name == "units.zarr" else shutil.copy)(folder / name, tmp_path / name)
    files.part_of_run(tmp_path, 1, 3)
    begun = xr.open_zarr(tmp_path / "run.zarr")
    for name in ("highest", "lowest_y", "energy", "eta", "field"):
        values = begun[name].values
        assert np.isnan(values[256:]).all() and np.isfinite(values[:256]).all(), name
    assert np.array_equal(begun["field"].values[:256], run["field"].values[:256])
