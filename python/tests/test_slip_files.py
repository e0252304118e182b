"""Files of slip tables: NetCDF, zarr, comma-separated values."""

import os
import resource
import shutil

import numpy as np
import pytest
import xarray as xr

import tidora
from tidora.faults.slip_table import checked_slip_table

HEAD = "scenario,unit,slip,rake\n"


@pytest.fixture
def table():
    return tidora.make_slip_table(
        [0, 2, 3, 6],
        [4, 0, 7, 1, 1, -2],
        [1 / 3, 0.1, np.nan, 1e-300, 5.0, -1.0],
        [90.0, 80.1, 90.0, -90.0, 0.0, 180.0],
        [8.123456789, np.nan, 9.0],
    )


def same(one, other):
    return all(np.array_equal(one[name].values, other[name].values, equal_nan=True) for name in one.variables)


def text(tmp_path, words):
    path = tmp_path / "table.txt"
    path.write_bytes(words if isinstance(words, bytes) else words.encode())
    return path


def read(tmp_path, words):
    return checked_slip_table(tidora.read_slip_table(text(tmp_path, words)))


@pytest.mark.parametrize("ending", [".nc", ".zarr", ".csv"])
def test_a_table_comes_back_bit_by_bit_and_leaves_nothing_else(ending, table, tmp_path):
    path = tmp_path / f"table{ending}"
    for _ in range(2):  # the second time over the first
        tidora.write_slip_table(table, path)
    assert os.listdir(tmp_path) == [path.name]
    shutil.move(path, tmp_path / "renamed")  # known by content
    back = tidora.read_slip_table(tmp_path / "renamed")
    assert same(table, back) and back["slip"].attrs["units"] == "m" and back.attrs["Conventions"] == "CF-1.8"
    assert {name: values.dims for name, values in back.variables.items()} == {
        name: values.dims for name, values in table.variables.items()}  # fmt: skip


@pytest.mark.parametrize("ending", [".nc", ".zarr"])
def test_what_a_table_holds_beside_comes_back_too(ending, table, tmp_path):
    tidora.write_slip_table(
        table.assign(clipped=("scenario", [0.1, 0.2, 0.3], {"units": "1"})), tmp_path / f"t{ending}"
    )
    back = tidora.read_slip_table(tmp_path / f"t{ending}")
    assert back["clipped"].values.tolist() == [0.1, 0.2, 0.3] and back["clipped"].attrs["units"] == "1"


@pytest.mark.parametrize("ending", [".nc", ".zarr"])
def test_a_table_without_scenarios_comes_back(ending, tmp_path):
    tidora.write_slip_table(tidora.make_slip_table([0], [], [], []), tmp_path / f"t{ending}")
    assert tidora.read_slip_table(tmp_path / f"t{ending}").sizes["entry"] == 0


GOOD = [
    # why, text, units, indptr
    ("columns and rows in any order", "rake,slip,unit,scenario\n9,.5,3,1\n9,1,2,0\n9,1,1,1\n", [2, 3, 1], [0, 1, 3]),
    ("ends of lines of another system, no last one", "scenario,unit,slip,rake\r\n0,1,2,3\r\n0,2,2,3", [1, 2], [0, 2]),
    ("a mark of UTF-8, blanks, capitals", "\ufeffScenario, Unit, Slip, Rake\n 0 , 1 , 2 , 3 \n", [1], [0, 1]),
    ("comments and empty lines", f"# made by hand\n\n{HEAD}# first\n\n0,5,1,90\n \n0,6,1,90\n\n", [5, 6], [0, 2]),
    ("whole numbers with a point", HEAD + "0.0,5.0,1,90\n1e0,6,1,90\n", [5, 6], [0, 1, 2]),
    ("a unit twice adds up", HEAD + "0,5,1,0\n0,5,1,90\n", [5, 5], [0, 2]),
]


@pytest.mark.parametrize("why, words, unit, indptr", GOOD, ids=[row[0] for row in GOOD])
def test_a_text_is_read_whatever_its_dress(why, words, unit, indptr, tmp_path):
    found = read(tmp_path, words)
    assert found.unit.tolist() == unit and found.indptr.tolist() == indptr


