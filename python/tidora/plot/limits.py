"""Where colours and scale bars end."""

from __future__ import annotations

import math
from typing import Sequence

import numpy as np
import xarray as xr

from .extent import thinned


def largest(fields: Sequence[xr.DataArray]) -> float:
    """Largest amount of all values, m; 1 when all are 0."""
    found = 0.0
    for field in fields:
        values = np.asarray(field.values)
        if np.isfinite(values).any():
            found = max(found, float(np.nanmax(np.abs(values[np.isfinite(values)]))))
    return found or 1.0


def colour_limit(fields: Sequence[xr.DataArray]) -> float:
    """Where the colours end when nobody says it, m.

    The largest amount, unless it stands far above what the rest of the map shows: then a round number above 97 percent
    of the nodes that have more than a fiftieth of it. What lies beyond gets the last colour, and the colour bar ends
    in a point.
    """
    top = largest(fields)
    amounts = [np.abs(np.asarray(thinned(field).values)).ravel() for field in fields]
    visible = np.concatenate([amount[amount > 0.02 * top] for amount in amounts])
    if visible.size == 0:
        return top
    rounded = round_up(float(np.percentile(visible, 97)))
    return rounded if rounded < 0.8 * top else top


def round_up(value: float) -> float:
    """The smallest of 1, 1.5, 2, 3, 4, 5, 6, 8, 10, 15, ... that is not below `value`."""
    power = 10.0 ** math.floor(math.log10(value))
    return min(step * power for step in (1, 1.5, 2, 3, 4, 5, 6, 8, 10) if step * power >= value * (1 - 1e-12))


def nice(length: float) -> float:
    """The largest of 1, 2, 5, 10, ... that is not above `length`."""
    power = 10.0 ** math.floor(math.log10(length))
    return max(step * power for step in (1, 2, 5) if step * power <= length)
