"""Fields of xarray, made from values and a shape."""

from __future__ import annotations

from typing import Any, Mapping, Optional

import xarray as xr

from .kinds import axis_attributes
from .shape import GridShape


def as_field(dims: tuple[Any, ...], data: Any, attrs: Mapping[str, Any], coords: Mapping[Any, Any]) -> xr.DataArray:
    """A field ``z`` on `dims`. Made by way of a dataset: a DataArray made directly would read all of its data."""
    return xr.Dataset({"z": xr.Variable(dims, data, dict(attrs))}, dict(coords))["z"]


def make_field(
    data: Any,
    shape: GridShape,
    kind: str,
    attrs: Mapping[str, Any],
    leading: Optional[Mapping[str, Any]] = None,
) -> xr.DataArray:
    """A field on a grid.

    Parameters
    ----------
    data : array_like, (..., ny, nx)
        Values, the southern row first; a lazily indexed array is not read.
    shape : GridShape
        Its nodes.
    kind : str
        `PLANE` or `GEOGRAPHIC`.
    attrs : mapping
        Attributes of the field.
    leading : mapping, optional
        Co-ordinates of the dimension ``time``: name to variable.
    """
    coords: dict[str, Any] = dict(leading or {})
    coords["y"] = ("y", shape.y, axis_attributes(kind, "y"))
    coords["x"] = ("x", shape.x, axis_attributes(kind, "x"))
    dims = ("time", "y", "x") if leading else ("y", "x")
    return as_field(dims, data, {**attrs, "grid_spacing": shape.dx}, coords)
