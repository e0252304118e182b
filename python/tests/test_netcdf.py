"""NetCDF: other programs open it, and the grid comes back byte for byte."""

import json
import subprocess
import sys

import netCDF4
import numpy as np
import pytest
import xarray as xr
from conftest import DX, ROOT, binary_grid, series, smooth, tdr, tool

import tidora
from tidora.formats.netcdf import open as open_netcdf, write as write_netcdf, write_several
from tidora.formats.registry import open_field

ORIGINS = [
    ("degrees, a twelfth", (138.0, 33.0), DX, "geographic"),
    ("degrees, a third", (-75.3, -41.7), np.float32(1 / 3), "geographic"),
    ("a plane", (412345.678, 4198765.4321), np.float32(1800), "plane"),
    ("a plane of an odd spacing", (300000.1, 3780000.7), np.float32(133.33333), "plane"),
]


@pytest.fixture(scope="module")
def files(tmp_path_factory):
    """A grid and a series in degrees, and the same as NetCDF."""
    folder = tmp_path_factory.mktemp("netcdf")
    layers = [smooth(31, 41, seed) for seed in range(3)]
    path = series(folder, layers, [0, 30, 60], [30, 30, 45])
    tdr("convert", path, folder / "series.nc", "--coord", "geographic")
    tdr("convert", folder / "VRT_a_0030s.bin", folder / "grid.nc", "--coord", "geographic")
    return folder, layers


@pytest.mark.parametrize("org, dx, kind", [row[1:] for row in ORIGINS], ids=[row[0] for row in ORIGINS])
def test_a_grid_comes_back_from_netcdf_with_the_same_bytes(tmp_path, org, dx, kind):
    path = binary_grid(tmp_path / "a.bin", smooth(29, 350), org, dx)
    tdr("convert", path, tmp_path / "a.nc", "--coord", kind)
    tdr("convert", tmp_path / "a.nc", tmp_path / "b.bin")
    assert (tmp_path / "b.bin").read_bytes() == path.read_bytes()


@pytest.mark.parametrize("org, dx, kind", [row[1:] for row in ORIGINS], ids=[row[0] for row in ORIGINS])
def test_it_does_so_by_its_coordinates_too_without_the_note_of_the_spacing(tmp_path, org, dx, kind):
    path = binary_grid(tmp_path / "a.bin", smooth(29, 350), org, dx)
    write_netcdf(tidora.open_grid(path, kind), tmp_path / "a.nc")
    with netCDF4.Dataset(tmp_path / "a.nc", "a") as file:
        file["z"].delncattr("grid_spacing")
    tidora.write_grid(open_netcdf(tmp_path / "a.nc"), tmp_path / "b.bin")
    assert (tmp_path / "b.bin").read_bytes() == path.read_bytes()


def test_every_snapshot_of_a_series_comes_back_with_the_same_bytes(files, tmp_path):
    folder, _ = files
    for start in (0, 30, 60):
        tdr("convert", folder / "series.nc", tmp_path / "b.bin", "--snapshot", start)
        assert (tmp_path / "b.bin").read_bytes() == (folder / f"VRT_a_{start:04d}s.bin").read_bytes()


def test_the_sum_of_a_series_is_the_sum_of_its_file(files, tmp_path):
    folder, layers = files
    said = tdr("convert", folder / "series.nc", tmp_path / "b.bin").stdout
    assert "sum of 3 intervals" in said
    expected = np.sum(np.array(layers, np.float64), axis=0).astype(np.float32)
    assert np.array_equal(tidora.open_grid(tmp_path / "b.bin", "geographic").values, expected)


def test_the_header_follows_the_conventions(files):
    folder, _ = files
    header = tool("ncdump", "-h", folder / "series.nc")
    for line in (
        ':Conventions = "CF-1.8"', "float z(time, y, x)", 'x:standard_name = "longitude"', 'x:units = "degrees_east"',
        'y:units = "degrees_north"', 'z:units = "m"', 'z:grid_mapping = "crs"', 'time:axis = "T"', 'time:units = "s"',
        'z:coordinates = "rise_time"', 'crs:grid_mapping_name = "latitude_longitude"', "time = 3",
    ):  # fmt: skip
        assert line in header, line


