"""Values of a field along a line."""

from __future__ import annotations

import math

import numpy as np
import pyproj
import xarray as xr

from .kinds import GEOGRAPHIC, kind_of
from .resample import sample

_ELLIPSOID = pyproj.Geod(ellps="GRS80")

Section = tuple[float, float, float, float]
"""x0, y0, x1, y1: from A to B."""


def profile(field: xr.DataArray, section: Section) -> tuple[np.ndarray, np.ndarray]:
    """Values along a straight line of the map.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
    section : tuple of float
        x0, y0, x1, y1 in the co-ordinates of the field.

    Returns
    -------
    distance, values : numpy.ndarray
        m from the start (on the GRS80 ellipsoid for degrees), and bilinear values in m, about two to a node.
    """
    x0, y0, x1, y1 = section
    spacing = float(field["x"][1] - field["x"][0])
    count = int(min(max(2 * math.hypot(x1 - x0, y1 - y0) / spacing, 50), 5000)) + 1
    x, y = np.linspace(x0, x1, count), np.linspace(y0, y1, count)
    if kind_of(field) == GEOGRAPHIC:
        _, _, steps = _ELLIPSOID.inv(x[:-1], y[:-1], x[1:], y[1:])
    else:
        steps = np.hypot(np.diff(x), np.diff(y))
    return np.concatenate([[0.0], np.cumsum(steps)]), sample(field, x, y)
