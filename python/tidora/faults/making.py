"""Tables of elements from numbers, whatever point of an element they give."""

from __future__ import annotations

import math
from typing import Any

import numpy as np
import pyproj
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..fields.kinds import GEOGRAPHIC, KINDS
from ..version import VERSION
from .table import NAMES, REFERENCES, TOP_START, make_table

_ELLIPSOID = pyproj.Geod(ellps="GRS80")

_PARTS = {
    # part of the length along strike and of the width down dip, from the start of the upper edge
    "top start": (0.0, 0.0),
    "top centre": (0.5, 0.0),
    "centroid": (0.5, 0.5),
    "bottom start": (0.0, 1.0),
    "bottom centre": (0.5, 1.0),
    "noaa": (0.5, 1.0),
}

_NEAR = 1e-6
"""m: a reference point is found when the given point lies as close as that to where it was given, and an upper edge
counts as being at the surface. Far below what any model knows, far above the rounding of Earth-centred metres."""


def make_faults(
    x: Any,
    y: Any,
    depth: Any,
    strike: Any,
    dip: Any,
    rake: Any,
    length: Any,
    width: Any,
    slip: Any,
    lag_time: Any = 0.0,
    duration: Any = 0.0,
    *,
    coord: str = GEOGRAPHIC,
    reference: str = TOP_START,
) -> xr.Dataset:
    """A table of rectangular elements.

    Parameters
    ----------
    x, y : array_like
        Reference point: longitude and latitude in degrees, or metres. Numbers and arrays of any shape are broadcast;
        the elements stand in row-major order.
    depth : array_like
        Of the reference point below sea level, m.
    strike, dip, rake : array_like
        Degrees. Strike clockwise from true north, or from the direction of y; dip from 0 to 90, downward to the right
        of strike; rake 0 left-lateral, 90 reverse.
    length, width : array_like
        Along strike and down dip, m, at least 0.
    slip : array_like
        m.
    lag_time, duration : array_like
        When an element starts to slip, and how long it takes, s.
    coord : {'geographic', 'plane'}
        Degrees or metres.
    reference : {'top start', 'top centre', 'centroid', 'bottom start', 'bottom centre', 'noaa'}
        Which point of an element is given; "start" is the near end, looking along strike. "noaa": the place of the
        bottom centre and the depth of the upper edge.

    Returns
    -------
    xarray.Dataset
        As of `read_faults`; ``base_offset`` and ``depth`` both have the depth of the upper edge. The reference point of
        the table is the "top start". In degrees it is placed so that the geodesic on GRS80 which starts there, with the
        direction and the length that the given point has within the rectangle (its part down dip as seen from above),
        ends at the given point within 1e-6 m.

    Raises
    ------
    TypeError
        If an argument is no number.
    TidoraError
        If an argument has a value that cannot be, shapes do not fit together, or the upper edge lies above the surface.
    """
    arguments.choice("coord", coord, KINDS)
    arguments.choice("reference", reference, REFERENCES)
    given = {
        "x": x, "y": y, "depth": depth, "strike": strike, "dip": dip, "rake": rake, "length": length, "width": width,
        "slip": slip, "lag_time": lag_time, "duration": duration,
    }  # fmt: skip
    columns = arguments.broadcast({name: _checked(name, value, coord) for name, value in given.items()})
    columns["depth"] = _upper_depth(columns, reference)
    columns["base_offset"] = columns["depth"]
    columns["x"], columns["y"] = _start_point(columns, coord, reference)
    history = f"tidora {VERSION}: make_faults reference={reference}"
    return make_table({name: columns[name] for name in NAMES}, coord, {"history": history})


_LIMITS = {"dip": (0.0, 90.0), "length": (0.0, math.inf), "width": (0.0, math.inf), "duration": (0.0, math.inf)}


def _checked(name: str, value: Any, coord: str) -> np.ndarray:
    values = arguments.numbers(name, value)
    if name == "y" and coord == GEOGRAPHIC:
        return arguments.within(name, values, -90.0, 90.0)
    return arguments.within(name, values, *_LIMITS[name]) if name in _LIMITS else values


def _upper_depth(columns: dict[str, np.ndarray], reference: str) -> np.ndarray:
    part = 0.0 if reference == "noaa" else _PARTS[reference][1]
    upper = columns["depth"] - part * columns["width"] * np.sin(np.radians(columns["dip"]))
    above = np.flatnonzero(upper < -_NEAR)
    if above.size:
        at = int(above[0])
        said = f" {columns['depth'][at]:g} m puts the upper edge of element {at} {-upper[at]:g} m above the surface"
        raise TidoraError((Parameter("depth"), said))
    return np.maximum(upper, 0.0)


