"""Columns that are told by their headings, with the unit in the heading."""

from __future__ import annotations

import re
from typing import Optional, Sequence

import numpy as np

from .model_text import Reading

_HEADING = re.compile(r"\s*#?\s*(.*?)\s*(?:[(\[]\s*(.*?)\s*[)\]])?\s*")
_SUFFIX = re.compile(r"(.*?)_(km|m|cm|deg|s|min|gpa|pa)")

UNITS = {
    "length": {"m": 1.0, "km": 1e3, "cm": 1e-2, "metres": 1.0, "meters": 1.0},
    "angle": {"": 1.0, "deg": 1.0, "degree": 1.0, "degrees": 1.0, "°": 1.0},
    "time": {"s": 1.0, "sec": 1.0, "seconds": 1.0, "min": 60.0},
    "rigidity": {"pa": 1.0, "gpa": 1e9, "n/m2": 1.0, "dyne/cm2": 0.1},
    "moment": {"nm": 1.0, "n m": 1.0, "n-m": 1.0, "n*m": 1.0, "dyne cm": 1e-7, "dyne-cm": 1e-7, "dyne*cm": 1e-7},
}
"""What a unit is in metres, degrees, seconds, Pa and N m."""


def split_heading(heading: str) -> tuple[str, Optional[str]]:
    """Name and unit of a heading in lower case, ``depth (km)`` or ``depth_km``; the unit is None when it has none."""
    found = _HEADING.fullmatch(heading.lower())
    assert found is not None
    name, unit = found.group(1), found.group(2)
    if unit is None and (suffix := _SUFFIX.fullmatch(name)):
        name, unit = suffix.groups()
    return re.sub(r"[\s_-]+", " ", name).strip(), unit


def factor(reading: Reading, kind: str, name: str, unit: Optional[str], line: int) -> float:
    """What the numbers below a heading are to be multiplied by.

    Degrees may go without a unit; for everything else a guess would be silent by a factor of a thousand.
    """
    known = UNITS[kind]
    if (unit or "") not in known:
        found = "none" if unit is None else f"'{unit}'"
        units = ", ".join(word for word in known if word)
        reading.fail(f"column {name} has its unit in its heading, one of {units}; {found} was found", line)
    return known[unit or ""]


def column_of(headings: Sequence[tuple[str, Optional[str]]], names: Sequence[str]) -> Optional[int]:
    """The first column of one of some names."""
    for name in names:
        for at, (heading, _) in enumerate(headings):
            if heading == name:
                return at
    return None


def zeros(like: np.ndarray) -> np.ndarray:
    """As many numbers, all 0."""
    return np.zeros(like.shape)
