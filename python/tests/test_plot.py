"""tdr plot: what stands on the pictures, and that they are there."""

import re

import matplotlib
import numpy as np
import pytest
import xarray as xr
from conftest import DATA, binary_grid, series, smooth, tdr

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

import tidora  # noqa: E402
from tidora.fields.making import make_field  # noqa: E402
from tidora.fields.profile import profile  # noqa: E402
from tidora.fields.shape import GridShape  # noqa: E402
from tidora.plot.extent import aspect, edges, thinned  # noqa: E402
from tidora.plot.figures import draw_maps  # noqa: E402
from tidora.plot.frames import draw_frames  # noqa: E402
from tidora.plot.limits import colour_limit, nice, round_up  # noqa: E402
from tidora.plot.maps import draw_map, metres  # noqa: E402
from tidora.plot.overlay import Overlay  # noqa: E402
from tidora.plot.section import draw_section  # noqa: E402
from tidora.plot.titles import title_of  # noqa: E402


def plane(values, org=(0.0, 0.0), dx=1000.0, kind="plane"):
    values = np.asarray(values, np.float32)
    return make_field(values, GridShape(*org, values.shape[1], values.shape[0], dx), kind, {"units": "m"})


def drawn(field, overlay=Overlay(), limit=2.0):
    figure, axes = plt.subplots()
    image = draw_map(axes, field, limit, overlay)
    figure.canvas.draw()
    plt.close(figure)
    return axes, image


def test_the_colours_are_centred_on_zero_and_end_at_the_limit():
    axes, image = drawn(plane(smooth(10, 12)), limit=2.5)
    assert image.get_clim() == (-2.5, 2.5)
    red, green, blue, _ = image.to_rgba(0.0)
    assert max(red, green, blue) - min(red, green, blue) < 0.02 and red > 0.95  # nearly white
    up, down = image.to_rgba(2.0), image.to_rgba(-2.0)
    assert up[0] > up[2] + 0.3 and down[2] > down[0] + 0.3  # red above, blue below


def test_a_node_is_drawn_around_its_place_with_the_south_below():
    values = np.zeros((3, 4))
    values[0, 3] = 1
    axes, image = drawn(plane(values, (100.0, 200.0), 10.0))
    assert tuple(image.get_extent()) == (95, 135, 195, 225)
    assert image.origin == "lower" and image.get_array()[0, 3] == 1
    assert axes.get_xlim() == (95, 135) and axes.get_ylim() == (195, 225)


def test_the_aspect_is_true_at_the_middle_latitude():
    geographic = plane(smooth(5, 5), (140.0, 58.0), 1.0, "geographic")  # middle latitude 60: cosine 0.5
    assert abs(aspect(geographic) - 2.0) < 1e-12
    assert drawn(geographic)[0].get_aspect() == aspect(geographic)
    assert aspect(plane(smooth(5, 5))) == 1.0


def test_axes_are_labelled_in_degrees_with_sides_or_in_kilometres():
    axes, _ = drawn(plane(smooth(5, 5), (178.0, -2.0), 1.0, "geographic"))
    labels = {text.get_text() for text in axes.get_xticklabels()} | {text.get_text() for text in axes.get_yticklabels()}
    assert {"179°E", "179°W", "1°S", "0°", "1°N"} <= labels
    axes, _ = drawn(plane(smooth(5, 5), (0.0, 0.0), 25000.0))
    assert axes.get_xlabel() == "x, km" and "50" in {text.get_text() for text in axes.get_xticklabels()}


def test_the_extremes_are_marked_with_their_values():
    values = np.zeros((9, 9))
    values[2, 3], values[6, 5] = 1.234, -0.5
    axes, _ = drawn(plane(values))
    texts = [text.get_text() for text in axes.texts]
    assert "1.23 m" in texts and "\u22120.50 m" in texts and metres(-8967.0) == "\u22128967 m"
    marks = {
        line.get_marker(): (line.get_xdata()[0], line.get_ydata()[0])
        for line in axes.lines
        if len(line.get_xdata()) == 1
    }
    assert marks == {"^": (3000, 2000), "v": (5000, 6000)}


def test_the_scale_bar_has_the_length_it_says():
    axes, _ = drawn(plane(smooth(50, 100), (138.0, 33.0), 0.1, "geographic"))
    label = next(text for text in axes.texts if text.get_text().endswith(" km"))
    bar = next(line for line in axes.lines if len(line.get_xdata()) == 2)
    import pyproj

    _, _, length = pyproj.Geod(ellps="GRS80").inv(
        bar.get_xdata()[0], bar.get_ydata()[0], *[bar.get_xdata()[1], bar.get_ydata()[1]]
    )
    assert abs(length / 1000 / float(label.get_text().split()[0]) - 1) < 0.01
    assert [nice(value) for value in (1, 1.9, 2, 4.99, 7, 12, 250)] == [1, 1, 2, 2, 5, 10, 200]


