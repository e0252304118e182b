"""Displacement: nodes, layers, depths, slopes, and the same bits however it is cut."""

from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pyproj
import pytest
import xarray as xr

import tidora

RANDOM = np.random.default_rng(3)
FAULTS = tidora.make_faults(
    140.5 + RANDOM.uniform(-0.5, 0.5, 12), 38.5 + RANDOM.uniform(-0.5, 0.5, 12), RANDOM.uniform(9e3, 3e4, 12),
    RANDOM.uniform(0, 360, 12), RANDOM.uniform(5, 85, 12), 90, 4e4, 2e4, RANDOM.uniform(-1, 3, 12),
    [0, 0, 30, 30, 60, 60, 15, 15, 0, 90, 90, 30], [30, 30, 30, 60, 0, 0, 15, 15, 30, 10, 10, 30],
)  # fmt: skip


def sea(grid, scale=1.0):
    """A topography without symmetry, with land and deep water."""
    unit = 1e5 if grid["x"].attrs["units"] == "m" else 1.0
    x, y = np.meshgrid((grid["x"] - grid["x"][0]) / unit, (grid["y"] - grid["y"][0]) / unit)
    return grid + (-3000 + scale * (2500 * np.sin(1.7 * x + 0.4) * np.cos(1.1 * y) + 900 * x)).astype(np.float32)


SEA = sea(tidora.grid(139, 142, 37, 40, 0.02))
PLANE_FAULTS = FAULTS.assign(
    x=("element", 1e5 * (FAULTS["x"].values - 140)), y=("element", 1e5 * (FAULTS["y"].values - 38))
).assign_attrs(coord="plane")
PLANE_SEA = sea(tidora.grid(-1e5, 2e5, -1e5, 2e5, 2000, coord="plane"))
ALL = {"components": "zen", "slope": True}
KINDS = {
    "plane": (PLANE_FAULTS, PLANE_SEA, dict(frame="plane")),
    "globe": (FAULTS, SEA, dict(frame="globe")),
    "utm, with a tolerance, as the program": (FAULTS, SEA, dict(frame="utm", depth="program", tolerance=1e-3)),
    "globe from the datum, with a tolerance": (FAULTS, SEA, dict(frame="globe", depth="datum", tolerance=1e-3)),
}


def same_bits(a, b):
    return a.dtype == b.dtype and np.array_equal(np.asarray(a).view(np.int32), np.asarray(b).view(np.int32))


@pytest.mark.parametrize("kind", KINDS)
def test_the_bits_depend_neither_on_threads_nor_on_the_cut_of_a_grid(kind):
    faults, where, options = KINDS[kind]
    whole = tidora.deform(faults, where, **options, **ALL, times="intervals", threads=1)
    assert set(whole.data_vars) == {"uz", "ue", "un", "slope"} and all(value.any() for value in whole.values())
    for threads in (2, 3):
        again = tidora.deform(faults, where, **options, **ALL, times="intervals", threads=threads)
        assert all(same_bits(again[name].values, whole[name].values) for name in whole.data_vars)
    if options.get("depth") == "program":
        return  # the depth of a far element is that of the node before, of which a cut may not have it
    for rows, columns in ((slice(0, 1), slice(0, 151)), (slice(37, 120), slice(5, 6)), (slice(3, 150), slice(64, 131))):
        part = tidora.deform(faults, where.isel(y=rows, x=columns), **options, components="zen", times="intervals")
        for name in part.data_vars:
            assert same_bits(part[name].values, whole[name].isel(y=rows, x=columns).values), (rows, columns, name)


@pytest.mark.parametrize("kind", [kind for kind in KINDS if "program" not in kind])
def test_scattered_points_have_the_bits_of_the_nodes_of_a_grid(kind):
    faults, where, options = KINDS[kind]
    x, y = np.meshgrid(where["x"], where["y"])
    order = np.random.default_rng(4).permutation(x.size)
    points = tidora.points(x.ravel()[order], y.ravel()[order], where.values.ravel()[order], coord=faults.attrs["coord"])
    on_points = tidora.deform(faults, points, **options, components="zen")
    on_grid = tidora.deform(faults, where, **options, components="zen")
    for name in on_grid.data_vars:
        assert on_points[name].dims == ("point",)
        assert same_bits(on_points[name].values, on_grid[name].values.ravel()[order]), name


