"""Series in time: their intervals, one of them, and the sum of all."""

from __future__ import annotations

import numpy as np
import xarray as xr

from ..errors import TidoraError
from .shape import GridShape, row_blocks


def interval_times(series: xr.DataArray) -> tuple[np.ndarray, np.ndarray]:
    """Starts and lengths of the intervals of a series in s, float64 (time,); lengths that nobody has stated are 0."""
    starts = np.asarray(series["time"].values, float)
    if "rise_time" not in series.coords:
        return starts, np.zeros_like(starts)
    return starts, np.asarray(series["rise_time"].values, float)


def total(series: xr.DataArray, dtype: type = np.float64) -> xr.DataArray:
    """Sum of a series over time, formed in double precision, one block of rows at a time.

    Parameters
    ----------
    series : xarray.DataArray, (time, y, x) or (y, x)
        A field without time is its own sum.
    dtype : type
        Of the result, in memory.

    Returns
    -------
    xarray.DataArray, (y, x)
        In metres; attribute ``intervals`` is their number, ``time_span`` the first start and the last end in seconds.
    """
    if "time" not in series.dims:
        return series
    size = dict(series.sizes)
    result: np.ndarray = np.empty((size["y"], size["x"]), dtype)
    for rows in row_blocks(GridShape(0, 0, size["x"], size["y"], 1), 1 << 17):
        block = np.zeros((rows.stop - rows.start, size["x"]))
        for layer in range(size["time"]):
            block += series.isel(time=layer, y=rows).values
        result[rows] = block
    start, length = interval_times(series)
    attrs = {key: value for key, value in series.attrs.items() if key != "time_content"}
    attrs.update(intervals=size["time"], time_span=(float(start.min()), float((start + length).max())))
    return xr.DataArray(result, {"y": series["y"], "x": series["x"]}, ("y", "x"), series.name, attrs)


def snapshot(series: xr.DataArray, start: float) -> xr.DataArray:
    """The snapshot of the interval that starts at some time.

    Parameters
    ----------
    series : xarray.DataArray, (time, y, x)
        Of `open_series`.
    start : float
        s.

    Returns
    -------
    xarray.DataArray, (y, x)
        What the interval adds, m.

    Raises
    ------
    TidoraError
        If there is none; names those that are there.
    """
    starts = np.asarray(series["time"].values, float)
    found = np.flatnonzero(np.abs(starts - start) < 1e-6)
    if found.size == 0:
        raise TidoraError(f"no interval starts at {start:g} s; there are " + ", ".join(f"{t:g}" for t in starts))
    return series.isel(time=int(found[0]))