def test_the_upper_edges_are_drawn_thick_where_the_outlines_have_them(tmp_path):
    (tmp_path / "f.txt").write_text("2000 3000 0 0 0 60 90 4000 2000 1\n2000 5000 0 0 90 60 90 1000 2000 1\n")
    faults = tidora.read_faults(tmp_path / "f.txt", "plane")
    axes, _ = drawn(plane(smooth(10, 10)), Overlay(faults=faults))
    thin, thick = sorted(axes.collections, key=lambda lines: lines.get_linewidth()[0])
    corners = tidora.outlines(faults)
    assert {tuple(map(tuple, np.round(line, 6))) for line in thick.get_segments()} == {
        tuple(map(tuple, np.round(element[:2], 6))) for element in corners
    }
    assert all(len(line) == 5 for line in thin.get_segments()) and len(thin.get_segments()) == 2
    assert thick.get_linewidth()[0] > 2 * thin.get_linewidth()[0]


def test_the_coast_is_the_contour_of_zero_of_the_topography():
    land = plane(np.tile(np.linspace(-450, 450, 10), (10, 1)))  # 0 between columns 4 and 5
    axes, _ = drawn(plane(smooth(10, 10)), Overlay(topography=land))
    contours = [path.vertices for lines in axes.collections for path in lines.get_paths() if len(path.vertices)]
    coast = [vertices for vertices in contours if np.allclose(vertices[:, 0], 4500)]
    assert len(coast) == 1 and np.ptp(coast[0][:, 1]) == 9000


def test_overlays_of_another_kind_of_coordinates_are_refused():
    with pytest.raises(tidora.TidoraError, match="topography has plane co-ordinates, the field geographic"):
        Overlay(topography=plane(smooth(3, 3))).check(plane(smooth(3, 3), (140, 30), 0.1, "geographic"))


def test_the_colours_end_at_the_largest_amount_unless_it_stands_out():
    even = plane(np.linspace(-3, 2, 400).reshape(20, 20))
    assert colour_limit([even]) == 3.0
    spike = even.copy()
    spike[0, 0] = 40.0
    assert colour_limit([spike]) == 3.0
    assert colour_limit([plane(np.zeros((3, 3)))]) == 1.0
    assert [round_up(value) for value in (1.0, 1.2, 2.0, 7, 11)] == [1, 1.5, 2, 8, 15]


def test_of_a_grid_of_many_nodes_every_second_one_is_drawn():
    field = plane(np.zeros((3, 4001)))
    assert dict(thinned(field).sizes) == {"y": 3, "x": 1334}
    assert edges(thinned(field))[0] == -1500.0


def test_a_section_has_the_values_of_the_plane_that_it_cuts():
    shape = GridShape(0.0, 0.0, 50, 40, 1000.0)
    x, y = np.meshgrid(shape.x, shape.y)
    field = make_field((0.002 * x - 0.001 * y).astype(np.float32), shape, "plane", {})
    distance, values = profile(field, (1000.0, 2000.0, 41000.0, 32000.0))
    assert abs(distance[-1] - 50000) < 1e-6
    along = distance / 50000
    assert np.allclose(values, 0.002 * (1000 + 40000 * along) - 0.001 * (2000 + 30000 * along), atol=1e-4)
    outside = profile(field, (-1000.0, 0.0, 1000.0, 0.0))[1]
    assert np.isnan(outside[0]) and not np.isnan(outside[-1])


SIGNATURES = {".png": rb"\x89PNG\r\n", ".pdf": rb"%PDF-", ".svg": rb"<\?xml"}


@pytest.mark.parametrize("ending", SIGNATURES)
def test_a_picture_has_the_format_of_its_ending_and_the_same_bytes_every_time(tmp_path, ending):
    for name in ("a", "b"):
        draw_maps([plane(smooth(10, 12))], tmp_path / (name + ending))
    first, second = ((tmp_path / (name + ending)).read_bytes() for name in ("a", "b"))
    assert re.match(SIGNATURES[ending], first)
    assert first == second


def test_the_picture_of_the_tohoku_uplift_shows_its_colours(tohoku, tmp_path):
    picture = tmp_path / "tohoku.png"
    result = tdr("plot", "out/VRT_japan.txt", "--coord", "geographic", "--topo", DATA / "tohoku_geo_5min.txt",
                 "--fault", DATA / "tohoku2011_satake_geo.txt", "-o", picture, cwd=tohoku)  # fmt: skip
    assert result.stdout == f"{picture}\n" and result.stderr == ""
    pixels = plt.imread(picture)[:, :, :3]
    map_part = pixels[:, : int(0.8 * pixels.shape[1])]
    red = (map_part[..., 0] > 0.7) & (map_part[..., 2] < 0.45)
    blue = (map_part[..., 2] > 0.7) & (map_part[..., 0] < 0.45)
    green = np.abs(map_part - np.array([0x1F, 0x5F, 0x3A]) / 255).max(axis=-1) < 0.05
    assert pixels.shape[0] > 800 and pixels.shape[1] > 800
    assert red.sum() > 500 and blue.sum() > 50 and green.sum() > 1000
    # The uplift lies east of the coast, right of the middle and above it.
    rows, columns = np.nonzero(red)
    assert 0.4 < columns.mean() / map_part.shape[1] < 0.75