def test_xarray_opens_it_without_a_hint(files):
    folder, layers = files
    with xr.open_dataset(folder / "series.nc") as dataset:
        assert dataset["z"].dims == ("time", "y", "x")
        assert np.array_equal(dataset["z"].values, np.stack(layers))
        assert dataset["time"].values.tolist() == [0, 30, 60]
        assert dataset["z"].coords["rise_time"].values.tolist() == [30, 30, 45]


def test_gmt_opens_it_without_a_hint(files):
    folder, layers = files
    west, east, south, north, low, high, dx, dy, nx, ny, registration, kind = map(
        float, tool("gmt", "grdinfo", "-C", folder / "grid.nc").split()[1:13]
    )
    # GMT takes a spacing so close to 5 minutes for 5 minutes.
    assert (nx, ny, registration, kind) == (41, 31, 0, 1)  # nodes, geographic
    assert np.allclose([west, east, south, north], [138, 138 + 40 / 12, 33, 33 + 30 / 12], atol=1e-6)
    assert np.allclose([dx, dy], 1 / 12, rtol=1e-6)
    assert np.allclose([low, high], [layers[1].min(), layers[1].max()], rtol=1e-6)
    assert "n_levels: 3" in tool("gmt", "grdinfo", folder / "series.nc")
    point = tool("gmt", "grdtrack", f"-G{folder / 'grid.nc'}", "-nn", input="138.25 33.5\n")
    assert np.isclose(float(point.split()[2]), layers[1][6, 3], atol=1e-6)


def test_gdal_opens_it_with_its_place_and_its_reference_system(files):
    folder, layers = files
    info = json.loads(tool("gdalinfo", "-json", folder / "series.nc"))
    assert info["size"] == [41, 31] and len(info["bands"]) == 3
    west, dx, _, north, _, dy = info["geoTransform"]
    assert np.allclose([west, dx, north, dy], [138 - 1 / 24, 1 / 12, 33 + 30 / 12 + 1 / 24, -1 / 12], atol=1e-6)
    assert 'ID["EPSG",4326]' in info["coordinateSystem"]["wkt"]
    value = tool("gdallocationinfo", "-valonly", "-wgs84", "-b", "2", folder / "series.nc", "138.25", "33.5")
    assert float(value) == pytest.approx(layers[1][6, 3], rel=1e-6)


def test_a_plane_grid_gets_the_reference_system_that_is_stated(tmp_path):
    binary_grid(tmp_path / "a.bin", smooth(5, 6), (4e5, 4e6), 1800.0)
    tdr("convert", tmp_path / "a.bin", tmp_path / "a.nc", "--coord", "plane", "--crs", "EPSG:32654")
    info = json.loads(tool("gdalinfo", "-json", tmp_path / "a.nc"))
    assert "UTM zone 54N" in info["coordinateSystem"]["wkt"]
    tdr("convert", tmp_path / "a.nc", tmp_path / "b.bin")
    assert (tmp_path / "b.bin").read_bytes() == (tmp_path / "a.bin").read_bytes()
    refused = tdr("convert", tmp_path / "a.bin", tmp_path / "c.nc", "--coord", "plane", "--crs", "EPSG:4326", status=1)
    assert "plane co-ordinates" in refused.stderr and not (tmp_path / "c.nc").exists()


def test_an_epoch_makes_dates_of_the_times(files, tmp_path):
    folder, _ = files
    tdr(
        "convert",
        folder / "VRT_a.txt",
        tmp_path / "d.nc",
        "--coord",
        "geographic",
        "--epoch",
        "2011-03-11T14:46:18+09:00",
    )
    with xr.open_dataset(tmp_path / "d.nc") as dataset:
        assert str(dataset["time"].values[1]).startswith("2011-03-11T05:46:48")


