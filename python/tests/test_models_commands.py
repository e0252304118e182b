"""tdr on published models: info, convert with windows of time, plot, source."""

import json
import math

import numpy as np
import pytest
from conftest import binary_grid, tdr
from modelfiles import FILES, SMALL, path_of, read

import tidora
from tidora.faults.windows import in_windows

MODELS = ("chile1995_neic.fsp", "insar2022_neic.fsp", "chile2010_srcmod.fsp", "chile1995_neic.param",
          "insar2022_neic.param", "tohoku2011_ucsb.param", "chile1995_neic.geojson",
          "sift_unit_sources.txt")  # fmt: skip


@pytest.mark.parametrize("name", MODELS)
def test_info_describes_every_format(name):
    table, said = read(name)
    shown = tdr("info", path_of(name))
    assert f"  model     {table.attrs['format']}, place of a subfault: {table.attrs['reference']}\n" in shown.stdout
    for text in table.attrs["assumptions"]:
        assert f"  assumed   {text}\n" in shown.stdout
    assert shown.stderr.count("tdr: note: ") == len(said)
    report = json.loads(tdr("info", "--json", path_of(name)).stdout)[0]
    size = tidora.seismic_moment(table)
    assert math.isclose(report["magnitude"], size.magnitude) and report["element_count"] == table.sizes["element"]
    assert report["rigidity_source"] == ("file" if "rigidity" in table else "assumed")
    assert report["stated_magnitude"] == table.attrs.get("stated_magnitude")
    assert report["stated_moment"] == table.attrs.get("stated_moment")
    assert report["format"] == table.attrs["format"] and report["reference"] == table.attrs["reference"]
    assert report["assumptions"] == table.attrs["assumptions"] and report["depth_from"] == "sea level"
    assert math.isclose(sum(element["moment_Nm"] for element in report["elements"]), size.moment)


def test_the_moment_is_that_of_the_file_unless_a_rigidity_is_given():
    text = tdr("info", FILES / "chile1995_neic.fsp").stdout
    assert "moment    2.195e+21 N m for the rigidities of the file, 67.54 GPa on average" in text
    assert "Mw        8.16 (the file states Mw 8.15 and 2.195e+21 N m)" in text
    text = tdr("info", "--rigidity", "40", FILES / "chile1995_neic.fsp").stdout
    assert "moment    1.3e+21 N m for a rigidity of 40 GPa\n" in text and "Mw        8.01 (the file" in text
    text = tdr("info", FILES / "chile2010_srcmod.fsp").stdout
    assert "for a rigidity of 40 GPa (assumed: the file has none)" in text


def test_the_reference_point_can_be_told():
    report = json.loads(tdr("info", "--json", "--reference", "centroid", FILES / "chile1995_neic.param").stdout)[0]
    assert report["reference"] == "centroid"


@pytest.mark.parametrize("name", MODELS)
def test_a_model_comes_back_from_a_fault_file_with_every_digit(name, tmp_path):
    table, _ = read(name)
    shown = tdr("convert", path_of(name), tmp_path / "faults.txt").stdout
    assert shown.startswith(f"{tmp_path / 'faults.txt'}: {table.sizes['element']} elements in ")
    back = tidora.read_faults(tmp_path / "faults.txt", "geographic")
    for column in back.data_vars:
        assert np.array_equal(back[column].values, table[column].values), column
    tdr("convert", "--coord", "geographic", tmp_path / "faults.txt", tmp_path / "again.txt")
    assert (tmp_path / "again.txt").read_bytes() == (tmp_path / "faults.txt").read_bytes()


