"""The engine with the program's choices gives the bytes of the program's grids, on all examples."""

import re
import shutil
import subprocess

import numpy as np
import pytest
from conftest import ROOT

import tidora
from tidora.formats.configuration import read_configuration

EXAMPLES = {
    "geo": "tohoku2011/geo/TdrConf.txt",
    "nested": "tohoku2011/nested/TdrConf.txt",
    "static": "tohoku2011/static/TdrConf.txt",
    "flat band": "band/TdrConf_flat.txt",
    "cosine band": "band/TdrConf_cosine.txt",
}


class Run:
    """An example after a run, with the slope term and the filter as asked for."""

    def __init__(self, program, folder, example, slope=None, filtered=None):
        shutil.copytree(ROOT / "examples", folder / "examples", ignore=shutil.ignore_patterns("out"))
        configuration = folder / "examples" / EXAMPLES[example]
        lines = configuration.read_text().splitlines()
        for number, value in ((7, slope), (9, filtered)):
            if value is not None:
                lines[number] = str(int(value))
        configuration.write_text("\n".join(lines) + "\n")
        self.folder, self.tolerance = configuration.parent, float(lines[5])
        command = [str(program), configuration.name]
        subprocess.run(command, cwd=self.folder, check=True, capture_output=True)
        self.configuration = read_configuration(configuration)
        self.kind = self.configuration.fault_kind
        self.regions = {region.number: region for region in self.configuration.regions}

    def faults(self):
        return tidora.read_faults(self.folder / self.configuration.fault_file, self.kind)

    def topography(self, region):
        return tidora.open_grid(self.folder / region.topography, self.kind)

    def series(self, tag, region):
        return tidora.open_series(self.folder / self.configuration.output / f"{tag}_{region.name}.txt", self.kind)

    def deformed(self, region):
        """By the engine, in order of time as the series are read."""
        frame = "plane" if self.kind == "plane" else "utm"
        result = tidora.deform(
            self.faults(), self.topography(region), frame=frame, depth="program", times="intervals",
            tolerance=self.tolerance, slope=self.configuration.slope_term,
        )  # fmt: skip
        return result.sortby("time")


def same_bits(result, series):
    assert result.sizes == series.sizes and np.array_equal(result["time"], series["time"])
    return np.array_equal(result.values.view(np.int32), series.values.view(np.int32))


@pytest.mark.parametrize("slope", [False, True], ids=["as it is", "with the slope term"])
@pytest.mark.parametrize("example", EXAMPLES)
def test_displacement_and_slope_term_have_the_bytes_of_the_program(program, tmp_path, example, slope):
    run = Run(program, tmp_path, example, slope=slope or None)
    for region in run.regions.values():
        result = run.deformed(region)
        assert same_bits(result["uz"], run.series("VRT", region))
        assert "band" in example or result["uz"].values.any()
        if run.configuration.slope_term:
            assert same_bits(result["slope"], run.series("HRZ", region))
            assert "band" in example or result["slope"].values.any()


def test_layers_stand_in_the_order_in_which_the_program_lists_them(program, tmp_path):
    run = Run(program, tmp_path, "geo")
    result = tidora.deform(run.faults(), tidora.grid(140, 141, 38, 39, 0.5), times="intervals")
    listed = (run.folder / "out" / "VRT_japan.txt").read_text().splitlines()
    assert [tuple(map(float, line.split()[:2])) for line in listed] == list(
        zip(result["time"].values, result["rise_time"].values)
    )


@pytest.mark.parametrize("example", EXAMPLES)
def test_the_filter_of_the_program_has_its_bytes(program, tmp_path, example):
    (tmp_path / "off").mkdir(), (tmp_path / "on").mkdir()
    off = Run(program, tmp_path / "off", example, filtered=False)
    on = Run(program, tmp_path / "on", example, filtered=True)
    for number, region in off.regions.items():
        outer = None
        if region.parent > 0:
            parent = off.regions[region.parent]
            outer = off.series("VRT", parent)
            if off.configuration.slope_term:
                outer = outer.copy(data=off.series("HRZ", parent).values + outer.values)
        uplift, topography = off.series("Tdr", region), off.topography(region)
        for threads in (1, 2):
            result = tidora.kajiura(uplift, topography, parent=outer, kernel="program", threads=threads)
            assert same_bits(result, on.series("Tdr", on.regions[number]))
        assert not np.array_equal(result.values, uplift.values)


def test_the_examples_are_all_that_there_are():
    found = {str(path.relative_to(ROOT / "examples")) for path in (ROOT / "examples").rglob("TdrConf*.txt")}
    assert found == set(EXAMPLES.values())
    assert all(re.search(r"^# 3\. Tolerance", (ROOT / "examples" / name).read_text(), re.M) for name in found)
