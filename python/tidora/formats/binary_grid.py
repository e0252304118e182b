"""The binary grid of the program: 28 bytes of header and an array."""

from __future__ import annotations

import os
from typing import Optional

import numpy as np
import xarray as xr

from .. import text
from ..errors import FileError, Path
from ..fields.kinds import guess_kind
from ..fields.lazy import Key, lazily
from ..fields.making import make_field
from ..fields.missing import complete_rows
from ..fields.shape import GridShape, MAX_VALUES, checked_shape, row_blocks
from ..files import replacing
from .contract import Step, Writing, no_progress, row_steps
from .result_names import field_attributes

HEADER = np.dtype([("org_x", "=f8"), ("org_y", "=f8"), ("nx", "=i4"), ("ny", "=i4"), ("dx", "=f4")])
"""The 28 bytes before the values; native byte order, no padding."""

steps = row_steps


def is_binary_name(path: Path) -> bool:
    """True when the program reads a grid of this name as binary: ``.bin`` anywhere but at its very start."""
    return os.fspath(path).find(".bin") > 0


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


def read_part(path: Path, shape: GridShape, key: Key) -> np.ndarray:
    """Part of the values of a binary grid: `key` has an integer or slice for rows, from the south, and columns."""
    try:
        values = np.memmap(path, "=f4", "r", HEADER.itemsize, (shape.ny, shape.nx))
    except (OSError, ValueError) as error:
        raise FileError(path, f"has changed since it was opened: {error}") from None
    return np.array(values[key])


def open(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """Opens a binary grid; it is read when it is used.

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
        If the file breaks a rule of its format.
    """
    shape = read_header(path)
    data = lazily((shape.ny, shape.nx), lambda key: read_part(path, shape, key))
    return make_field(data, shape, coord or guess_kind(shape, os.fspath(path)), field_attributes(path))


def write(field: xr.DataArray, path: Path, options: Writing = Writing(), progress: Step = no_progress) -> GridShape:
    """Writes a field as a binary grid, one block of rows at a time.

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
        If values are missing, for which the format has no mark, or there are too many.
    """
    shape = checked_shape(field)
    header = np.array([(shape.org_x, shape.org_y, shape.nx, shape.ny, shape.dx)], HEADER)
    with replacing(path) as part, part.open("wb") as file:
        file.write(header.tobytes())
        for rows in row_blocks(shape):
            file.write(complete_rows(field, rows).tobytes())
            progress("")
    return shape
