"""ESRI ASCII: rows from the north, and every way in which headers are written."""

import numpy as np
import pytest
from conftest import DX, binary_grid, smooth, tdr, tool

import tidora
from tidora.formats.esri_ascii import open as open_esri


def test_a_grid_comes_back_from_esri_ascii_with_the_same_bytes(tmp_path):
    for org, dx in (((138.0, 33.0), DX), ((412345.678901, 4198765.4321098), 133.33333)):
        path = binary_grid(tmp_path / "a.bin", smooth(17, 23), org, dx)
        tdr("convert", path, tmp_path / "a.asc", "--coord", "plane")
        tdr("convert", tmp_path / "a.asc", tmp_path / "b.bin", "--coord", "plane")
        assert (tmp_path / "b.bin").read_bytes() == path.read_bytes()


def test_the_northern_row_comes_first_and_the_header_names_the_centre_of_the_first_cell(tmp_path):
    tdr(
        "convert",
        binary_grid(tmp_path / "a.bin", [[1, 2], [3, 4]], (10.0, 20.0), 0.5),
        tmp_path / "a.asc",
        "--coord",
        "plane",
    )
    assert (tmp_path / "a.asc").read_text() == (
        "ncols 2\nnrows 2\nxllcenter 10.0\nyllcenter 20.0\ncellsize 0.5\nnodata_value -99999\n3.0 4.0\n1.0 2.0\n"
    )


def test_gdal_reads_it_in_its_place(tmp_path):
    values = smooth(6, 5)
    tdr("convert", binary_grid(tmp_path / "a.bin", values, (10.0, 20.0), 0.5), tmp_path / "a.asc", "--coord", "plane")
    found = tool("gdallocationinfo", "-valonly", "-geoloc", tmp_path / "a.asc", "11.0", "22.5")
    assert np.float32(found) == pytest.approx(values[5, 2], rel=1e-6)


HEADERS = [
    ("corners", "ncols 2\nnrows 2\nxllcorner 9.75\nyllcorner 19.75\ncellsize 0.5\n"),
    ("centres in capitals", "NCOLS 2\nNROWS 2\nXLLCENTER 10\nYLLCENTER 20\nCELLSIZE 0.5\nNODATA_VALUE -9\n"),
    ("values before keys", "2 ncols\n2 nrows\n10 xllcenter\n20 yllcenter\n0.5 cellsize\n-9 nodata_value\n"),
    ("both spacings", "ncols 2\nnrows 2\nxllcorner 9.75\nyllcorner 19.75\ndx 0.5\ndy 0.5\n"),
]


@pytest.mark.parametrize("header", [row[1] for row in HEADERS], ids=[row[0] for row in HEADERS])
def test_headers_of_others_are_understood(tmp_path, header):
    (tmp_path / "a.asc").write_text(header + "3 4\n1 2\n")
    field = open_esri(tmp_path / "a.asc", "plane")
    assert field["x"].values.tolist() == [10, 10.5] and field["y"].values.tolist() == [20, 20.5]
    assert field.values.tolist() == [[1, 2], [3, 4]]


HEAD = "ncols 2\nnrows 2\nxllcenter 10\nyllcenter 20\ncellsize 0.5\n"
BAD = [
    ("an unknown key", "ncols 2\ncolour 3\n", 2, "'colour' is no key"),
    ("a key without a number", "ncols two\n", 1, "ncols is a number, not 'two'"),
    ("no size", "nrows 2\nxllcenter 1\n1 2 3\n", None, "does not name ncols"),
    ("no place", "ncols 1\nnrows 1\ncellsize 1\n1 \n", None, "does not name xllcorner"),
    ("no cellsize", "ncols 2\nnrows 2\nxllcenter 1\nyllcenter 1\n1 2\n3 4\n", None, "cellsize above 0"),
    ("no columns", "ncols 0\nnrows 2\nxllcenter 1\nyllcenter 1\ncellsize 1\n", None, "at least 1"),
    ("a value too few", HEAD + "1 2\n3\n", 7, "the file has 3"),
    ("a value too many", HEAD + "1 2\n3 4\n5\n", 8, "more than 2 x 2"),
    ("a word", HEAD + "1 2\n3 four\n", 7, "not 'four'"),
]


@pytest.mark.parametrize("text, line, rule", [row[1:] for row in BAD], ids=[row[0] for row in BAD])
def test_a_file_that_breaks_a_rule_is_refused_with_line_and_rule(tmp_path, text, line, rule):
    (tmp_path / "a.asc").write_text(text)
    with pytest.raises(tidora.FileError, match=rule) as failure:
        open_esri(tmp_path / "a.asc", "plane")
    assert failure.value.line == line


def test_a_value_that_would_mark_a_missing_one_is_refused(tmp_path):
    binary_grid(tmp_path / "a.bin", [[1, -99999], [3, 4]])
    assert "holds it" in tdr("convert", tmp_path / "a.bin", tmp_path / "a.asc", "--coord", "plane", status=1).stderr
    assert not (tmp_path / "a.asc").exists()
