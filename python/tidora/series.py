"""A series: the list file of a run, and the snapshots that it names."""

from __future__ import annotations

import os
import re
from pathlib import Path as FilePath
from typing import NamedTuple, Optional

import numpy as np
import xarray as xr

from . import text
from .errors import FileError, Path, TidoraError
from .geometry import GridShape, guess_kind, make_field, row_blocks
from .grid import field_attributes, read_binary_part, read_header
from .lazy import Key, lazily

_LIST_LINE = re.compile(r"(-?\d+\.\d{6}) *(-?\d+\.\d{6}) *(\S.*)\Z")
_LIST_BUFFER = 65536


class Interval(NamedTuple):
    """A line of a list file."""

    start: float
    """s"""
    length: float
    """s"""
    path: FilePath
    line: int


def read_list(path: Path) -> list[Interval]:
    """Intervals of a list file, in order of time.

    A snapshot is looked for beside the list, where the program puts it, and then under the path that the list has.

    Raises
    ------
    FileError
        If a line is no interval, a snapshot is not there, or two intervals share a file: the program cuts the start
        to whole seconds, and the later of the two has overwritten the other.
    """
    text.regular_size(path)
    intervals: list[Interval] = []
    for line in text.bounded_lines(path, _LIST_BUFFER):
        match = _LIST_LINE.match(line.text.rstrip("\r\n"))
        if not match:
            raise FileError(path, "a line of a list holds start, length and path of a snapshot", line.number)
        named = FilePath(match.group(3))
        beside = FilePath(path).parent / named.name
        snapshot = beside if beside.exists() else named
        if not snapshot.exists():
            raise FileError(path, f"the snapshot {named} is neither beside the list nor under its path", line.number)
        for other in intervals:
            if other.path == snapshot:
                raise FileError(
                    path,
                    f"names {named.name} as line {other.line} does: the intervals start within the "
                    "same second, and the file of one has overwritten the other's",
                    line.number,
                )
        intervals.append(Interval(float(match.group(1)), float(match.group(2)), snapshot, line.number))
    if not intervals:
        raise FileError(path, "is empty: the run had no rupture interval")
    return sorted(intervals, key=lambda interval: interval.start)


def open_series(list_file: Path, coord: Optional[str] = None) -> xr.DataArray:
    """Opens the snapshots that a list file names.

    Parameters
    ----------
    list_file : path
        ``TAG_NAME.txt`` of an output directory.
    coord : {'plane', 'geographic'}, optional
        As for `open_grid`.

    Returns
    -------
    xarray.DataArray
        float32, dims ``(time, y, x)``, in order of time: what each interval adds, in metres. The total is
        ``.sum("time")``. Co-ordinate ``time`` is the start of the interval and ``rise_time`` its length, in seconds.
        Values are read when they are used.

    Raises
    ------
    FileError
        If the list or a snapshot breaks a rule, or the snapshots lie on different grids.
    """
    intervals = read_list(list_file)
    shapes = [read_header(interval.path) for interval in intervals]
    for interval, shape in zip(intervals, shapes):
        if shape != shapes[0]:
            raise FileError(
                interval.path, f"is no part of the series: {shape}, but {intervals[0].path.name} has " f"{shapes[0]}"
            )
    shape = shapes[0]

    def read(key: Key) -> np.ndarray:
        if isinstance(key[0], slice):
            parts = [read((layer, *key[1:])) for layer in range(*key[0].indices(len(intervals)))]
            empty = np.broadcast_to(np.float32(0), (0, shape.ny, shape.nx))[(slice(None), *key[1:])]
            return np.stack(parts) if parts else np.array(empty)
        return read_binary_part(intervals[int(key[0])].path, shape, key[1:])

    seconds = {"units": "s"}
    leading = {
        "time": (
            "time",
            np.array([interval.start for interval in intervals]),
            {**seconds, "long_name": "start of the rupture interval", "axis": "T"},
        ),
        "rise_time": (
            "time",
            np.array([interval.length for interval in intervals]),
            {**seconds, "long_name": "length of the rupture interval"},
        ),
    }
    attrs = {**field_attributes(list_file), "time_content": "increment"}
    return make_field(
        lazily((len(intervals), shape.ny, shape.nx), read),
        shape,
        coord or guess_kind(shape, os.fspath(list_file)),
        attrs,
        leading,
    )


def interval_times(series: xr.DataArray) -> tuple[np.ndarray, np.ndarray]:
    """Starts and lengths of the intervals of a series in s, float64 (time,); lengths that nobody has stated are 0."""
    starts = np.asarray(series["time"].values, float)
    if "rise_time" not in series.coords:
        return starts, np.zeros_like(starts)
    return starts, np.asarray(series["rise_time"].values, float)


def total(series: xr.DataArray, dtype: type = np.float64) -> xr.DataArray:
    """Sum of a series over time, formed in double precision, one block of rows at a time.

    Parameters
    ----------
    series : xarray.DataArray, (time, y, x) or (y, x)
        A field without time is its own sum.
    dtype : type
        Of the result, in memory.

    Returns
    -------
    xarray.DataArray, (y, x)
        In metres; attribute ``intervals`` is their number, ``time_span`` the first start and the last end in seconds.
    """
    if "time" not in series.dims:
        return series
    size = dict(series.sizes)
    result: np.ndarray = np.empty((size["y"], size["x"]), dtype)
    for rows in row_blocks(GridShape(0, 0, size["x"], size["y"], 1), 1 << 17):
        block = np.zeros((rows.stop - rows.start, size["x"]))
        for layer in range(size["time"]):
            block += series.isel(time=layer, y=rows).values
        result[rows] = block
    start, length = interval_times(series)
    attrs = {key: value for key, value in series.attrs.items() if key != "time_content"}
    attrs.update(intervals=size["time"], time_span=(float(start.min()), float((start + length).max())))
    return xr.DataArray(result, {"y": series["y"], "x": series["x"]}, ("y", "x"), series.name, attrs)


def snapshot(series: xr.DataArray, start: float) -> xr.DataArray:
    """The snapshot of the interval that starts at `start` seconds.

    Raises
    ------
    TidoraError
        If there is none; names those that are there.
    """
    starts = np.asarray(series["time"].values, float)
    found = np.flatnonzero(np.abs(starts - start) < 1e-6)
    if found.size == 0:
        raise TidoraError(f"no interval starts at {start:g} s; there are " + ", ".join(f"{t:g}" for t in starts))
    return series.isel(time=int(found[0]))
