"""Public bathymetry to a grid of the program: regions, spacings, planes."""

import netCDF4
import numpy as np
import pyproj
import pytest
from conftest import DATA, DX, binary_grid, smooth, tdr

import tidora
from tidora.fields.making import make_field
from tidora.fields.resample import resampled, sample
from tidora.fields.shape import GridShape


def bathymetry(path, west, south, nx, ny, spacing, function, dtype="f4"):
    """A file like those of the public ones: elevation(lat, lon), values at the centres of cells."""
    lon, lat = west + spacing * (np.arange(nx) + 0.5), south + spacing * (np.arange(ny) + 0.5)
    with netCDF4.Dataset(path, "w") as file:
        for name, axis, unit in (("lat", lat, "degrees_north"), ("lon", lon, "degrees_east")):
            file.createDimension(name, axis.size)
            variable = file.createVariable(name, "f8", (name,))
            variable.units, variable.standard_name = unit, {"lat": "latitude", "lon": "longitude"}[name]
            variable[:] = axis
        variable = file.createVariable("elevation", dtype, ("lat", "lon"))
        variable.units = "m"
        variable[:] = function(*np.meshgrid(lon, lat))
    return path


def slope(lon, lat):
    return 100 * (lon - 140) - 30 * (lat - 36) - 1000


def test_a_region_of_a_file_on_the_same_nodes_keeps_every_value(tmp_path):
    whole = binary_grid(tmp_path / "a.bin", smooth(61, 61))
    tdr("convert", whole, tmp_path / "a.nc", "--coord", "geographic")
    for name, words in (("b", []), ("c", ["--spacing", "1/12"])):
        tdr("convert", tmp_path / "a.nc", tmp_path / f"{name}.bin", "--region", "139/141/34/36", *words)
        expected = binary_grid(tmp_path / "e.bin", smooth(61, 61)[12:37, 12:37], (139.0, 34.0))
        got = tidora.open_grid(tmp_path / f"{name}.bin", "geographic")
        assert np.array_equal(got.values, tidora.open_grid(expected, "geographic").values)
    assert (tmp_path / "c.bin").read_bytes() == expected.read_bytes()


def test_a_finer_grid_gets_bilinear_values(tmp_path):
    bathymetry(tmp_path / "g.nc", 139.0, 34.0, 60, 60, 1 / 12, slope)
    tdr("convert", tmp_path / "g.nc", tmp_path / "g.bin", "--region", "140/142/35/37", "--spacing", "1/20")
    grid = tidora.open_grid(tmp_path / "g.bin", "geographic")
    assert dict(grid.sizes) == {"y": 41, "x": 41} and grid.attrs["grid_spacing"] == float(np.float32(0.05))
    assert np.allclose(grid.values, slope(*np.meshgrid(grid["x"], grid["y"])), rtol=0, atol=1e-3)


def test_a_coarser_grid_gets_the_mean_over_its_cells(tmp_path):
    # 15 seconds to 5 minutes: 20 x 20 cells around a node.
    rng = np.random.default_rng(7)
    fine = rng.integers(-5000, 1000, (600, 480)).astype(np.int16)
    bathymetry(tmp_path / "g.nc", 138.0, 33.0, 480, 600, 1 / 240, lambda lon, lat: fine, "i2")
    region = ["--region", "138.5/139.5/33.5/35", "--spacing", "1/12"]
    said = tdr("convert", tmp_path / "g.nc", tmp_path / "g.txt", *region).stdout
    assert "mean of 20 x 20" in said and "13 x 19 nodes" in said
    grid = tidora.open_grid(tmp_path / "g.txt", "geographic")
    blocks = fine[110:490, 110:370].reshape(19, 20, 13, 20).mean(axis=(1, 3))
    assert np.allclose(grid.values, blocks, rtol=0, atol=1e-3)
    tdr("convert", tmp_path / "g.nc", tmp_path / "h.txt", "--region", "138.5/139.5/33.5/35", "--spacing", "1/12",
        "--resampling", "bilinear")  # fmt: skip
    near = fine[119:121, 119:121].mean()  # a node lies between four cells
    assert np.isclose(tidora.open_grid(tmp_path / "h.txt", "geographic").values[0, 0], near, atol=1e-3)


def test_cells_at_the_edge_of_the_source_get_the_mean_of_what_is_there(tmp_path):
    bathymetry(tmp_path / "g.nc", 138.0, 33.0, 480, 480, 1 / 240, slope)
    tdr("convert", tmp_path / "g.nc", tmp_path / "g.bin", "--region", "138.05/139.95/33.05/34.95", "--spacing", "0.1")
    grid = tidora.open_grid(tmp_path / "g.bin", "geographic")
    assert np.allclose(grid.values, slope(*np.meshgrid(grid["x"], grid["y"])), rtol=0, atol=1e-2 + 100 * 0.5 / 240)


