"""Shapes of grids that are asked for by a region and a spacing."""

from __future__ import annotations

import math
from typing import Optional

import pyproj
import xarray as xr

from ..errors import Parameter, TidoraError, UsageError
from .kinds import PLANE
from .reference import GEOGRAPHIC_CRS
from .shape import GridShape, MAX_VALUES, Region

_NEAR = 1e-4
"""Part of a spacing by which a region may miss a node: regions are given in decimals, spacings in fractions."""


def target_shape(
    field: xr.DataArray, kind: str, spacing: float, region: Optional[Region], other: Optional[pyproj.CRS]
) -> GridShape:
    """Shape of the grid on which a field is wanted.

    Parameters
    ----------
    field : xarray.DataArray, (..., y, x)
        The source.
    kind : str
        Co-ordinates of the grid, `PLANE` or `GEOGRAPHIC`.
    spacing : float
        m or degrees.
    region : tuple of float, optional
        West, east, south, north; that of the source when None.
    other : pyproj.CRS, optional
        Reference system of the grid when it is not that of the source.

    Raises
    ------
    UsageError
        If the region is missing, no multiple of the spacing, or gives too few or too many nodes.
    """
    if region is None:
        if other is not None:
            raise UsageError(("another reference system needs ", Parameter("region")))
        return _within(field, spacing)
    if other is not None and kind == PLANE and max(abs(edge) for edge in region) <= 360:
        region = _covering(region, other, spacing)
    counts = []
    for first, last, axis in ((*region[:2], "x"), (*region[2:], "y")):
        steps = (last - first) / spacing
        if steps < 0:
            raise UsageError("a region is west/east/south/north, with the smaller number first")
        if abs(steps - round(steps)) > _NEAR:
            raise UsageError(
                f"{first:.10g} to {last:.10g} along {axis} is no multiple of the spacing {spacing:.9g}: "
                f"{steps:.6g} steps"
            )
        counts.append(round(steps) + 1)
    return _checked(GridShape(region[0], region[2], counts[0], counts[1], spacing))


def _within(field: xr.DataArray, spacing: float) -> GridShape:
    """From the first node of a field on; the last one may lie before the end."""
    ends = [(float(field[axis].values[0]), float(field[axis].values[-1])) for axis in ("x", "y")]
    counts = [math.floor((last - first) / spacing + _NEAR) + 1 for first, last in ends]
    return _checked(GridShape(ends[0][0], ends[1][0], counts[0], counts[1], spacing))


def _checked(shape: GridShape) -> GridShape:
    if shape.nx < 2 or shape.ny < 2 or shape.nx * shape.ny > MAX_VALUES:
        raise UsageError(f"the result would have {shape.nx} x {shape.ny} nodes")
    return shape


def _covering(region: Region, wanted: pyproj.CRS, spacing: float) -> Region:
    """The plane rectangle around a region in degrees, its edges multiples of the spacing."""
    west, east, south, north = region
    transformer = pyproj.Transformer.from_crs(GEOGRAPHIC_CRS, wanted, always_xy=True)
    left, bottom, right, top = transformer.transform_bounds(west, south, east, north, densify_pts=101)
    if not all(map(math.isfinite, (left, bottom, right, top))):
        raise TidoraError(f"the region {west:g}/{east:g}/{south:g}/{north:g} cannot be projected into {wanted.name}")
    return (
        math.floor(left / spacing) * spacing,
        math.ceil(right / spacing) * spacing,
        math.floor(bottom / spacing) * spacing,
        math.ceil(top / spacing) * spacing,
    )
