"""Finds out what a file is, and opens it."""

from __future__ import annotations

import os
from typing import Optional

import xarray as xr

from . import text
from .errors import FileError, Path
from .grid import is_binary_name, open_grid
from .series import _LIST_LINE, open_series

GRID, SERIES, FAULTS = "grid", "series", "faults"
FOREIGN = {
    ".nc": "netcdf",
    ".grd": "netcdf",
    ".nc4": "netcdf",
    ".tif": "geotiff",
    ".tiff": "geotiff",
    ".asc": "esri",
    ".agr": "esri",
}
"""Endings of formats of other programs."""


def ending(path: Path) -> str:
    """Ending of a name in lower case, with its dot."""
    return os.path.splitext(os.fspath(path))[1].lower()


def recognise(path: Path) -> str:
    """What a file is: `GRID`, `SERIES`, `FAULTS`, or one of the values of `FOREIGN`.

    A binary grid and the formats of other programs go by their names; a text goes by the first line that is no
    comment.

    Raises
    ------
    FileError
        If it is none of them.
    """
    text.regular_size(path)
    if ending(path) in FOREIGN:
        return FOREIGN[ending(path)]
    if is_binary_name(path):
        return GRID
    for line in text.bounded_lines(path, text.GRID_LINE):
        if line.is_comment:
            continue
        words = text.tokens(line.text)
        if _LIST_LINE.match(line.text.rstrip("\r\n")):
            return SERIES
        if len(words) >= 10:
            return FAULTS
        numbers = line.text.split()  # a blank behind them is an error that the reader of grids explains
        if len(numbers) == 2 and all(word.lstrip("+-").isdigit() for word in numbers):
            return GRID
        raise FileError(
            path,
            "is neither a grid (columns and rows), nor a list (start, length, path), nor a fault " "file (ten columns)",
            line.number,
        )
    raise FileError(path, "is empty, or holds comments only")


def open_field(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """Opens a grid or a series of any format.

    Parameters
    ----------
    path : path
        Grid, list file, NetCDF, GeoTIFF or ESRI ASCII.
    coord : {'plane', 'geographic'}, optional
        Kind of co-ordinates, where the file does not say it.
    variable : str, optional
        Variable of a NetCDF file.

    Returns
    -------
    xarray.DataArray
        Dims ``(y, x)`` or ``(time, y, x)``, both axes increasing.
    """
    kind = recognise(path)
    if kind == SERIES:
        return open_series(path, coord)
    if kind == GRID:
        return open_grid(path, coord)
    if kind == "netcdf":
        from .convert.netcdf import open_netcdf

        return open_netcdf(path, coord, variable)
    if kind == "geotiff":
        from .convert.geotiff import open_geotiff

        return open_geotiff(path, coord)
    if kind == "esri":
        from .convert.esri import open_esri

        return open_esri(path, coord)
    raise FileError(path, "is a fault file; a grid or a series is needed here")