def test_an_empty_slip_is_not_a_number_and_a_magnitude_belongs_to_its_scenario(tmp_path):
    found = read(tmp_path, "scenario,unit,slip,rake,magnitude\n1,0,,90,8.5\n0,1,nan,,\n1,2,1,90,8.5\n")
    assert np.array_equal(found.slip, [np.nan, np.nan, 1.0], equal_nan=True)
    assert np.array_equal(found.rake, [np.nan, 90, 90], equal_nan=True)
    assert np.array_equal(found.magnitude, [np.nan, 8.5], equal_nan=True)


def test_numbers_that_no_row_has_are_scenarios_without_slip_and_a_warning_says_so(tmp_path):
    with pytest.warns(tidora.TidoraWarning, match="table.txt: 2 scenarios have no rows, the first of them 1"):
        found = read(tmp_path, HEAD + "0,1,1,90\n3,2,1,90\n")
    assert found.indptr.tolist() == [0, 1, 1, 1, 2]


BAD = [
    # why, text, line, what is said
    ("nothing", "", None, "has no headings"),
    ("comments alone", "# a\n\n", None, "has no headings"),
    ("headings alone", HEAD, None, "has no rows"),
    ("no headings", "0,1,2,3\n", 1, "the headings are scenario,unit,slip,rake, not '0,1,2,3'"),
    ("a heading is missing", "# a\nscenario,unit,slip\n0,1,2\n", 2, "the headings are"),
    ("a heading twice", "scenario,unit,slip,rake,rake\n0,1,2,3,4\n", 1, "the headings are"),
    ("a heading of its own", "scenario,unit,slip,rake,depth\n0,1,2,3,4\n", 1, "'depth' is no heading"),
    ("magnitude twice", HEAD[:-1] + ",magnitude,magnitude\n0,1,2,3,4,4\n", 1, "'magnitude' is no heading"),
    ("a column too few", HEAD + "0,1,2,3\n0,1,2\n", 3, "a row has the 4 columns scenario,unit,slip,rake, not 3"),
    ("a column too many", HEAD + "0,1,2,3,4\n", 2, "a row has the 4 columns scenario,unit,slip,rake, not 5"),
    ("other separators", HEAD + "0;1;2;3\n", 2, "a row has the 4 columns"),
    ("a word", HEAD + "0,1,2,3\n\n0,1,much,3\n", 4, "column slip is a number, not 'much'"),
    ("an underscore", HEAD + "0,1,1_0,3\n", 2, "column slip is a number, not '1_0'"),
    ("a name of a unit", HEAD + "0,kisza1,1,3\n", 2, "column unit is a whole number, not 'kisza1'"),
    ("half a unit", HEAD + "0,0,1,3\n0,1.5,1,3\n", 3, "column unit is a whole number, not '1.5'"),
    ("no unit", HEAD + "0,,1,3\n", 2, "column unit is a whole number, not ''"),
    ("a unit that is not a number", HEAD + "0,nan,1,3\n", 2, "column unit is a whole number, not 'nan'"),
    ("a scenario below 0", HEAD + "-1,0,1,3\n", 2, "column scenario is a whole number from 0 on, not '-1'"),
    ("an endless scenario", HEAD + "inf,0,1,3\n", 2, "column scenario is a whole number"),
    ("a scenario far off", HEAD + "0,0,1,3\n99999999999,0,1,3\n", 3, "99999999999 leaves too many of them"),
    ("beyond exact numbers", HEAD + "1e300,0,1,3\n", 2, "column scenario is a whole number"),
    ("several magnitudes", HEAD[:-1] + ",magnitude\n0,1,2,3,8\n0,1,2,3,9\n", None, "scenario 0 has several magnitudes"),
    ("a byte of value 0", b"scenario,unit\0", None, "is no text"),
    ("a line without end", "x" * 3_000_000, 1, "a line has at most"),
]


@pytest.mark.parametrize("why, words, line, said", BAD, ids=[row[0] for row in BAD])
def test_a_text_that_breaks_a_rule_is_refused_with_its_line(why, words, line, said, tmp_path):
    with pytest.raises(tidora.FileError) as error:
        read(tmp_path, words)
    assert said in str(error.value) and error.value.line == line and "table.txt" in str(error.value)


