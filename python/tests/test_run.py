"""tdr run: progress, summary, and the exit status of the program."""

import os
import shutil
import signal
import subprocess

import pytest
from conftest import DATA, ROOT, tdr

import tidora
from tidora.formats.configuration import read_configuration
from tidora.commands.program import Display, find_program


@pytest.fixture
def example(tmp_path):
    """A fresh copy of the geographic example."""
    shutil.copytree(DATA, tmp_path / "data")
    (tmp_path / "geo").mkdir()
    shutil.copy(DATA.parent / "geo" / "TdrConf.txt", tmp_path / "geo")
    return tmp_path / "geo"


def script(path, text):
    path.write_text("#!/bin/sh\n" + text)
    path.chmod(0o755)
    return path


def test_a_run_ends_with_a_table_of_what_came_out(example, program):
    result = tdr("run", "TdrConf.txt", "--program", program, "--log", "log.txt", cwd=example)
    lines = result.stdout.splitlines()
    assert lines[0].split() == ["series", "highest", "at", "lowest", "at", "volume"]
    assert [line.split()[0] for line in lines[1:3]] == ["Tdr_japan", "VRT_japan"]
    for line in lines[1:3]:
        assert "14.72 m  143.750, 37.833" in line and "-10.00 m  143.417, 37.750" in line and "3.51 km3" in line
    assert "Mw 9.01 for a rigidity of 40 GPa, 110 elements." in lines
    assert "18 grids and 2 lists in out." in lines
    assert "tdr: region 1 of 1 japan" in result.stderr  # progress, also where nobody draws a bar
    assert "Successful Completion." in (example / "log.txt").read_text()


def test_the_files_are_those_of_the_program_alone(example, program, tohoku):
    tdr("run", "TdrConf.txt", "--program", program, cwd=example)
    names = sorted(entry.name for entry in (tohoku / "out").iterdir())
    assert names == sorted(entry.name for entry in (example / "out").iterdir()) and len(names) == 20
    for name in names:
        assert (example / "out" / name).read_bytes() == (tohoku / "out" / name).read_bytes()


def test_an_error_of_the_program_shows_its_block_and_keeps_its_status(example, program):
    os.truncate(example.parent / "data" / "tohoku_geo_5min.txt", 1000)
    alone = subprocess.run([str(program), "TdrConf.txt"], cwd=example, capture_output=True, text=True)
    result = tdr("run", "TdrConf.txt", "--program", program, status=1, cwd=example)
    assert alone.returncode == 1 and alone.stderr in result.stderr
    assert "ERROR:REGION OBJECT METHOD" in result.stderr and result.stdout == ""
    assert "ended with exit status 1" in result.stderr


def test_a_configuration_that_is_missing_is_left_to_the_program(tmp_path, program):
    result = tdr("run", "no.txt", "--program", program, status=1, cwd=tmp_path)
    assert "ERROR:PARAMETER FILE IS INCONSISTENCY" in result.stderr


@pytest.mark.parametrize("text, status", [("exit 7\n", 7), (f"kill -{int(signal.SIGTERM)} $$\n", 143)])
def test_any_other_end_of_the_program_is_the_end_of_the_run(example, text, status):
    result = tdr("run", "TdrConf.txt", "--program", script(example / "odd", text), status=status, cwd=example)
    assert ("by signal 15" if status > 128 else "with exit status 7") in result.stderr


def test_much_on_both_streams_does_not_stop_the_run(example):
    noisy = script(example / "noisy", "yes output | head -c 3000000\nyes trouble | head -c 3000000 >&2\nexit 3\n")
    result = tdr("run", "TdrConf.txt", "--program", noisy, status=3, cwd=example)
    assert result.stderr.count("trouble\n") == 3000000 // 8