def test_frames_show_every_interval_and_the_sum_up_to_it(tmp_path, monkeypatch):
    layers = [np.full((3, 4), value) for value in (1.0, 2.0, -4.0)]
    field = tidora.open_series(series(tmp_path, layers, [0, 30, 60], [30, 30, 30], dx=100.0), "plane")
    seen = []
    original = draw_map
    monkeypatch.setattr(
        "tidora.plot.frames.draw_map",
        lambda axes, shown, limit, overlay: (
            seen.append((float(shown[0, 0]), limit)),
            original(axes, shown, limit, overlay),
        )[1],
    )
    names = draw_frames(field, tmp_path / "f.png")
    assert [name.name for name in names] == ["f_0000s.png", "f_0030s.png", "f_0060s.png"]
    assert all(name.read_bytes().startswith(b"\x89PNG") for name in names)
    assert [value for value, _ in seen] == [1, 1, 2, 3, -4, -1]
    assert len({limit for _, limit in seen}) == 1
    draw_frames(field, tmp_path / "f.pdf")
    assert len(re.findall(rb"/Type /Page\b", (tmp_path / "f.pdf").read_bytes())) == 3
    assert sorted(entry.suffix for entry in tmp_path.iterdir() if entry.name.startswith(("f", ".f"))) == [
        ".pdf", ".png", ".png", ".png"]  # fmt: skip


def test_a_snapshot_and_several_files_and_a_section_are_drawn(tmp_path):
    path = series(tmp_path, [smooth(6, 7, seed) for seed in (1, 2)], [0, 30], [30, 30])
    for words in (["--snapshot", "30"], [path, path], ["--section", "138,33,138.4,33.3"],
                  ["--section", "138,33,138.4,33.3", "--topo", tmp_path / "VRT_a_0000s.bin"]):  # fmt: skip
        picture = tmp_path / "p.png"
        picture.unlink(missing_ok=True)
        tdr("plot", path, *words, "--coord", "geographic", "-o", picture)
        assert picture.read_bytes().startswith(b"\x89PNG")


WRONG = [
    (["-o", "p.jpg"], 2, "a picture ends in"),
    (["-o", "p.png", "--snapshot", "7"], 1, "no interval starts at 7 s; there are 0"),
    (["-o", "p.png", "--section", "1,2,3"], 2, "x0,y0,x1,y1"),
    (["-o", "p.png", "--section", "1,2,3,4"], 1, "does not touch the grid"),
    (["-o", "p.png", "--frames", "--section", "1,2,3,4"], 2, "exclude"),
    ([], 2, "required"),
]


@pytest.mark.parametrize("words, status, message", WRONG)
def test_what_cannot_be_drawn_is_said(tmp_path, words, status, message):
    path = series(tmp_path, [smooth(6, 7)], [0], [30])
    assert message in tdr("plot", path, "--coord", "geographic", *words, status=status, cwd=tmp_path).stderr
    assert not (tmp_path / "p.png").exists()


def test_frames_of_a_single_grid_are_refused(tmp_path):
    with pytest.raises(tidora.TidoraError, match="needs a series"):
        draw_frames(tidora.open_grid(binary_grid(tmp_path / "a.bin", smooth(3, 3)), "plane"), tmp_path / "f.png")


def test_a_section_of_no_length_is_refused(tmp_path):
    with pytest.raises(tidora.TidoraError, match="two different ends"):
        draw_section(plane(smooth(5, 5)), tmp_path / "s.png", (100.0, 100.0, 100.0, 100.0))


def test_the_title_of_a_sum_that_comes_from_no_file_begins_with_the_sum():
    attrs = {"long_name": "eta", "intervals": 2, "time_span": (0.0, 60.0)}
    field = xr.DataArray(np.zeros((2, 2)), dims=("y", "x"), attrs=attrs)
    assert title_of(field) == "eta\nsum of 2 intervals, 0 s to 60 s"
    assert title_of(field.assign_attrs(source_file="a.nc")) == "eta\na.nc: sum of 2 intervals, 0 s to 60 s"


def test_outlines_are_drawn_in_the_turn_of_the_map(tmp_path):
    table = tidora.make_faults(-70.5, -24, 1e4, 0, 20, 90, 5e4, 3e4, 1)
    for west in (-71.0, 289.0):
        _, axes = plt.subplots()
        draw_map(axes, plane(smooth(9, 9), (west, -25.0), 0.25, "geographic"), 1.0, Overlay(None, table, "globe"))
        drawn = np.concatenate([path.vertices for each in axes.collections for path in each.get_paths()])
        assert (drawn[:, 0] > west).all() and (drawn[:, 0] < west + 2).all()
        plt.close("all")
