"""Places to compute at: grids without topography, and any points."""

from __future__ import annotations

from typing import Any

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..fields.kinds import GEOGRAPHIC, KINDS, axis_attributes
from ..fields.making import as_field
from ..fields.shape import MAX_VALUES
from .nodes import NO_TOPOGRAPHY, POLE, place_attributes
from .results import said

_NEAR = 1e-3
"""Part of a spacing by which the last node may lie beyond the end: the ends of regions are rounded decimals."""


def grid(
    west: float, east: float, south: float, north: float, spacing: float, *, coord: str = GEOGRAPHIC
) -> xr.DataArray:
    """A grid of zeros to compute on: places without topography.

    Parameters
    ----------
    west, east, south, north : float
        First node, and where the last one may lie at most, in degrees or metres. A grid across the date line counts on
        beyond 180, or begins below -180.
    spacing : float
        Of both axes, in the same unit.
    coord : {'geographic', 'plane'}
        Degrees or metres.

    Returns
    -------
    xarray.DataArray, float32, (y, x)
        Node i of an axis lies at its beginning plus i times `spacing`, in double precision; the last one at or before
        the end, within a thousandth of a spacing. The attribute ``topography`` is "none": zeros of this function are no
        land at sea level. Arithmetic takes attributes away: ``grid(...) - 4000`` is a sea of 4000 m.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be; names it.
    """
    arguments.choice("coord", coord, KINDS)
    step = arguments.number("spacing", spacing)
    if not step > 0:
        raise TidoraError((Parameter("spacing"), f" is above 0, not {step:g}"))
    edges = {
        name: arguments.number(name, value)
        for name, value in (("west", west), ("east", east), ("south", south), ("north", north))
    }
    nx, ny = _count("west", "east", edges, step), _count("south", "north", edges, step)
    if nx * ny > MAX_VALUES:
        raise TidoraError((Parameter("spacing"), f" {step:g} makes {nx} x {ny} nodes, 2^31 or more"))
    if coord == GEOGRAPHIC:
        for name in ("south", "north"):
            arguments.within(name, np.array([edges[name]]), -90.0 - POLE, 90.0 + POLE)
    attrs: dict[str, Any] = {"units": "m", "long_name": "places without topography", **NO_TOPOGRAPHY}
    if float(np.float32(step)) == step:
        attrs["grid_spacing"] = step
    attrs["history"] = said("grid")
    starts = {"y": (edges["south"], ny), "x": (edges["west"], nx)}
    coords = {
        axis: (axis, first + np.arange(size) * step, axis_attributes(coord, axis))
        for axis, (first, size) in starts.items()
    }
    field = as_field(("y", "x"), np.zeros((ny, nx), np.float32), attrs, coords)
    for axis in ("x", "y"):
        field[axis].encoding["_FillValue"] = None
    return field


def _count(first: str, last: str, edges: dict[str, float], spacing: float) -> int:
    """Nodes of an axis."""
    steps = (edges[last] - edges[first]) / spacing
    if steps < 0:
        raise TidoraError((Parameter(last), f" {edges[last]:g} is below ", Parameter(first), f" {edges[first]:g}"))
    if not steps < MAX_VALUES:
        raise TidoraError((Parameter("spacing"), f" {spacing:g} makes 2^31 nodes or more"))
    return int(steps + _NEAR) + 1


def points(x: Any, y: Any, topography: Any = None, *, coord: str = GEOGRAPHIC) -> xr.Dataset:
    """Points to compute at: the nodes of an unstructured mesh, tide gauges, GPS stations.

    Parameters
    ----------
    x, y : array_like
        Degrees or metres; numbers and arrays of any shape are broadcast, in row-major order.
    topography : array_like, optional
        m, negative below sea level.
    coord : {'geographic', 'plane'}
        Degrees or metres.

    Returns
    -------
    xarray.Dataset, (point,)
        Co-ordinates ``x`` and ``y``, float64; variable ``topography``, float32, if there is one.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be; names it.
    """
    arguments.choice("coord", coord, KINDS)
    columns = {"x": arguments.numbers("x", x), "y": arguments.numbers("y", y)}
    if topography is not None:
        columns["topography"] = arguments.numbers("topography", topography)
    if coord == GEOGRAPHIC:
        arguments.within("y", columns["y"], -90.0 - POLE, 90.0 + POLE)
    flat = arguments.broadcast(columns)
    attrs = {"coord": coord, "history": said("points"), "Conventions": "CF-1.8"}
    variables = {}
    if topography is not None:
        meaning = {"units": "m", "long_name": "topography, negative below sea level"}
        variables["topography"] = ("point", flat["topography"].astype(np.float32), meaning)
    return xr.Dataset(variables, {axis: ("point", flat[axis], place_attributes(coord, axis)) for axis in "xy"}, attrs)
