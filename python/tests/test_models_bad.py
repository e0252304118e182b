"""Files of published models that break a rule: refused with file, line and rule, in seconds and in little memory."""

import json
import re
import subprocess
import sys
import time

import pytest
from conftest import ROOT

from modelfiles import (
    CSV_HEAD, CSV_ROWS, FSP_HEAD, FSP_ROWS, NOAA_HEAD, NOAA_ROWS, PARAM_HEAD, PARAM_ROWS, RUPT_HEAD, RUPT_ROWS, SMALL,
    geojson, read,
)  # fmt: skip

import tidora

HEADS = {"fsp": FSP_HEAD, "param": PARAM_HEAD, "csv": CSV_HEAD, "noaa": NOAA_HEAD, "rupt": RUPT_HEAD}
ROWS = {"fsp": FSP_ROWS, "param": PARAM_ROWS, "csv": CSV_ROWS, "noaa": NOAA_ROWS, "rupt": RUPT_ROWS}
TABLES = tuple(HEADS)


def refused(tmp_path, content, rule, line=None):
    """Holds that a file is refused for a rule on a line."""
    path = tmp_path / "model"
    path.write_bytes(content if isinstance(content, bytes) else content.encode())
    with pytest.raises(tidora.FileError, match=rule) as failure:
        read(path)
    assert failure.value.path == str(path)
    assert line is None or failure.value.line == line, failure.value
    return failure.value


def line_of(form, row):
    """The line of a row."""
    return HEADS[form].count("\n") + 1 + row


