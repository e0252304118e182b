"""The nodes of a field within a region."""

from __future__ import annotations

import math
from typing import NoReturn

import numpy as np
import xarray as xr

from ..errors import Parameter, TidoraError
from .kinds import GEOGRAPHIC, kind_of
from .shape import Region


def cropped(field: xr.DataArray, region: Region) -> tuple[xr.DataArray, str]:
    """The nodes of a field within a region, with their values as they are.

    Parameters
    ----------
    field : xarray.DataArray, (..., y, x)
    region : tuple of float
        West, east, south, north, in metres or degrees; on geographic fields whole turns do not matter.

    Returns
    -------
    field : xarray.DataArray, (..., y, x)
    note : str
        Which nodes they are, for the user.

    Raises
    ------
    TidoraError
        If the region reaches more than a spacing out of the field, or has no node.
    """
    west, east, south, north = region
    spacing = float(field["x"][1] - field["x"][0]) if field.sizes["x"] > 1 else 1.0
    x, y = np.asarray(field["x"].values), np.asarray(field["y"].values)
    if kind_of(field) == GEOGRAPHIC:
        turn = 360.0 * math.floor((west - x[0]) / 360.0 + 1e-9)
        west, east = west - turn, east - turn
    near = 1e-4 * spacing  # a node this close to an edge lies on it
    columns = np.flatnonzero((x >= west - near) & (x <= east + near))
    rows = np.flatnonzero((y >= south - near) & (y <= north + near))
    beyond = west < x[0] - spacing or east > x[-1] + spacing or south < y[0] - spacing or north > y[-1] + spacing
    if columns.size == 0 or rows.size == 0 or beyond:
        _refuse(region, field)
    cut = field.isel(x=slice(int(columns[0]), int(columns[-1]) + 1), y=slice(int(rows[0]), int(rows[-1]) + 1))
    return cut, (
        f"nodes within the region: x {float(cut['x'][0]):.10g} to {float(cut['x'][-1]):.10g}, "
        f"y {float(cut['y'][0]):.10g} to {float(cut['y'][-1]):.10g}"
    )


def _refuse(region: Region, field: xr.DataArray) -> NoReturn:
    x, y = field["x"].values, field["y"].values
    outside = (
        f"the region {'/'.join(f'{value:g}' for value in region)} is not within the grid, "
        f"{x[0]:.10g}/{x[-1]:.10g}/{y[0]:.10g}/{y[-1]:.10g}"
    )
    if kind_of(field) != GEOGRAPHIC:
        raise TidoraError(outside)
    raise TidoraError((outside, "; ", Parameter("spacing"), " resamples across the edge of a global grid"))
