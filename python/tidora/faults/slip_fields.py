"""Slip on the cells of ruptures: a random field, nothing below 0, and the moment of the magnitude."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Optional

import numpy as np

from ..errors import Parameter, TidoraError
from . import random_numbers, spectra, von_karman
from .ruptures import CORNERS, Ruptures

SNCF, VON_KARMAN = "sncf2015", "vonkarman"
SPECTRA = (SNCF, VON_KARMAN)

FOR_HEADER, _FOR_FIELD = 0, 1
"""Purposes of random numbers. A field that is drawn again has the next one."""

_TRIES = 64
"""Fields for a scenario. Only a rupture that lacks cells may have no slip at all on those that are there."""


@dataclass(frozen=True)
class Fields:
    """Which fields are made."""

    seed: int
    spectrum: str
    hurst: float
    lengths: Optional[tuple[float, float]]
    """Correlation lengths along strike and down dip, m; None for those of the magnitude."""
    variation: float
    factors: von_karman.Factors = field(default_factory=von_karman.Factors)


def slip_of(
    group: Ruptures, magnitude: np.ndarray, header: np.ndarray, weight: np.ndarray, fields: Fields
) -> tuple[np.ndarray, np.ndarray]:
    """float64 (scenario, cell): slip in m; (scenario,): the part that was clipped.

    Parameters
    ----------
    group : Ruptures
    magnitude, header : (scenario,), (scenario, HEADER)
        Of all scenarios.
    weight : (element,)
        Moment of an element for a slip of 1 m, N m.
    fields : Fields
    """
    moment = np.where(group.element >= 0, weight[group.element], 0.0)
    values = np.empty(group.element.shape)
    left, cut = np.zeros(group.number.size), np.zeros(group.number.size)
    for attempt in range(_TRIES):
        again = np.flatnonzero(left <= 0.0)
        if not again.size:
            break
        values[again] = _field(group, group.number[again], magnitude, header, fields, _FOR_FIELD + attempt)
        left[again] = np.sum(moment[again] * np.maximum(values[again], 0.0), axis=1)
        cut[again] = np.sum(moment[again] * np.maximum(-values[again], 0.0), axis=1)
    else:
        at = int(group.number[np.argmin(left)])
        raise TidoraError((Parameter("spectrum"), f" gives scenario {at} no slip on the elements that are there"))
    wanted = 10.0 ** (1.5 * magnitude[group.number] + 9.1)
    return np.maximum(values, 0.0) * (wanted / left)[:, None], cut / left


def _field(
    group: Ruptures, number: np.ndarray, magnitude: np.ndarray, header: np.ndarray, fields: Fields, purpose: int
) -> np.ndarray:
    """float64 (scenario, cell): slip in any unit, also below 0."""
    down, along = group.shape
    cells = down * along
    draws = random_numbers.uniform(fields.seed, purpose, number, cells + cells % 2)
    normal = random_numbers.normal(draws)[:, :cells]
    if fields.spectrum == VON_KARMAN:
        return _correlated(group, normal, magnitude[number], fields)
    corners = spectra.corner_wavenumbers(magnitude[number], random_numbers.normal(header[number, CORNERS]))
    spacing = (group.plane.along / 1e3, group.plane.down / 1e3)
    return spectra.sncf(normal.reshape(-1, down, along), spacing, corners).reshape(-1, cells)


def _correlated(group: Ruptures, normal: np.ndarray, magnitude: np.ndarray, fields: Fields) -> np.ndarray:
    if normal.shape[1] > von_karman.LARGEST:
        said = f" takes ruptures of up to {von_karman.LARGEST} elements, not of {group.shape[1]} x {group.shape[0]}"
        raise TidoraError((Parameter("spectrum", VON_KARMAN), said))
    found = np.empty(normal.shape)
    for value in np.unique(magnitude):
        own = np.flatnonzero(magnitude == value)
        along, down = fields.lengths or von_karman.correlation_lengths(float(value))
        distance = (group.plane.along / along, group.plane.down / down)
        lower = fields.factors.of(group.shape, distance, fields.hurst, fields.variation)
        found[own] = von_karman.lognormal(normal[own], lower)
    return found
