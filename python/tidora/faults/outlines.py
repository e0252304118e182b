"""Where the elements of a rupture lie."""

from __future__ import annotations

import numpy as np
import pyproj
import xarray as xr

from ..errors import TidoraError
from ..fields.kinds import GEOGRAPHIC

_ELLIPSOID = pyproj.Geod(ellps="GRS80")


def utm_zone(longitude: float) -> int:
    """UTM zone that the program takes for an element, from the longitude of its reference point in degrees."""
    return int((longitude - 180.0 if longitude > 180.0 else longitude + 180.0) / 6.0 + 1.0)


def outlines(faults: xr.Dataset, frame: str = "utm") -> np.ndarray:
    """Corners of the elements at the surface.

    Parameters
    ----------
    faults : xarray.Dataset
        Of `read_faults`.
    frame : {'utm', 'globe'}
        Of geographic elements. "utm": rectangles in the UTM zone of their reference point on the GRS80 ellipsoid, as
        the program computes them, and brought back to degrees. "globe": their corners lie at the ends of geodesics from
        the reference point, as `deform` computes them.

    Returns
    -------
    numpy.ndarray, float64, (element, 4, 2)
        x and y of: the reference point, the other end of the upper edge, and the lower edge back again. The upper
        edge runs from corner 0 to corner 1, along strike; corner 2 and 3 lie down dip, to its right.
    """
    strike, dip = np.radians(faults["strike"].values), np.radians(faults["dip"].values)
    along = faults["length"].values[:, None] * np.stack([np.sin(strike), np.cos(strike)], axis=-1)
    down = (faults["width"].values * np.cos(dip))[:, None] * np.stack([np.cos(strike), -np.sin(strike)], axis=-1)
    offsets = np.stack([0 * along, along, along + down, down], axis=1)
    reference = np.stack([faults["x"].values, faults["y"].values], axis=-1)[:, None, :]
    if faults.attrs["coord"] != GEOGRAPHIC:
        return reference + offsets
    return _by_geodesics(reference, offsets) if frame == "globe" else _in_zones(faults, reference, offsets)


def _by_geodesics(reference: np.ndarray, offsets: np.ndarray) -> np.ndarray:
    start = np.broadcast_to(reference, offsets.shape)
    azimuth = np.degrees(np.arctan2(offsets[..., 0], offsets[..., 1]))
    lon, lat, _ = _ELLIPSOID.fwd(start[..., 0], start[..., 1], azimuth, np.hypot(offsets[..., 0], offsets[..., 1]))
    return np.stack([_in_turn_of(start[..., 0], np.asarray(lon)), np.asarray(lat)], axis=-1)


def _in_turn_of(reference: np.ndarray, lon: np.ndarray) -> np.ndarray:
    """Longitudes in the turn of the reference point: a grid around the date line may count beyond 180."""
    return np.asarray(lon + 360.0 * np.round((reference - lon) / 360.0))


def _in_zones(faults: xr.Dataset, reference: np.ndarray, offsets: np.ndarray) -> np.ndarray:
    corners = np.empty_like(offsets)
    zones = np.array([utm_zone(x) for x in faults["x"].values], dtype=int)
    for zone in sorted(set(zones.tolist())):
        here = zones == zone
        plane = _zone_plane(zone)
        x, y = plane(*reference[here, 0].T)
        east, north = np.asarray(x)[:, None] + offsets[here, :, 0], np.asarray(y)[:, None] + offsets[here, :, 1]
        lon, lat = plane(east, north, inverse=True)
        corners[here] = np.stack([_in_turn_of(reference[here, :, 0], np.asarray(lon)), lat], axis=-1)
    return corners


def _zone_plane(zone: int) -> pyproj.Proj:
    try:
        return pyproj.Proj(proj="utm", zone=zone, ellps="GRS80")
    except pyproj.exceptions.CRSError:
        raise TidoraError(
            f"there is no UTM zone {zone}: a longitude of exactly 180 is given as -180, and latitude "
            "stands before longitude"
        ) from None
