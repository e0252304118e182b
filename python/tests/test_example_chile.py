"""The figures of examples/chile1995 by a computation that shares only the dislocation formulas with the engine.

Places by geodesics and the plane frame, node by node; slopes by differences over geodesic lengths; the filter as the
integral of Kajiura's kernel over the uplift, its series summed to the end.
"""

import numpy as np
import pytest
from conftest import ROOT
from pyproj import Geod

import tidora

CHILE = ROOT / "examples" / "chile1995"
GEOD = Geod(ellps="GRS80")
NODES = [(241, 179), (221, 170), (150, 200), (245, 188), (200, 250), (120, 100), (260, 150), (90, 300), (170, 220)]
"""Columns and rows: the lowest and the highest node are among what they surround."""


@pytest.fixture(scope="module")
def made():
    """Elements, topography and sea of the example."""
    with pytest.warns(tidora.TidoraWarning, match="90 rows"):
        faults = tidora.read_faults(CHILE / "data" / "chile1995_neic.fsp")
    floor = tidora.open_grid(CHILE / "data" / "chile_etopo5.nc", region=(-74, -68, -27, -20), spacing=1 / 60)
    return faults, floor, tidora.source(faults, floor, slope=True, kajiura=True)


def displacement(faults, lon, lat, height):
    """East, north and up at a node, m: on a plane about the node, where every element has its geodesic's length and its
    angle with it."""
    count = faults.sizes["element"]
    ahead, back, way = GEOD.inv(faults["x"].values, faults["y"].values, np.full(count, lon), np.full(count, lat))
    arriving = np.radians(back + 180.0)
    plane = faults.copy()
    plane.attrs["coord"] = "plane"
    plane["x"] = "element", -way * np.sin(arriving)
    plane["y"] = "element", -way * np.cos(arriving)
    plane["strike"] = "element", faults["strike"].values + back + 180.0 - ahead
    plane["base_offset"] = "element", np.maximum(0.0, faults["base_offset"].values + height)
    u = tidora.deform(plane, tidora.points([0.0], [0.0], coord="plane"), components=("e", "n", "z"))
    return [float(u[name][0]) for name in ("ue", "un", "uz")]


def kernel(rho, terms=400):
    """Kajiura's kernel, the series summed to the end: the mean of its last two partial sums converges."""
    odd = 2 * np.arange(terms) + 1
    parts = (-1.0) ** np.arange(terms) * odd / (odd**2 + rho[..., None] ** 2) ** 1.5
    return (parts.sum(-1) - 0.5 * parts[..., -1]) / np.pi


@pytest.mark.parametrize("ix, iy", NODES)
def test_displacement_and_slope_term_are_those_of_geodesics(made, ix, iy):
    faults, floor, sea = made
    lon, lat = float(floor.x[ix]), float(floor.y[iy])
    east, north, up = displacement(faults, lon, lat, float(floor[iy, ix]))
    largest = float(abs(sea["uz"]).max())
    assert abs(float(sea["uz"][iy, ix]) - up) <= 2e-5 * largest
    _, _, along = GEOD.inv(float(floor.x[ix - 1]), lat, float(floor.x[ix + 1]), lat)
    _, _, across = GEOD.inv(lon, float(floor.y[iy - 1]), lon, float(floor.y[iy + 1]))
    rise = float(floor[iy, ix + 1] - floor[iy, ix - 1]) / along, float(floor[iy + 1, ix] - floor[iy - 1, ix]) / across
    expected = -(east * rise[0] + north * rise[1]) if float(floor[iy, ix]) < -50.0 else 0.0
    assert abs(float(sea["slope"][iy, ix]) - expected) <= 1e-4 * float(abs(sea["slope"]).max())


@pytest.mark.parametrize("ix, iy", [(150, 200), (120, 100), (90, 300), (170, 220), (185, 180)])
def test_the_sea_surface_is_the_integral_of_kajiuras_kernel_over_the_uplift(made, ix, iy):
    _, floor, sea = made
    raised = (sea["uz"] + sea["slope"]).values
    water = -float(floor[iy, ix])
    assert water > 1000.0
    lon, lat = float(floor.x[ix]), float(floor.y[iy])
    _, _, width = GEOD.inv(lon - 1 / 120, lat, lon + 1 / 120, lat)
    _, _, height = GEOD.inv(lon, lat - 1 / 120, lon, lat + 1 / 120)
    # The uplift is constant on the pixel of a node; each is cut into small ones, for which the kernel is.
    cut, reach = 24, int(np.ceil(9.0 * water / min(width, height)))
    steps = (np.arange((2 * reach + 1) * cut) + 0.5) / cut - reach - 0.5
    rho = np.hypot(*np.meshgrid(steps * width / water, steps * height / water))
    table = np.linspace(0.0, rho.max(), 20001)
    weights = np.interp(rho, table, kernel(table)) * width * height / (cut * water) ** 2
    weights = weights.reshape(2 * reach + 1, cut, 2 * reach + 1, cut).sum((1, 3))
    assert weights.sum() == pytest.approx(1.0, abs=2e-3)
    expected = (weights * raised[iy - reach : iy + reach + 1, ix - reach : ix + reach + 1]).sum()
    assert abs(float(sea["eta"][iy, ix]) - expected) <= 3e-3 * np.abs(raised).max()


def test_the_figures_of_the_page_are_those_of_the_field_on_the_ellipsoid(made):
    _, _, sea = made
    eta = sea["eta"].values.astype(float)
    lengths = [GEOD.inv(-71.0, lat, -71.0 + 1 / 60, lat)[2] for lat in sea.y.values]
    heights = [GEOD.inv(-71.0, lat - 1 / 120, -71.0, lat + 1 / 120)[2] for lat in sea.y.values]
    areas = np.array(lengths) * np.array(heights)
    volume = (eta * areas[:, None]).sum() / 1e9
    shown = (CHILE / "README.md").read_text()
    stated = float(shown.split("volume ")[1].split()[0])
    assert volume == pytest.approx(stated, rel=1e-3)
    assert f"highest {eta.max():.4g} m" in shown and f"lowest {eta.min():.4g} m" in shown