def test_a_plane_grid_gets_the_values_of_its_places(tmp_path):
    bathymetry(tmp_path / "g.nc", 139.0, 34.0, 480, 480, 1 / 120, slope)
    tdr("convert", tmp_path / "g.nc", tmp_path / "g.bin", "--crs", "EPSG:32654", "--spacing", "1000",
        "--region", "400000/500000/3900000/4000000")  # fmt: skip
    grid = tidora.open_grid(tmp_path / "g.bin", "plane")
    assert dict(grid.sizes) == {"y": 101, "x": 101}
    x, y = np.meshgrid(grid["x"], grid["y"])
    lon, lat = pyproj.Transformer.from_crs("EPSG:32654", "EPSG:4326", always_xy=True).transform(x, y)
    assert np.allclose(grid.values, slope(lon, lat), rtol=0, atol=1e-3)


def test_a_region_in_degrees_becomes_the_plane_rectangle_around_it(tmp_path):
    bathymetry(tmp_path / "g.nc", 139.0, 34.0, 60, 60, 1 / 12, slope)
    tdr("convert", tmp_path / "g.nc", tmp_path / "g.bin", "--crs", "EPSG:32654", "--spacing", "5400",
        "--region", "140/143/35/38")  # fmt: skip
    grid = tidora.open_grid(tmp_path / "g.bin", "plane")
    corners = pyproj.Transformer.from_crs("EPSG:4326", "EPSG:32654", always_xy=True).transform(
        [140, 143, 140, 143], [35, 35, 38, 38])  # fmt: skip
    assert float(grid["x"][0]) % 5400 == 0 and float(grid["y"][0]) % 5400 == 0
    assert grid["x"][0] <= min(corners[0]) < grid["x"][1] and grid["x"][-2] < max(corners[0]) <= grid["x"][-1]
    # The parallels bend: the southern edge lies lowest between the corners.
    assert grid["y"][0] <= min(corners[1]) and grid["y"][-1] >= max(corners[1])


def test_the_plane_topography_of_the_examples_is_made_again_from_the_one_in_degrees(tmp_path):
    # Both are the same bathymetry, sampled bilinearly at the projected nodes; the file is rounded to 0.1 m.
    tdr("convert", DATA / "tohoku_geo_5min.txt", tmp_path / "u.bin", "--coord", "geographic", "--spacing", "1800",
        "--crs", "+proj=utm +zone=54 +ellps=GRS80 +units=m", "--from-crs", "+proj=longlat +ellps=GRS80",
        "--resampling", "bilinear", "--region", "600600/780600/4102200/4282200")  # fmt: skip
    made = tidora.open_grid(tmp_path / "u.bin", "plane")
    given = tidora.open_grid(DATA / "tohoku_utm54_1800m.txt", "plane")
    same = given.sel(x=made["x"], y=made["y"], method="nearest", tolerance=1.0)
    assert same.sizes == made.sizes
    # 0.05 m by the rounding; and the nodes of the source lie up to 5e-7 degrees beside full twelfths, because the
    # program rounds their offsets to single precision, at up to 900 m from node to node.
    assert float(np.abs(same.values - made.values).max()) <= 0.05 + 5e-7 * 12 * 900


def test_a_region_beyond_180_is_found_in_a_file_that_counts_from_minus_180(tmp_path):
    bathymetry(tmp_path / "g.nc", -180.0, -10.0, 360, 20, 1.0, lambda lon, lat: (lon % 360) + 1000 * lat)
    tdr("convert", tmp_path / "g.nc", tmp_path / "g.bin", "--region", "175.5/184.5/-5.5/4.5", "--spacing", "1")
    grid = tidora.open_grid(tmp_path / "g.bin", "geographic")
    x, y = np.meshgrid(grid["x"], grid["y"])
    assert np.allclose(grid.values, x + 1000 * y, rtol=0, atol=1e-3)
    tdr("convert", tmp_path / "g.nc", tmp_path / "h.bin", "--region", "175/185/-5/5", "--spacing", "1")
    between = tidora.open_grid(tmp_path / "h.bin", "geographic")
    x, y = np.meshgrid(between["x"], between["y"])
    assert np.allclose(between.values, x + 1000 * y, rtol=0, atol=1e-3)
    tdr("convert", tmp_path / "g.nc", tmp_path / "i.bin", "--region", "200.5/210.5/-5.5/4.5")
    cut = tidora.open_grid(tmp_path / "i.bin", "geographic")
    assert cut["x"].values[0] == -159.5 and cut.values[0, 0] == pytest.approx(200.5 - 5500)


