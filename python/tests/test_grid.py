"""Grids: what the formats say, to the byte."""

import os
import struct
import subprocess

import numpy as np
import pytest
from conftest import DATA, DX, ROOT, binary_grid, series, smooth

import tidora
from tidora.fields.making import make_field
from tidora.fields.shape import GridShape, shape_of


def test_a_binary_grid_has_its_southern_row_first_and_x_fastest(tmp_path):
    path = binary_grid(tmp_path / "a.bin", [[1, 2, 3], [4, 5, 6]], (10.0, 20.0), 0.5)
    grid = tidora.open_grid(path, "geographic")
    assert grid.dims == ("y", "x")
    assert grid.dtype == np.float32
    assert float(grid.sel(x=10.5, y=20.0)) == 2
    assert float(grid.sel(x=10.0, y=20.5)) == 4
    assert grid.attrs["grid_spacing"] == 0.5
    assert grid["x"].attrs["standard_name"] == "longitude" and grid["x"].attrs["units"] == "degrees_east"
    assert grid["y"].attrs["axis"] == "Y"


def test_a_plane_grid_has_metres(tmp_path):
    grid = tidora.open_grid(binary_grid(tmp_path / "a.bin", smooth(3, 4), (4e5, 4e6), 1800.0), "plane")
    assert grid["x"].attrs["standard_name"] == "projection_x_coordinate"
    assert grid["y"].attrs["units"] == "m"


def test_nodes_lie_where_the_program_puts_them_the_product_rounded_to_single_precision(tmp_path):
    grid = tidora.open_grid(binary_grid(tmp_path / "a.bin", smooth(30, 200)), "geographic")
    expected = [138.0 + float(np.float32(np.float32(ix) * DX)) for ix in range(200)]
    assert grid["x"].values.tolist() == expected


def test_the_topography_of_the_example_is_read_as_it_stands_in_the_file():
    grid = tidora.open_grid(DATA / "tohoku_geo_5min.txt", "geographic")
    words = [line.split() for line in (DATA / "tohoku_geo_5min.txt").read_text().splitlines() if line[0] != "#"]
    assert [float(word) for word in words[2][:121]] == grid.values[0].tolist()
    assert [float(word) for word in words[122]] == grid.values[120].tolist()
    assert grid.attrs["grid_spacing"] == float(DX)


def test_what_a_binary_file_holds_behind_its_values_is_ignored(tmp_path):
    grid = tidora.open_grid(binary_grid(tmp_path / "a.bin", [[1, 2], [3, 4]], tail=b"rest"), "geographic")
    assert grid.values.tolist() == [[1, 2], [3, 4]]


def test_a_grid_larger_than_the_memory_is_opened_and_read_in_part(tmp_path):
    # 100 000 x 20 000 values: 8 GB that exist only as a hole in the file, behind one value.
    path = tmp_path / "hole.bin"
    with open(path, "wb") as file:
        file.write(struct.pack("=ddiif", 0.0, 0.0, 100_000, 20_000, 1.0))
        file.seek(28 + 4 * (100_000 * 19_999 + 5))
        file.write(struct.pack("=f", 7.5))
        file.truncate(28 + 4 * 100_000 * 20_000)
    grid = tidora.open_grid(path, "plane")
    assert grid.isel(y=-1, x=slice(3, 7)).values.tolist() == [0, 0, 7.5, 0]
    assert grid.isel(y=slice(None, None, -5000), x=5).values.tolist() == [7.5, 0, 0, 0]


def test_the_kind_of_coordinates_is_guessed_with_a_warning(tmp_path):
    binary_grid(tmp_path / "degrees.bin", smooth(3, 3))
    binary_grid(tmp_path / "metres.bin", smooth(3, 3), (3e5, 4e6), 100.0)
    with pytest.warns(tidora.TidoraWarning, match="degrees.*coord=geographic"):
        assert tidora.open_grid(tmp_path / "degrees.bin")["x"].attrs["units"] == "degrees_east"
    with pytest.warns(tidora.TidoraWarning, match="metres.*coord=plane"):
        assert tidora.open_grid(tmp_path / "metres.bin")["x"].attrs["units"] == "m"


def _header(nx, ny, dx=1.0, org=0.0):
    return struct.pack("=ddiif", org, 0.0, nx, ny, dx)


