"""Ruptures of scenarios: on which plane, how large, and where on it."""

from __future__ import annotations

import warnings
from typing import Iterator, NamedTuple

import numpy as np

from ..errors import TidoraWarning
from . import random_numbers
from .planes import Plane
from .scaling import RELATIONS, Relation

MEDIAN, DRAWN = "median", "drawn"
SIZES = (MEDIAN, DRAWN)
"""The median of a relation, or length and width drawn with its standard deviations."""

HEADER = 8
"""Random numbers that every scenario draws first: its plane, its place, two that are spare, its size, its corners."""
_PLANE, _PLACE, _SIZE, CORNERS = 0, 1, slice(4, 6), slice(6, 8)

_BLOCK = 1 << 19
"""Cells that are worked on at a time."""

_SMALL = 0.25
"""Part of a rupture on the plane of which a warning tells: the slip is more than four times what it should be."""


class Ruptures(NamedTuple):
    """Scenarios whose ruptures have as many cells of the same plane."""

    plane: Plane
    shape: tuple[int, int]
    """Cells down dip and along strike."""
    number: np.ndarray
    """int64 (scenario,)"""
    element: np.ndarray
    """int64 (scenario, cell): -1 where there is none"""


def ruptures(
    planes: list[Plane], magnitude: np.ndarray, header: np.ndarray, relation: str, size: str
) -> Iterator[Ruptures]:
    """All scenarios, in blocks of ruptures of equal shape.

    Parameters
    ----------
    planes : list of Plane
        One of them is drawn by area.
    magnitude : (scenario,)
    header : (scenario, HEADER)
        Uniform random numbers.
    relation, size : str
        One of `RELATIONS`, one of `SIZES`.

    Warns
    -----
    TidoraWarning
        If planes are far too small for the magnitude.
    """
    area = np.cumsum([plane.area for plane in planes])
    chosen = np.minimum(np.searchsorted(area, header[:, _PLANE] * area[-1], side="right"), len(planes) - 1)
    length, width = _sizes(RELATIONS[relation], magnitude, header, size)
    small = 0
    for at, plane in enumerate(planes):
        own = np.flatnonzero(chosen == at)
        small += int(np.count_nonzero(plane.area < _SMALL * length[own] * width[own]))
        along = _whole_cells(length[own] / plane.along, plane.element.shape[1])
        down = _whole_cells(width[own] / plane.down, plane.element.shape[0])
        shapes, which = np.unique(np.stack([down, along], axis=1), axis=0, return_inverse=True)
        for number, (rows, columns) in enumerate(shapes.tolist()):
            same = own[which == number]
            most = max(1, _BLOCK // (rows * columns))
            for start in range(0, same.size, most):
                yield _placed(plane, (rows, columns), same[start : start + most], header)
    if small:
        said = f"{small} of {magnitude.size} ruptures lie on planes of less than a quarter of their area"
        warnings.warn(TidoraWarning(f"{said}: their slip is as much larger"), stacklevel=4)


def _sizes(relation: Relation, magnitude: np.ndarray, header: np.ndarray, size: str) -> tuple[np.ndarray, np.ndarray]:
    """Length and width in m, (scenario,)."""
    normal = random_numbers.normal(header[:, _SIZE]) * (1.0 if size == DRAWN else 0.0)
    length = relation.length.median(magnitude) * 10.0 ** (relation.length.sigma * normal[:, 0])
    width = relation.width.median(magnitude) * 10.0 ** (relation.width.sigma * normal[:, 1])
    return length * 1e3, width * 1e3


def _whole_cells(wanted: np.ndarray, most: int) -> np.ndarray:
    """The nearest whole number of cells, cut to the plane."""
    return np.asarray(np.clip(np.floor(wanted + 0.5), 1, most).astype(np.int64))


def _placed(plane: Plane, shape: tuple[int, int], number: np.ndarray, header: np.ndarray) -> Ruptures:
    """Ruptures at any place of their plane where half of their cells are there, or as many as there can be."""
    down, along = shape
    sums = np.pad(np.cumsum(np.cumsum(plane.element >= 0, axis=0), axis=1), ((1, 0), (1, 0)))
    there = sums[down:, along:] - sums[:-down, along:] - sums[down:, :-along] + sums[:-down, :-along]
    places = np.argwhere(there >= min(int(there.max()), (down * along + 1) // 2))
    place = places[np.minimum((header[number, _PLACE] * len(places)).astype(np.int64), len(places) - 1)]
    rows = place[:, 0, None, None] + np.arange(down)[None, :, None]
    columns = place[:, 1, None, None] + np.arange(along)[None, None, :]
    return Ruptures(plane, shape, number, plane.element[rows, columns].reshape(number.size, -1))
