"""tdr info: what it says, as text and as JSON."""

import json
import math

import numpy as np
import pytest
from conftest import DATA, binary_grid, series, smooth, tdr

from tidora.commands.report import describe, without_nan
from tidora.commands.report_text import to_text

FAULT = DATA / "tohoku2011_satake_geo.txt"


def test_the_tohoku_fault_file_is_described(capsys):
    report = describe(FAULT, "geographic")
    assert report["kind"] == "faults" and report["element_count"] == report["with_slip"] == 110
    assert report["rectangles"] == 49 and report["rupture_s"] == [0.0, 270.0] and report["duration_s"] == 270.0
    assert report["depth_from"] == "sea level"
    rows = [
        list(map(float, line.replace(" - ", " 0 ").split()))
        for line in FAULT.read_text().splitlines()
        if line[0] != "#"
    ]
    assert report["upper_depth_range_m"] == [min(row[2] for row in rows), max(row[2] for row in rows)]
    lower = [row[2] + row[8] * math.sin(math.radians(row[5])) for row in rows]
    assert np.allclose(report["lower_depth_range_m"], [min(lower), max(lower)])
    assert "Mw        9.01" in to_text(report) and "rigidity of 40 GPa" in to_text(report)
    assert [element["line"] for element in report["elements"]] == list(range(4, 114))
    assert math.isclose(sum(element["moment_Nm"] for element in report["elements"]), report["moment_Nm"])


def test_a_long_fault_file_shows_ten_elements_and_all_when_asked():
    report = describe(FAULT, "geographic")
    assert "100 more: --all" in to_text(report)
    assert len(to_text(report, True).splitlines()) == len(to_text(report).splitlines()) + 99


def test_the_rigidity_scales_the_moment(tmp_path):
    (tmp_path / "f.txt").write_text("36 141 6000 2000 190 15 85 40000 20000 -2\n")
    report = describe(tmp_path / "f.txt", "geographic", rigidity=30e9)
    assert math.isclose(report["moment_Nm"], 30e9 * 40000 * 20000 * 2)
    assert report["depth_from"] == "the sea floor"
    assert "rigidity of 30 GPa" in to_text(report)


def test_a_fault_without_slip_has_no_magnitude(tmp_path):
    (tmp_path / "f.txt").write_text("36 141 6000 2000 190 15 85 40000 20000 0\n")
    report = describe(tmp_path / "f.txt", "geographic")
    assert math.isnan(report["magnitude"])
    assert json.loads(json.dumps(without_nan(report), allow_nan=False))["magnitude"] is None


def test_a_series_shows_its_intervals_and_measures_its_sum(tmp_path):
    layers = [np.full((2, 2), value) for value in (1.0, -3.0)]
    path = series(tmp_path, layers, [30, 0], [30, 30], org=(0.0, 0.0), dx=100.0)
    report = describe(path, "plane")
    assert [part["start_s"] for part in report["intervals"]] == [0, 30]
    assert [part["volume_m3"] for part in report["intervals"]] == [-120000, 40000]
    assert report["sum"]["volume_m3"] == -80000 and report["sum"]["highest"]["value_m"] == -2
    assert "energy_J" not in report["intervals"][0]
    assert "sum of 2 intervals, 0 s to 60 s" in to_text(report)


def test_the_volume_and_places_of_the_tohoku_run_are_those_of_the_readme_of_the_example(tohoku):
    text = tdr("info", "--coord", "geographic", "out/VRT_japan.txt", cwd=tohoku).stdout
    assert "highest   14.72 m at 143.750, 37.833" in text
    assert "lowest    -9.999 m at 143.417, 37.750" in text
    assert "raised 87.76 km3" in text and "GRS80" in text and "1025 kg/m3" in text


def test_json_is_a_list_with_an_entry_for_each_file(tmp_path):
    binary_grid(tmp_path / "a.bin", smooth(3, 4))
    entries = json.loads(tdr("info", "--json", "--coord", "geographic", tmp_path / "a.bin", FAULT).stdout)
    assert [entry["kind"] for entry in entries] == ["grid", "faults"]
    assert entries[0]["columns"] == 4 and entries[0]["rows"] == 3 and entries[0]["missing"] == 0
    assert round(entries[1]["magnitude"], 2) == 9.01 and len(entries[1]["elements"]) == 110


def test_a_grid_of_missing_values_is_described_without_numbers(tmp_path):
    binary_grid(tmp_path / "a.bin", np.full((2, 2), np.nan))
    report = describe(tmp_path / "a.bin", "plane")
    assert report["highest"] is None and "4 nodes have no value" in to_text(report)


def test_only_wet_nodes_count_when_a_topography_is_given(tmp_path):
    binary_grid(tmp_path / "a.bin", [[1, 2], [4, 8]], (0, 0), 10.0)
    binary_grid(tmp_path / "t.bin", [[-5, 5], [-1, 1]], (0, 0), 10.0)
    report = describe(tmp_path / "a.bin", "plane", topography=tmp_path / "t.bin")
    assert report["raised_m3"] == 500 and "below 0 of the topography" in to_text(report)


UNKNOWN = [
    ("a grid with a blank behind its size", "2 2 \n0 0 1 1\n1 2\n3 4\n", "nothing else, not 3 items", 1),
    ("prose", "hello world, this\n", "neither a grid", 1),
    ("comments alone", "# a\n", "is empty", 1),
    ("no file", None, "cannot be opened", 1),
    ("a broken list", "0.000000        30.000000       no.bin\n", "neither beside", 1),
]


@pytest.mark.parametrize("text, rule, status", [row[1:] for row in UNKNOWN], ids=[row[0] for row in UNKNOWN])
def test_a_file_that_is_nothing_known_ends_with_status_1_and_its_name(tmp_path, text, rule, status):
    if text is not None:
        (tmp_path / "x.txt").write_text(text)
    result = tdr("info", tmp_path / "x.txt", status=status)
    assert result.stdout == "" and result.stderr.startswith(f"tdr: {tmp_path / 'x.txt'}") and rule in result.stderr


@pytest.mark.parametrize(
    "words", [[], ["info"], ["fly"], ["info", "--rigidity", "-1", "x"], ["info", "--coord", "odd", "x"]]
)
def test_a_wrong_command_line_ends_with_status_2(words):
    assert "usage: tdr" in tdr(*words, status=2).stderr


def test_a_guess_is_said_once_on_standard_error(tmp_path):
    path = series(tmp_path, [smooth(2, 2)] * 3, [0, 1, 2], [1, 1, 1])
    assert tdr("info", path).stderr.count("taken as degrees") == 1
    assert tdr("info", "--coord", "geographic", path).stderr == ""


def test_a_reader_that_goes_away_is_no_error_of_the_program():
    import subprocess
    import sys
    from conftest import ROOT

    script = f"{sys.executable} -m tidora info --all --coord geographic {FAULT} | head -1"
    result = subprocess.run(script, shell=True, capture_output=True, text=True, cwd=ROOT / "python")
    assert result.stdout.strip() == str(FAULT) and result.stderr == ""
