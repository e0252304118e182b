"""The list of a series: a line for each interval with its start, its length and the path of its snapshot."""

from __future__ import annotations

import os
import re
from pathlib import Path as FilePath
from typing import NamedTuple, Optional

import numpy as np
import xarray as xr

from .. import text
from ..errors import FileError, Path
from ..fields.kinds import guess_kind
from ..fields.lazy import Key, lazily
from ..fields.making import make_field
from .binary_grid import read_header, read_part
from .result_names import field_attributes

_LIST_LINE = re.compile(r"(-?\d+\.\d{6}) *(-?\d+\.\d{6}) *(\S.*)\Z")
_LIST_BUFFER = 65536


def is_first_line(line: str) -> bool:
    """True for start, length and path of a snapshot."""
    return _LIST_LINE.match(line.rstrip("\r\n")) is not None


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


def open(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """`open_series` by the name that all formats have; a list holds one variable."""
    return open_series(path, coord)


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
        return read_part(intervals[int(key[0])].path, shape, key[1:])

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
