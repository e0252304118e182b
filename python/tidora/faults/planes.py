"""The elements of a table as cells of planes: rows along strike, one below the other."""

from __future__ import annotations

from typing import Any, NamedTuple, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from .layout import planes_of_runs

_LAYOUT = ("plane", "along", "down")

_SPARSE = 64
"""Cells of a plane for each of its elements at most. Numbers that leave more of them empty are a mistake, and would
fill the memory."""


class Plane(NamedTuple):
    """One plane of a fault."""

    element: np.ndarray
    """int64 (down, along): numbers of elements; -1 where there is none."""
    along: float
    """m: mean length of the elements"""
    down: float
    """m: mean width of the elements"""
    area: float
    """m2"""


def planes_of(faults: xr.Dataset, columns: dict[str, np.ndarray], layout: Any) -> list[Plane]:
    """The planes of a table.

    Parameters
    ----------
    faults : xarray.Dataset
        Table of elements; its variables ``plane``, ``along``, ``down`` count if there are any, else runs of equal
        depth.
    columns : dict
        Of `checked_columns`.
    layout : (along, down) or None
        Elements along strike and down dip of the only plane, if the table does not say it, or says it wrong.

    Raises
    ------
    TypeError, TidoraError
        If the layout is not known or does not fit, or an element has no area.
    """
    area = columns["length"] * columns["width"]
    wrong = np.flatnonzero(~((columns["length"] > 0) & (columns["width"] > 0)))
    if wrong.size:
        raise TidoraError((Parameter("faults"), f": element {wrong[0]} has no area"))
    number, along, down = _cells(faults, columns, layout)
    found = []
    for plane in np.unique(number):
        own = np.flatnonzero(number == plane)
        length, width = float(columns["length"][own].mean()), float(columns["width"][own].mean())
        found.append(Plane(_grid(own, along[own], down[own]), length, width, float(area[own].sum())))
    return found


def _cells(faults: xr.Dataset, columns: dict[str, np.ndarray], layout: Any) -> list[np.ndarray]:
    """int64 (element,) plane, along, down."""
    count = columns["x"].size
    if not count:
        raise TidoraError((Parameter("faults"), " has no elements"))
    if layout is not None:
        length, width = _given(layout)
        if length * width != count:
            said = f" has {length} x {width} elements, the table {count}"
            raise TidoraError((Parameter("layout"), said))
        number = np.arange(count)
        return [np.zeros(count, np.int64), number % length, number // length]
    if all(name in faults.variables for name in _LAYOUT):
        return [_whole(faults, name, count) for name in _LAYOUT]
    runs: Optional[dict[str, np.ndarray]] = planes_of_runs(columns["base_offset"])
    if runs is None:
        said = " (elements along strike, elements down dip) has to be given: runs of equal depth do not show it"
        raise TidoraError((Parameter("layout"), said))
    return [np.asarray(runs[name], np.int64) for name in _LAYOUT]


def _given(layout: Any) -> tuple[int, int]:
    try:
        length, width = layout
    except (TypeError, ValueError):
        said = "layout is two whole numbers, elements along strike and elements down dip"
        raise TypeError(f"{said}, not {arguments.kind(layout)}") from None
    return arguments.count("layout", length), arguments.count("layout", width)


def _whole(faults: xr.Dataset, name: str, count: int) -> np.ndarray:
    values = np.asarray(faults[name].values)
    if values.dtype.kind not in "iuf" or values.shape != (count,):
        raise TidoraError((Parameter("faults"), f": {name} is a number for each element"))
    if not np.all((np.abs(values) < 2.0**31) & (values == np.floor(values))):
        raise TidoraError((Parameter("faults"), f": {name} has whole numbers"))
    return values.astype(np.int64)


def _grid(own: np.ndarray, along: np.ndarray, down: np.ndarray) -> np.ndarray:
    along, down = along - along.min(), down - down.min()
    shape = (int(down.max()) + 1, int(along.max()) + 1)
    if shape[0] * shape[1] > _SPARSE * own.size:
        said = f" puts {own.size} elements into {shape[1]} x {shape[0]} cells of a plane"
        raise TidoraError((Parameter("layout"), said))
    grid = np.full(shape, -1, np.int64)
    grid[down, along] = own
    taken = grid[down, along] != own
    if np.any(taken):
        at = int(np.argmax(taken))
        said = f" puts the elements {own[at]} and {grid[down[at], along[at]]} into the same cell"
        raise TidoraError((Parameter("layout"), said))
    return grid