FOREIGN = [
    ("rows from the north", {"flip": "y"}),
    ("columns from the east", {"flip": "x"}),
    ("axes the other way round", {"transpose": True}),
    ("a layer of time of its own", {"time": True}),
    ("whole numbers", {"dtype": "i2"}),
    ("packed values", {"scale": 0.5}),
    ("usual names without attributes", {"bare": True}),
]


@pytest.mark.parametrize("options", [row[1] for row in FOREIGN], ids=[row[0] for row in FOREIGN])
def test_files_of_others_are_read_with_the_south_west_first(tmp_path, options):
    values = np.arange(12, dtype=np.float64).reshape(3, 4)
    lat, lon = np.array([10.0, 10.5, 11.0]), np.array([100.0, 100.5, 101.0, 101.5])
    with netCDF4.Dataset(tmp_path / "f.nc", "w") as file:
        file.createDimension("lat", 3)
        file.createDimension("lon", 4)
        axes = {"y": lat, "x": lon}
        data = values
        if options.get("flip"):
            axes[options["flip"]] = axes[options["flip"]][::-1]
            data = np.flip(data, "yx".index(options["flip"]))
        for name, axis, unit in (("lat", "y", "degrees_north"), ("lon", "x", "degrees_east")):
            variable = file.createVariable(name, "f8", (name,))
            variable[:] = axes[axis]
            if not options.get("bare"):
                variable.units = unit
        dims = ("lon", "lat") if options.get("transpose") else ("lat", "lon")
        data = data.T if options.get("transpose") else data
        if options.get("time"):
            file.createDimension("time", None)
            dims, data = ("time", *dims), data[None]
        variable = file.createVariable("elevation", options.get("dtype", "i4" if "scale" in options else "f4"), dims)
        if "scale" in options:
            variable.scale_factor = options["scale"]
        variable[:] = data
    field = open_field(tmp_path / "f.nc")
    field = field.isel(time=0) if "time" in field.dims else field
    assert field["x"].values.tolist() == lon.tolist() and field["y"].values.tolist() == lat.tolist()
    assert np.array_equal(field.values, values)
    assert np.array_equal(field.isel(y=slice(None, None, -2), x=slice(1, 3)).values, values[::-2, 1:3])
    assert field["x"].attrs["units"] == "degrees_east"


def test_a_single_layer_in_time_needs_no_choice(tmp_path):
    values = smooth(3, 4)
    axes = {"time": [0.0], "y": [0.0, 1.0, 2.0], "x": [0.0, 1.0, 2.0, 3.0]}
    xr.Dataset({"h": (("time", "y", "x"), values[None])}, axes).to_netcdf(tmp_path / "h.nc")
    tdr("convert", tmp_path / "h.nc", tmp_path / "a.bin", "--coord", "plane")
    assert np.array_equal(tidora.open_grid(tmp_path / "a.bin", "plane").values, values)


def test_units_in_the_file_go_before_what_is_stated(tmp_path):
    binary_grid(tmp_path / "a.bin", smooth(3, 4))
    tdr("convert", tmp_path / "a.bin", tmp_path / "a.nc", "--coord", "geographic")
    assert open_netcdf(tmp_path / "a.nc", "plane")["x"].attrs["units"] == "degrees_east"


def test_layers_in_time_that_are_not_known_to_be_increments_are_not_summed(tmp_path):
    dataset = xr.Dataset({"h": (("time", "y", "x"), np.ones((2, 3, 4)))},
                         {"time": [0.0, 1.0], "y": [0.0, 1.0, 2.0], "x": [0.0, 1.0, 2.0, 3.0]})  # fmt: skip
    dataset.to_netcdf(tmp_path / "h.nc")
    refused = tdr("convert", tmp_path / "h.nc", tmp_path / "a.bin", "--coord", "plane", status=1)
    assert "--snapshot or --sum" in refused.stderr
    tdr("convert", tmp_path / "h.nc", tmp_path / "a.bin", "--coord", "plane", "--sum")
    assert (tidora.open_grid(tmp_path / "a.bin", "plane").values == 2).all()