BAD_BINARY = [
    ("shorter than its header", b"x" * 27, "header of 28 bytes"),
    ("no columns", _header(0, 5), "at least 1"),
    ("negative rows", _header(5, -1) + bytes(100), "at least 1"),
    ("sizes whose product does not fit", _header(70000, 70000), "below 2\\^31"),
    ("one value too few", _header(2, 2) + bytes(15), "need 44 bytes, the file has 43"),
    ("no spacing", _header(1, 1, 0.0) + bytes(4), "spacing"),
    ("a spacing that is no number", _header(1, 1, float("nan")) + bytes(4), "spacing"),
    ("an origin that is no number", _header(1, 1, 1.0, float("inf")) + bytes(4), "origin"),
]


@pytest.mark.parametrize("content, rule", [row[1:] for row in BAD_BINARY], ids=[row[0] for row in BAD_BINARY])
def test_a_binary_grid_that_breaks_a_rule_is_refused_with_the_rule(tmp_path, content, rule):
    (tmp_path / "bad.bin").write_bytes(content)
    with pytest.raises(tidora.FileError, match=rule) as failure:
        tidora.open_grid(tmp_path / "bad.bin", "plane")
    assert failure.value.path.endswith("bad.bin")


BAD_TEXT = [
    # why, text, line, rule
    ("an empty file", "", 1, "starts with its size"),
    ("comments only", "# a\n# b\n", 1, "starts with its size"),
    ("the size alone", "2 2\n", 1, "starts with its size"),
    ("a size of one number", "4\n0 0 1 1\n1 2 3 4\n", 1, "nothing else, not 1"),
    ("a blank behind the size, which counts as an item", "2 2 \n0 0 1 1\n1 2\n3 4\n", 1, "nothing else, not 3"),
    ("a size that is no number", "two 2\n0 0 1 1\n1 2\n3 4\n", 1, "whole numbers, not 'two'"),
    ("a size beyond 32 bits", "4294967298 2\n0 0 1 1\n1 2\n3 4\n", 1, "whole numbers"),
    ("no rows", "2 0\n0 0 1 1\n", 1, "at least 1"),
    ("corners of three numbers", "# c\n2 2\n0 0 1\n1 2\n3 4\n", 3, "four numbers"),
    ("a corner that is no number", "2 2\n0 0 x 1\n1 2\n3 4\n", 2, "a number, not 'x'"),
    ("different spacings", "2 2\n0 0 1 2\n1 2\n3 4\n", 2, "the same number above 0, not 1 and 2"),
    ("corners the wrong way round", "2 2\n1 1 0 0\n1 2\n3 4\n", 2, "above 0"),
    ("one column", "1 2\n0 0 0 1\n1\n2\n", 2, "no spacing"),
    ("a value too few", "2 2\n0 0 1 1\n1 2\n3\n", 4, "2 x 2 values are 4, the file has 3"),
    ("a value too many", "2 2\n0 0 1 1\n1 2\n3 4 5\n", 4, "more than 2 x 2"),
    ("an empty line, which is a value 0", "2 2\n0 0 1 1\n1 2\n\n3 4\n", 5, "counts as a value 0 .line 4"),
    ("a word", "2 2\n0 0 1 1\n1 2\n3 four\n", 4, "not 'four'"),
]


@pytest.mark.parametrize("text, line, rule", [row[1:] for row in BAD_TEXT], ids=[row[0] for row in BAD_TEXT])
def test_a_text_grid_that_breaks_a_rule_is_refused_with_line_and_rule(tmp_path, text, line, rule):
    (tmp_path / "bad.txt").write_text(text)
    with pytest.raises(tidora.FileError, match=rule) as failure:
        tidora.open_grid(tmp_path / "bad.txt", "plane")
    assert failure.value.line == line
    assert str(failure.value).startswith(f"{tmp_path / 'bad.txt'}:{line}: ")


GOOD_TEXT = [
    # why, text, the values of a grid of 2 x 2
    ("rows wrapped anywhere", "2 2\n0 0 1 1\n1\n2 3\n4", [1, 2, 3, 4]),
    ("tabs and a comment between", "2\t2\n0 0 1 1 9 9\n1\t2\n#\n3 4\n", [1, 2, 3, 4]),
    ("an empty line in place of a value", "2 2\n0 0 1 1\n1 2\n3\n\n", [1, 2, 3, 0]),
    ("a blank at the end in place of a value", "2 2\n0 0 1 1\n1 2\n3 \n", [1, 2, 3, 0]),
    ("text behind a number", "2 2\n0 0 1 1\n1m 2e0x\n0x10 4_0\n", [1, 2, 16, 4]),
    ("line ends of another system", "2 2\r\n0 0 1 1\r\n1 2\r\n3 4\r\n", [1, 2, 3, 4]),
    ("a NUL, which ends its line", "2 2\n0 0 1 1\n1 2\0 5\n3 4\n", [1, 2, 3, 4]),
    ("values rounded to single precision", "2 2\n0 0 1 1\n0.1 2\n3 1e60\n", [float(np.float32(0.1)), 2, 3, np.inf]),
]


