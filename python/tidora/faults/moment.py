"""Size of a rupture."""

from __future__ import annotations

import math
from typing import NamedTuple, Optional

import numpy as np
import xarray as xr

from .table import upper_depth

RIGIDITY = 40e9
"""Pa; taken when none is given."""


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


def seismic_moment(faults: xr.Dataset, rigidity: Optional[float] = None) -> Moment:
    """Area, potency, moment and magnitude of all elements.

    Parameters
    ----------
    faults : xarray.Dataset
        Of `read_faults`.
    rigidity : float, optional
        Pa; that of each element when nothing is said and the table has a variable ``rigidity``, else `RIGIDITY`.

    Returns
    -------
    Moment
        Rigidity times the potency, which is length times width times the amount of slip, summed over the elements.
    """
    potency = float(np.sum(element_potency(faults)))
    if rigidity is None and "rigidity" in faults:
        moment = float(np.sum(element_potency(faults) * faults["rigidity"].values))
    else:
        moment = (RIGIDITY if rigidity is None else rigidity) * potency
    area = sum(length * width for length, width in {row[:7]: row[:2] for row in _places(faults)}.values())
    return Moment(float(area), potency, moment, magnitude(moment))


def element_potency(faults: xr.Dataset) -> np.ndarray:
    """float64 (element,): length times width times the amount of slip, m3."""
    return np.asarray(faults["length"].values * faults["width"].values * np.abs(faults["slip"].values))


def _places(faults: xr.Dataset) -> list[tuple[float, ...]]:
    names = ("length", "width", "x", "y", "strike", "dip", upper_depth(faults)[1])
    return list(zip(*(faults[name].values.tolist() for name in names)))


def distinct_places(faults: xr.Dataset) -> int:
    """Number of different rectangles: a rupture in time repeats one for each of its windows."""
    return len(set(_places(faults)))
