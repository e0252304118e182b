"""The figures of examples/ensemble by sums that share nothing with those of the ensemble: by hand from the stored
responses, and from sources computed for some scenarios themselves."""

import csv
import os
import subprocess
import sys

import matplotlib.pyplot as plt
import numpy as np
import pytest
import xarray as xr
import zarr
from conftest import ROOT
from pyproj import Geod
from test_docs import alike

import tidora

FOLDER = ROOT / "examples" / "ensemble"
MEAN_SQUARE = 0.5 * 1025 * 9.8
"""J/m4: energy of a squared height on an area."""


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    """The folder of the results, and what was printed."""
    out = tmp_path_factory.mktemp("ensemble") / "out"
    result = subprocess.run(
        [FOLDER / "run", "1000", out],
        env={**os.environ, "TIDORA_PYTHON": sys.executable},
        capture_output=True,
        text=True,
        check=False,
    )
    assert result.returncode == 0, result.stdout + result.stderr
    return out, result.stdout.replace(f"{out}/", "out/")


@pytest.fixture(scope="module")
def run(made):
    """The store of the run, in memory."""
    return xr.open_zarr(made[0] / "run.zarr").load()


@pytest.fixture(scope="module")
def units():
    """The rows of the unit sources, read by hand."""
    with open(FOLDER / "data" / "noaa_unit_sources.txt", encoding="utf-8") as file:
        rows = [[word.strip() for word in row] for row in csv.reader(file) if not row[0].startswith("#")]
    wanted = {f"kisz{row}{number}" for row in "baz" for number in range(32)}
    chosen = np.array([row[2:] for row in rows if row[0] in wanted], float)
    assert len(chosen) == len(wanted) == 96
    return chosen


def slips(run, number):
    """Units, slip and rake of a scenario."""
    own = slice(int(run["indptr"][number]), int(run["indptr"][number + 1]))
    return run["unit"].values[own], run["slip"].values[own], run["rake"].values[own]


def bilinear(field, x, y):
    """float64, of the four nodes around."""
    i, j = (int(np.searchsorted(field[axis].values, at)) - 1 for axis, at in (("x", x), ("y", y)))
    u, v = ((at - field[axis].values[n]) * 6 for axis, at, n in (("x", x, i), ("y", y, j)))
    at = field.values[j : j + 2, i : i + 2].astype(float)
    return (1 - v) * ((1 - u) * at[0, 0] + u * at[0, 1]) + v * ((1 - u) * at[1, 0] + u * at[1, 1])


def test_the_example_prints_what_its_page_shows(made):
    page = (FOLDER / "README.md").read_text()
    assert page.split("```text\n$ ./run\n")[1].split("```")[0] == made[1]


def test_its_picture_is_the_one_that_is_shown(made):
    assert alike(plt.imread(made[0] / "heights.png"), plt.imread(ROOT / "docs" / "ensemble.png"))


def test_magnitudes_follow_the_law_and_slips_have_their_moments(run, units):
    magnitude = run["magnitude"].values
    for level in (8.6, 8.75, 8.9):
        part = (10 ** (9.0 - level) - 1) / (10 ** (9.0 - 8.5) - 1)
        assert abs(np.count_nonzero(magnitude > level) - 1000 * part) <= 1
    areas = units[:, 6] * units[:, 7] * 1e6
    for number in range(1000):
        unit, slip, rake = slips(run, number)
        assert set(rake) == {90.0} and slip.min() >= 0
        assert (40e9 * areas[unit] * slip).sum() == pytest.approx(10 ** (1.5 * magnitude[number] + 9.1), rel=1e-9)


def test_heights_at_the_points_are_sums_of_the_stored_responses(made, run):
    store = zarr.open(str(made[0] / "units.zarr"), mode="r")
    x, y, dip = store["x"][:], store["y"][:], 1
    weights = np.zeros((1000, 96))
    for number in range(1000):
        unit, slip, _ = slips(run, number)
        np.add.at(weights[number], unit, slip)
    for point in range(8):
        i, j = (
            np.searchsorted(x, run["point_x"].values[point]) - 1,
            np.searchsorted(y, run["point_y"].values[point]) - 1,
        )
        around = store["response"][:, dip, j : j + 2, i : i + 2].astype(float)
        corner = xr.DataArray(around, {"y": y[j : j + 2], "x": x[i : i + 2]}, ("unit", "y", "x"))
        response = [bilinear(each, run["point_x"].values[point], run["point_y"].values[point]) for each in corner]
        heights = weights @ np.array(response)
        assert np.abs(heights - run["eta"].values[:, point]).max() <= 1e-5 * np.abs(heights).max()
        shown = made[1].splitlines()[-8 + point].split()
        parts = [float(word) for word in shown[1:] if word not in ("%", "m")]
        assert shown[0] == str(run["point_name"].values[point])
        assert parts[:3] == [round(np.count_nonzero(heights > level) / 10, 1) for level in (0.5, 2.0, 5.0)]
        assert parts[3:] == pytest.approx([heights.min(), heights.max()], abs=6e-3)


@pytest.mark.parametrize("number", [0, 500, 999])
def test_the_figures_of_a_scenario_are_those_of_its_own_source(run, units, number):
    unit, slip, rake = slips(run, number)
    lon, lat, _, strike, dip, depth, length, width, _ = units[unit].T
    faults = tidora.make_faults(
        lon, lat, depth * 1e3, strike, dip, rake, length * 1e3, width * 1e3, slip, reference="noaa"
    )
    floor = tidora.open_grid(FOLDER / "data" / "pacific_etopo20.nc", region=(134, 170, 30, 60), spacing=1 / 6)
    eta = tidora.source(faults, floor, slope=True, kajiura=True)["eta"]
    own, near = run.isel(scenario=number), 2e-5 * float(abs(eta).max())
    assert own["reason"].item() == ""
    for name, extreme in (("highest", eta.max()), ("lowest", eta.min())):
        assert float(own[name]) == pytest.approx(float(extreme), abs=near)
        there = eta.sel(x=own[f"{name}_x"], y=own[f"{name}_y"], method="nearest")
        assert float(there) == pytest.approx(float(extreme), abs=near)
    for point in range(8):
        expected = bilinear(eta, float(run["point_x"][point]), float(run["point_y"][point]))
        assert float(own["eta"][point]) == pytest.approx(expected, abs=near)
    values, geod = eta.values.astype(float), Geod(ellps="GRS80")
    edges = eta.y.values[:, None] + np.array([-1 / 12, 1 / 12])
    areas = [abs(geod.polygon_area_perimeter(*_cell(150.0, south, north))[0]) for south, north in edges]
    for name, density in (("raised", values.clip(min=0)), ("lowered", -values.clip(max=0))):
        assert float(own[name]) == pytest.approx((density.sum(1) * areas).sum(), rel=1e-4)
    assert float(own["energy"]) == pytest.approx(MEAN_SQUARE * ((values**2).sum(1) * areas).sum(), rel=1e-4)


def _cell(lon, south, north):
    """The edge of a cell of a sixth of a degree; its parallels as polygons of many short geodesics."""
    steps = np.linspace(lon, lon + 1 / 6, 33)
    return [*steps, *steps[::-1]], [*np.full(33, south), *np.full(33, north)]