BAD = [
    ("no NetCDF file", lambda path: path.write_bytes(b"text"), "is no NetCDF file"),
    ("no field", lambda path: xr.Dataset({"a": ("x", [1.0])}).to_netcdf(path), "no variable of rows and columns"),
    (
        "two fields of unusual names",
        lambda path: xr.Dataset({name: (("y", "x"), np.ones((2, 2))) for name in "ab"}).to_netcdf(path),
        "variable chooses one of: a, b",
    ),
    (
        "no co-ordinates",
        lambda path: xr.Dataset({"z": (("y", "x"), np.ones((2, 2)))}).to_netcdf(path),
        "has no co-ordinates",
    ),
    (
        "axes of other names",
        lambda path: xr.Dataset({"z": (("p", "q"), np.ones((2, 2)))}).to_netcdf(path),
        "has no x axis among p, q",
    ),
]


@pytest.mark.parametrize("make, rule", [row[1:] for row in BAD], ids=[row[0] for row in BAD])
def test_a_netcdf_file_that_cannot_be_used_is_refused_with_the_reason(tmp_path, make, rule):
    make(tmp_path / "bad.nc")
    with pytest.raises(tidora.FileError, match=rule):
        open_netcdf(tmp_path / "bad.nc", "plane")


def test_intervals_that_start_together_are_refused_for_the_time_axis(tmp_path):
    field = tidora.open_series(series(tmp_path, [smooth(3, 3)] * 2, [0, 1], [1, 1]), "plane")
    with pytest.raises(tidora.TidoraError, match="same time"):
        write_netcdf(field.assign_coords(time=[0.0, 0.0]), tmp_path / "a.nc")
    assert not (tmp_path / "a.nc").exists()


# The peak of the process itself, in kB; getrusage would count the one that started it too.
PEAK = """
import sys
from tidora.commands.main import main
status = main(sys.argv[1:])
print(status, next(line.split()[1] for line in open("/proc/self/status") if line.startswith("VmHWM:")))
"""


def test_a_long_series_is_converted_within_the_memory_of_two_snapshots(tmp_path):
    # 20 snapshots of 1000 x 1000 against 20 of 50 x 50: what is more is what the size of a snapshot costs.
    peaks = {}
    for size in (50, 1000):
        folder = tmp_path / str(size)
        folder.mkdir()
        path = series(folder, [smooth(size, size, seed) for seed in range(20)], range(0, 200, 10), [10] * 20, dx=100.0)
        said = subprocess.run([sys.executable, "-c", PEAK, "convert", path, folder / "a.nc", "--coord", "plane"],
                              capture_output=True, text=True, cwd=ROOT / "python", check=True)  # fmt: skip
        status, peaks[size] = map(int, said.stdout.splitlines()[-1].split())
        assert status == 0
        assert "Writing 10 of 20" in said.stderr  # progress, also where nobody draws a bar
    assert peaks[1000] - peaks[50] < 2 * 4 * 1000 * 1000 / 1024


def test_layers_are_written_in_order_of_time_and_several_fields_into_one_file(tmp_path):
    layers = [smooth(4, 5, seed) for seed in range(3)]
    field = tidora.open_series(series(tmp_path, layers, [0, 30, 60], [30, 30, 30]), "geographic")
    mixed = field.isel(time=[2, 0, 1])
    write_several({"uz": mixed, "eta": 2 * mixed.assign_attrs(long_name="eta")}, tmp_path / "a.nc")
    with xr.open_dataset(tmp_path / "a.nc") as back:
        assert list(back.data_vars) == ["uz", "crs", "eta"] and back["time"].values.tolist() == [0, 30, 60]
        assert np.array_equal(back["uz"].values, field.values)
        assert np.array_equal(back["eta"].values, 2 * field.values)
        assert back["eta"].attrs["grid_mapping"] == back["uz"].attrs["grid_mapping"] == "crs"
    assert np.array_equal(open_field(tmp_path / "a.nc").values, 2 * field.values)  # eta by its name