def test_a_million_nodes_of_a_mesh_have_the_bits_of_a_grid():
    grid = tidora.grid(139, 142, 37, 40, 3 / 999)
    x, y = np.meshgrid(grid["x"], grid["y"])
    order = np.random.default_rng(5).permutation(x.size)
    faults = FAULTS.isel(element=slice(0, 2))
    mesh = tidora.deform(faults, tidora.points(x.ravel()[order], y.ravel()[order]))
    assert mesh.sizes["point"] == 1_000_000
    assert same_bits(mesh["uz"].values, tidora.deform(faults, grid)["uz"].values.ravel()[order])


def test_eight_threads_of_python_at_once_get_the_same_bytes():
    whole = tidora.deform(FAULTS, SEA, **ALL)
    with ThreadPoolExecutor(8) as pool:
        results = list(pool.map(lambda _: tidora.deform(FAULTS, SEA, **ALL), range(24)))
    assert all(same_bits(result[name].values, whole[name].values) for result in results for name in whole.data_vars)


def test_whole_turns_of_longitude_do_not_matter():
    west, east = SEA.assign_coords(x=SEA["x"] - 360), SEA.assign_coords(x=SEA["x"] + 360)
    west["x"].attrs = east["x"].attrs = SEA["x"].attrs
    here = tidora.deform(FAULTS, SEA, components="zen")
    for turned in (west, east):
        there = tidora.deform(FAULTS, turned, components="zen")
        for name in here.data_vars:
            largest = float(np.abs(here[name]).max())
            assert np.max(np.abs(there[name].values - here[name].values)) < 1e-6 * largest


def test_the_depth_is_that_of_the_datum_or_of_the_floor_of_each_node():
    base = 8000.0
    fault = tidora.make_faults(0, 0, base, 30, 20, 90, 3e4, 2e4, 2, coord="plane")
    floor = tidora.deform(fault, PLANE_SEA)["uz"].values
    datum = tidora.deform(fault, PLANE_SEA, depth="datum")["uz"].values
    for row, column in ((10, 20), (75, 75), (140, 3)):
        place = PLANE_SEA.isel(y=[row], x=[column])
        above = max(0.0, float(place) + base)
        there = tidora.grid(
            float(place["x"]), float(place["x"]), float(place["y"]), float(place["y"]), 1, coord="plane"
        )
        shallow = tidora.make_faults(0, 0, above, 30, 20, 90, 3e4, 2e4, 2, coord="plane")
        assert floor[row, column] == tidora.deform(shallow, there)["uz"].values[0, 0]
        assert datum[row, column] == tidora.deform(fault, there)["uz"].values[0, 0]
    program = tidora.deform(fault.assign(depth=("element", [5000.0])), PLANE_SEA, depth="program")["uz"].values
    shallow = tidora.make_faults(0, 0, 5000, 30, 20, 90, 3e4, 2e4, 2, coord="plane")
    assert same_bits(program, tidora.deform(shallow, PLANE_SEA, depth="datum")["uz"].values)


def test_the_depth_is_the_floor_where_there_is_one_and_the_datum_where_there_is_none():
    flat = tidora.grid(139, 142, 37, 40, 0.1)
    assert " depth=floor " in tidora.deform(FAULTS, SEA).attrs["history"]
    assert " depth=datum " in tidora.deform(FAULTS, flat).attrs["history"]
    assert " depth=floor " in tidora.deform(FAULTS, tidora.points(140, 38, -1000)).attrs["history"]
    assert " frame=globe " in tidora.deform(FAULTS, flat).attrs["history"]
    assert " frame=plane " in tidora.deform(PLANE_FAULTS, PLANE_SEA).attrs["history"]
    assert same_bits(tidora.deform(FAULTS, flat)["uz"].values, tidora.deform(FAULTS, flat - 0.0)["uz"].values)


def slope_of(where, east, north, min_depth=50.0):
    """-(ue dh/de + un dh/dn), central differences inside, in metres by the cells of the ellipsoid."""
    h = where.values.astype(float)
    x, y = where["x"].values, where["y"].values
    along_x = along_y = np.ones(y.size)
    if where["x"].attrs["units"] != "m":
        ellipsoid = pyproj.Geod(ellps="GRS80")
        sine = np.sin(np.radians(y))
        curvature = ellipsoid.a / np.sqrt(1 - ellipsoid.es * sine**2)
        along_x = np.radians(1) * curvature * np.cos(np.radians(y))
        along_y = np.radians(1) * curvature * (1 - ellipsoid.es) / (1 - ellipsoid.es * sine**2)
    by_east = np.gradient(h, x, axis=1) / along_x[:, None]
    by_north = np.gradient(h, y, axis=0) / along_y[:, None]
    return np.where(h < -min_depth, -(east * by_east + north * by_north), 0.0)


