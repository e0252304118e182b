"""From elements and bathymetry to a sea surface: the function and the command."""

import json
import re

import numpy as np
import pytest
import xarray as xr
from conftest import tdr, tool

import tidora
from tidora.fields.measure import measure
from tidora.formats.registry import open_field

TOPOGRAPHY = tidora.grid(139, 142, 37, 40, 0.0625)
TOPOGRAPHY = TOPOGRAPHY + (-3500 + 1400 * (TOPOGRAPHY["x"] - 140) + 300 * (TOPOGRAPHY["y"] - 38)).astype(np.float32)
FAULTS = tidora.make_faults([140, 140.4], [38, 38.4], 2e4, 200, 15, 90, 5e4, 3e4, 4, [0, 25], [30, 30])


@pytest.fixture
def files(tmp_path):
    """A fault file and bathymetry as it comes from elsewhere: NetCDF, from the north."""
    tidora.write_faults(FAULTS, tmp_path / "f.txt")
    turned = TOPOGRAPHY.rename({"x": "lon", "y": "lat"}).isel(lat=slice(None, None, -1))
    turned.to_netcdf(tmp_path / "sea.nc")
    return tmp_path


@pytest.mark.parametrize("times", [None, "intervals", [0, 20, 40, 60]])
def test_a_source_is_displacement_slope_and_filter_one_after_the_other(times):
    result = tidora.source(FAULTS, TOPOGRAPHY, times=times, slope=True, kajiura=True)
    parts = tidora.deform(FAULTS, TOPOGRAPHY, times=times, slope=True)
    assert list(result.data_vars) == ["uz", "slope", "eta"]
    assert result["uz"].identical(parts["uz"]) and result["slope"].identical(parts["slope"])
    raised = parts["uz"].copy(data=parts["uz"].values + parts["slope"].values)
    assert np.array_equal(result["eta"].values, tidora.kajiura(raised, TOPOGRAPHY).values)
    assert not np.array_equal(result["eta"].values, raised.values)
    plain = tidora.source(FAULTS, TOPOGRAPHY, times=times)
    assert list(plain.data_vars) == ["uz", "eta"] and np.array_equal(plain["eta"].values, plain["uz"].values)
    sloped = tidora.source(FAULTS, TOPOGRAPHY, times=times, slope=True)
    assert np.array_equal(sloped["eta"].values, raised.values)


def test_options_of_deform_go_through_and_a_parent_is_that_of_the_filter():
    cut = TOPOGRAPHY.isel(x=slice(10, 30), y=slice(10, 30))
    larger = tidora.source(FAULTS, TOPOGRAPHY, depth="datum", components="zen", tolerance=1e-4, frame="utm")
    assert {"ue", "un"} <= set(larger.data_vars)
    assert all(word in larger.attrs["history"] for word in ("frame=utm", "depth=datum", "tolerance=0.0001"))
    nested = tidora.source(FAULTS, cut, depth="datum", kajiura=True, parent=larger["eta"])
    alone = tidora.source(FAULTS, cut, depth="datum", kajiura=True)
    expected = tidora.kajiura(alone["uz"], cut, parent=larger["eta"])
    assert np.array_equal(nested["eta"].values, expected.values)
    assert not np.array_equal(nested["eta"].values, alone["eta"].values)


def test_a_source_is_written_as_netcdf_and_says_what_has_made_it(tmp_path):
    result = tidora.source(FAULTS, TOPOGRAPHY, times=[0, 30, 60], slope=True, kajiura=True)
    result.to_netcdf(tmp_path / "a.nc")
    with xr.open_dataset(tmp_path / "a.nc") as back:
        assert back.identical(result)
    words = f"tidora {tidora.__version__}: deform frame=globe depth=floor tolerance=0 min_depth=50 times=2_layers"
    assert result.attrs["history"].startswith(words) and " kajiura kernel=converged" in result.attrs["history"]


def surface(**options):
    return tidora.total(tidora.source(FAULTS, TOPOGRAPHY, **options)["eta"], np.float32)


def test_the_command_makes_what_the_function_makes_in_every_format(files):
    expected = surface(slope=True, kajiura=True)
    arguments = ("source", files / "f.txt", files / "sea.nc", "--slope", "--kajiura", "-o")
    for ending in (".nc", ".asc", ".tif", ".bin", ".txt"):
        out = files / f"eta{ending}"
        lines = tdr(*arguments, out).stdout.splitlines()
        assert lines[0].startswith(f"{out}: ") and "eta" in lines[0] and "49 x 49 nodes" in lines[0]
        back = open_field(out, "geographic", "eta" if ending == ".nc" else None)
        assert np.array_equal(back.values, expected.values), ending
    with xr.open_dataset(files / "eta.nc") as back:
        assert {"uz", "slope", "eta"} <= set(back.data_vars) and back["uz"].dims == ("y", "x")
        assert " deform frame=globe " in back.attrs["history"] and back.attrs["Conventions"] == "CF-1.8"
    tdr(*arguments, files / "eta.tt3")
    assert (files / "eta.tt3").read_text().splitlines()[2].split()[0] == "1"
    assert tdr(*arguments, files / "eta.png").stdout.splitlines()[0] == str(files / "eta.png")
    assert (files / "eta.png").read_bytes().startswith(b"\x89PNG")


