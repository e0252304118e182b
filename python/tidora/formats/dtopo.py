"""GeoClaw dtopo files of type 3: the moving sea floor as the displacement so far, at times of one step.

Nine header lines (value, then name): mx, my, mt, xlower, ylower, t0, dx, dy, dt. Then, for each of the mt times, my
lines of mx values, the northern row first and each row from the west: the displacement since before the rupture, in
metres.
"""

from __future__ import annotations

import math
from fractions import Fraction
from typing import Optional

import numpy as np
import xarray as xr

from ..errors import Parameter, Path, TidoraError
from ..fields.series import interval_times
from ..fields.shape import GridShape, row_blocks, shape_of
from ..files import replacing
from .contract import Step, Writing, no_progress

MAX_TIMES = 1000
"""Steps that are taken without being asked for."""

_BLOCK = 1 << 13
"""Values that are formed and printed together."""

_TICK = Fraction(1, 1000)


def time_steps(starts: np.ndarray, lengths: np.ndarray, step: Optional[float] = None) -> tuple[float, float, int]:
    """First time, step and number of times of a dtopo file.

    Parameters
    ----------
    starts, lengths : numpy.ndarray, (intervals,)
        s.
    step : float, optional
        s. Without it the longest one that meets every start and every end, in whole milliseconds.

    Returns
    -------
    first, step : float
        s.
    count : int
        The last time is not before the end of the last interval. 1 with a step of 0 when everything happens at once.
    """
    first, end = float(starts.min()), float((starts + lengths).max())
    if end == first:
        return first, 0.0, 1
    if step is None:
        ticks = [round(Fraction(float(time) - first) / _TICK) for time in np.concatenate([starts, starts + lengths])]
        step = float(math.gcd(*ticks) * _TICK)
        if step <= 0 or (end - first) / step + 1 > MAX_TIMES:
            raise TidoraError(
                (
                    f"a step that meets every interval gives more than {MAX_TIMES} times; ",
                    Parameter("step", "SECONDS"),
                    " takes another one",
                )
            )
    return first, step, math.ceil((end - first) / step - 1e-9) + 1


def share(time: float, start: float, length: float) -> float:
    """Part of what an interval adds that has happened at `time`, 0 to 1: all at once, or at a constant rate."""
    if length <= 0:
        return 1.0 if time >= start else 0.0
    return min(max((time - start) / length, 0.0), 1.0)


def steps(series: xr.DataArray, options: Writing) -> int:
    """Number of times that `write` tells of."""
    return time_steps(*interval_times(series), options.step)[2] if series.sizes.get("time", 0) else 1


def write(series: xr.DataArray, path: Path, options: Writing = Writing(), progress: Step = no_progress) -> GridShape:
    """Writes a series, or a single grid as a displacement at once, as dtopo of type 3.

    Parameters
    ----------
    series : xarray.DataArray, (time, y, x) or (y, x)
        What each interval adds, m.
    path : path
        Appears when it is complete.
    options : Writing
        ``step`` in s; see `time_steps`.
    progress : callable
        Is told of each time.

    Raises
    ------
    TidoraError
        If values are missing, or the step that meets all intervals is too short.
    """
    shape = shape_of(series)
    if "time" in series.dims:
        layers = [series.isel(time=layer) for layer in range(series.sizes["time"])]
        starts, lengths = interval_times(series)
    else:
        layers, starts, lengths = [series], np.zeros(1), np.zeros(1)
    first, step, count = time_steps(starts, lengths, options.step)
    done = np.zeros((shape.ny, shape.nx))  # double precision: the intervals that are over
    open_layers = list(range(len(layers)))
    with replacing(path) as part, part.open("w", encoding="ascii", newline="\n") as file:
        file.write(_header_text(shape, first, step, count))
        for number in range(count):
            time = first + number * step
            if number == count - 1:
                time = max(time, float((starts + lengths).max()))
            parts = {layer: share(time, starts[layer], lengths[layer]) for layer in open_layers}
            for layer in [layer for layer, part_done in parts.items() if part_done == 1.0]:
                for rows in row_blocks(shape, _BLOCK):
                    done[rows] += layers[layer].isel(y=rows).values
                open_layers.remove(layer)
            moving = [(layer, parts[layer]) for layer in open_layers if parts[layer] > 0]
            for rows in reversed(row_blocks(shape, _BLOCK)):
                block = done[rows]
                if moving:
                    block = block.copy()
                    for layer, part_done in moving:
                        block += part_done * layers[layer].isel(y=rows).values
                if np.isnan(block).any():
                    raise TidoraError(("values are missing; ", Parameter("fill", "VALUE"), " puts a number there"))
                file.write(_rows_text(block[::-1]))
            progress(f"{time:g} s")
    return shape


def _header_text(shape: GridShape, first: float, step: float, count: int) -> str:
    sizes = ((shape.nx, "mx"), (shape.ny, "my"), (count, "mt"))
    places = ((shape.org_x, "xlower"), (shape.org_y, "ylower"), (first, "t0"))
    steps = ((shape.dx, "dx"), (shape.dx, "dy"), (step, "dt"))
    return "".join(f"{value!r:<24} {name}\n" for value, name in (*sizes, *places, *steps))


def _rows_text(block: np.ndarray) -> str:
    # Nine digits: what is lost is far below 1e-6 m.
    form = " ".join(["%.9g"] * block.shape[1])
    return "".join(form % tuple(row) + "\n" for row in block.tolist())
