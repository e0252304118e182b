"""Areas, volumes and energies against integrals that are known or done in another way."""

import math

import numpy as np
import pyproj
import pytest
from conftest import binary_grid, series, smooth

import tidora
from tidora.fields.making import make_field
from tidora.fields.measure import cell_areas, measure
from tidora.fields.shape import GridShape


def test_all_cells_of_the_earth_have_the_area_of_the_ellipsoid():
    shape = GridShape(-179.5, -89.5, 360, 180, 1.0)
    # GRS80: Moritz (2000), J. Geodesy 74, from page 128 on: authalic radius 6371007.1810 m.
    expected = 4 * math.pi * 6371007.1810**2
    assert math.isclose(360 * cell_areas(shape, "geographic").sum(), expected, rel_tol=1e-9)


def test_nodes_on_the_poles_stand_for_half_cells():
    with_poles = cell_areas(GridShape(0, -90, 360, 181, 1.0), "geographic").sum()
    without = cell_areas(GridShape(0, -89.5, 360, 180, 1.0), "geographic").sum()
    assert math.isclose(with_poles, without, rel_tol=1e-12)


@pytest.mark.parametrize("latitude", [0.0, 33.0, 43.0, 80.0])
def test_a_cell_has_the_area_of_its_polygon(latitude):
    shape = GridShape(140.0, latitude, 2, 2, 1 / 12)
    half, geod = shape.dx / 2, pyproj.Geod(ellps="GRS80")
    # Sides along the parallels by short geodesics.
    lon = np.linspace(140 - half, 140 + half, 400)
    lons = np.concatenate([lon, lon[::-1]])
    lats = np.concatenate([np.full(400, latitude - half), np.full(400, latitude + half)])
    area, _ = geod.polygon_area_perimeter(lons, lats)
    assert math.isclose(cell_areas(shape, "geographic")[0], area, rel_tol=1e-7)


def test_volume_and_energy_of_a_gaussian_hill_are_those_of_its_integrals():
    # Height a, width s: volume 2 pi s^2 a, integral of the square pi s^2 a^2. Spacing s / 4, extent 10 s: the sum over
    # nodes of a Gaussian converges faster than any power of the spacing.
    height, width = 2.0, 4000.0
    shape = GridShape(-40000.0, -40000.0, 81, 81, 1000.0)
    x, y = np.meshgrid(shape.x, shape.y)
    hill = make_field(height * np.exp(-(x**2 + y**2) / (2 * width**2)), shape, "plane", {})
    figures = measure(hill, density=1000.0, gravity=10.0)
    assert math.isclose(figures.volume, 2 * math.pi * width**2 * height, rel_tol=1e-9)
    assert math.isclose(figures.energy, 0.5 * 1e4 * math.pi * width**2 * height**2, rel_tol=1e-9)
    assert (figures.highest.value, figures.highest.x, figures.highest.y) == (2.0, 0.0, 0.0)
    assert figures.lowered == 0.0


def test_volume_and_energy_of_the_tohoku_uplift_agree_with_an_integral_over_geodesic_triangles(tohoku):
    # Another quadrature on another surface description: cells as polygons of geodesics, summed one by one.
    total = tidora.total(tidora.open_series(tohoku / "out" / "VRT_japan.txt", "geographic"))
    geod, half = pyproj.Geod(ellps="GRS80"), total.attrs["grid_spacing"] / 2
    volume = raised = squares = 0.0
    for row, latitude in enumerate(total["y"].values):
        lons = [-half, half, half, -half]
        area, _ = geod.polygon_area_perimeter(lons, [latitude - half] * 2 + [latitude + half] * 2)
        for value in total.values[row].tolist():
            volume += value * area
            raised += max(value, 0.0) * area
            squares += value * value * area
    figures = measure(total)
    # A side along a geodesic instead of a parallel bends by some 1e-7 of the height of the cell.
    assert math.isclose(figures.raised, raised, rel_tol=1e-6)
    assert math.isclose(figures.volume, volume, rel_tol=1e-5)
    assert math.isclose(figures.energy, 0.5 * 1025 * 9.8 * squares, rel_tol=1e-6)
    assert f"{figures.raised / 1e9:.1f}" == "87.8"  # 87.7 km3 on the sphere, as the example says


def test_extremes_are_found_across_blocks_with_their_places(tmp_path):
    values = np.zeros((700, 1000), np.float32)
    values[650, 3], values[10, 999] = 5, -7
    figures = measure(tidora.open_grid(binary_grid(tmp_path / "a.bin", values, (0, 0), 10.0), "plane"))
    assert (figures.highest.value, figures.highest.x, figures.highest.y) == (5, 30, 6500)
    assert (figures.lowest.value, figures.lowest.x, figures.lowest.y) == (-7, 9990, 100)
    assert (figures.raised, figures.lowered, figures.volume) == (500, 700, -200)


def test_missing_values_count_nowhere_and_are_counted(tmp_path):
    values = np.array([[1, np.nan], [-2, np.nan]], np.float32)
    figures = measure(tidora.open_grid(binary_grid(tmp_path / "a.bin", values, (0, 0), 1.0), "plane"))
    assert (figures.missing, figures.raised, figures.lowered) == (2, 1, 2)
    empty = measure(tidora.open_grid(binary_grid(tmp_path / "b.bin", values * np.nan, (0, 0), 1.0), "plane"))
    assert empty.highest is None and empty.energy == 0.0


def test_with_a_topography_only_its_wet_nodes_count(tmp_path):
    field = tidora.open_grid(binary_grid(tmp_path / "a.bin", [[1, 2], [4, 8]], (0, 0), 1.0), "plane")
    land = tidora.open_grid(binary_grid(tmp_path / "b.bin", [[-5, 5], [0, -1]], (0, 0), 1.0), "plane")
    assert measure(field, land).raised == 9
    other = tidora.open_grid(binary_grid(tmp_path / "c.bin", [[-5, 5], [0, -1]], (0, 1), 1.0), "plane")
    with pytest.raises(tidora.TidoraError, match="other nodes"):
        measure(field, other)


def test_the_energy_of_a_series_is_that_of_its_sum(tmp_path):
    layers = [smooth(6, 7, seed) for seed in (1, 2)]
    path = series(tmp_path, layers, [0, 10], [10, 10], dx=100.0, org=(0.0, 0.0))
    figures = measure(tidora.total(tidora.open_series(path, "plane")))
    expected = 0.5 * 1025 * 9.8 * 1e4 * float(((layers[0].astype(float) + layers[1]) ** 2).sum())
    assert math.isclose(figures.energy, expected, rel_tol=1e-12)
