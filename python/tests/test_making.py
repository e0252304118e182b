"""Tables of elements made from numbers, and written as fault files."""

import math

import numpy as np
import pyproj
import pytest
from conftest import DATA

import tidora

ELLIPSOID = pyproj.Geod(ellps="GRS80")
REFERENCES = {
    "top start": (0, 0), "top centre": (0.5, 0), "centroid": (0.5, 0.5),
    "bottom start": (0, 1), "bottom centre": (0.5, 1), "noaa": (0.5, 1),
}  # fmt: skip


def given_point(table, part):
    """Longitude and latitude of a point of the rectangles, laid out from their reference points with geodesics."""
    along, strike = part[0] * table["length"].values, np.radians(table["strike"].values)
    across = part[1] * table["width"].values * np.cos(np.radians(table["dip"].values))
    east, north = along * np.sin(strike) + across * np.cos(strike), along * np.cos(strike) - across * np.sin(strike)
    azimuth = np.degrees(np.arctan2(east, north))
    return ELLIPSOID.fwd(table["x"].values, table["y"].values, azimuth, np.hypot(east, north))[:2]


@pytest.mark.parametrize("reference", REFERENCES)
def test_a_rectangle_laid_out_from_the_table_has_the_given_point_where_it_was_given(reference):
    random = np.random.default_rng(1)
    count = 500
    x, y = random.uniform(-180, 360, count), np.concatenate([random.uniform(-89, 89, count - 4), [89, -89, 0, 60]])
    strike, dip = random.uniform(0, 360, count), random.uniform(0, 90, count)
    length, width = random.uniform(0, 100e3, count), random.uniform(0, 100e3, count)
    table = tidora.make_faults(x, y, 150e3, strike, dip, 90, length, width, 1, reference=reference)
    lon, lat = given_point(table, REFERENCES[reference])
    off = np.max(ELLIPSOID.inv(lon, lat, x, y)[2])
    print(f"{reference}: off by up to {off:.1e} m")
    assert off <= 1e-6
    assert np.max(np.abs(table["x"].values - x)) < 180  # in the turn in which it was given


def test_close_to_a_pole_a_point_that_no_rectangle_of_this_size_can_have_is_refused():
    # Half a degree from the pole are 56 km. Whoever goes 100 km to true east ends farther off than he began.
    assert tidora.make_faults(0, 89.5, 0, 0, 0, 0, 200e3, 0, 1, reference="top centre")["y"][0] < 89.5
    with pytest.raises(tidora.TidoraError, match="y 89.5: element 0 is too close to a pole"):
        tidora.make_faults(0, 89.5, 0, 90, 0, 0, 200e3, 0, 1, reference="top centre")


def test_on_a_plane_the_rectangle_is_laid_out_with_sines_and_cosines():
    for reference, corner in (("bottom start", 3), ("top start", 0)):
        table = tidora.make_faults(10e3, 20e3, 9e3, 30, 40, 90, 5e3, 8e3, 1, coord="plane", reference=reference)
        assert np.allclose(tidora.outlines(table)[0, corner], [10e3, 20e3], atol=1e-8)
    corners = tidora.outlines(tidora.make_faults(1, 2, 9e3, 30, 40, 90, 5e3, 8e3, 1, coord="plane", reference="noaa"))
    assert np.allclose(corners[0, 2:].mean(axis=0), [1, 2], atol=1e-8)


DEPTHS = [
    # reference, depth of the upper edge for dip 30, width 10 km and a given depth of 12 km
    ("top start", 12e3), ("top centre", 12e3), ("noaa", 12e3),
    ("centroid", 9.5e3), ("bottom start", 7e3), ("bottom centre", 7e3),
]  # fmt: skip


@pytest.mark.parametrize("reference, expected", DEPTHS)
def test_the_depth_is_that_of_the_reference_point_but_for_noaa(reference, expected):
    table = tidora.make_faults(140, 38, 12e3, 200, 30, 90, 20e3, 10e3, 1, reference=reference)
    assert math.isclose(float(table["depth"][0]), expected, rel_tol=1e-12)
    assert float(table["base_offset"][0]) == float(table["depth"][0])


def test_an_upper_edge_above_the_surface_is_refused_and_one_at_the_surface_is_not():
    surface = tidora.make_faults(
        140, 38, 1e4 * math.sin(0.3), 0, math.degrees(0.3), 0, 1, 1e4, 1, reference="bottom start"
    )
    assert float(surface["depth"][0]) == 0.0
    with pytest.raises(tidora.TidoraError, match="depth 1000 m puts the upper edge of element 1 4000 m above"):
        tidora.make_faults(140, 38, [9e3, 1e3], 0, 30, 0, 1, 1e4, 1, reference="bottom start")


def test_numbers_and_arrays_are_broadcast_and_the_table_is_that_of_a_fault_file(tmp_path):
    table = tidora.make_faults([[140], [141]], [38, 39, 40], 1e4, 200, 10, 90, 2e4, 1e4, 1)
    assert table["x"].values.tolist() == [140, 140, 140, 141, 141, 141]
    assert table["y"].values.tolist() == [38, 39, 40, 38, 39, 40]
    (tmp_path / "f.txt").write_text("36 141 6000 2000 190 15 85 40000 20000 3.5")
    read = tidora.read_faults(tmp_path / "f.txt", "geographic")
    assert list(table.data_vars) == list(read.data_vars) and table.attrs["coord"] == "geographic"
    for name in table.data_vars:
        assert table[name].attrs == read[name].attrs and table[name].dtype == np.float64
    assert (table["lag_time"].values == 0).all() and (table["duration"].values == 0).all()


def test_a_table_comes_back_from_a_fault_file_with_every_bit(tmp_path):
    random = np.random.default_rng(2)
    table = tidora.make_faults(*random.uniform(1, 80, (9, 50)) / 3, *random.uniform(0, 300, (2, 50)), reference="noaa")
    tidora.write_faults(table, tmp_path / "f.txt")
    back = tidora.read_faults(tmp_path / "f.txt", "geographic")
    for name in table.data_vars:
        assert np.array_equal(table[name].values, back[name].values), name
    assert (tmp_path / "f.txt").read_text().startswith("# y x ")
    example = tidora.read_faults(DATA / "tohoku2011_satake_geo.txt", "geographic")
    tidora.write_faults(example, tmp_path / "g.txt")
    back = tidora.read_faults(tmp_path / "g.txt", "geographic").drop_vars("line")
    assert back.equals(example.drop_vars("line"))


def test_the_co_ordinates_of_a_fault_file_are_guessed_with_a_warning_when_nobody_says_them(tmp_path):
    (tmp_path / "f.txt").write_text("36 141 6000 2000 190 15 85 40000 20000 3.5")
    with pytest.warns(tidora.TidoraWarning, match="taken as degrees .say coord=geographic"):
        assert tidora.read_faults(tmp_path / "f.txt").attrs["coord"] == "geographic"


def test_a_fault_file_gives_the_start_of_the_upper_edge_and_nothing_else(tmp_path):
    (tmp_path / "f.txt").write_text("36 141 6000 2000 190 15 85 40000 20000 3.5")
    assert tidora.read_faults(tmp_path / "f.txt", "geographic", reference="top start").sizes["element"] == 1
    with pytest.raises(tidora.TidoraError, match="reference is top start in a fault file, not centroid"):
        tidora.read_faults(tmp_path / "f.txt", "geographic", reference="centroid")
