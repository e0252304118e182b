"""The text grid of the program: a line of its size, a line of its corners, and the values from the south."""

from __future__ import annotations

import os
from typing import Optional

import numpy as np
import xarray as xr

from .. import text
from ..errors import FileError, Path, TidoraError
from ..fields.kinds import guess_kind
from ..fields.making import make_field
from ..fields.missing import complete_rows
from ..fields.shape import GridShape, MAX_VALUES, checked_shape, row_blocks
from ..files import replacing
from .contract import Step, Writing, no_progress, row_steps
from .result_names import field_attributes

_WORDS = 256
"""Values of a line: the longest number of single precision takes 15 characters, so they and their blanks fit."""

steps = row_steps


def is_first_line(line: str) -> bool:
    """True for two whole numbers; a blank behind them is an error that `read_text` explains."""
    words = line.split()
    return len(words) == 2 and all(word.lstrip("+-").isdigit() for word in words)


def read_text(path: Path) -> tuple[GridShape, np.ndarray]:
    """A text grid.

    Returns
    -------
    shape : GridShape
    values : numpy.ndarray, float32, (ny, nx)
        The southern row first.

    Raises
    ------
    FileError
        With the line and the rule that it breaks. Reading ends there, and as soon as there are more values than the
        first line promises.
    """
    counted = 0
    line_ends: list[int] = []
    shape: Optional[GridShape] = None
    nx = ny = filled = number = 0
    values = np.empty(0, np.float32)
    for line in text.bounded_lines(path, text.GRID_LINE):
        if line.is_comment:
            continue
        counted += 1
        number = line.number
        if counted == 1:
            nx, ny = _size_line(path, line)
        elif counted == 2:
            shape = _extent_line(path, line, nx, ny)
            # A value and what ends it take two characters: no more room than the file can fill.
            values = np.empty(min(nx * ny, text.regular_size(path) // 2 + 1), np.float32)
        else:
            row = _values(path, line)
            if line.text.strip("\r\n") == "" or line.text.rstrip("\r\n")[-1:] in (" ", "\t"):
                line_ends.append(number)
            if filled + row.size > nx * ny:
                raise FileError(path, f"more than {nx} x {ny} values{_line_end_hint(line_ends)}", number)
            with np.errstate(over="ignore"):
                values[filled : filled + row.size] = row
            filled += row.size
    if shape is None:
        raise FileError(path, "a text grid starts with its size and its corners; the file ends before", number or 1)
    if filled < nx * ny:
        raise FileError(path, f"{nx} x {ny} values are {nx * ny}, the file has {filled}", number)
    return shape, values.reshape(ny, nx)


def _line_end_hint(lines: list[int]) -> str:
    if not lines:
        return ""
    shown = ", ".join(map(str, lines[:3])) + (" ..." if len(lines) > 3 else "")
    return f"; an empty line, or a blank at the end of a line, counts as a value 0 (line {shown})"


def _size_line(path: Path, line: text.Line) -> tuple[int, int]:
    words = text.tokens(line.text)
    if len(words) != 2:
        raise FileError(
            path,
            f"the size line holds columns and rows and nothing else, not {len(words)} items "
            "(a blank at its end counts)",
            line.number,
        )
    try:
        nx, ny = (text.to_int(word) for word in words)
    except ValueError as error:
        raise FileError(path, f"columns and rows are whole numbers, not '{error}'", line.number) from None
    if nx < 1 or ny < 1 or nx * ny > MAX_VALUES:
        raise FileError(
            path, f"columns and rows are at least 1 and their product is below 2^31, not {nx} x {ny}", line.number
        )
    return nx, ny


def _extent_line(path: Path, line: text.Line, nx: int, ny: int) -> GridShape:
    words = text.tokens(line.text)
    if len(words) < 4:
        raise FileError(
            path, "the second line holds x and y of the first and of the last node: four numbers", line.number
        )
    try:
        x0, y0, x1, y1 = (text.to_float(word) for word in words[:4])
    except ValueError as error:
        raise FileError(path, f"a co-ordinate is a number, not '{error}'", line.number) from None
    if nx == 1 or ny == 1:
        raise FileError(path, "a text grid of one column or row has no spacing", line.number)
    dx, dy = np.float32((x1 - x0) / (nx - 1)), np.float32((y1 - y0) / (ny - 1))
    if dx != dy or not np.isfinite(dx) or not dx > 0:
        raise FileError(
            path,
            "both spacings, in single precision, are the same number above 0, not "
            f"{float(dx):.9g} and {float(dy):.9g}",
            line.number,
        )
    return GridShape(x0, y0, nx, ny, float(dx))


def _values(path: Path, line: text.Line) -> np.ndarray:
    try:
        return text.line_values(line.text)
    except ValueError as error:
        raise FileError(path, f"a value is a number, not '{error}' (the program would take 0)", line.number) from None


def open(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """Reads a text grid, at once: only the count of its values tells whether it is whole.

    Parameters
    ----------
    path : path
    coord : {'plane', 'geographic'}, optional
        Metres or degrees. The file does not say it: without this it is guessed, with a `TidoraWarning`.
    variable : str, optional
        Of no use: the file holds one.

    Returns
    -------
    xarray.DataArray, (y, x), float32
        In metres, rows from the south. Attribute ``grid_spacing`` is the spacing in single precision.

    Raises
    ------
    FileError
        With the line and the rule that it breaks.
    """
    shape, values = read_text(path)
    return make_field(values, shape, coord or guess_kind(shape, os.fspath(path)), field_attributes(path))


def write(field: xr.DataArray, path: Path, options: Writing = Writing(), progress: Step = no_progress) -> GridShape:
    """Writes a field as a text grid, one block of rows at a time.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
        Both axes increasing and equally spaced.
    path : path
        Appears when it is complete.
    options : Writing
        Of no use here.
    progress : callable
        Is told of each block.

    Raises
    ------
    TidoraError
        If values are missing, for which the format has no mark, or the corners would not give the spacing again.
    """
    shape = checked_shape(field)
    corners = _corner_text(shape)
    with replacing(path) as part, part.open("wb") as file:
        file.write(f"{shape.nx} {shape.ny}\n{corners}\n".encode())
        for rows in row_blocks(shape):
            file.write(_row_text(complete_rows(field, rows)))
            progress("")
    return shape


def _corner_text(shape: GridShape) -> str:
    if shape.nx < 2 or shape.ny < 2:
        raise TidoraError("a text grid has at least two columns and rows; the binary format takes one")
    end_x = shape.org_x + (shape.nx - 1) * shape.dx
    end_y = shape.org_y + (shape.ny - 1) * shape.dx
    # What the reader makes of the corners must be the spacing, to the last bit.
    found = {
        float(np.float32((end_x - shape.org_x) / (shape.nx - 1))),
        float(np.float32((end_y - shape.org_y) / (shape.ny - 1))),
    }
    if found != {shape.dx}:
        raise TidoraError(
            f"the corners of this grid do not give its spacing {shape.dx:.9g} again: the origin is too "
            "large for it; use the binary format"
        )
    return " ".join(repr(float(value)) for value in (shape.org_x, shape.org_y, end_x, end_y))


def _row_text(block: np.ndarray) -> bytes:
    """Rows of shortest decimal numbers that give the same single-precision values, wrapped below the line buffer."""
    lines: list[str] = []
    for row in block:
        words = row.astype("U")
        lines.extend(" ".join(words[first : first + _WORDS].tolist()) for first in range(0, words.size, _WORDS))
    return ("\n".join(lines) + "\n").encode()
