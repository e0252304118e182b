"""Fault files: columns, size, and where the elements lie."""

import math
import subprocess

import numpy as np
import pyproj
import pytest
from conftest import DATA, binary_grid

import tidora
from tidora.faults.moment import distinct_places, magnitude
from tidora.faults.outlines import utm_zone
from tidora.faults.table import guess_coord, lower_depth, upper_depth

LINE = "36 141 6000 2000 190 15 85 40000 20000 3.5"


def faults(tmp_path, text, coord="geographic"):
    (tmp_path / "fault.txt").write_text(text)
    return tidora.read_faults(tmp_path / "fault.txt", coord)


def test_latitude_stands_before_longitude_and_every_column_has_its_name_and_unit(tmp_path):
    table = faults(tmp_path, LINE + " 0 30 60 99\n")
    expected = {
        "y": (36, "degrees_north"), "x": (141, "degrees_east"), "base_offset": (6000, "m"), "depth": (2000, "m"),
        "strike": (190, "degree"), "dip": (15, "degree"), "rake": (85, "degree"), "length": (40000, "m"),
        "width": (20000, "m"), "slip": (3.5, "m"), "lag_time": (30, "s"), "duration": (60, "s"),
    }  # fmt: skip
    assert {name: (float(table[name][0]), table[name].attrs["units"]) for name in table.data_vars} == expected
    assert faults(tmp_path, LINE, "plane")["x"].attrs["units"] == "m"


TIMING = [
    ("ten columns", "", (0, 0)),
    ("eleven", " 7", (0, 0)),
    ("twelve", " 7 30", (0, 0)),
    ("thirteen", " 7 30 60", (30, 60)),
    ("twelve and a blank, which is a column of value 0", " 7 30 ", (30, 0)),
]


@pytest.mark.parametrize("tail, timing", [row[1:] for row in TIMING], ids=[row[0] for row in TIMING])
def test_the_timing_counts_when_all_thirteen_columns_are_there(tmp_path, tail, timing):
    table = faults(tmp_path, LINE + tail + "\n")
    assert (float(table["lag_time"][0]), float(table["duration"][0])) == timing


def test_comments_are_skipped_and_lines_are_counted_with_them(tmp_path):
    table = faults(tmp_path, f"# a\n{LINE}\n# b\n{LINE}")
    assert table["line"].values.tolist() == [2, 4]


BAD = [
    ("nine columns", "1 2 3 4 5 6 7 8 9\n", 1, "not 9 columns"),
    ("an empty line at the end", LINE + "\n\n", 2, "not an empty line"),
    ("a number sign behind a blank", f" # {LINE[:8]}\n", 1, "at least ten columns"),
    ("a word", LINE.replace("190", "north") + "\n", 1, "column 5 .strike. is a number, not 'north'"),
    ("a word in a column of the timing", LINE + " 0 soon 30\n", 1, "column 12 .lag_time."),
]


@pytest.mark.parametrize("text, line, rule", [row[1:] for row in BAD], ids=[row[0] for row in BAD])
def test_a_fault_file_that_breaks_a_rule_is_refused_with_line_and_rule(tmp_path, text, line, rule):
    with pytest.raises(tidora.FileError, match=rule) as failure:
        faults(tmp_path, text)
    assert failure.value.line == line


def test_a_word_in_the_column_that_is_not_used_does_not_matter(tmp_path):
    assert float(faults(tmp_path, LINE + " - 30 60\n")["duration"][0]) == 60


def test_the_tohoku_file_has_mw_9_01_for_40_gpa():
    table = tidora.read_faults(DATA / "tohoku2011_satake_geo.txt", "geographic")
    assert table.sizes["element"] == 110 and distinct_places(table) == 49
    size = tidora.seismic_moment(table, 40e9)
    assert f"{size.magnitude:.2f}" == "9.01"
    # By hand from the columns, in another way.
    rows = [line.split() for line in (DATA / "tohoku2011_satake_geo.txt").read_text().splitlines() if line[0] != "#"]
    potency = sum(float(row[7]) * float(row[8]) * float(row[9]) for row in rows)
    assert math.isclose(size.potency, potency, rel_tol=1e-12)
    assert math.isclose(size.moment, 40e9 * potency, rel_tol=1e-12)
    places = {tuple(row[:9]) for row in rows}
    assert math.isclose(size.area, sum(float(row[7]) * float(row[8]) for row in places), rel_tol=1e-12)


def test_the_magnitude_of_10_to_the_18_1_newton_metres_is_6():
    assert math.isclose(magnitude(10**18.1), 6.0, abs_tol=1e-12)
    assert math.isnan(magnitude(0.0))


def test_one_element_takes_the_depth_column_and_several_the_base_offset(tmp_path):
    one, two = faults(tmp_path, LINE), faults(tmp_path, f"{LINE}\n{LINE}")
    assert (upper_depth(one)[0].tolist(), upper_depth(one)[1]) == ([2000], "depth")
    assert (upper_depth(two)[0].tolist(), upper_depth(two)[1]) == ([6000, 6000], "base_offset")
    assert math.isclose(lower_depth(one)[0], 2000 + 20000 * math.sin(math.radians(15)))


