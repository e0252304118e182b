"""ESRI ASCII grids: five or six header lines, then rows from the north."""

from __future__ import annotations

import os
from typing import Any, Iterator, Optional

import numpy as np
import xarray as xr

from .. import text
from ..errors import FileError, Path, TidoraError
from ..fields.kinds import axis_attributes, guess_kind
from ..fields.missing import complete_rows
from ..fields.shape import GridShape, MAX_VALUES, row_blocks, shape_of
from ..files import replacing
from .contract import Step, Writing, no_progress, row_steps

NO_DATA = -99999.0
"""Written in the header; no value may have it."""

steps = row_steps

_KEYS = ("ncols", "nrows", "xllcenter", "xllcorner", "yllcenter", "yllcorner", "cellsize", "nodata_value", "dx", "dy")


def write(field: xr.DataArray, path: Path, options: Writing = Writing(), progress: Step = no_progress) -> GridShape:
    """Writes a field as ESRI ASCII, its nodes as the centres of the cells, one block of rows at a time.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
    path : path
        Appears when it is complete.
    options : Writing
        Of no use here.
    progress : callable
        Is told of each block.

    Raises
    ------
    TidoraError
        If values are missing, or one is that which marks missing ones.
    """
    shape = shape_of(field)
    with replacing(path) as part, part.open("w", encoding="ascii", newline="\n") as file:
        # Python's shortest decimals: read in double precision they give the same numbers.
        file.write(
            f"ncols {shape.nx}\nnrows {shape.ny}\nxllcenter {shape.org_x!r}\nyllcenter {shape.org_y!r}\n"
            f"cellsize {shape.dx!r}\nnodata_value {NO_DATA:g}\n"
        )
        for rows in reversed(row_blocks(shape)):
            block = complete_rows(field, rows)[::-1]
            if (block == np.float32(NO_DATA)).any():
                raise TidoraError(f"the value {NO_DATA:g} marks missing values in ESRI ASCII; the grid holds it")
            for row in block:
                file.write(" ".join(row.astype("U").tolist()) + "\n")
            progress("")
    return shape


def open(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """Reads an ESRI ASCII grid.

    Parameters
    ----------
    path : path
    coord : {'plane', 'geographic'}, optional
        The file does not say it; guessed with a `TidoraWarning`.
    variable : str, optional
        Of no use: the file holds one.

    Returns
    -------
    xarray.DataArray, (y, x), float32
        Nodes at the centres of the cells, rows from the south; NaN where the file has no data.

    Raises
    ------
    FileError
        With the line and the rule that it breaks.
    """
    header, lines = _read_header(path)
    nx, ny = (int(_needed(path, header, key)) for key in ("ncols", "nrows"))
    if nx < 1 or ny < 1 or nx * ny > MAX_VALUES:
        raise FileError(path, f"columns and rows are at least 1 and their product is below 2^31, not {nx} x {ny}")
    dx, dy = (header.get(key, header.get("cellsize", np.nan)) for key in ("dx", "dy"))
    if not (dx > 0 and dy > 0):
        raise FileError(path, "the header names a cellsize above 0")
    org_x, org_y = (
        header[f"{axis}llcenter"]
        if f"{axis}llcenter" in header
        else _needed(path, header, f"{axis}llcorner") + spacing / 2
        for axis, spacing in (("x", dx), ("y", dy))
    )
    values = _read_values(path, lines, nx, ny, header.get("nodata_value"))
    shape = GridShape(org_x, org_y, nx, ny, dx)
    kind = coord or guess_kind(shape, os.fspath(path))
    single = float(np.float32(dx)) == dx and dx == dy
    attrs: dict[str, Any] = {
        "units": "m",
        "long_name": "value of the grid",
        "source_file": os.path.basename(os.fspath(path)),
    }
    if single:
        attrs["grid_spacing"] = dx
    x = shape.x if single else org_x + dx * np.arange(nx)
    y = shape.y if single else org_y + dy * np.arange(ny)
    return xr.DataArray(
        values,
        {"y": ("y", y, axis_attributes(kind, "y")), "x": ("x", x, axis_attributes(kind, "x"))},
        ("y", "x"),
        "z",
        attrs,
    )


def _read_header(path: Path) -> tuple[dict[str, float], Iterator[text.Line]]:
    lines = text.bounded_lines(path, 1 << 30)
    header: dict[str, float] = {}
    for line in lines:
        words = line.text.split()
        if len(words) == 2 and not _is_number(words[0]):
            key, value = words[0].lower(), words[1]
        elif len(words) == 2 and not _is_number(words[1]):
            key, value = words[1].lower(), words[0]  # the other order is in use too
        else:
            return header, _from(line, lines)
        if key not in _KEYS:
            raise FileError(path, f"'{key}' is no key of an ESRI ASCII header", line.number)
        if not _is_number(value):
            raise FileError(path, f"{key} is a number, not '{value}'", line.number)
        header[key] = float(value)
    return header, iter(())


def _from(first: text.Line, rest: Iterator[text.Line]) -> Iterator[text.Line]:
    yield first
    yield from rest


def _is_number(word: str) -> bool:
    try:
        float(word)
    except ValueError:
        return False
    return True


def _needed(path: Path, header: dict[str, float], key: str) -> float:
    if key not in header:
        raise FileError(path, f"the header does not name {key}")
    return header[key]


def _read_values(path: Path, lines: Iterator[text.Line], nx: int, ny: int, missing: Optional[float]) -> np.ndarray:
    values = np.empty(min(nx * ny, text.regular_size(path) // 2 + 1), np.float32)
    filled = number = 0
    for line in lines:
        number = line.number
        words = line.text.split()
        try:
            row = np.array(words, dtype=np.float64)
        except ValueError:
            bad = next(word for word in words if not _is_number(word))
            raise FileError(path, f"a value is a number, not '{bad}'", number) from None
        if filled + row.size > nx * ny:
            raise FileError(path, f"more than {nx} x {ny} values", number)
        if missing is not None:
            row[row == missing] = np.nan
        values[filled : filled + row.size] = row
        filled += row.size
    if filled < nx * ny:
        raise FileError(path, f"{nx} x {ny} values are {nx * ny}, the file has {filled}", number)
    return values.reshape(ny, nx)[::-1]
