"""The grids of the program, text or binary by their names."""

from __future__ import annotations

from typing import Optional

import xarray as xr

from ..errors import Path
from ..fields.shape import GridShape
from . import binary_grid, text_grid
from .contract import Step, Writing, no_progress


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
    return binary_grid.open(path, coord) if binary_grid.is_binary_name(path) else text_grid.open(path, coord)


def write_grid(field: xr.DataArray, path: Path, progress: Step = no_progress) -> GridShape:
    """Writes a field as a grid of the program: binary when the name holds ``.bin``, else text.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
        In metres; both axes increasing and equally spaced. It is read in blocks of rows.
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
    write = binary_grid.write if binary_grid.is_binary_name(path) else text_grid.write
    return write(field, path, Writing(), progress)
