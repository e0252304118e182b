"""Points at which scenarios are looked at: tide gauges, buoys, places off a coast."""

from __future__ import annotations

import csv
from dataclasses import dataclass
from typing import Any, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import FileError, Parameter, Path, TidoraError
from ..fields.kinds import GEOGRAPHIC

_LONGEST = 1 << 16
"""Characters of a line: more is no list of points."""


@dataclass(frozen=True)
class Gauges:
    """Points on a grid.

    Attributes
    ----------
    x, y : numpy.ndarray
        float64 (point,), as given.
    name : numpy.ndarray or None
        Text (point,).
    corner : numpy.ndarray
        int64 (point, 4): the nodes around each point, row by row from the south.
    weight : numpy.ndarray
        float64 (point, 4): of the height at these nodes, bilinear in the co-ordinates of the grid.
    """

    x: np.ndarray
    y: np.ndarray
    name: Optional[np.ndarray]
    corner: np.ndarray
    weight: np.ndarray

    def heights(self, at_corners: np.ndarray) -> np.ndarray:
        """float32 (scenario, point) from float32 (scenario, point, 4)."""
        return np.einsum("spc,pc->sp", at_corners.astype(np.float64), self.weight).astype(np.float32)


def gauges_of(at: Any, kind: str, grid_x: np.ndarray, grid_y: np.ndarray) -> Gauges:
    """The points of an argument on a grid.

    Parameters
    ----------
    at : path, xarray.Dataset, or a table with columns
        ``x, y`` and perhaps ``name``.
    kind : str
        `PLANE` or `GEOGRAPHIC`: of the grid.
    grid_x, grid_y : numpy.ndarray
        float64, its axes.

    Raises
    ------
    TypeError, TidoraError
        If there are none, or one is no number or lies outside of the grid; names it.
    """
    x, y, name = _places(at, kind)
    if not x.size:
        raise TidoraError((Parameter("at"), " has no points"))
    labels = [f"{number}" + ("" if name is None else f" ({name[number]})") for number in range(x.size)]
    for axis, values in (("x", x), ("y", y)):
        wrong = np.flatnonzero(~np.isfinite(values))
        if wrong.size:
            raise TidoraError((Parameter("at"), f": {axis} of point {labels[wrong[0]]} is no finite number"))
    on_x = x if kind != GEOGRAPHIC else grid_x[0] + np.remainder(x - grid_x[0], 360.0)
    outside = np.flatnonzero((on_x > grid_x[-1]) | (on_x < grid_x[0]) | (y < grid_y[0]) | (y > grid_y[-1]))
    if outside.size:
        first = int(outside[0])
        where = f"{labels[first]} at {x[first]:.10g}, {y[first]:.10g} lies outside of the grid ({outside.size} such)"
        raise TidoraError((Parameter("at"), f": point {where}"))
    column, part_x = _between(grid_x, on_x)
    row, part_y = _between(grid_y, y)
    next_column, next_row = np.minimum(column + 1, grid_x.size - 1), np.minimum(row + 1, grid_y.size - 1)
    corner = np.stack([r * grid_x.size + c for r in (row, next_row) for c in (column, next_column)], axis=-1)
    weight = np.stack([v * u for v in (1.0 - part_y, part_y) for u in (1.0 - part_x, part_x)], axis=-1)
    return Gauges(x, y, name, corner, weight)


def _between(axis: np.ndarray, values: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """The node before each value, and the part of the way to the next."""
    if axis.size == 1:
        return np.zeros(values.size, np.int64), np.zeros(values.size)
    before = np.clip(np.searchsorted(axis, values, side="right") - 1, 0, axis.size - 2)
    return before, (values - axis[before]) / (axis[before + 1] - axis[before])


def _places(at: Any, kind: str) -> tuple[np.ndarray, np.ndarray, Optional[np.ndarray]]:
    if isinstance(at, (str, bytes)) or hasattr(at, "__fspath__"):
        return _read(arguments.path("at", at))
    try:
        columns = {axis: at[axis] for axis in ("x", "y")}
        has_name = "name" in at
    except (KeyError, TypeError, IndexError):
        raise TypeError(f"at is a path, or a table with x and y, not {arguments.kind(at)}") from None
    if isinstance(at, xr.Dataset) and at.attrs.get("coord", kind) != kind:
        raise TidoraError((Parameter("at"), f" has {at.attrs['coord']} co-ordinates, the units {kind} ones"))
    x, y = (np.atleast_1d(arguments.numbers("at", np.asarray(column))) for column in columns.values())
    name = np.atleast_1d(np.asarray(at["name"])).astype(str) if has_name else None
    if x.ndim != 1 or x.shape != y.shape or (name is not None and name.shape != x.shape):
        raise TidoraError((Parameter("at"), " has as many x as y, and names if any"))
    return x, y, name


def _read(path: Path) -> tuple[np.ndarray, np.ndarray, Optional[np.ndarray]]:
    rows: list[tuple[float, float, str]] = []
    try:
        with open(path, encoding="utf-8-sig", newline="") as file:
            lines = ((number, line) for number, line in enumerate(_bounded(file, path), 1) if line.strip())
            head = _words(next(lines, (0, ""))[1])
            heading = [word.strip().lower() for word in head]
            if sorted(heading) not in (["x", "y"], ["name", "x", "y"]):
                raise FileError(path, "a list of points begins with a line x,y or x,y,name", 1)
            for number, line in lines:
                if line.lstrip().startswith("#"):
                    continue
                words = _words(line)
                if len(words) != len(heading):
                    raise FileError(path, f"a point has {len(heading)} columns, not {len(words)}", number)
                found = dict(zip(heading, words))
                rows.append(
                    (_number(path, number, found, "x"), _number(path, number, found, "y"), found.get("name", ""))
                )
    except UnicodeDecodeError:
        raise FileError(path, "is no text") from None
    except OSError as error:
        raise FileError(path, f"cannot be read: {error.strerror}") from None
    names = np.array([name.strip() for _, _, name in rows], dtype=str) if "name" in heading else None
    return np.array([x for x, _, _ in rows], float), np.array([y for _, y, _ in rows], float), names


def _bounded(file: Any, path: Path) -> Any:
    while line := file.readline(_LONGEST):
        if len(line) == _LONGEST:
            raise FileError(path, f"a line is shorter than {_LONGEST} characters")
        yield line


def _words(line: str) -> list[str]:
    return next(csv.reader([line]), [])


def _number(path: Path, line: int, words: dict[str, str], axis: str) -> float:
    try:
        return float(words[axis])
    except ValueError:
        raise FileError(path, f"{axis} is a number, not '{words[axis][:40]}'", line) from None