def test_results_that_are_not_there_are_an_error_although_the_program_ended_well(example):
    quiet = script(example / "quiet", "exit 0\n")
    assert "VRT_japan.txt" in tdr("run", "TdrConf.txt", "--program", quiet, status=1, cwd=example).stderr.replace(
        "Tdr_japan", "VRT_japan"
    )


def test_a_rupture_without_intervals_is_said_in_the_table(example, program):
    (example.parent / "data" / "tohoku2011_satake_geo.txt").write_text("# none\n")
    result = tdr("run", "TdrConf.txt", "--program", program, cwd=example)
    assert "no rupture interval" in result.stdout and "no slip" in result.stdout


def test_the_program_is_found_by_name_variable_and_search_path(tmp_path, monkeypatch):
    monkeypatch.delenv("TIDORA_PROGRAM", raising=False)
    own = script(tmp_path / "Tidora", "exit 0\n")
    assert find_program(own) == str(own)
    monkeypatch.setenv("TIDORA_PROGRAM", str(own))
    assert find_program() == str(own)
    monkeypatch.delenv("TIDORA_PROGRAM")
    monkeypatch.setenv("PATH", str(tmp_path), prepend=os.pathsep)
    assert find_program() == str(own)
    with pytest.raises(tidora.TidoraError, match="is no program"):
        find_program(tmp_path / "none")


def test_progress_is_told_from_the_lines_of_the_program():
    display = Display(["parent", "child"])
    assert display.region == "reading"
    for line in (
        "order       :0",
        "order       :1",
        ">>>>> Fault Deform : f.txt",
        "3/7 Completed  Max Value Each ELEM. : 1",
    ):
        assert display.take(line)
    assert (display.intervals, display.element, display.element_count, display.region) == (
        2,
        3,
        7,
        "region 1 of 2 parent",
    )
    assert display.phase == "deformation" and not display.take("maxval = 3")
    assert display.take(">>>>> Kajiura Filter Calc") and display.phase == "filter"
    display.take(">>>>>>>>>>>>>>>>>> Write File : out/Tdr_a_0000s.bin")
    assert display.files == ["out/Tdr_a_0000s.bin"] and display.phase == "writing"
    display.take(">>>>> Fault Deform : f.txt")
    assert (display.element, display.region) == (0, "region 2 of 2 child")


def test_a_configuration_is_read_pair_by_pair():
    nested = read_configuration(ROOT / "examples" / "tohoku2011" / "nested" / "TdrConf.txt")
    assert nested.output == "out" and nested.slope_term and nested.kajiura_filter and nested.fault_kind == "plane"
    assert [(region.number, region.name, region.parent, region.kind) for region in nested.regions] == [
        (1, "parent", 0, "plane"),
        (2, "child", 1, "plane"),
    ]


def config(folder, values):
    (folder / "conf.txt").write_text("".join(f"# caption\n{value}\n" for value in values))
    return folder / "conf.txt"


TEN = ["t", "out", "0", "1", "0", "1", "f.txt", "-1", "0", "1"]


def test_regions_run_by_number_and_of_two_with_one_number_the_first_counts(tmp_path):
    regions = ["7", "b", "0", "1", "b.txt", "2", "a", "0", "1", "a.txt", "7", "c", "0", "1", "c.txt"]
    read = read_configuration(config(tmp_path, [*TEN, "3 regions", *regions]))
    assert [region.name for region in read.regions] == ["a", "b"]


BAD = [
    ("no regions block", [*TEN, "1"], "ends before the last value"),
    ("an empty value", [*TEN[:4], "", *TEN[5:], "0"], "a value line is empty"),
    ("a commented value", [*TEN[:4], "#1", *TEN[5:], "0"], "10 values are needed, 9 are there"),
]


@pytest.mark.parametrize("values, rule", [row[1:] for row in BAD], ids=[row[0] for row in BAD])
def test_a_configuration_that_breaks_a_rule_is_refused(tmp_path, values, rule):
    with pytest.raises(tidora.FileError, match=rule):
        read_configuration(config(tmp_path, values))