def test_the_reference_point_is_the_near_upper_corner_and_the_element_dips_to_the_right_of_strike(tmp_path):
    # Strike north, dip 60: the lower edge lies to the east, half the width away.
    north = tidora.outlines(faults(tmp_path, "1000 2000 0 0 0 60 90 500 100 1", "plane"))[0]
    assert np.allclose(north, [[2000, 1000], [2000, 1500], [2050, 1500], [2050, 1000]])
    # Strike east: the lower edge lies to the south.
    east = tidora.outlines(faults(tmp_path, "1000 2000 0 0 90 60 90 500 100 1", "plane"))[0]
    assert np.allclose(east, [[2000, 1000], [2500, 1000], [2500, 950], [2000, 950]])


def test_geographic_outlines_have_their_length_and_strike_on_the_ellipsoid(tmp_path):
    # 140.6 E, 38 N, in zone 54: scale and convergence of the zone are known from its projection.
    table = faults(tmp_path, "38 140.6 0 0 200 12 90 50000 25000 1")
    corners = tidora.outlines(table)[0]
    azimuth, _, length = pyproj.Geod(ellps="GRS80").inv(*corners[0], *corners[1])
    zone = pyproj.Proj(proj="utm", zone=utm_zone(140.6), ellps="GRS80").get_factors(140.6, 38.0)
    assert math.isclose(length * zone.meridional_scale, 50000, rel_tol=1e-4)
    assert abs((azimuth - (200 + zone.meridian_convergence) + 180) % 360 - 180) < 0.1
    _, _, width = pyproj.Geod(ellps="GRS80").inv(*corners[0], *corners[3])
    assert math.isclose(width * zone.meridional_scale, 25000 * math.cos(math.radians(12)), rel_tol=1e-4)


def test_outlines_stay_in_the_turn_of_their_reference_point(tmp_path):
    across = tidora.outlines(faults(tmp_path, "52 179.8 0 0 90 12 90 50000 25000 1"))[0]
    assert 180 < across[1, 0] < 181


def test_outlines_of_the_globe_frame_end_where_geodesics_end(tmp_path):
    ellipsoid = pyproj.Geod(ellps="GRS80")
    table = faults(tmp_path, "38 180 0 0 200 12 90 50000 25000 1\n-70 2 0 0 200 60 90 50000 25000 1")
    corners = tidora.outlines(table, "globe")
    assert (
        np.allclose(corners[:, 0], [[180, 38], [2, -70]], rtol=0, atol=1e-12)
        and (np.abs(corners[0, :, 0] - 180) < 1).all()
    )
    for row, dip in zip(corners, (12, 60)):
        azimuth, _, length = ellipsoid.inv(*row[0], *row[1])
        assert math.isclose(azimuth % 360, 200, abs_tol=1e-9) and math.isclose(length, 50000, abs_tol=1e-6)
        azimuth, _, width = ellipsoid.inv(*row[0], *row[3])
        assert math.isclose(azimuth % 360, 290, abs_tol=1e-9)
        assert math.isclose(width, 25000 * math.cos(math.radians(dip)), abs_tol=1e-6)


def test_latitude_and_longitude_interchanged_are_refused_where_no_zone_is_there(tmp_path):
    with pytest.raises(tidora.TidoraError, match="no UTM zone 61"):
        tidora.outlines(faults(tmp_path, LINE.replace("36 141", "36 180")))


def test_the_kind_of_reference_points_is_guessed_with_a_warning(tmp_path):
    faults(tmp_path, LINE)
    with pytest.warns(tidora.TidoraWarning, match="degrees"):
        assert guess_coord(tmp_path / "fault.txt") == "geographic"
    faults(tmp_path, LINE.replace("36 141", "4e6 5e5"))
    with pytest.warns(tidora.TidoraWarning, match="metres"):
        assert guess_coord(tmp_path / "fault.txt") == "plane"


@pytest.mark.parametrize("strike", [0, 30, 135, 200, 290])
def test_the_program_breaks_the_sea_floor_along_the_upper_edge_that_is_drawn(tmp_path, program, strike):
    # A thrust whose upper edge reaches the floor: the uplift jumps across the edge from corner 0 to corner 1, up on
    # the side of the lower edge, and nowhere else along the outline.
    table = faults(tmp_path, f"50000 50000 0 0 {strike} 30 90 30000 20000 4 0 0 1\n", "plane")
    axis = np.arange(0, 100001, 500)
    binary_grid(tmp_path / "topo.bin", np.full((axis.size, axis.size), -100.0), (0.0, 0.0), 500.0)
    values = ["t", "out", "0", "0", "0", "0", "fault.txt", "-1", "0", "1", "1", "1", "a", "0", "0", "topo.bin"]
    (tmp_path / "conf.txt").write_text("".join(f"# caption\n{value}\n" for value in values))
    subprocess.run([str(program), "conf.txt"], cwd=tmp_path, check=True, capture_output=True)
    uplift = tidora.open_grid(tmp_path / "out" / "VRT_a_0000s.bin", "plane")
    corners = tidora.outlines(table)[0]
    middle = corners.mean(axis=0)
    jumps = []
    for start, end in zip(corners, np.roll(corners, -1, axis=0)):
        half = 0.5 * (start + end)
        inward = (middle - half) / np.linalg.norm(middle - half)
        inside, outside = half + 1000 * inward, half - 1000 * inward
        jumps.append(float(uplift.interp(x=inside[0], y=inside[1]) - uplift.interp(x=outside[0], y=outside[1])))
    assert jumps[0] > 1.0  # half of the vertical slip of 2 m, and more
    assert all(abs(jump) < 0.5 for jump in jumps[1:])