def test_the_last_line_has_magnitude_extremes_and_volume(files):
    last = tdr("source", files / "f.txt", files / "sea.nc", "-o", files / "a.nc").stdout.splitlines()[-1]
    figures, size = measure(surface()), tidora.seismic_moment(FAULTS)
    found = re.fullmatch(
        r"Mw (.*) \(40 GPa\), highest (.*) m at (.*), (.*), lowest (.*) m at .*, .*, volume (.*) km3", last
    )
    assert float(found[1]) == round(size.magnitude, 2)
    assert np.isclose(float(found[2]), figures.highest.value, rtol=1e-3)
    assert np.isclose(float(found[3]), figures.highest.x, atol=1e-3)
    assert np.isclose(float(found[5]), figures.lowest.value, rtol=1e-3)
    assert np.isclose(float(found[6]), figures.volume / 1e9, rtol=1e-3)


def test_layers_in_time_go_where_they_can_and_their_sum_elsewhere(files):
    expected = tidora.source(FAULTS, TOPOGRAPHY, times=[0, 20, 40, 60])
    arguments = ("source", files / "f.txt", files / "sea.nc", "--times", "20", "-o")
    assert "3 layers in time" in tdr(*arguments, files / "a.nc").stdout
    series = open_field(files / "a.nc", variable="eta")
    assert np.array_equal(series.values, expected["eta"].values)
    assert series["time"].values.tolist() == [0, 20, 40] and series["rise_time"].values.tolist() == [20, 20, 20]
    assert series.attrs["time_content"] == "increment"
    tdr(*arguments, files / "a.tt3")
    assert [line.split()[0] for line in (files / "a.tt3").read_text().splitlines()[2:9:6]] == ["4", "20.0"]
    tdr(*arguments, files / "a.bin")
    assert np.array_equal(open_field(files / "a.bin", "geographic").values, tidora.total(expected["eta"], np.float32))


def test_a_region_and_a_spacing_resample_the_bathymetry_on_the_way(files):
    result = tdr("source", files / "f.txt", files / "sea.nc", "-o", files / "a.nc", "--region", "139.5/141/38/39",
                 "--spacing", "1/32", "--depth", "datum", "--frame", "utm",
                 "--tolerance", "1e-4", "--threads", "2")  # fmt: skip
    assert result.stdout.startswith("resampled: bilinear")
    grid = tidora.grid(139.5, 141, 38, 39, 1 / 32)
    expected = tidora.deform(FAULTS, grid, depth="datum", frame="utm", tolerance=1e-4)
    assert np.array_equal(open_field(files / "a.nc", variable="uz").values, expected["uz"].values)


WRONG = [
    (["-o", "a.xyz"], 2, "the ending of OUT says the format"),
    (["-o", "sea.nc"], 2, "TOPOGRAPHY and OUT are the same file"),
    (["-o", "f.txt"], 2, "MODEL and OUT are the same file"),
    (["-o", "a.nc", "--frame", "plane"], 1, "--frame plane is of no use for co-ordinates in degrees"),
    (["-o", "a.nc", "--region", "100/101/37/38"], 1, "is not within the grid"),
    (["-o", "a.nc", "--threads", "0"], 2, "argument --threads: 0 is not 1 or above"),
    (["-o", "a.nc", "--tolerance", "-1"], 2, "argument --tolerance: -1 is not 0 or above"),
    (["-o", "a.nc", "--times", "0"], 2, "argument --times: 0 is not above 0"),
    (["-o", "a.nc", "--spacing", "0"], 2, "argument --spacing: 0 is not above 0"),
]


@pytest.mark.parametrize("arguments, status, said", WRONG, ids=[" ".join(row[0]) for row in WRONG])
def test_what_is_wrong_is_said_in_the_words_of_the_command_line(files, arguments, status, said):
    result = tdr("source", "f.txt", "sea.nc", *arguments, status=status, cwd=files)
    assert said in result.stderr


def test_missing_bathymetry_is_an_error_that_counts_it(files):
    holes = TOPOGRAPHY.where(TOPOGRAPHY["x"] > 139.5)
    holes.rename({"x": "lon", "y": "lat"}).to_netcdf(files / "holes.nc")
    said = tdr("source", files / "f.txt", files / "holes.nc", "-o", files / "a.nc", status=1).stderr
    assert "TOPOGRAPHY: 441 of 2401 values are missing" in said and not (files / "a.nc").exists()


def test_other_programs_open_the_file_of_several_variables(files):
    tdr("source", files / "f.txt", files / "sea.nc", "-o", files / "a.nc", "--slope", "--times", "30")
    for name in ("uz", "slope", "eta"):
        found = json.loads(tool("gdalinfo", "-json", f"NETCDF:{files / 'a.nc'}:{name}"))
        assert found["size"] == [49, 49] and len(found["bands"]) == 2
    assert "eta" in tool("ncdump", "-h", files / "a.nc")