@pytest.mark.parametrize("text, values", [row[1:] for row in GOOD_TEXT], ids=[row[0] for row in GOOD_TEXT])
def test_a_text_grid_is_read_as_the_program_reads_it(tmp_path, text, values):
    (tmp_path / "good.txt").write_bytes(text.encode())
    assert tidora.open_grid(tmp_path / "good.txt", "plane").values.ravel().tolist() == values


def test_a_line_longer_than_the_buffer_is_read_as_several(tmp_path):
    # 8189 characters and the 12 of which the buffer takes the 1: two values, as the program reads them.
    row = "1 " * 4094 + " 12"
    assert len(row) == 8191
    (tmp_path / "long.txt").write_text(f"4096 2\n0 0 4095 1\n{row}\n" + "\n".join("5" * 4096) + "\n")
    grid = tidora.open_grid(tmp_path / "long.txt", "plane")
    assert grid.values[0, -2:].tolist() == [1, 2]


def test_nothing_behind_the_promised_values_is_read(tmp_path):
    # The line behind would fail as a word; it must not matter which error comes first.
    (tmp_path / "more.txt").write_text("2 2\n0 0 1 1\n1 2\n3 4\n5\nword\n")
    with pytest.raises(tidora.FileError) as failure:
        tidora.open_grid(tmp_path / "more.txt", "plane")
    assert failure.value.line == 5


def test_a_missing_file_and_a_folder_are_refused_by_name(tmp_path):
    for path in (tmp_path / "no.bin", tmp_path / "no.txt", tmp_path):
        with pytest.raises(tidora.FileError, match="cannot be opened|regular file"):
            tidora.open_grid(path, "plane")


SHAPES = [
    ("a twelfth of a degree", (138.0, 33.0), 1 / 12),
    ("a third of a degree across the date line", (170.0, -60.0), 1 / 3),
    ("quarter minutes from an odd origin", (142.0020833333, 38.1), 1 / 240),
    ("kilometres in a plane", (412345.678, 4198765.4321), 1800.0),
    ("a spacing of many digits in a plane", (300000.1, 3780000.7), 133.33333),
]


@pytest.mark.parametrize("org, dx", [row[1:] for row in SHAPES], ids=[row[0] for row in SHAPES])
def test_writing_what_was_read_gives_the_same_bytes(tmp_path, org, dx):
    path = binary_grid(tmp_path / "a.bin", smooth(23, 37), org, np.float32(dx))
    tidora.write_grid(tidora.open_grid(path, "plane"), tmp_path / "b.bin")
    assert (tmp_path / "b.bin").read_bytes() == path.read_bytes()
    tidora.write_grid(tidora.open_grid(path, "plane"), tmp_path / "c.txt")
    tidora.write_grid(tidora.open_grid(tmp_path / "c.txt", "plane"), tmp_path / "d.bin")
    assert (tmp_path / "d.bin").read_bytes() == path.read_bytes()


@pytest.mark.parametrize("org, dx", [row[1:] for row in SHAPES], ids=[row[0] for row in SHAPES])
def test_the_spacing_is_found_again_from_the_coordinates_alone(org, dx):
    shape = GridShape(*org, 350, 200, dx)
    grid = make_field(np.zeros((200, 350), np.float32), shape, "plane", {})
    del grid.attrs["grid_spacing"]
    assert shape_of(grid) == shape


def test_a_wide_text_grid_has_lines_below_the_buffer_of_the_reader(tmp_path):
    values = (smooth(3, 5000) * 1e-5 - 12345.678).astype(np.float32)
    path = binary_grid(tmp_path / "a.bin", values, (0.0, 0.0), 1.5)
    tidora.write_grid(tidora.open_grid(path, "plane"), tmp_path / "b.txt")
    assert max(map(len, (tmp_path / "b.txt").read_bytes().splitlines(True))) < 8190
    assert np.array_equal(tidora.open_grid(tmp_path / "b.txt", "plane").values, values)


