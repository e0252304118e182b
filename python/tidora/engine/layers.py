"""Layers in time: which there are, and what of each element's slip falls into them."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass
from typing import Any, Mapping, Optional

import numpy as np

from .. import arguments
from ..errors import Parameter, TidoraError
from . import binding, structures as c

INTERVALS = "intervals"

_NAMES = {"times": "times", "sharing": "times", "count": "times", "shares": "times", "lag": "faults"}
_NAMES["duration"] = _NAMES["element"] = "faults"


@dataclass(frozen=True)
class Layers:
    """Layers of a result."""

    starts: np.ndarray
    lengths: np.ndarray
    """s, float64 (layer,)"""
    shares: np.ndarray
    """float32 (layer, element)"""
    text: str
    """For the history."""

    def coords(self) -> dict[str, Any]:
        """Co-ordinates ``time`` and ``rise_time``, as of `open_series`."""
        seconds = {"units": "s"}
        start = {**seconds, "long_name": "start of the rupture interval", "axis": "T"}
        length = {**seconds, "long_name": "length of the rupture interval"}
        return {"time": ("time", self.starts, start), "rise_time": ("time", self.lengths, length)}


def layers_of(times: Any, columns: Mapping[str, np.ndarray]) -> Optional[Layers]:
    """The layers that `times` asks for; None when all slip is wanted at once.

    Parameters
    ----------
    times : None, "intervals" or sequence of float
        See `tidora.deform`.
    columns : mapping
        Of `checked_columns`.
    """
    if times is None:
        return None
    lag, duration = (np.ascontiguousarray(columns[name]) for name in ("lag_time", "duration"))
    backward = np.flatnonzero(duration < 0)
    if backward.size:
        raise TidoraError((Parameter("faults"), f": duration of element {backward[0]} is {duration[backward[0]]:g}"))
    if isinstance(times, str):
        if times != INTERVALS:
            raise TidoraError((Parameter("times"), f" is None, {INTERVALS!r} or a sequence of seconds, not {times!r}"))
        # One for each distinct pair, in the order in which they come: those of the program.
        pairs = np.array(list(dict.fromkeys(zip(lag.tolist(), duration.tolist())))).reshape(-1, 2)
        shares = _shares(c.SHARE_INTERVALS, pairs, len(pairs), lag, duration)
        return Layers(pairs[:, 0].copy(), pairs[:, 1].copy(), shares, INTERVALS)
    edges = _edges(times)
    shares = _shares(c.SHARE_WINDOWS, edges, edges.size - 1, lag, duration)
    text = f"{edges.size - 1} layers from {edges[0]:g} s to {edges[-1]:g} s"
    return Layers(edges[:-1].copy(), np.diff(edges), shares, text)


def _edges(times: Any) -> np.ndarray:
    if not hasattr(times, "__len__") or getattr(times, "ndim", 1) == 0:
        raise TypeError(f"times is None, {INTERVALS!r} or a sequence of seconds, not {arguments.kind(times)}")
    edges = arguments.numbers("times", times)
    if edges.ndim != 1 or edges.size < 2:
        raise TidoraError((Parameter("times"), " has at least two values: where layers begin, and where the last ends"))
    if np.any(np.diff(edges) <= 0):
        raise TidoraError((Parameter("times"), " increases from value to value"))
    return np.ascontiguousarray(edges)


def _shares(rule: int, times: np.ndarray, count: int, lag: np.ndarray, duration: np.ndarray) -> np.ndarray:
    """float32 (layer, element)"""
    shares = np.zeros((count, lag.size), np.float32)
    if not shares.size:
        return shares  # nothing slips
    error = c.Error()
    status = binding.library().tidora_shares(
        rule, times.ctypes.data, count, lag.ctypes.data, duration.ctypes.data, lag.size, shares.ctypes.data,
        ctypes.byref(error),
    )  # fmt: skip
    binding.check(status, error, _NAMES)
    return shares
