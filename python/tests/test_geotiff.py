"""GeoTIFF: nodes are the centres of pixels; checked by gdal."""

import json

import numpy as np
import pytest
from conftest import DX, binary_grid, smooth, tdr, tool

import tidora
from tidora.formats.geotiff import open as open_geotiff

GRIDS = [
    ("degrees", (138.0, 33.0), DX, "geographic", []),
    ("degrees at an odd origin", (142.1234567890123, -33.9876543210987), np.float32(1 / 7), "geographic", []),
    ("a plane", (412345.678901, 4198765.4321098), np.float32(133.33333), "plane", ["--crs", "EPSG:32654"]),
]


@pytest.mark.parametrize("org, dx, kind, options", [row[1:] for row in GRIDS], ids=[row[0] for row in GRIDS])
def test_a_grid_comes_back_from_geotiff_with_the_same_bytes(tmp_path, org, dx, kind, options):
    path = binary_grid(tmp_path / "a.bin", smooth(300, 45), org, dx)
    tdr("convert", path, tmp_path / "a.tif", "--coord", kind, *options)
    tdr("convert", tmp_path / "a.tif", tmp_path / "b.bin")
    assert (tmp_path / "b.bin").read_bytes() == path.read_bytes()


@pytest.mark.parametrize("org, dx, kind, options", [row[1:] for row in GRIDS], ids=[row[0] for row in GRIDS])
def test_gdal_finds_every_node_in_the_middle_of_its_pixel(tmp_path, org, dx, kind, options):
    values, dx = smooth(31, 41), float(dx)
    tdr("convert", binary_grid(tmp_path / "a.bin", values, org, dx), tmp_path / "a.tif", "--coord", kind, *options)
    info = json.loads(tool("gdalinfo", "-json", tmp_path / "a.tif"))
    assert info["metadata"][""]["AREA_OR_POINT"] == "Area"
    assert info["bands"][0]["type"] == "Float32" and info["bands"][0]["unit"] == "m"
    corners = info["cornerCoordinates"]
    assert np.allclose(corners["lowerLeft"], [org[0] - dx / 2, org[1] - dx / 2], rtol=0, atol=1e-4 * dx)
    assert np.allclose(corners["upperRight"], [org[0] + 40.5 * dx, org[1] + 30.5 * dx], rtol=0, atol=1e-4 * dx)
    assert np.allclose(corners["center"], [org[0] + 20 * dx, org[1] + 15 * dx], rtol=0, atol=1e-4 * dx)
    assert ('ID["EPSG",32654]' if kind == "plane" else 'ID["EPSG",4326]') in info["coordinateSystem"]["wkt"]
    # A corner, its neighbours within a tenth of a spacing of the edge of the pixel, and the middle.
    for row, column in ((0, 0), (30, 40), (15, 20)):
        for off in (-0.4, 0.0, 0.4):
            place = [repr(org[0] + (column + off) * dx), repr(org[1] + (row + off) * dx)]
            found = tool("gdallocationinfo", "-valonly", "-geoloc", tmp_path / "a.tif", *place)
            assert np.float32(found) == pytest.approx(values[row, column], rel=1e-6)


def test_a_plane_without_a_reference_system_is_refused(tmp_path):
    binary_grid(tmp_path / "a.bin", smooth(3, 3), (4e5, 4e6), 100.0)
    refused = tdr("convert", tmp_path / "a.bin", tmp_path / "a.tif", "--coord", "plane", status=1)
    assert "--crs EPSG:32654" in refused.stderr and not (tmp_path / "a.tif").exists()


def test_a_raster_of_gdal_is_read_by_the_centres_of_its_pixels(tmp_path):
    (tmp_path / "a.asc").write_text("ncols 3\nnrows 2\nxllcorner 10\nyllcorner 20\ncellsize 0.5\n"
                                    "NODATA_value -9999\n1 2 3\n4 -9999 6\n")  # fmt: skip
    tool(
        "gdal_translate",
        "-q",
        "-of",
        "GTiff",
        "-ot",
        "Int16",
        "-a_srs",
        "EPSG:4326",
        tmp_path / "a.asc",
        tmp_path / "a.tif",
    )
    field = open_geotiff(tmp_path / "a.tif")
    assert field["x"].values.tolist() == [10.25, 10.75, 11.25] and field["y"].values.tolist() == [20.25, 20.75]
    assert np.array_equal(field.values, [[4, np.nan, 6], [1, 2, 3]], equal_nan=True)
    assert np.array_equal(field[::-1, 1:].values, [[2, 3], [np.nan, 6]], equal_nan=True)
    refused = tdr("convert", tmp_path / "a.tif", tmp_path / "b.bin", status=1)
    assert "1 values are missing" in refused.stderr
    tdr("convert", tmp_path / "a.tif", tmp_path / "b.bin", "--fill", "-7")
    assert tidora.open_grid(tmp_path / "b.bin", "geographic").values.tolist() == [[4, -7, 6], [1, 2, 3]]


def test_a_raster_that_somebody_has_moved_is_not_put_back_by_the_note_of_its_origin(tmp_path):
    binary_grid(tmp_path / "a.bin", smooth(5, 5), (138.0, 33.0), 0.5)
    tdr("convert", tmp_path / "a.bin", tmp_path / "a.tif", "--coord", "geographic")
    tool("gdal_translate", "-q", "-srcwin", "1", "0", "4", "4", tmp_path / "a.tif", tmp_path / "cut.tif")
    field = open_geotiff(tmp_path / "cut.tif")
    assert field["x"].values.tolist() == [138.5, 139, 139.5, 140] and field["y"].values.tolist() == [33.5, 34, 34.5, 35]


def test_what_is_no_raster_is_refused(tmp_path):
    (tmp_path / "a.tif").write_bytes(b"II*\0 no tiff")
    with pytest.raises(tidora.FileError, match="no raster"):
        open_geotiff(tmp_path / "a.tif")