BAD_ROWS = [
    # why, what is done to the second row, rule
    ("cut in the middle", lambda row: row[: len(row) // 2], "columns"),
    ("the last column missing", lambda row: row.rsplit("," if "," in row else " ", 1)[0], "columns"),
    ("a column too many", lambda row: row + (", 1" if "," in row else " 1"), "columns"),
    ("a word for a number", lambda row: row.replace("38.", "north", 1), "is a number, not 'north"),
    ("a number with an underscore", lambda row: row.replace("38.", "3_8.", 1), "is a number|is a finite number"),
    (
        "not a number",
        lambda row: row.replace("38.1", "nan", 1).replace("38.0", "nan", 1),
        "is a finite number, not nan",
    ),
    ("no finite number", lambda row: row.replace("38.1", "inf", 1).replace("38.0", "inf", 1), "finite number, not inf"),
    ("999 for the latitude", lambda row: re.sub(r"38\.[01]", "999", row, count=1), "latitude is from -90 to 90"),
    ("-99 for the latitude", lambda row: re.sub(r"38\.[01]", "-99", row, count=1), "latitude is from -90 to 90"),
    ("999 for the longitude", lambda row: re.sub(r"143\.\d+", "999", row, count=1), "longitude is from -360 to 720"),
]


@pytest.mark.parametrize("form", TABLES)
@pytest.mark.parametrize("why, change, rule", BAD_ROWS, ids=[row[0] for row in BAD_ROWS])
def test_a_row_that_breaks_a_rule_is_refused_with_its_line(form, why, change, rule, tmp_path):
    if why == "a number with an underscore":
        # A fast conversion takes 3_8 for 38, as Python does: it must not.
        rule = "is a number, not '3_8"
    rows = [ROWS[form][0], change(ROWS[form][1])]
    assert rows[1] != ROWS[form][1]
    refused(tmp_path, HEADS[form] + "\n".join(rows) + "\n", rule, line_of(form, 1))


MARKS = [
    # format, what is replaced in both rows, by what, rule
    ("fsp", " 0.2 90", " 999 90", "slip 999 m marks a value that is not known"),
    ("fsp", " 0.2 90", " -99 90", "slip -99 m marks"),
    ("fsp", "0 0 7.5", "0 0 -99", "depth is from"),
    ("csv", ",0.2,", ",999,", "slip 999 m marks"),
    ("csv", ",10,30,", ",999,30,", "strike is from -360 to 720"),
    ("csv", ",10,30,", ",10,-99,", "dip is from 0 to 90"),
    ("noaa", ", 1.0, 10.0", ", 999, 10.0", "slip 999 m marks"),
    ("noaa", ", 30.0, 5.0", ", 999, 5.0", "dip is from 0 to 90"),
    ("param", " 10 30 ", " 10 999 ", "dip is from 0 to 90"),
    ("param", " 90 10 30", " 999 10 30", "rake is from"),
    ("param", " 10 30 0 2 2", " 10 30 0 -99 2", "rise time is from 0"),
    ("rupt", " 0.3 0.4 ", " 999 0.4 ", "ss 999 m marks"),
    ("rupt", " 10 30 ", " 10 -99 ", "dip is from 0 to 90"),
]


BEYOND = [
    ("fsp", "6.2946e17", "1e308", "moment is from -1e\\+35 to 1e\\+35 N m, not 1e\\+308"),
    ("geojson", "6e+17", "1e200", "moment is from"),
    ("param", "6.0e+24", "1.7e308", "moment is from"),
    ("rupt", " 3e10", " 1e308", "rigidity is from -1e\\+20 to 1e\\+20 Pa, not 1e\\+308"),
]


@pytest.mark.parametrize("form, old, new, rule", BEYOND)
def test_a_moment_or_a_rigidity_beyond_any_earthquake_is_refused(form, old, new, rule, tmp_path):
    assert old in SMALL[form]
    refused(tmp_path, SMALL[form].replace(old, new), rule, 4 if form == "geojson" else line_of(form, 0))


def test_a_moment_is_not_divided_by_next_to_no_slip(tmp_path):
    (tmp_path / "model").write_text(SMALL["fsp"].replace(" 0.2 90 0", " 1e-300 90 0"))
    table, said = read(tmp_path / "model")
    assert table["rigidity"].values.max() < 1e12 and table["rigidity"].values.min() > 1e9
    assert table["slip"].values[0] == 1e-300


@pytest.mark.parametrize("form, old, new, rule", MARKS)
def test_a_mark_for_an_unknown_value_that_is_needed_is_refused(form, old, new, rule, tmp_path):
    assert old in SMALL[form]
    refused(tmp_path, SMALL[form].replace(old, new), rule, line_of(form, 0))


BAD_FILES = [
    # why, format, what is replaced, by what, rule, line
    ("strike unknown", "fsp", "STRK = 10", "STRK = 999", "STRIKE of a plane is not known", None),
    ("dip variable", "fsp", "DIP = 30", "DIP = -99", "DIP of a plane is not known", None),
    ("rake nowhere", "fsp", " 0.2 90 ", " 0.2 999 ", None, None),
    ("no size", "fsp", "Dx = 10 km", "Dx = 999 km", "Dx of the subfaults is a length above 0", None),
    ("size of nothing", "fsp", "Dz = 10 km", "Dz = 0 km", "Dz of the subfaults is a length above 0", None),
    ("a word for a size", "fsp", "Dz = 10 km", "Dz = wide km", "Dz is a number, not 'wide'", 6),
    ("no column of slip", "fsp", " Z SLIP RAKE", " Z SLAP RAKE", "has no column SLIP", 11),
    ("five columns", "fsp", "Z SLIP RAKE TRUP RISE SF_MOMENT", "Z", "at least six columns", 11),
    ("a column twice", "fsp", "TRUP RISE", "TRUP TRUP", "named twice", 11),
    ("a plane without rows", "fsp", "% SOURCE", "% SEGMENT # 1: STRIKE = 1 deg DIP = 2 deg\n% SEGMENT # 2:\n% SOURCE",
     "this segment has no rows", 8),
    ("no width of a plane", "param", " Dy= 10.00km", "", "a plane has nx, Dx in km, ny and Dy in km", 2),
    ("a plane beyond numbers", "param", "Dx= 10.00km", "Dx= 1e999km", "is a finite number, not '1e999'", 2),
    ("a plane of two points", "param", "Dy= 10.00km", "Dy= 1.0.0km", "is a finite number, not '1.0.0'", 2),
    ("a longitude of two points", "param", "Lon: 143.0 ", "Lon: 14.3.0 ", "is a finite number, not '14.3.0'", 3),
    ("five thousand digits of planes", "param", "fault_segments=     1", f"fault_segments= {'1' * 5000}",
     "is a finite number, not '1111", 1),
    ("a plane of nothing", "param", "Dx= 10.00km", "Dx= 0.00km", "are above 0", 2),
    ("a corner of two numbers", "param", "143.0 38.0 5.0\n", "143.0 38.0\n", "columns lon lat depth", 5),
    ("a negative rise time", "param", " 0 2 2 ", " 0 2 -9 ", "rise time is from 0", 7),
    ("depth without a unit", "csv", "depth (km)", "depth", "column depth has its unit in its heading", 1),
    ("slip without a unit", "csv", "slip (m)", "slip", "column slip has its unit", 1),
    ("length in yards", "csv", "length (km)", "length (yd)", "'yd' was found", 1),
    ("no strike", "csv", "strike", "stroke", "has no column strike", 1),
    ("an empty field", "csv", ",5,10", ",,10", "column depth is a number, not ''", 2),
    ("no rake", "geojson", '"rake"', '"rank"', "a subfault has a rake", None),
    ("a point", "geojson", '"Polygon"', '"Point"', "a subfault is a polygon", 4),
    ("a word for a corner", "geojson", "38.1", '"north"', "a corner is a finite number", 4),
    ("corners on their heads", "geojson", "10000.0", "1000.0", "dips to the right of strike", 4),
    ("latitude first", "geojson", "143.", "38143.", "longitude before latitude", 4),
    ("no features", "geojson", '"features"', '"creatures"', "no collection of features", 1),
    ("infinite slip", "geojson", "0.2", "1e999", "slip is a finite number", 4),
    ("headings of another order", "rupt", "lon lat", "lat lon", "column lon stands where 'lat' was found", 1),
]  # fmt: skip


@pytest.mark.parametrize("why, form, old, new, rule, line", BAD_FILES, ids=[row[0] for row in BAD_FILES])
def test_a_file_that_breaks_a_rule_of_its_format_is_refused(why, form, old, new, rule, line, tmp_path):
    text = SMALL[form].replace(old, new)
    assert text != SMALL[form]
    if why == "rake nowhere":
        text, rule = text.replace("RAKE = 90", "RAKE = 999"), "the rake is neither in the rows nor in the header"
    refused(tmp_path, text, rule, line)


@pytest.mark.parametrize("form", SMALL)
def test_headings_alone_and_json_that_ends_early_are_refused(form, tmp_path):
    if form == "geojson":
        refused(tmp_path, SMALL[form][:-30], "is no JSON")
        refused(tmp_path, '{"features": []}', "has no rows")
        refused(tmp_path, '{"features": [1]}', "no collection")
        whole = json.loads(SMALL[form])
        ring = whole["features"][1]["geometry"]["coordinates"][0]
        for wrong in (ring[:3], [*ring, ring[0]], [*ring[:4], ring[1]], ring[0]):
            whole["features"][1]["geometry"]["coordinates"] = [wrong]
            refused(tmp_path, json.dumps(whole, indent=1), "one ring of four corners|a corner has", 46)
        refused(tmp_path, '{"a":' * 100000, "is no JSON that can be read|is no JSON")
    else:
        refused(tmp_path, HEADS[form], "has no rows of subfaults|this plane has no rows")


@pytest.mark.parametrize("form", SMALL)
def test_ends_of_lines_marks_and_tabs_do_not_matter(form, tmp_path):
    (tmp_path / "plain").write_text(SMALL[form])
    plain = read(tmp_path / "plain")[0]
    ways = {
        "the ends of another system": SMALL[form].replace("\n", "\r\n").encode(),
        "a mark of UTF-8": b"\xef\xbb\xbf" + SMALL[form].encode(),
        "no end of the last line": SMALL[form].rstrip("\n").encode(),
        "blank lines at the end": (SMALL[form] + "\n \n").encode(),
    }
    if form in ("fsp", "param", "rupt"):
        head, rows = HEADS[form], "\n".join(ROWS[form])
        ways["tabs"] = (head + rows.replace(" ", "\t") + "\n").encode()
    if form != "geojson":
        ways["Latin-1"] = (b"% " if form == "fsp" else b"# ") + b"Concepci\xf3n\n" + SMALL[form].encode()
    for why, content in ways.items():
        (tmp_path / "other").write_bytes(content)
        assert read(tmp_path / "other")[0].drop_vars("line").equals(plain.drop_vars("line")), why


@pytest.mark.parametrize("form", SMALL)
def test_another_encoding_or_bytes_that_are_no_text_are_refused(form, tmp_path):
    refused(tmp_path, SMALL[form].encode("utf-16"), "is UTF-16", 1)
    head, tail = SMALL[form].encode()[:-30], SMALL[form].encode()[-30:]
    refused(tmp_path, head + b"\0" * 10 + tail, "is no JSON|byte of value 0")
    if form != "geojson":
        padded = HEADS[form] + "# " + "x" * 70000 + "\n" + ROWS[form][0] + "\n"
        refused(tmp_path, padded.replace("# x", "% x") if form == "fsp" else padded, "at most 8190 characters")
        late = HEADS[form] + (ROWS[form][0] + "\n") * 2000 + "\0\n"
        refused(tmp_path, late, "byte of value 0", line_of(form, 2000))


GARBAGE = [b"", b"\n\n", b"hello\n", b"%", b"{", b"[]", b"#\n#\n", bytes(range(256)) * 40, b"\xff\xd8\xff\xe0" * 1000,
           b"% FINITE-SOURCE\n", b"longitude,latitude,strike\n", b"{}", b'{"features": 3}', b"null"]  # fmt: skip


@pytest.mark.parametrize("content", GARBAGE, ids=range(len(GARBAGE)))
def test_garbage_is_refused(content, tmp_path):
    (tmp_path / "model").write_bytes(content)
    try:
        table, _ = read(tmp_path / "model", coord="geographic")
    except tidora.FileError as error:
        assert error.path == str(tmp_path / "model")
    else:
        assert table.sizes["element"] == 0  # a fault file of comments has no elements, which is no error


def test_a_folder_and_a_file_that_is_not_there_are_refused(tmp_path):
    for path in (tmp_path, tmp_path / "none"):
        with pytest.raises(tidora.FileError, match="regular file|cannot be opened"):
            tidora.read_faults(path)


SCRIPT = """
import sys, time, warnings
warnings.simplefilter("ignore")
import tidora
import tidora.faults.models
import pyproj, xarray
def most():
    return int(next(line for line in open("/proc/self/status") if line.startswith("VmHWM")).split()[1])
before, start = most(), time.process_time()
try:
    print(tidora.read_faults(sys.argv[1]).sizes["element"])
except tidora.FileError as error:
    print(error)
print(time.process_time() - start, most() - before)
"""


@pytest.mark.parametrize("form", SMALL)
def test_a_million_rows_take_seconds_and_memory_for_the_file_only(form, tmp_path):
    path, count = tmp_path / "model", 1_000_000 if form != "geojson" else 100_000
    with path.open("w") as file:
        if form == "geojson":
            first = geojson().split('"features": [', 1)[1].split("\n  },\n", 1)[0] + "\n  }"
            file.write('{"features": [' + ",".join([first] * count) + "]}")
        else:
            file.write(HEADS[form] + (ROWS[form][0] + "\n") * (count - 1) + ROWS[form][0][:-30] + "\n")
    start = time.monotonic()
    done = subprocess.run([sys.executable, "-c", SCRIPT, str(path)], capture_output=True, text=True,
                          cwd=ROOT / "python", check=True)  # fmt: skip
    said, figures = done.stdout.strip().splitlines()
    seconds, kilobytes = map(float, figures.split())
    print(f"{form}: {count} rows, {seconds:.1f} s, {kilobytes / 1e3:.0f} MB for {path.stat().st_size / 1e6:.0f} MB")
    # The last row is cut: nothing is computed before all rows are known to be good.
    assert said == str(count) if form == "geojson" else f":{line_of(form, count - 1)}: " in said
    # A number is eight bytes and hardly more than that as text; Python's own objects of JSON take some times as much.
    assert kilobytes * 1e3 < (20 if form == "geojson" else 4) * path.stat().st_size + 50e6
    assert seconds < 60 and time.monotonic() - start < 300
