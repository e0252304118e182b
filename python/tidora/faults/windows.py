"""Rupture times put into windows of one length."""

from __future__ import annotations

import numpy as np
import xarray as xr

from ..errors import Parameter, TidoraError

MOST_ROWS = 5_000_000
"""More rows than that are no fault file but a mistake in the length of the windows."""

_NEAR = 1e-9
"""Part of a window: a time as close as that to its edge is the edge, as 0.3 is to 3 times 0.1."""


def in_windows(faults: xr.Dataset, window: float) -> xr.Dataset:
    """The same slip in windows that start at multiples of their length.

    Parameters
    ----------
    faults : xarray.Dataset
        Table of elements.
    window : float
        s. An element that slips in several windows stands in each of them, with the part of its slip that falls into
        it: slip grows evenly over the duration. One that slips at once slips in the window in which it starts.

    Returns
    -------
    xarray.Dataset
        All slip is there; the rows of an element stand together, in order of time.

    Raises
    ------
    TidoraError
        If the windows are so short that they make no fault file.
    """
    start, length = faults["lag_time"].values / window, faults["duration"].values / window
    first = np.floor(start + _NEAR)
    count = np.maximum(np.ceil(start + length - _NEAR) - first, 1.0)
    if not count.sum() <= MOST_ROWS:
        said = f" {window:g} s cuts the rupture into {count.sum():.0f} rows, more than {MOST_ROWS}"
        raise TidoraError((Parameter("window"), said))
    element = np.repeat(np.arange(count.size), count.astype(int))
    number = np.arange(element.size) - np.repeat(np.cumsum(count) - count, count.astype(int))
    begin = first[element] + number
    parts = faults.isel(element=element)
    with np.errstate(divide="ignore", invalid="ignore"):
        share = np.clip((begin + 1.0 - start[element]) / length[element], 0.0, 1.0)
        share -= np.clip((begin - start[element]) / length[element], 0.0, 1.0)
    share = np.where(count[element] == 1.0, 1.0, share)
    parts["slip"] = parts["slip"].copy(data=parts["slip"].values * share)
    parts["lag_time"] = parts["lag_time"].copy(data=begin * window)
    parts["duration"] = parts["duration"].copy(data=np.full(element.size, float(window)))
    return parts
