"""The fault file: its elements, their moment, and where each of them lies."""

from __future__ import annotations

import math
import os
import warnings
from typing import NamedTuple

import numpy as np
import pyproj
import xarray as xr

from . import text
from .errors import FileError, Parameter, Path, TidoraError, TidoraWarning
from .geometry import GEOGRAPHIC, KINDS, PLANE

RIGIDITY = 40e9
"""Pa; taken when none is given."""

_COLUMNS = (
    # name, column of the file, unit, meaning
    ("y", 0, "", "reference point: start of the upper edge, looking along strike the near upper corner"),
    ("x", 1, "", "reference point: start of the upper edge, looking along strike the near upper corner"),
    ("base_offset", 2, "m", "depth of the upper edge below sea level; counts when there are several elements"),
    ("depth", 3, "m", "depth of the upper edge below the sea floor; counts when there is one element"),
    ("strike", 4, "degree", "clockwise from grid north; of the element's UTM zone on geographic grids"),
    ("dip", 5, "degree", "downward to the right of the strike direction"),
    ("rake", 6, "degree", "direction of slip of the hanging wall: 0 left-lateral, 90 reverse"),
    ("length", 7, "m", "along strike"),
    ("width", 8, "m", "down dip"),
    ("slip", 9, "m", "slip"),
    ("lag_time", 11, "s", "when the element starts to slip"),
    ("duration", 12, "s", "how long it slips"),
)


def read_faults(path: Path, coord: str) -> xr.Dataset:
    """Elements of a fault file.

    Parameters
    ----------
    path : path
        Fault file.
    coord : {'plane', 'geographic'}
        Whether reference points are in metres or degrees; the file does not say it.

    Returns
    -------
    xarray.Dataset
        One float64 variable ``(element,)`` for each column, with attribute ``units``: ``x, y, base_offset, depth,
        strike, dip, rake, length, width, slip, lag_time, duration``; co-ordinate ``line`` has the lines of the file.

    Raises
    ------
    FileError
        If a line has fewer than ten columns, or a column that counts starts with no number.
    """
    if coord not in KINDS:
        raise ValueError(f"coord is one of {KINDS}, not {coord!r}")
    rows, lines = [], []
    for line in text.bounded_lines(path, text.DATA_LINE):
        if line.is_comment:
            continue
        words = text.tokens(line.text)
        if len(words) < 10:
            what = "an empty line" if text.is_line_end(line.text) else f"{len(words)} columns"
            raise FileError(path, f"an element has at least ten columns, not {what}", line.number)
        rows.append([_number(path, line.number, words, column, name) for name, column, _, _ in _COLUMNS])
        lines.append(line.number)
    table = np.array(rows, dtype=np.float64).reshape(len(rows), len(_COLUMNS))
    units = {"x": "degrees_east", "y": "degrees_north"} if coord == GEOGRAPHIC else {"x": "m", "y": "m"}
    variables = {
        name: ("element", table[:, at], {"units": unit or units[name], "long_name": meaning})
        for at, (name, _, unit, meaning) in enumerate(_COLUMNS)
    }
    return xr.Dataset(
        variables,
        {"line": ("element", np.array(lines, dtype=int))},
        {"coord": coord, "source_file": os.path.basename(os.fspath(path))},
    )


def _number(path: Path, line: int, words: list[str], column: int, name: str) -> float:
    if column >= 10 and len(words) < 13:
        return 0.0
    try:
        return text.to_float(words[column])
    except ValueError as error:
        raise FileError(
            path, f"column {column + 1} ({name}) is a number, not '{error}' (the program would take 0)", line
        ) from None


class Moment(NamedTuple):
    """Size of a rupture. Slip of either sign counts by its amount."""

    area: float
    """m2, elements in one place counted once"""
    potency: float
    """m3"""
    moment: float
    """N m"""
    magnitude: float
    """(log10 moment - 9.1) / 1.5; NaN without slip"""


def magnitude(moment: float) -> float:
    """Moment magnitude of a moment in N m: (log10 M0 - 9.1) / 1.5 (Kanamori 1977; constant of the IASPEI standard)."""
    return (math.log10(moment) - 9.1) / 1.5 if moment > 0 else math.nan