@pytest.mark.parametrize("kind", ["plane", "globe"])
def test_the_slope_term_is_the_horizontal_motion_times_the_slope_per_metre(kind):
    faults, where, options = KINDS[kind]
    result = tidora.deform(faults, where, **options, **ALL, min_depth=200)
    expected = slope_of(where, result["ue"].values, result["un"].values, 200)
    inner = np.s_[1:-1, 1:-1]
    off = np.abs(result["slope"].values - expected)[inner].max() / np.abs(expected).max()
    print(f"{kind}: off by {off:.1e} of the largest slope term, {np.abs(expected).max():.3f} m")
    assert off < 2e-5
    assert (result["slope"].values[where.values >= -200] == 0).all()


def test_layers_are_what_happens_within_them_and_add_up_to_the_whole():
    whole = tidora.deform(FAULTS, SEA)["uz"].values.astype(float)
    for times in ([0, 20, 40, 100], [10, 25], [-100, -50, 500], np.arange(0, 101.0, 5)):
        layers = tidora.deform(FAULTS, SEA, times=times)["uz"]
        assert layers.sizes["time"] == len(times) - 1
        assert layers["time"].values.tolist() == list(times[:-1])
        assert layers["rise_time"].values.tolist() == np.diff(times).tolist()
        assert np.allclose(layers.values.astype(float).sum(axis=0), whole, atol=1e-5)
    first = tidora.deform(FAULTS, SEA, times=[0, 15, 200])["uz"].isel(time=0).values
    lag, duration = FAULTS["lag_time"].values, FAULTS["duration"].values
    part = np.where(lag < 15, np.minimum(1, (15 - lag) / np.maximum(duration, 1e-9)), 0.0)
    scaled = FAULTS.assign(slip=FAULTS["slip"] * part)
    assert np.allclose(first, tidora.deform(scaled, SEA)["uz"].values, atol=1e-5)


def test_intervals_are_the_distinct_pairs_in_the_order_of_the_table():
    result = tidora.deform(FAULTS, SEA, times="intervals", components="zn")
    pairs = [(0, 30), (30, 30), (30, 60), (60, 0), (15, 15), (90, 10)]
    assert list(zip(result["time"].values, result["rise_time"].values)) == pairs
    assert result["uz"].dims == result["un"].dims == ("time", "y", "x")
    assert result["uz"].attrs["time_content"] == "increment" and result["time"].attrs["units"] == "s"


def test_a_table_without_elements_or_a_grid_of_one_node_is_no_special_case():
    none = FAULTS.isel(element=slice(0, 0))
    assert not tidora.deform(none, SEA)["uz"].values.any()
    assert tidora.deform(none, SEA, times="intervals")["uz"].shape == (0, *SEA.shape)
    assert tidora.deform(none, SEA, times=[0, 1, 2])["uz"].shape == (2, *SEA.shape)
    one = tidora.deform(FAULTS, SEA.isel(x=[20], y=[30]))["uz"].values
    assert one.shape == (1, 1) and one[0, 0] == tidora.deform(FAULTS, SEA)["uz"].values[30, 20]
    assert tidora.deform(FAULTS, tidora.points([], []))["uz"].shape == (0,)


@pytest.mark.parametrize("where", [SEA, tidora.points([140, 141], [38, 39], -1000)], ids=["grid", "points"])
@pytest.mark.parametrize("times", [None, "intervals"])
def test_a_result_is_written_as_netcdf_without_a_hint_and_comes_back(tmp_path, where, times):
    result = tidora.deform(FAULTS, where, times=times, components="zen")
    result.to_netcdf(tmp_path / "a.nc")
    with xr.open_dataset(tmp_path / "a.nc") as back:
        assert back.identical(result)
    assert result.attrs["Conventions"] == "CF-1.8" and result["uz"].attrs["units"] == "m"
    assert result["y"].attrs["standard_name"] == "latitude"
    for name in ("version", "frame", "depth", "tolerance"):
        assert (f"{name}=" if name != "version" else tidora.__version__) in result.attrs["history"]


def test_topography_is_read_when_it_is_needed_and_axes_that_decrease_are_turned(tmp_path):
    SEA.rename("z").to_netcdf(tmp_path / "sea.nc")
    lazy = tidora.open_grid(tmp_path / "sea.nc")
    whole = tidora.deform(FAULTS, SEA)
    assert same_bits(tidora.deform(FAULTS, lazy)["uz"].values, whole["uz"].values)
    turned = tidora.deform(FAULTS, SEA[::-1])
    assert turned["y"].values.tolist() == SEA["y"].values.tolist()
    assert same_bits(turned["uz"].values, whole["uz"].values)
