"""GeoClaw dtopo, type 3: header, order, and the sum at the end.

The layout is that of the published description of the format: nine header lines with the value first, then mt times
my lines of mx values, from the north-west, of the displacement so far.
"""

import numpy as np
import pytest
import xarray as xr
from conftest import DX, binary_grid, series, smooth, tdr

import tidora
from tidora.formats.dtopo import share, time_steps, write as write_dtopo


def read(path):
    """By the description, word by word."""
    lines = path.read_text().splitlines()
    header = {}
    for line, name in zip(lines[:9], ("mx", "my", "mt", "xlower", "ylower", "t0", "dx", "dy", "dt")):
        value, found = line.split()
        assert found == name
        header[name] = float(value)
    mx, my, mt = (int(header[name]) for name in ("mx", "my", "mt"))
    rows = [[float(word) for word in line.split()] for line in lines[9:]]
    assert len(rows) == mt * my and all(len(row) == mx for row in rows)
    return header, np.array(rows).reshape(mt, my, mx)


def test_a_series_becomes_the_displacement_so_far_with_the_north_first(tmp_path):
    layers = [smooth(4, 6, seed) for seed in range(3)]
    path = series(tmp_path, layers, [0, 30, 90], [30, 60, 30])
    tdr("convert", path, tmp_path / "a.tt3", "--coord", "geographic")
    header, moved = read(tmp_path / "a.tt3")
    assert header == {"mx": 6, "my": 4, "mt": 5, "xlower": 138, "ylower": 33, "t0": 0, "dx": float(DX), "dy": float(DX),
                      "dt": 30}  # fmt: skip
    first, second, third = (np.flipud(layer.astype(float)) for layer in layers)
    expected = [0 * first, first, first + second / 2, first + second, first + second + third]
    assert np.allclose(moved, expected, rtol=0, atol=1e-7)


def test_the_last_time_is_the_sum_of_the_series_of_the_program(tohoku, tmp_path):
    tdr("convert", "out/VRT_japan.txt", tmp_path / "a.tt3", "--coord", "geographic", cwd=tohoku)
    header, moved = read(tmp_path / "a.tt3")
    assert (header["mt"], header["t0"], header["dt"]) == (10, 0, 30)
    snapshots = sorted((tohoku / "out").glob("VRT_japan_*.bin"))
    total = sum(np.fromfile(path, "=f4", offset=28).reshape(121, 121).astype(float) for path in snapshots)
    assert len(snapshots) == 9 and np.abs(moved[-1][::-1] - total).max() < 1e-6
    assert np.abs(moved[0]).max() == 0
    assert (
        np.abs(np.diff(moved, axis=0)[3][::-1] - np.fromfile(snapshots[3], "=f4", offset=28).reshape(121, 121)).max()
        < 1e-6
    )


def test_a_single_grid_moves_at_once(tmp_path):
    values = smooth(3, 4)
    tdr("convert", binary_grid(tmp_path / "a.bin", values), tmp_path / "a.tt3", "--coord", "geographic")
    header, moved = read(tmp_path / "a.tt3")
    assert (header["mt"], header["t0"], header["dt"]) == (1, 0, 0)
    assert np.allclose(moved[0], np.flipud(values), rtol=0, atol=1e-7)


STEPS = [
    ("the longest that meets all ends", [0, 30, 90], [30, 60, 30], None, (0, 30, 5)),
    ("odd starts", [0, 12.5], [10, 7.5], None, (0, 2.5, 9)),
    ("a first start that is not 0", [60, 90], [30, 30], None, (60, 30, 3)),
    ("everything at once", [5], [0], None, (5, 0, 1)),
    ("a jump after the start", [0, 40], [20, 0], None, (0, 20, 3)),
    ("a step that is asked for", [0, 30], [30, 40], 20, (0, 20, 5)),
    ("a step beyond the end", [0], [30], 100, (0, 100, 2)),
]


@pytest.mark.parametrize("starts, lengths, step, expected", [row[1:] for row in STEPS], ids=[row[0] for row in STEPS])
def test_the_times_meet_the_intervals(starts, lengths, step, expected):
    assert time_steps(np.array(starts, float), np.array(lengths, float), step) == expected


def test_a_step_that_would_be_too_short_is_asked_for(tmp_path):
    path = series(tmp_path, [smooth(2, 2)] * 2, [0, 30.001], [30, 30])
    assert "--dt SECONDS" in tdr("convert", path, tmp_path / "a.tt3", "--coord", "geographic", status=1).stderr
    tdr("convert", path, tmp_path / "a.tt3", "--coord", "geographic", "--dt", "10")
    header, moved = read(tmp_path / "a.tt3")
    assert header["mt"] == 8  # 0 to 70 s: not before the end at 60.001 s
    assert np.allclose(moved[-1], 2.0 * np.flipud(smooth(2, 2)), rtol=0, atol=1e-6)


def test_an_interval_is_shared_out_at_a_constant_rate():
    assert [share(time, 30, 60) for time in (0, 30, 60, 90, 200)] == [0, 0, 0.5, 1, 1]
    assert [share(time, 30, 0) for time in (29.9, 30)] == [0, 1]


def test_layers_that_are_not_known_to_be_increments_are_refused(tmp_path):
    axes = {"time": [0.0, 1.0], "y": [0.0, 1.0, 2.0], "x": [0.0, 1.0, 2.0, 3.0]}
    xr.Dataset({"h": (("time", "y", "x"), np.ones((2, 3, 4)))}, axes).to_netcdf(tmp_path / "h.nc")
    refused = tdr("convert", tmp_path / "h.nc", tmp_path / "a.tt3", "--coord", "plane", status=1)
    assert "does not say that its layers are what each interval adds" in refused.stderr


def test_missing_values_are_refused_and_leave_no_file(tmp_path):
    field = tidora.open_grid(binary_grid(tmp_path / "a.bin", np.full((2, 2), np.nan)), "plane")
    with pytest.raises(tidora.TidoraError, match="missing"):
        write_dtopo(field, tmp_path / "a.tt3")
    assert not (tmp_path / "a.tt3").exists()