def seismic_moment(faults: xr.Dataset, rigidity: float = RIGIDITY) -> Moment:
    """Area, potency, moment and magnitude of all elements.

    Parameters
    ----------
    faults : xarray.Dataset
        Of `read_faults`.
    rigidity : float
        Pa.
    """
    potency = float(np.sum(element_potency(faults)))
    area = sum(length * width for length, width in {row[:7]: row[:2] for row in _places(faults)}.values())
    return Moment(float(area), potency, rigidity * potency, magnitude(rigidity * potency))


def element_potency(faults: xr.Dataset) -> np.ndarray:
    """float64 (element,): length times width times the amount of slip, m3."""
    return np.asarray(faults["length"].values * faults["width"].values * np.abs(faults["slip"].values))


def _places(faults: xr.Dataset) -> list[tuple[float, ...]]:
    names = ("length", "width", "x", "y", "strike", "dip", upper_depth(faults)[1])
    return list(zip(*(faults[name].values.tolist() for name in names)))


def distinct_places(faults: xr.Dataset) -> int:
    """Number of different rectangles: a rupture in time repeats one for each of its windows."""
    return len(set(_places(faults)))


def upper_depth(faults: xr.Dataset) -> tuple[np.ndarray, str]:
    """Depth of the upper edges in m, (element,), and the column that counts for the program.

    ``depth``, below the sea floor, with one element; ``base_offset``, below sea level, with several.
    """
    name = "depth" if faults.sizes["element"] == 1 else "base_offset"
    return np.asarray(faults[name].values), name


def lower_depth(faults: xr.Dataset) -> np.ndarray:
    """float64 (element,): depth of the lower edges in m, from the same level as `upper_depth`."""
    return upper_depth(faults)[0] + faults["width"].values * np.sin(np.radians(faults["dip"].values))


def utm_zone(longitude: float) -> int:
    """UTM zone that the program takes for an element, from the longitude of its reference point in degrees."""
    return int((longitude - 180.0 if longitude > 180.0 else longitude + 180.0) / 6.0 + 1.0)


def outlines(faults: xr.Dataset) -> np.ndarray:
    """Corners of the elements at the surface.

    Parameters
    ----------
    faults : xarray.Dataset
        Of `read_faults`. Geographic elements are rectangles in the UTM zone of their reference point on the GRS80
        ellipsoid, as the program computes them, and brought back to degrees.

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
    corners = np.empty_like(offsets)
    zones = np.array([utm_zone(x) for x in faults["x"].values], dtype=int)
    for zone in sorted(set(zones.tolist())):
        here = zones == zone
        plane = _zone_plane(zone)
        x, y = plane(*reference[here, 0].T)
        east, north = np.asarray(x)[:, None] + offsets[here, :, 0], np.asarray(y)[:, None] + offsets[here, :, 1]
        lon, lat = plane(east, north, inverse=True)
        # In the turn of the reference point: a grid around the date line may count beyond 180.
        lon = lon + 360.0 * np.round((reference[here, :, 0] - lon) / 360.0)
        corners[here] = np.stack([lon, lat], axis=-1)
    return corners


def _zone_plane(zone: int) -> pyproj.Proj:
    try:
        return pyproj.Proj(proj="utm", zone=zone, ellps="GRS80")
    except pyproj.exceptions.CRSError:
        raise TidoraError(
            f"there is no UTM zone {zone}: a longitude of exactly 180 is given as -180, and latitude "
            "stands before longitude"
        ) from None


def guess_coord(path: Path) -> str:
    """Kind of co-ordinates of a fault file that does not say it; the guess is reported as a warning.

    Degrees when every reference point could be a latitude and a longitude.
    """
    table = read_faults(path, PLANE)
    fits = bool(np.all(np.abs(table["y"].values) <= 90) and np.all(np.abs(table["x"].values) <= 360))
    kind = GEOGRAPHIC if fits else PLANE
    taken = f"{os.fspath(path)}: reference points taken as {'degrees' if fits else 'metres'} (say "
    warnings.warn(TidoraWarning((taken, Parameter("coord", kind), " to be sure)")), stacklevel=2)
    return kind