def _start_point(columns: dict[str, np.ndarray], coord: str, reference: str) -> tuple[np.ndarray, np.ndarray]:
    """x and y of the start of the upper edge."""
    x, y, strike = columns["x"], columns["y"], np.radians(columns["strike"])
    if reference == TOP_START:
        return x, y
    along = _PARTS[reference][0] * columns["length"]
    across = _PARTS[reference][1] * columns["width"] * np.cos(np.radians(columns["dip"]))
    east = along * np.sin(strike) + across * np.cos(strike)
    north = along * np.cos(strike) - across * np.sin(strike)
    return _started_at(x, y, east, north) if coord == GEOGRAPHIC else (x - east, y - north)


def _started_at(x: np.ndarray, y: np.ndarray, east: np.ndarray, north: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Where geodesics start that leave towards `east` and `north`, have their length, and end at x and y.

    Newton's method with differences over a metre: close to a pole, directions change too fast with the place for
    anything simpler.
    """
    azimuth, length = np.degrees(np.arctan2(east, north)), np.hypot(east, north)
    lon, lat, _ = _ELLIPSOID.fwd(x, y, azimuth + 180.0, length)
    lon, lat = np.asarray(lon, np.float64), np.asarray(lat, np.float64)
    miss = _miss(lon, lat, azimuth, length, x, y)
    for _ in range(30):
        if not np.any(np.hypot(*miss) > _NEAR):
            return x + np.remainder(lon - x + 180.0, 360.0) - 180.0, lat
        by_east = _miss(*_moved(lon, lat, 1.0, 0.0), azimuth, length, x, y) - miss
        by_north = _miss(*_moved(lon, lat, 0.0, 1.0), azimuth, length, x, y) - miss
        determinant = by_east[0] * by_north[1] - by_east[1] * by_north[0]
        with np.errstate(divide="ignore", invalid="ignore"):
            step = np.nan_to_num(
                np.stack([miss[1] * by_north[0] - miss[0] * by_north[1], miss[0] * by_east[1] - miss[1] * by_east[0]])
                / determinant
            )
        # Never farther than the way itself: a bad slope must not throw a point around the earth.
        size = np.maximum(np.hypot(*step), 1e-300)
        lon, lat = _moved(lon, lat, *(step * np.minimum(1.0, (length + 1.0) / size)))
        miss = _miss(lon, lat, azimuth, length, x, y)
    at = int(np.argmax(np.hypot(*miss)))
    raise TidoraError((Parameter("y"), f" {y[at]:g}: element {at} is too close to a pole for its size"))


def _moved(lon: np.ndarray, lat: np.ndarray, east: Any, north: Any) -> tuple[np.ndarray, np.ndarray]:
    """Points moved by some metres."""
    azimuth, way = np.broadcast_arrays(np.degrees(np.arctan2(east, north)), np.hypot(east, north))
    to_lon, to_lat, _ = _ELLIPSOID.fwd(lon, lat, np.resize(azimuth, lon.shape), np.resize(way, lon.shape))
    return np.asarray(to_lon), np.asarray(to_lat)


def _miss(
    lon: np.ndarray, lat: np.ndarray, azimuth: np.ndarray, length: np.ndarray, x: np.ndarray, y: np.ndarray
) -> np.ndarray:
    """(2, element): metres east and north from x, y to where geodesics end."""
    end_lon, end_lat, _ = _ELLIPSOID.fwd(lon, lat, azimuth, length)
    way = _earth_centred(np.asarray(end_lon), np.asarray(end_lat)) - _earth_centred(x, y)
    sin_lon, cos_lon, sin_lat, cos_lat = _sines(x, y)
    east = -sin_lon * way[0] + cos_lon * way[1]
    north = -sin_lat * (cos_lon * way[0] + sin_lon * way[1]) + cos_lat * way[2]
    return np.stack([east, north])


def _sines(lon: np.ndarray, lat: np.ndarray) -> tuple[np.ndarray, np.ndarray, np.ndarray, np.ndarray]:
    lam, phi = np.radians(lon), np.radians(lat)
    return np.sin(lam), np.cos(lam), np.sin(phi), np.cos(phi)


def _earth_centred(lon: np.ndarray, lat: np.ndarray) -> np.ndarray:
    """(3, point): Earth-centred co-ordinates of points on the ellipsoid, m."""
    sin_lon, cos_lon, sin_lat, cos_lat = _sines(lon, lat)
    curvature = _ELLIPSOID.a / np.sqrt(1.0 - _ELLIPSOID.es * sin_lat**2)
    return np.stack(
        [curvature * cos_lat * cos_lon, curvature * cos_lat * sin_lon, curvature * (1.0 - _ELLIPSOID.es) * sin_lat]
    )