def test_only_the_window_of_the_source_is_read():
    seen = []

    def read(key):
        seen.append((key[0].indices(4000)[:2], key[1].indices(5000)[:2]))
        rows, columns = (range(*part.indices(size)) for part, size in zip(key, (4000, 5000)))
        return np.add.outer(np.array(rows), np.array(columns)).astype(np.float32)

    from tidora.fields.lazy import lazily

    field = make_field(lazily((4000, 5000), read), GridShape(0.0, 0.0, 5000, 4000, 1.0), "plane", {})
    values = sample(field, np.array([100.5, 103.25]), np.array([2000.0, 2001.5]))
    assert values.tolist() == [2100.5, 2104.75]
    assert seen == [((2000, 2003), (100, 105))]


def test_points_outside_and_points_beside_missing_values_have_no_value():
    values = np.arange(9, dtype=np.float32).reshape(3, 3)
    values[0, 2] = np.nan
    field = make_field(values, GridShape(0.0, 0.0, 3, 3, 1.0), "plane", {})
    found = sample(field, np.array([-0.01, 2.01, 1.5, 1.0, 2.0, 2.0]), np.array([1.0, 1.0, 0.5, 0.0, 1.0, 2.0]))
    assert np.isnan(found[:3]).all() and found[3:].tolist() == [1, 5, 8]


def test_a_resampled_field_is_the_same_in_any_part(tmp_path):
    field = make_field(smooth(40, 50), GridShape(0.0, 0.0, 50, 40, 1.0), "plane", {})
    result = resampled(field, GridShape(5.0, 5.0, 13, 9, 2.5), "plane", samples=3)
    whole = result.values
    for part in (np.s_[2:5, 1:], np.s_[::-2, 3], np.s_[-1]):
        assert np.array_equal(result[part].values, whole[part])


def test_a_region_in_the_south_west_needs_no_equals_sign(tmp_path):
    bathymetry(tmp_path / "g.nc", -80.0, -45.0, 200, 200, 0.1, slope)
    tdr("convert", tmp_path / "g.nc", tmp_path / "g.bin", "--region", "-75/-70/-40/-30", "--spacing", "0.1")
    assert tidora.open_grid(tmp_path / "g.bin", "geographic")["x"].values[[0, -1]].tolist() == pytest.approx([-75, -70])


WRONG = [
    ("out of the source", ["--region", "139/141/34/47", "--spacing", "1/12"], 1, "reaches out of the source"),
    ("out of the source, as it is", ["--region", "139/141/34/47"], 1, "is not within the grid"),
    (
        "no multiple of the spacing",
        ["--region", "139/141.03/34/36", "--spacing", "1/12"],
        2,
        "no multiple of the spacing",
    ),
    ("another system without a spacing", ["--crs", "EPSG:32654"], 2, "needs --spacing"),
    ("another system without a region", ["--crs", "EPSG:32654", "--spacing", "1000"], 2, "needs --region"),
    ("no such system", ["--crs", "EPSG:0"], 1, "no reference system"),
    ("a system in feet", ["--crs", "EPSG:2263", "--spacing", "10", "--region", "1/2/3/4"], 1, "neither in degrees nor"),
    ("a system with heights", ["--crs", "EPSG:4979", "--spacing", "1"], 1, "has 3 axes"),
    ("west beyond east", ["--region", "141/139/34/36"], 2, "west is below east"),
    ("a spacing of nothing", ["--spacing", "0"], 2, "not above 0"),
    ("a word for a spacing", ["--spacing", "5m"], 2, "such as 1/12"),
]


@pytest.mark.parametrize("words, status, message", [row[1:] for row in WRONG], ids=[row[0] for row in WRONG])
def test_what_cannot_be_resampled_is_said(tmp_path, words, status, message):
    path = binary_grid(tmp_path / "a.bin", smooth(60, 60))
    assert message in tdr("convert", path, tmp_path / "b.bin", "--coord", "geographic", *words, status=status).stderr
    assert not (tmp_path / "b.bin").exists()


NAMES = [
    ("b.xyz", "none of"),
    ("b", "none of"),
    (".bin", "none of"),
    ("runs.binned/b.txt", "reads a grid as binary"),
]


@pytest.mark.parametrize("name, message", NAMES)
def test_a_name_that_the_program_would_read_otherwise_is_refused(tmp_path, name, message):
    path = binary_grid(tmp_path / "a.bin", smooth(3, 3))
    assert message in tdr("convert", path, name, "--coord", "plane", status=2, cwd=tmp_path).stderr


def test_the_source_is_not_written_over(tmp_path):
    path = binary_grid(tmp_path / "a.bin", smooth(3, 3), dx=DX)
    before = path.read_bytes()
    assert "the same file" in tdr("convert", path, path, "--coord", "plane", status=2).stderr
    assert path.read_bytes() == before
