"""Random numbers by counters: what a scenario draws depends on the seed and its own number alone.

Philox4x64-10 (Salmon et al. 2011) with the seed as its key and the number of the scenario in its counter. Only the bits
are taken from numpy, which promises that they stay; uniform and normal numbers are made from them here.
"""

from __future__ import annotations

from typing import Any

import numpy as np

from .. import arguments
from ..errors import Parameter, TidoraError

_KEY_BITS = 128
_WORD = 2**64


def seed_of(value: Any) -> int:
    """A seed: a whole number from 0 to below 2^128."""
    if isinstance(value, (bool, np.bool_)) or not isinstance(value, (int, np.integer)):
        raise TypeError(f"seed is a whole number, not {arguments.kind(value)}")
    if not 0 <= int(value) < 2**_KEY_BITS:
        raise TidoraError((Parameter("seed"), f" is from 0 to below 2^{_KEY_BITS}, not {value}"))
    return int(value)


def uniform(seed: int, purpose: int, numbers: np.ndarray, size: int) -> np.ndarray:
    """float64 (number, size): from 0 to below 1, `size` for each scenario of `numbers`.

    Parameters
    ----------
    seed : int
    purpose : int
        What they are for: other purposes draw other numbers.
    numbers : (number,)
        Of scenarios, in any order.
    size : int
    """
    key = np.array([seed % _WORD, seed // _WORD], np.uint64)
    counter = np.array([0, 0, purpose, 0], np.uint64)
    bits = np.empty((numbers.size, size), np.uint64)
    for row, number in enumerate(numbers):
        counter[3] = number
        bits[row] = np.random.Philox(key=key, counter=counter).random_raw(size)
    return np.asarray((bits >> np.uint64(11)) * 2.0**-53)


def normal(draws: np.ndarray) -> np.ndarray:
    """float64 of the same shape: standard normal numbers from pairs of uniform ones along the last, even dimension.

    Box and Muller (1958).
    """
    first, second = draws[..., 0::2], draws[..., 1::2]
    radius = np.sqrt(-2.0 * np.log(1.0 - first))
    found = np.empty(draws.shape)
    found[..., 0::2] = radius * np.cos(2.0 * np.pi * second)
    found[..., 1::2] = radius * np.sin(2.0 * np.pi * second)
    return found
