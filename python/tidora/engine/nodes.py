"""Nodes as the library takes them, from fields and points."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Optional, Union

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..fields.kinds import GEOGRAPHIC, KINDS, PLANE, axis_attributes

Where = Union[xr.DataArray, xr.Dataset]

NO_TOPOGRAPHY = {"topography": "none"}
"""Attribute of a grid whose values are no topography."""

POLE = 1e-5
"""Degrees, about a metre, by which a node may lie beyond a pole: axes of single precision end there. It counts as lying
on the pole."""

_NEAR = 1e-3
"""Part of a spacing by which nodes may miss equal spacing: as for fields that are read from files."""


def place_attributes(coord: str, axis: str) -> dict[str, str]:
    """CF attributes of a co-ordinate of points, which is no axis."""
    return {name: value for name, value in axis_attributes(coord, axis).items() if name != "axis"}


@dataclass(frozen=True)
class Nodes:
    """Nodes as the library takes them."""

    name: str
    """Of the argument that they come from."""
    kind: str
    """`PLANE` or `GEOGRAPHIC`."""
    x: np.ndarray
    y: np.ndarray
    """float64, contiguous: axes of a grid, or a place for each point."""
    is_grid: bool
    floor: Optional[xr.DataArray]
    """Topography, (y, x) or (point,), not read yet."""
    coords: dict[str, Any]
    attrs: dict[str, Any]
    """Of the field that say something of its nodes."""

    @property
    def dims(self) -> tuple[str, ...]:
        """Dimensions of a result without time."""
        return ("y", "x") if self.is_grid else ("point",)

    @property
    def shape(self) -> tuple[int, ...]:
        """Shape of such a result."""
        return (self.y.size, self.x.size) if self.is_grid else (self.x.size,)

    def topography(self) -> np.ndarray:
        """float32, contiguous: read now.

        Raises
        ------
        TidoraError
            If values are missing.
        """
        assert self.floor is not None
        return finite_values(self.floor, self.name)

    def spacing(self) -> float:
        """Of the grid, both axes.

        Raises
        ------
        TidoraError
            If the nodes are not equally spaced.
        """
        longer = self.x if self.x.size >= self.y.size else self.y
        if longer.size < 2:
            raise TidoraError((Parameter(self.name), " has one node: no spacing"))
        step = float(longer[-1] - longer[0]) / (longer.size - 1)
        for axis, values in (("x", self.x), ("y", self.y)):
            off = float(np.max(np.abs(values[0] + np.arange(values.size) * step - values))) / step
            if off > _NEAR:
                what = f" needs nodes of equal spacing on both axes: {axis} is off by up to {off:.3g} of a spacing"
                raise TidoraError((Parameter(self.name), what))
        return step


def finite_values(field: xr.DataArray, name: str) -> np.ndarray:
    """float32, contiguous: all values of a field, none of which may be missing."""
    values = np.ascontiguousarray(field.values, dtype=np.float32)
    missing = values.size - int(np.count_nonzero(np.isfinite(values)))
    if missing:
        raise TidoraError((Parameter(name), f": {missing} of {values.size} values are missing, or no finite numbers"))
    return values


def nodes_of(where: Any, name: str) -> Nodes:
    """The nodes of an argument: a field, or `points`.

    Raises
    ------
    TypeError, TidoraError
        If it is neither, or its places cannot be; names the argument.
    """
    if isinstance(where, xr.Dataset):
        return _points_of(where, name)
    if not isinstance(where, xr.DataArray):
        raise TypeError(f"{name} is a grid (xarray.DataArray) or points (xarray.Dataset), not {arguments.kind(where)}")
    if "time" in where.dims:
        raise TidoraError((Parameter(name), " is one field (y, x), not a series in time"))
    return grid_of(where, name)


def grid_of(field: Any, name: str) -> Nodes:
    """The nodes of a field, (y, x) or (time, y, x); its topography is the field itself.

    Raises
    ------
    TypeError, TidoraError
        If it is no field, or its axes cannot be; names the argument.
    """
    field = increasing(field, name)
    axes = {axis: _checked_axis(field, axis, name) for axis in ("x", "y")}
    kind = _kind_of(field, name)
    _check_latitudes(axes["y"], kind, name)
    attrs = {key: field.attrs[key] for key in ("grid_spacing", "crs_wkt") if key in field.attrs}
    coords = {
        axis: (axis, axes[axis], {**axis_attributes(kind, axis), **_plain(field[axis].attrs)}) for axis in ("y", "x")
    }
    is_topography = field.attrs.get("topography") != NO_TOPOGRAPHY["topography"]
    return Nodes(
        name,
        kind,
        np.ascontiguousarray(axes["x"]),
        _on_the_globe(axes["y"], kind),
        True,
        field if is_topography else None,
        coords,
        attrs,
    )


def increasing(field: Any, name: str) -> xr.DataArray:
    """The field with dimensions (y, x) or (time, y, x), both axes increasing.

    Raises
    ------
    TypeError, TidoraError
        If it is no field; names the argument.
    """
    if not isinstance(field, xr.DataArray):
        raise TypeError(f"{name} is a field (xarray.DataArray), not {arguments.kind(field)}")
    dims = ("time", "y", "x") if "time" in field.dims else ("y", "x")
    if set(field.dims) != set(dims):
        said_dims = ", ".join(map(str, field.dims))
        raise TidoraError((Parameter(name), f" has dims (y, x), not ({said_dims}): open_grid reads any file so"))
    if not np.issubdtype(field.dtype, np.number) or np.issubdtype(field.dtype, np.complexfloating):
        raise TidoraError((Parameter(name), f" holds numbers, not {field.dtype}"))
    field = field.transpose(*dims)
    for axis in ("y", "x"):
        if axis in field.coords and field.sizes[axis] > 1 and field[axis].dtype.kind in "iuf":
            if field[axis].values[0] > field[axis].values[1]:
                field = field.isel({axis: slice(None, None, -1)})
    return field


def _checked_axis(field: xr.DataArray, axis: str, name: str) -> np.ndarray:
    if axis not in field.coords or field[axis].dtype.kind not in "iuf":
        raise TidoraError((Parameter(name), f" has no co-ordinates {axis} that are numbers"))
    values = field[axis].values.astype(np.float64)
    if values.size == 0:
        raise TidoraError((Parameter(name), " has no nodes"))
    if not np.all(np.isfinite(values)):
        raise TidoraError((Parameter(name), f": co-ordinates {axis} are no finite numbers"))
    if np.any(np.diff(values) <= 0):
        raise TidoraError((Parameter(name), f": co-ordinates {axis} neither increase nor decrease"))
    return values


def _kind_of(field: xr.DataArray, name: str) -> str:
    units = str(field["x"].attrs.get("units", "")).lower()
    if units.startswith("degree"):
        return GEOGRAPHIC
    if units in ("m", "metre", "metres", "meter", "meters"):
        return PLANE
    what = f': x has the units "{units}"; "degrees_east" or "m" says what its numbers are'
    raise TidoraError((Parameter(name), what))


def _points_of(where: xr.Dataset, name: str) -> Nodes:
    kind = where.attrs.get("coord")
    if kind not in KINDS or any(axis not in where.coords or where[axis].dims != ("point",) for axis in "xy"):
        raise TidoraError((Parameter(name), " is a grid or of points(); a variable of a dataset is taken by its name"))
    places = {}
    for axis in "xy":
        if where[axis].dtype.kind not in "iuf" or not np.all(np.isfinite(where[axis].values)):
            raise TidoraError((Parameter(name), f": {axis} has values that are no finite numbers"))
        places[axis] = np.ascontiguousarray(where[axis].values, dtype=np.float64)
    _check_latitudes(places["y"], kind, name)
    floor = where["topography"] if "topography" in where.data_vars else None
    if floor is not None and (floor.dims != ("point",) or floor.dtype.kind not in "iuf"):
        raise TidoraError((Parameter(name), ": topography is no number for each point"))
    coords = {axis: ("point", places[axis], place_attributes(kind, axis)) for axis in "xy"}
    return Nodes(name, kind, places["x"], _on_the_globe(places["y"], kind), False, floor, coords, {})


def _check_latitudes(values: np.ndarray, kind: str, name: str) -> None:
    if kind == GEOGRAPHIC and values.size and float(np.max(np.abs(values))) > 90.0 + POLE:
        raise TidoraError((Parameter(name), f": latitude {values[np.argmax(np.abs(values))]:g} is beyond a pole"))


def _on_the_globe(values: np.ndarray, kind: str) -> np.ndarray:
    return np.ascontiguousarray(np.clip(values, -90.0, 90.0) if kind == GEOGRAPHIC else values)


def _plain(attrs: dict[Any, Any]) -> dict[str, Any]:
    """Attributes that every writer takes."""
    return {str(key): value for key, value in attrs.items() if isinstance(value, (str, int, float, np.number))}
