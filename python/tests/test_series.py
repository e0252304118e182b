"""Series: a list file and what it names."""

import shutil

import numpy as np
import pytest
from conftest import binary_grid, series, smooth

import tidora


def three(folder, **options):
    layers = [smooth(4, 5, seed) for seed in range(3)]
    return layers, series(folder, layers, [60, 0, 30], [30, 30, 15], **options)


def test_snapshots_stand_in_order_of_time_whatever_the_order_of_the_list(tmp_path):
    layers, path = three(tmp_path)
    field = tidora.open_series(path, "geographic")
    assert field.dims == ("time", "y", "x") and field.dtype == np.float32
    assert field["time"].values.tolist() == [0, 30, 60]
    assert field["rise_time"].values.tolist() == [30, 15, 30]
    assert field["time"].attrs["units"] == field["rise_time"].attrs["units"] == "s"
    assert np.array_equal(field.values, np.stack([layers[1], layers[2], layers[0]]))
    assert field.attrs["long_name"] == "vertical deformation of the sea floor"


def test_the_sum_is_formed_in_double_precision(tmp_path):
    layers = [np.full((2, 3), value, np.float32) for value in (1e8, 1.0, -1e8)]
    field = tidora.open_series(series(tmp_path, layers, [0, 1, 2], [1, 1, 1]), "geographic")
    total = tidora.total(field)
    assert (total.values == 1.0).all()
    assert total.attrs["time_span"] == (0.0, 3.0) and total.attrs["intervals"] == 3


def test_any_part_of_a_series_is_what_the_whole_has_there(tmp_path):
    layers, path = three(tmp_path)
    field, whole = tidora.open_series(path, "geographic"), np.stack([layers[1], layers[2], layers[0]])
    for part in (np.s_[0], np.s_[-1, 2], np.s_[1:, ::2, 1:4], np.s_[::-2, ::-3, -1], np.s_[1:1], np.s_[:, 3:1]):
        assert np.array_equal(field[part].values, whole[part]), part


def test_the_snapshots_are_found_when_the_folder_has_moved(tmp_path):
    _, path = three(tmp_path, listed_in="/somewhere/else")
    shutil.move(path.parent, tmp_path.parent / "moved")
    assert tidora.open_series(tmp_path.parent / "moved" / path.name, "geographic").sizes["time"] == 3


def test_the_snapshots_beside_the_list_go_before_those_of_the_same_path_elsewhere(tmp_path, monkeypatch):
    (tmp_path / "old" / "out").mkdir(parents=True)
    (tmp_path / "new").mkdir()
    series(tmp_path / "old" / "out", [np.zeros((2, 2))], [0], [1])
    path = series(tmp_path / "new", [np.ones((2, 2))], [0], [1])
    monkeypatch.chdir(tmp_path / "old")
    assert (tidora.open_series(path, "geographic").values == 1).all()


def test_one_snapshot_is_chosen_by_its_start(tmp_path):
    layers, path = three(tmp_path)
    field = tidora.open_series(path, "geographic")
    assert np.array_equal(tidora.snapshot(field, 60).values, layers[0])
    with pytest.raises(tidora.TidoraError, match="no interval starts at 45 s; there are 0, 30, 60"):
        tidora.snapshot(field, 45)


def test_numbers_that_fill_their_columns_are_told_apart(tmp_path):
    binary_grid(tmp_path / "VRT_a_0000s.bin", smooth(2, 2))
    (tmp_path / "VRT_a.txt").write_text("%-16f%-16f%s\n" % (1234567890.5, 1234567890.25, "VRT_a_0000s.bin"))
    field = tidora.open_series(tmp_path / "VRT_a.txt", "geographic")
    assert field["time"].values.tolist() == [1234567890.5] and field["rise_time"].values.tolist() == [1234567890.25]


BAD = [
    ("an empty list", "", None, "no rupture interval"),
    ("a path alone", "VRT_a_0000s.bin\n", 1, "start, length and path"),
    ("no path", "0.000000        30.000000       \n", 1, "start, length and path"),
    ("an empty line", "0.000000        30.000000       VRT_a_0000s.bin\n\n", 2, "start, length and path"),
    ("a file that is not there", "0.000000        30.000000       VRT_a_0030s.bin\n", 1, "neither beside"),
    (
        "a file named twice",
        "0.200000        30.000000       VRT_a_0000s.bin\n0.900000        30.000000       VRT_a_0000s.bin\n",
        2,
        "names VRT_a_0000s.bin as line 1 does",
    ),
]


@pytest.mark.parametrize("text, line, rule", [row[1:] for row in BAD], ids=[row[0] for row in BAD])
def test_a_list_that_breaks_a_rule_is_refused_with_line_and_rule(tmp_path, text, line, rule):
    binary_grid(tmp_path / "VRT_a_0000s.bin", smooth(2, 2))
    (tmp_path / "VRT_a.txt").write_text(text)
    with pytest.raises(tidora.FileError, match=rule) as failure:
        tidora.open_series(tmp_path / "VRT_a.txt", "geographic")
    assert failure.value.line == line


def test_a_snapshot_on_another_grid_is_refused_by_its_own_name(tmp_path):
    _, path = three(tmp_path)
    binary_grid(tmp_path / "VRT_a_0030s.bin", smooth(5, 5))
    with pytest.raises(tidora.FileError, match="VRT_a_0030s.bin: is no part of the series"):
        tidora.open_series(path, "geographic")


def test_a_snapshot_that_is_cut_short_is_refused_by_its_own_name(tmp_path):
    _, path = three(tmp_path)
    whole = (tmp_path / "VRT_a_0060s.bin").read_bytes()
    (tmp_path / "VRT_a_0060s.bin").write_bytes(whole[:-1])
    with pytest.raises(tidora.FileError, match="VRT_a_0060s.bin: 5 x 4 values need 108 bytes, the file has 107"):
        tidora.open_series(path, "geographic")


def test_a_series_of_the_program_is_read_whole(tohoku):
    field = tidora.open_series(tohoku / "out" / "VRT_japan.txt", "geographic")
    assert dict(field.sizes) == {"time": 9, "y": 121, "x": 121}
    assert field["time"].values.tolist() == [30.0 * step for step in range(9)]
    # The figures of the README of the example.
    total = tidora.total(field)
    assert round(float(total.max()), 2) == 14.72 and round(float(total.min()), 2) == -10.00