@pytest.mark.parametrize("window", [10.0, 7.3, 1000.0, 0.5])
def test_windows_hold_all_slip_at_its_time(window):
    table, _ = read("chile1995_neic.fsp")
    parts = in_windows(table, window)
    start, length = table["lag_time"].values, table["duration"].values
    assert np.all(parts["duration"].values == window) and np.all(parts["slip"].values >= 0)
    assert np.allclose(parts["lag_time"].values / window, np.round(parts["lag_time"].values / window))
    # By hand: what has slipped by the end of each window, of each element.
    for at in (0, 17, 100, 194):
        mine = parts["line"].values == table["line"].values[at]
        for end in np.arange(1, 30) * window:
            done = parts["slip"].values[mine & (parts["lag_time"].values + window <= end + 1e-6)].sum()
            part = np.clip((end - start[at]) / length[at], 0, 1) if length[at] else float(end > start[at])
            assert done == pytest.approx(part * table["slip"].values[at], abs=1e-12)
    assert np.isclose(tidora.seismic_moment(parts).moment, tidora.seismic_moment(table).moment, rtol=1e-12)


def test_convert_merges_times_into_windows(tmp_path):
    shown = tdr("convert", FILES / "chile1995_neic.fsp", tmp_path / "f.txt", "--window", "20").stdout
    back = tidora.read_faults(tmp_path / "f.txt", "geographic")
    pairs = {(start, length) for start, length in zip(back["lag_time"].values, back["duration"].values)}
    assert all(length == 20 and start % 20 == 0 for start, length in pairs)
    assert shown == f"{tmp_path / 'f.txt'}: {back.sizes['element']} elements in {len(pairs)} intervals of time\n"
    plain, _ = read("chile1995_neic.fsp")
    assert np.isclose(tidora.seismic_moment(back).potency, tidora.seismic_moment(plain).potency, rtol=1e-12)


WRONG = [
    # arguments, status, what is said
    (["--window", "0", "M", "f.txt"], 2, "0 is not above 0"),
    (["--window", "1e-9", "M", "f.txt"], 1, "--window 1e-09 s cuts the rupture into"),
    (["--region", "1/2/3/4", "M", "f.txt"], 2, "--region is for grids"),
    (["--sum", "M", "f.txt"], 2, "--sum is for grids"),
    (["--window", "5", "M", "f.nc"], 2, "--window is for a rupture"),
    (["--window", "5", "G", "f.txt"], 2, "--window is for a rupture"),
    (["M", "M"], 2, "says the format"),
    (["M", "f.nc"], 1, "is a published rupture model; a grid or a series is needed here"),
    (["--coord", "plane", "M", "f.txt"], 1, "--coord is geographic in a published model"),
    (["--reference", "centroid", "J", "f.txt"], 1, "--reference is top start in outlines"),
    (["--reference", "middle", "M", "f.txt"], 2, "invalid choice"),
]


@pytest.mark.parametrize("arguments, status, said", WRONG, ids=[" ".join(row[0]) for row in WRONG])
def test_what_does_not_fit_together_is_refused(arguments, status, said, tmp_path):
    (tmp_path / "M").write_text(SMALL["param"])
    (tmp_path / "J").write_text(SMALL["geojson"])
    binary_grid(tmp_path / "g.bin", np.zeros((3, 3)))
    words = [word.replace("G", "g.bin") if len(word) == 1 else word for word in arguments]
    assert said in tdr("convert", *words, status=status, cwd=tmp_path).stderr
    assert not (tmp_path / "f.txt").exists()


def test_a_model_and_its_fault_file_are_not_the_same_file(tmp_path):
    (tmp_path / "m.txt").write_text(SMALL["param"])
    assert "same file" in tdr("convert", "m.txt", "m.txt", status=2, cwd=tmp_path).stderr
    assert (tmp_path / "m.txt").read_text() == SMALL["param"]


def test_the_outlines_of_a_model_are_drawn(tmp_path):
    binary_grid(tmp_path / "g.bin", np.zeros((30, 30)), (-72.0, -25.5), np.float32(0.1))
    shown = tdr("plot", "--coord", "geographic", tmp_path / "g.bin", "--fault", FILES / "chile1995_neic.param",
                "-o", tmp_path / "p.svg")  # fmt: skip
    assert shown.stdout.strip() == str(tmp_path / "p.svg")
    blank = tdr("plot", "--coord", "geographic", tmp_path / "g.bin", "-o", tmp_path / "q.svg")
    assert blank.stdout and (tmp_path / "p.svg").stat().st_size > (tmp_path / "q.svg").stat().st_size + 10000
