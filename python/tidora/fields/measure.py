"""Figures of a field: extremes, displaced volume, potential energy.

A node stands for the cell of one spacing around it. On plane grids all cells have the same area; on geographic grids
the area of a cell is exact on the GRS80 ellipsoid, the one on which the program projects.
"""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Optional

import numpy as np
import xarray as xr

from ..errors import TidoraError
from .kinds import GEOGRAPHIC, kind_of
from .shape import GridShape, row_blocks, shape_of

DENSITY = 1025.0
"""Of sea water, kg/m3."""

GRAVITY = 9.8
"""m/s2, as in the program."""

SEMI_MAJOR = 6378137.0
"""Of GRS80, m."""

FLATTENING = 1.0 / 298.257222101
"""Of GRS80."""


@dataclass(frozen=True)
class Extreme:
    """A value and the node at which it lies."""

    value: float
    x: float
    y: float


@dataclass(frozen=True)
class Measures:
    """Figures of one field.

    Attributes
    ----------
    highest, lowest : Extreme or None
        In metres; None when no value is a number. Of equal values the southernmost, then the westernmost counts.
    raised, lowered : float
        Volume above and below 0, m3; both positive.
    energy : float
        Potential energy of a sea surface of this shape against one at rest, J:
        ``density * gravity / 2`` times the integral of the squared height.
    missing : int
        Nodes without a value; they count nowhere.
    """

    highest: Optional[Extreme]
    lowest: Optional[Extreme]
    raised: float
    lowered: float
    energy: float
    missing: int

    @property
    def volume(self) -> float:
        """Raised less lowered, m3."""
        return self.raised - self.lowered


def _zone_area(latitude: np.ndarray) -> np.ndarray:
    """Area between the equator and a latitude in degrees, m2 per radian of longitude.

    b^2 / 2 [sin / (1 - e^2 sin^2) + artanh(e sin) / e]; Snyder (1987), USGS Prof. Paper 1395, eq. 3-12 (authalic q
    times a^2 / 2).
    """
    eccentricity = math.sqrt(FLATTENING * (2.0 - FLATTENING))
    sine = np.sin(np.radians(np.clip(latitude, -90.0, 90.0)))
    q = sine / (1.0 - (eccentricity * sine) ** 2) + np.arctanh(eccentricity * sine) / eccentricity
    return 0.5 * (SEMI_MAJOR * (1.0 - FLATTENING)) ** 2 * q


def cell_areas(shape: GridShape, kind: str) -> np.ndarray:
    """float64 (ny,): area in m2 of the cells of each row. Cells end at the poles."""
    if kind != GEOGRAPHIC:
        return np.full(shape.ny, shape.dx**2)
    zone = _zone_area(shape.y + shape.dx / 2) - _zone_area(shape.y - shape.dx / 2)
    return math.radians(shape.dx) * zone


def area_factors(x: np.ndarray, y: np.ndarray, kind: str) -> tuple[np.ndarray, np.ndarray]:
    """Two factors, float64 (y,) and (x,): their product is the area in m2 of each cell of a grid with any axes.

    Cells end halfway between nodes, and at the poles; the outermost reach as far outward as inward. An axis of one node
    has the spacing of the other.

    Parameters
    ----------
    x, y : numpy.ndarray
        Increasing, not both of one node.
    kind : str
        `PLANE` or `GEOGRAPHIC`.
    """
    edges = {axis: _edges(own, other) for axis, own, other in (("x", x, y), ("y", y, x))}
    if kind != GEOGRAPHIC:
        return np.diff(edges["y"]), np.diff(edges["x"])
    return np.diff(_zone_area(edges["y"])), np.radians(np.diff(edges["x"]))


def _edges(axis: np.ndarray, other: np.ndarray) -> np.ndarray:
    """Where the cells of an axis begin, and where the last one ends."""
    if axis.size == 1:
        half = 0.5 * float(other[-1] - other[0]) / (other.size - 1)
        return np.array([axis[0] - half, axis[0] + half])
    between = 0.5 * (axis[:-1] + axis[1:])
    return np.concatenate([[2.0 * axis[0] - between[0]], between, [2.0 * axis[-1] - between[-1]]])


def measure(
    field: xr.DataArray,
    topography: Optional[xr.DataArray] = None,
    density: float = DENSITY,
    gravity: float = GRAVITY,
) -> Measures:
    """Extremes, volumes and energy of a field, in blocks of rows.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
        Heights in m.
    topography : xarray.DataArray, (y, x), optional
        On the same nodes: only those below 0 count for volume and energy.
    density : float
        kg/m3.
    gravity : float
        m/s2.

    Returns
    -------
    Measures
    """
    shape = shape_of(field)
    areas = cell_areas(shape, kind_of(field))
    if topography is not None and shape_of(topography) != shape:
        raise TidoraError(f"the topography lies on other nodes: {shape_of(topography)}, but the field on {shape}")
    highest: Optional[Extreme] = None
    lowest: Optional[Extreme] = None
    raised = lowered = squares = 0.0
    missing = 0
    for rows in row_blocks(shape):
        block = np.asarray(field.isel(y=rows).values, dtype=np.float64)
        there = ~np.isnan(block)
        missing += int(block.size - np.count_nonzero(there))
        if there.any():
            top, bottom = _extreme(shape, rows, block, np.nanargmax(block)), _extreme(
                shape, rows, block, np.nanargmin(block)
            )
            highest = top if highest is None or top.value > highest.value else highest
            lowest = bottom if lowest is None or bottom.value < lowest.value else lowest
        block[~there] = 0.0
        if topography is not None:
            block[~(topography.isel(y=rows).values < 0)] = 0.0
        area = areas[rows, None]
        raised += float(np.sum(np.maximum(block, 0.0) * area))
        lowered += float(np.sum(np.maximum(-block, 0.0) * area))
        squares += float(np.sum(block**2 * area))
    return Measures(highest, lowest, raised, lowered, 0.5 * density * gravity * squares, missing)


def _extreme(shape: GridShape, rows: slice, block: np.ndarray, at: np.intp) -> Extreme:
    row, column = divmod(int(at), shape.nx)
    return Extreme(float(block[row, column]), float(shape.x[column]), float(shape.y[rows.start + row]))