def test_the_program_reads_what_was_written(tmp_path, program):
    # The echo of the program shows the geometry it has read; one element without slip lets it run.
    path = binary_grid(tmp_path / "a.bin", smooth(40, 50) - 100)
    tidora.write_grid(tidora.open_grid(path, "geographic"), tmp_path / "b.txt")
    (tmp_path / "fault.txt").write_text("35 140 0 0 0 30 90 1000 1000 0\n")
    echoes = []
    for name in ("a.bin", "b.txt"):
        values = ["t", "out", "0", "0", "0", "1", "fault.txt", "-1", "0", "1", "1", "1", name[0], "0", "1", name]
        (tmp_path / "conf.txt").write_text("".join(f"# caption\n{value}\n" for value in values))
        echo = subprocess.run(
            [str(program), "conf.txt"], cwd=tmp_path, check=True, capture_output=True, text=True
        ).stdout
        names = ("nx", "ny", "org_x", "org_y", "dx", "dataNum", "valMax", "valMin")
        echoes.append([line for line in echo.splitlines() if line.split(":")[0].strip() in names])
        tidora.open_grid(tmp_path / "out" / f"VRT_{name[0]}_0000s.bin", "geographic")
    assert "nx     :50" in echoes[0] and "dx     :0.083333" in echoes[0]
    assert echoes[0] == echoes[1]
    headers = [(tmp_path / "out" / f"VRT_{name}_0000s.bin").read_bytes()[:28] for name in "ab"]
    assert headers[0] == headers[1] == path.read_bytes()[:28]


def test_missing_values_are_refused_and_leave_no_file(tmp_path):
    values = smooth(3, 3)
    values[1, 1] = np.nan
    path = binary_grid(tmp_path / "a.bin", values)
    for name in ("b.bin", "b.txt"):
        with pytest.raises(tidora.TidoraError, match="1 values are missing in rows 0 to 2"):
            tidora.write_grid(tidora.open_grid(path, "geographic"), tmp_path / name)
    assert [entry.name for entry in tmp_path.iterdir()] == ["a.bin"]


def test_a_file_that_is_replaced_keeps_its_mode_and_a_link_is_followed(tmp_path):
    grid = tidora.open_grid(binary_grid(tmp_path / "a.bin", smooth(3, 3)), "geographic")
    target = tmp_path / "real.bin"
    target.write_bytes(b"old")
    target.chmod(0o640)
    (tmp_path / "link.bin").symlink_to(target)
    tidora.write_grid(grid, tmp_path / "link.bin")
    assert (tmp_path / "link.bin").is_symlink()
    assert target.read_bytes() == (tmp_path / "a.bin").read_bytes()
    assert target.stat().st_mode & 0o777 == 0o640


def test_a_grid_that_grows_shorter_after_it_was_opened_is_an_error_of_its_file(tmp_path):
    path = binary_grid(tmp_path / "a.bin", smooth(100, 100))
    grid = tidora.open_grid(path, "geographic")
    os.truncate(path, 100)
    with pytest.raises(tidora.FileError, match="has changed"):
        grid.values


def test_the_dump_of_the_formats_page_reads_the_same(tmp_path):
    # The lines of Python in docs/formats.md, run as they stand there.
    page = (ROOT / "docs" / "formats.md").read_text()
    code = page.split("```python\n")[1].split("```")[0]
    path = binary_grid(tmp_path / "a.bin", smooth(5, 7))
    names = {"path": path}
    exec(code, names)
    assert np.array_equal(names["values"], tidora.open_grid(path, "geographic").values)


def test_a_grid_of_any_format_is_opened_cut_and_resampled(tmp_path):
    path = binary_grid(tmp_path / "a.bin", smooth(13, 25), (10.0, 20.0), 0.5)
    whole = tidora.open_grid(path, "geographic")
    whole.rename({"x": "lon", "y": "lat"}).isel(lat=slice(None, None, -1)).to_netcdf(tmp_path / "a.nc")
    part = tidora.open_grid(tmp_path / "a.nc", region=(11, 13, 21, 22))
    assert part.shape == (3, 5) and np.array_equal(part.values, whole.values[2:5, 2:7])
    finer = tidora.open_grid(tmp_path / "a.nc", region=(11, 13, 21, 22), spacing=0.25)
    assert finer.shape == (5, 9) and np.array_equal(finer.values[::2, ::2], part.values)
    assert tidora.open_grid(path, "geographic", spacing=1).shape == (7, 13)
    assert tidora.open_grid(series(tmp_path, [smooth(3, 4)], [0], [30]), "geographic").dims == ("time", "y", "x")


def test_a_region_that_is_none_and_a_spacing_of_0_are_refused_by_their_names(tmp_path):
    path = binary_grid(tmp_path / "a.bin", smooth(3, 4), (10.0, 20.0), 0.5)
    for region in ((11, 10, 20, 21), (10, 11, 21, 20), (10, 11, 20)):
        with pytest.raises(tidora.TidoraError, match="^region is west, east, south, north"):
            tidora.open_grid(path, "geographic", region=region)
    with pytest.raises(tidora.TidoraError, match="^spacing is above 0"):
        tidora.open_grid(path, "geographic", spacing=0)
