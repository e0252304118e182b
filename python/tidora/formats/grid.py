"""Grids of any format, and those of the program by their names: text or binary."""

from __future__ import annotations

from fractions import Fraction
from typing import Optional, Sequence

import xarray as xr

from .. import arguments
from ..errors import FileError, Parameter, Path, TidoraError
from ..fields.kinds import KINDS
from ..fields.placing import Placing, placed
from ..fields.shape import GridShape
from . import binary_grid, text_grid
from .contract import Step, Writing, no_progress
from .registry import FORMATS, ending, open_field, recognise


def open_grid(
    path: Path,
    coord: Optional[str] = None,
    *,
    region: Optional[Sequence[float]] = None,
    spacing: Optional[float] = None,
) -> xr.DataArray:
    """Opens a grid of any format that is read: of the program, NetCDF, GeoTIFF, ESRI ASCII.

    Parameters
    ----------
    path : path
        The formats of others go by their endings. A grid of the program is binary when the name holds ``.bin`` anywhere
        but at its very start, as the program decides it.
    coord : {'plane', 'geographic'}, optional
        Metres or degrees, where the file does not say it: without this it is guessed, with a `TidoraWarning`.
    region : sequence of four numbers, optional
        West, east, south, north: first and last nodes. Without `spacing` the nodes of the file within it.
    spacing : float, optional
        In the units of the grid: resampled when it is read, the mean over the new cell when that is at least twice as
        wide as the old one, else bilinear.

    Returns
    -------
    xarray.DataArray
        float32, dims ``(y, x)``, or ``(time, y, x)`` of a series, rows from the south, in metres. Attribute
        ``grid_spacing`` is the spacing in single precision. Values are read when they are used; those of a text grid at
        once, because only the count of its values tells whether it is whole.

    Raises
    ------
    FileError
        If the file breaks a rule of its format; says which, and where.
    TidoraError
        If the file does not reach to the whole region.
    """
    arguments.path("path", path)
    if coord is not None:
        arguments.choice("coord", coord, KINDS)
    step = None if spacing is None else arguments.number("spacing", spacing)
    if step is not None and step <= 0:
        raise TidoraError((Parameter("spacing"), f" is above 0, not {step:g}"))
    placing = Placing(None if region is None else _edges(region), None if step is None else Fraction(step))
    return placed(_opened(path, coord), placing)[0] if placing != Placing() else _opened(path, coord)


def _opened(path: Path, coord: Optional[str]) -> xr.DataArray:
    foreign = any(ending(path) in form.reads for form in FORMATS)
    if binary_grid.is_binary_name(path) and not foreign:
        return binary_grid.open(path, coord)
    if foreign or _is_list(path):
        return open_field(path, coord)
    return text_grid.open(path, coord)


def _is_list(path: Path) -> bool:
    try:
        return recognise(path).series
    except FileError:
        return False  # the grid says better what is wrong


def _edges(region: Sequence[float]) -> tuple[float, float, float, float]:
    values = arguments.numbers("region", region)
    if values.shape != (4,) or values[0] >= values[1] or values[2] >= values[3]:
        what = " is west, east, south, north, the smaller number of each first"
        raise TidoraError((Parameter("region"), what))
    west, east, south, north = values.tolist()
    return west, east, south, north


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
