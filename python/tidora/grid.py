"""The grid formats: a text grid, and a binary grid of 28 bytes of header and an array."""

from __future__ import annotations

import os
from typing import Any, Callable, Optional

import numpy as np
import xarray as xr

from . import text
from .errors import FileError, Path, TidoraError
from .fields.kinds import guess_kind
from .fields.lazy import Key, lazily
from .fields.making import make_field
from .fields.missing import complete_rows
from .fields.shape import MAX_VALUES, GridShape, row_blocks, shape_of
from .files import replacing

HEADER = np.dtype([("org_x", "=f8"), ("org_y", "=f8"), ("nx", "=i4"), ("ny", "=i4"), ("dx", "=f4")])
"""The 28 bytes before the values of a binary grid; native byte order, no padding."""

SERIES_NAMES = {
    "Tdr": "initial wave height",
    "VRT": "vertical deformation of the sea floor",
    "HRZ": "uplift by the horizontal motion of the slope",
    "TPG": "topography, negative below sea level",
}
"""Tags with which the names of result files start."""


def is_binary_name(path: Path) -> bool:
    """True when the program reads a grid of this name as binary: ``.bin`` anywhere but at its very start."""
    return os.fspath(path).find(".bin") > 0


def field_attributes(path: Path) -> dict[str, str]:
    """Attributes of what a grid or list file holds, by the tag of its name."""
    base = os.path.basename(os.fspath(path))
    tag = base[:3] if base[3:4] == "_" and base[:3] in SERIES_NAMES else ""
    attrs = {"units": "m", "long_name": SERIES_NAMES.get(tag, "value of the grid"), "source_file": base}
    return {**attrs, "tag": tag} if tag else attrs


def read_header(path: Path) -> GridShape:
    """Header of a binary grid, checked against the size of the file.

    Raises
    ------
    FileError
        If the file is shorter than its header or than the values that it promises, or a size is below 1.
    """
    size = text.regular_size(path)
    if size < HEADER.itemsize:
        raise FileError(path, f"a binary grid has a header of {HEADER.itemsize} bytes, this file has {size} in all")
    header = np.fromfile(path, HEADER, 1)[0]
    nx, ny = int(header["nx"]), int(header["ny"])
    if nx < 1 or ny < 1 or nx * ny > MAX_VALUES:
        raise FileError(path, f"columns and rows are at least 1 and their product is below 2^31, not {nx} x {ny}")
    needed = HEADER.itemsize + 4 * nx * ny
    if size < needed:
        raise FileError(path, f"{nx} x {ny} values need {needed} bytes, the file has {size}")
    if not (header["dx"] > 0 and np.isfinite(header["dx"])):
        raise FileError(path, f"the spacing is a number above 0, not {header['dx']}")
    if not (np.isfinite(header["org_x"]) and np.isfinite(header["org_y"])):
        raise FileError(path, f"the origin is two numbers, not {header['org_x']}, {header['org_y']}")
    return GridShape(float(header["org_x"]), float(header["org_y"]), nx, ny, float(header["dx"]))


def read_binary_part(path: Path, shape: GridShape, key: Key) -> np.ndarray:
    """Part of the values of a binary grid: `key` has an integer or slice for rows, from the south, and columns."""
    try:
        values = np.memmap(path, "=f4", "r", HEADER.itemsize, (shape.ny, shape.nx))
    except (OSError, ValueError) as error:
        raise FileError(path, f"has changed since it was opened: {error}") from None
    return np.array(values[key])


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


def open_grid(path: Path, coord: Optional[str] = None) -> xr.DataArray:
    """Opens a text or binary grid.

    Parameters
    ----------
    path : path
        Binary when the name holds ``.bin`` anywhere but at its very start, as the program decides it.
    coord : {'plane', 'geographic'}, optional
        Metres or degrees. The file does not say it: without this it is guessed, with a `TidoraWarning`.

    Returns
    -------
    xarray.DataArray
        float32, dims ``(y, x)``, rows from the south, in metres. Attribute ``grid_spacing`` is the spacing in single
        precision. A binary grid is read when it is used; a text grid at once, because only the count of its values
        tells whether it is whole.

    Raises
    ------
    FileError
        If the file breaks a rule of its format; says which, and where.
    """
    if is_binary_name(path):
        shape = read_header(path)
        data: Any = lazily((shape.ny, shape.nx), lambda key: read_binary_part(path, shape, key))
    else:
        shape, data = read_text(path)
    return make_field(data, shape, coord or guess_kind(shape, os.fspath(path)), field_attributes(path))


def write_grid(field: xr.DataArray, path: Path, progress: Callable[[str], None] = lambda _: None) -> GridShape:
    """Writes a field as a grid of the program: binary when the name holds ``.bin``, else text.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
        Both axes increasing and equally spaced. It is read in blocks of rows.
    path : path
        Appears when it is complete.
    progress : callable
        Is told of each block.

    Returns
    -------
    GridShape
        What the header says.

    Raises
    ------
    TidoraError
        If values are missing (the formats have no mark for them), or the grid does not fit the format.
    """
    shape = shape_of(field)
    if shape.nx * shape.ny > MAX_VALUES:
        raise TidoraError(f"a grid has fewer than 2^31 values, not {shape.nx} x {shape.ny}")
    binary = is_binary_name(path)
    corners = "" if binary else _corner_text(shape)
    with replacing(path) as part, open(part, "wb") as file:
        if binary:
            header = np.array([(shape.org_x, shape.org_y, shape.nx, shape.ny, shape.dx)], HEADER)
            file.write(header.tobytes())
        else:
            file.write(f"{shape.nx} {shape.ny}\n{corners}\n".encode())
        for rows in row_blocks(shape):
            block = complete_rows(field, rows)
            file.write(block.tobytes() if binary else _row_text(block))
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
        # The longest number of single precision takes 15 characters: 256 of them and their blanks fit.
        lines.extend(" ".join(words[first : first + 256].tolist()) for first in range(0, words.size, 256))
    return ("\n".join(lines) + "\n").encode()
