"""Arguments of functions: what they have to be, and how it is said when they are not.

The wrong kind of thing is a `TypeError`, a wrong value a `TidoraError`; both name the argument.
"""

from __future__ import annotations

import math
import os
from typing import Any, Callable, Mapping, Optional, Sequence

import numpy as np

from .errors import Parameter, Path, TidoraError

LARGEST_COUNT = 2**31 - 1
"""Of threads: what a C integer of 32 bits holds."""


def number(name: str, value: Any, least: float = -math.inf) -> float:
    """A finite number that is not below `least`."""
    if isinstance(value, (bool, np.bool_, str, bytes)) or getattr(value, "ndim", 0) != 0:
        raise TypeError(f"{name} is a number, not {kind(value)}")
    try:
        result = float(value)
    except (TypeError, ValueError):
        raise TypeError(f"{name} is a number, not {kind(value)}") from None
    if not math.isfinite(result):
        raise TidoraError((Parameter(name), f" is a finite number, not {result}"))
    if result < least:
        raise TidoraError((Parameter(name), f" is at least {least:g}, not {result:g}"))
    return result


def count(name: str, value: Any) -> int:
    """A whole number from 1 on."""
    if isinstance(value, (bool, np.bool_)) or not isinstance(value, (int, np.integer)):
        raise TypeError(f"{name} is a whole number, not {kind(value)}")
    if not 1 <= value <= LARGEST_COUNT:
        raise TidoraError((Parameter(name), f" is from 1 to {LARGEST_COUNT}, not {value}"))
    return int(value)


def flag(name: str, value: Any) -> bool:
    """True or False."""
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{name} is True or False, not {kind(value)}")
    return bool(value)


def choice(name: str, value: Any, allowed: Sequence[str]) -> str:
    """One of some words."""
    if not isinstance(value, str):
        raise TypeError(f"{name} is a word, one of {', '.join(allowed)}, not {kind(value)}")
    if value not in allowed:
        raise TidoraError((Parameter(name), f" is one of {', '.join(allowed)}, not {value!r}"))
    return value


def numbers(name: str, value: Any) -> np.ndarray:
    """float64, of any shape: finite numbers."""
    if isinstance(value, np.ma.MaskedArray):
        value = np.ma.filled(value.astype(np.float64), np.nan)
    try:
        raw = np.asarray(value)
    except ValueError:  # rows of different lengths
        raise TypeError(f"{name} is a number or an array of numbers") from None
    if raw.dtype.kind not in "iuf":
        raise TypeError(f"{name} is a number or an array of numbers, not {kind(value)} of {raw.dtype}")
    result = raw.astype(np.float64)
    wrong = int(np.count_nonzero(~np.isfinite(result)))
    if wrong:
        raise TidoraError((Parameter(name), f" has {wrong} values that are no finite numbers"))
    return result


def within(name: str, values: np.ndarray, least: float, largest: float) -> np.ndarray:
    """The same values, all of them from `least` to `largest`."""
    wrong = np.flatnonzero(~((values.ravel() >= least) & (values.ravel() <= largest)))
    if wrong.size:
        limits = f"at least {least:g}" if math.isinf(largest) else f"from {least:g} to {largest:g}"
        raise TidoraError((Parameter(name), f" is {limits}, not {values.ravel()[wrong[0]]:g}"))
    return values


def broadcast(columns: Mapping[str, np.ndarray]) -> dict[str, np.ndarray]:
    """The columns as arrays of one length, in row-major order."""
    shape: tuple[int, ...] = ()
    for name, values in columns.items():
        try:
            shape = np.broadcast_shapes(shape, values.shape)
        except ValueError:
            raise TidoraError((Parameter(name), f" has shape {values.shape}, the others {shape}")) from None
    return {name: np.broadcast_to(values, shape).ravel() for name, values in columns.items()}


def path(name: str, value: Any) -> Path:
    """A path, not a number of an open file."""
    if not isinstance(value, (str, os.PathLike)):
        raise TypeError(f"{name} is a path, not {kind(value)}")
    return value


def callback(name: str, value: Any) -> Optional[Callable[[float], Any]]:
    """A function, or None."""
    if value is not None and not callable(value):
        raise TypeError(f"{name} is a function, not {kind(value)}")
    return value


def kind(value: Any) -> str:
    """What a value is called in a message."""
    return "None" if value is None else f"a {type(value).__name__}"
