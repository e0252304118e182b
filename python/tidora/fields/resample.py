"""Values between the nodes of a field, and fields on other nodes."""

from __future__ import annotations

from typing import Callable, Optional

import numpy as np
import xarray as xr

from ..errors import TidoraError
from .kinds import GEOGRAPHIC, kind_of
from .lazy import Key, lazily, span
from .making import make_field
from .shape import GridShape

SNAP = 1e-4
"""Part of a spacing below which a point counts as a node, whose value is then taken as it is."""

_POINTS = 1 << 19
"""Points that are sampled together."""

ToSource = Callable[[np.ndarray, np.ndarray], tuple[np.ndarray, np.ndarray]]


class _Axis:
    """Where points lie between the nodes of an axis.

    Attributes
    ----------
    first : numpy.ndarray, int
        Node before each point; -1 outside of the axis.
    part : numpy.ndarray
        Way to the next node, 0 to 1; 0 on a node.
    """

    def __init__(self, nodes: np.ndarray, points: np.ndarray, period: Optional[float] = None) -> None:
        if period is not None and points.size:
            # All points in one turn that starts at the first node; a global axis goes on behind its last node.
            points = points - period * np.floor((points - nodes[0]) / period + SNAP * 1e-2)
            if nodes[-1] + 1.5 * (nodes[-1] - nodes[-2]) > nodes[0] + period:
                nodes = np.append(nodes, nodes[0] + period)
        at = np.interp(points, nodes, np.arange(nodes.size), left=-1.0, right=-1.0)
        for end, index in ((nodes[0], 0), (nodes[-1], nodes.size - 1)):
            neighbour = nodes[1] - nodes[0] if index == 0 else nodes[-1] - nodes[-2]
            at[np.abs(points - end) <= SNAP * neighbour] = index
        nearest = np.rint(at)
        at = np.where(np.abs(at - nearest) <= SNAP, nearest, at)
        self.first = np.floor(at).astype(np.int64)
        self.part = at - self.first
        self.outside = at < 0


def _columns(field: xr.DataArray, rows: slice, first: int, end: int) -> np.ndarray:
    """Rows of a field and columns `first` to `end` - 1, which may run on behind the last one around the earth."""
    size = field.sizes["x"]
    if end <= size:
        return np.asarray(field.isel(y=rows, x=slice(first, end)).values)
    parts = [
        field.isel(y=rows, x=slice(min(first, size), size)),
        field.isel(y=rows, x=slice(max(first - size, 0), end - size)),
    ]
    return np.concatenate([np.asarray(part.values) for part in parts], axis=1)


def sample(field: xr.DataArray, x: np.ndarray, y: np.ndarray) -> np.ndarray:
    """Bilinear values of a field at points.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
        Axes increasing. Only the rows and columns around the points are read.
    x, y : numpy.ndarray
        Points, of one shape, in the co-ordinates of the field. On geographic fields whole turns do not matter.

    Returns
    -------
    numpy.ndarray, float64
        Shape of `x`; NaN outside of the nodes, and where a needed value is missing. A point within `SNAP` of a node
        gets the value of the node alone.
    """
    nodes_x, nodes_y = np.asarray(field["x"].values, float), np.asarray(field["y"].values, float)
    if nodes_x.size < 2 or nodes_y.size < 2:
        raise TidoraError("a grid of one row or column has nothing between its nodes")
    across = _Axis(nodes_x, np.asarray(x, float).ravel(), 360.0 if kind_of(field) == GEOGRAPHIC else None)
    along = _Axis(nodes_y, np.asarray(y, float).ravel())
    inside = ~(across.outside | along.outside)
    values = np.full(inside.shape, np.nan)
    if inside.any():
        i, j, p, q = (part[inside] for part in (across.first, along.first, across.part, along.part))
        i0, j0 = int(i.min()), int(j.min())
        rows = slice(j0, min(int(j.max()) + 2, nodes_y.size))
        size = nodes_x.size
        global_end = (
            size + 1
            if kind_of(field) == GEOGRAPHIC and nodes_x[-1] + 1.5 * (nodes_x[-1] - nodes_x[-2]) > nodes_x[0] + 360.0
            else size
        )
        window = _columns(field, rows, i0, min(int(i.max()) + 2, global_end)).astype(np.float64)
        i, j = i - i0, j - j0
        i1, j1 = np.where(p > 0, i + 1, i), np.where(q > 0, j + 1, j)
        south = window[j, i] * (1 - p) + window[j, i1] * p
        north = window[j1, i] * (1 - p) + window[j1, i1] * p
        values[inside] = np.where(q > 0, south * (1 - q) + north * q, south)
    return values.reshape(np.shape(x))


def _mean(values: np.ndarray) -> np.ndarray:
    """Mean over axes 1 and 3 of what is there: at the edge of the source a cell is cut, not missing."""
    there = ~np.isnan(values)
    count = there.sum(axis=(1, 3))
    total = np.where(there, values, 0.0).sum(axis=(1, 3))
    return np.where(count > 0, total / np.maximum(count, 1), np.nan)


def resampled(
    field: xr.DataArray,
    shape: GridShape,
    kind: str,
    to_source: Optional[ToSource] = None,
    samples: int = 1,
) -> xr.DataArray:
    """A field on the nodes of another grid; computed when it is read.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
        Source.
    shape : GridShape
        Target.
    kind : str
        Co-ordinates of the target.
    to_source : callable, optional
        Takes x and y of the target to those of the source. None when they are the same.
    samples : int
        1: the bilinear value at each node. n: the mean of n by n bilinear values in the cell around the node, of those
        that the source has, for targets coarser than their source.

    Returns
    -------
    xarray.DataArray, (y, x), float32
        NaN where the source has no value.
    """
    offsets = (np.arange(samples) + 0.5) / samples - 0.5

    def read(key: Key) -> np.ndarray:
        r0, r1, rows = span(key[0], shape.ny)
        c0, c1, columns = span(key[1], shape.nx)
        block = np.empty((r1 - r0, c1 - c0), np.float32)
        fine_x = (shape.x[c0:c1, None] + shape.dx * offsets).ravel()
        together = max(1, _POINTS // (fine_x.size * samples))
        for first in range(r0, r1, together):
            nodes_y = shape.y[first : min(first + together, r1)]
            x, y = np.meshgrid(fine_x, (nodes_y[:, None] + shape.dx * offsets).ravel())
            if to_source is not None:
                x, y = to_source(x, y)
            values = sample(field, x, y).reshape(nodes_y.size, samples, c1 - c0, samples)
            block[first - r0 : first - r0 + nodes_y.size] = _mean(values) if samples > 1 else values[:, 0, :, 0]
        return block[rows, columns]

    attrs = {name: value for name, value in field.attrs.items() if name not in ("crs_wkt", "grid_spacing")}
    return make_field(lazily((shape.ny, shape.nx), read), shape, kind, attrs)
