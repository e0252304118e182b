"""How far a map reaches, and which of its nodes are drawn."""

from __future__ import annotations

import math

import numpy as np
import xarray as xr

from ..fields.kinds import GEOGRAPHIC, kind_of

MAX_NODES = 2000
"""Nodes of an axis that a picture shows; of more, every second, third, ... is drawn."""


def thinned(field: xr.DataArray) -> xr.DataArray:
    """Every n-th node of a field, so that no axis has more than `MAX_NODES`."""
    steps = {axis: max(1, -(-field.sizes[axis] // MAX_NODES)) for axis in ("y", "x")}
    return field.isel({axis: slice(None, None, step) for axis, step in steps.items()})


def edges(field: xr.DataArray) -> tuple[float, float, float, float]:
    """West, east, south and north edge of the cells of a field."""
    limits = []
    for axis in ("x", "y"):
        nodes = np.asarray(field[axis].values)
        half = 0.5 * (nodes[1] - nodes[0]) if nodes.size > 1 else 0.5 * float(field.attrs.get("grid_spacing", 1.0))
        limits += [float(nodes[0] - half), float(nodes[-1] + half)]
    return limits[0], limits[1], limits[2], limits[3]


def aspect(field: xr.DataArray) -> float:
    """Length of a unit of y over that of a unit of x: true at the middle latitude of a geographic map."""
    if kind_of(field) != GEOGRAPHIC:
        return 1.0
    middle = 0.5 * float(field["y"][0] + field["y"][-1])
    return 1.0 / max(math.cos(math.radians(middle)), 0.05)