def test_a_text_of_several_pieces_is_as_one_and_takes_no_more_memory_than_a_few_times_its_size(tmp_path):
    count = 400_000
    random = np.random.default_rng(3)
    slip = random.random(count)
    rows = [f"{at // 40},{at % 997},{slip[at]!r},90.0\n" for at in range(count)]
    rows[count // 2] = "# in the middle\n" + rows[count // 2]
    path = text(tmp_path, HEAD + "".join(rows))
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024
    found = checked_slip_table(tidora.read_slip_table(path))
    used = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024 - before
    assert np.array_equal(found.slip, slip) and found.count == count // 40
    assert np.array_equal(found.unit, np.arange(count) % 997)
    # 32 bytes a row twice, while columns are gathered; the file has about 33 a row. Pieces and their lines: 10 MB.
    assert used < 4 * path.stat().st_size + 20e6
    path.write_text(HEAD + "".join(rows) + "0,1,2\n")
    with pytest.raises(tidora.FileError, match=f":{count + 3}: a row has the 4 columns"):
        tidora.read_slip_table(path)


def test_other_endings_and_texts_that_cannot_say_all_are_refused(table, tmp_path):
    for name in ("table.txt", "table", "table.json"):
        with pytest.raises(tidora.FileError, match="is written as .nc, .zarr or .csv"):
            tidora.write_slip_table(table, tmp_path / name)
    empty = tidora.make_slip_table([0, 1, 1], [3], [1.0], [90.0])
    with pytest.raises(tidora.FileError, match="scenario 1 has no entries"):
        tidora.write_slip_table(empty, tmp_path / "table.csv")
    with pytest.raises(TypeError, match="table is a slip table"):
        tidora.write_slip_table(None, tmp_path / "table.csv")
    assert not os.listdir(tmp_path)


def test_files_that_are_no_tables_are_refused_by_name(table, tmp_path):
    with pytest.raises(tidora.FileError, match="missing.nc: cannot be opened"):
        tidora.read_slip_table(tmp_path / "missing.nc")
    xr.Dataset({"z": ("x", [1.0])}).to_netcdf(tmp_path / "other.nc")
    with pytest.raises(tidora.FileError, match="other.nc: is no slip table: table has no variable indptr"):
        tidora.read_slip_table(tmp_path / "other.nc")
    tidora.write_slip_table(table, tmp_path / "cut.nc")
    os.truncate(tmp_path / "cut.nc", 3000)
    with pytest.raises(tidora.FileError, match="cut.nc: "):
        tidora.read_slip_table(tmp_path / "cut.nc")
    with pytest.raises(TypeError, match="path is a path"):
        tidora.read_slip_table(7)


def test_a_folder_that_is_no_slip_table_is_neither_read_nor_replaced(table, tmp_path):
    (tmp_path / "data.zarr").mkdir()
    (tmp_path / "data.zarr" / "precious").write_text("x")
    with pytest.raises(tidora.FileError, match="is a folder, but no zarr store"):
        tidora.read_slip_table(tmp_path / "data.zarr")
    with pytest.raises(tidora.FileError, match="is no slip table: it is not replaced"):
        tidora.write_slip_table(table, tmp_path / "data.zarr")
    assert (tmp_path / "data.zarr" / "precious").read_text() == "x" and os.listdir(tmp_path) == ["data.zarr"]


@pytest.mark.parametrize("hurt", ["missing", "cut", "changed", "empty", "no .zarray", "bad .zarray"])
def test_a_store_with_a_piece_missing_or_damaged_is_refused(hurt, table, tmp_path):
    path = tmp_path / "t.zarr"
    tidora.write_slip_table(table, path)
    piece = path / "slip" / "0"
    if hurt == "missing":
        piece.unlink()
    elif hurt == "no .zarray":
        (path / "slip" / ".zarray").unlink()
        (path / ".zmetadata").unlink()
    elif hurt == "bad .zarray":
        (path / "slip" / ".zarray").write_text("{")
    else:
        data = bytearray(piece.read_bytes())
        data[-1] ^= 1
        piece.write_bytes({"cut": data[:-8], "changed": data, "empty": b""}[hurt])
    with pytest.raises(tidora.FileError, match="t.zarr: "):
        tidora.read_slip_table(path)
