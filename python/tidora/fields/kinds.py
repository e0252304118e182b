"""Kinds of co-ordinates: metres of a plane, or degrees."""

from __future__ import annotations

import warnings

import xarray as xr

from ..errors import Parameter, TidoraWarning
from .shape import GridShape

PLANE = "plane"
GEOGRAPHIC = "geographic"
KINDS = (PLANE, GEOGRAPHIC)


def guess_kind(shape: GridShape, what: str) -> str:
    """Kind of co-ordinates of a grid that does not say it; the guess is reported as a `TidoraWarning`.

    Parameters
    ----------
    shape : GridShape
        Degrees when all of its nodes could be longitudes and latitudes.
    what : str
        What the warning calls the grid.

    Returns
    -------
    str
        `PLANE` or `GEOGRAPHIC`.
    """
    x, y = shape.org_x + (shape.nx - 1) * shape.dx, shape.org_y + (shape.ny - 1) * shape.dx
    looks_geographic = shape.org_x >= -360 and x <= 360 and shape.org_y >= -90 and y <= 90
    kind = GEOGRAPHIC if looks_geographic else PLANE
    unit = "degrees" if looks_geographic else "metres"
    message = (f"{what}: co-ordinates taken as {unit} (say ", Parameter("coord", kind), " to be sure)")
    warnings.warn(TidoraWarning(message), stacklevel=3)
    return kind


def axis_attributes(kind: str, axis: str) -> dict[str, str]:
    """CF attributes of co-ordinate ``x`` or ``y``."""
    if kind == GEOGRAPHIC:
        name, unit = {"x": ("longitude", "degrees_east"), "y": ("latitude", "degrees_north")}[axis]
        return {"standard_name": name, "long_name": name, "units": unit, "axis": axis.upper()}
    return {
        "standard_name": f"projection_{axis}_coordinate",
        "long_name": f"{axis} in the plane of the grid",
        "units": "m",
        "axis": axis.upper(),
    }


def kind_of(field: xr.DataArray) -> str:
    """Kind of co-ordinates of a field: `PLANE` or `GEOGRAPHIC`."""
    return GEOGRAPHIC if str(field["x"].attrs.get("units", "")).startswith("degree") else PLANE
