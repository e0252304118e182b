"""Random fields of slip with a von Karman correlation and lognormal values.

The correlation of the slip of two cells is

    C(r) = r^H K_H(r) / (2^(H - 1) Gamma(H)),    r^2 = (x / ax)^2 + (y / ay)^2

with K_H the modified Bessel function of the second kind, H the Hurst number, x and y the distances along strike and
down dip and ax and ay the correlation lengths. The slip is exp(s Z - s^2 / 2) with a Gaussian Z: mean 1, coefficient of
variation v where s^2 = log(1 + v^2). It has the correlation C when that of Z is log(1 + v^2 C) / s^2.

The Gaussian fields come from a factor of their covariance: exact on any number of cells, with no periodicity.
"""

from __future__ import annotations

import math
from typing import Optional

import numpy as np

HURST = 0.75
VARIATION = 0.75
LENGTH_ALONG = (-2.5, 1.0 / 2.0)
LENGTH_DOWN = (-1.5, 1.0 / 3.0)
"""log10 of a correlation length in km: a + b Mw. Like `HURST` from Mai and Beroza (2002), but not checked against
the paper."""

LARGEST = 4096
"""Cells of a rupture at most: their covariance takes 128 MB and its factor a minute."""

_COLUMNS = 64
"""Of a covariance that are factored at a time."""

_STEP = 0.25
"""Of the integral for K_H by the trapezoidal rule. Its error is about exp(-pi^2 / step), 1e-17 of the result, where r
is small, and 2 exp(-2 pi^2 / (step^2 r)) of it where r is large: always below 1e-15 of C(0)."""


def correlation_lengths(magnitude: float) -> tuple[float, float]:
    """Along strike and down dip in m."""
    along, down = (1e3 * 10.0 ** (a + b * magnitude) for a, b in (LENGTH_ALONG, LENGTH_DOWN))
    return along, down


def correlation(r: np.ndarray, hurst: float) -> np.ndarray:
    """C(r), 1 at r = 0, by the integral of exp(-r cosh t) cosh(H t) over t from 0 on.

    Olver et al. (2010), equation 10.32.9.
    """
    distance = np.where(r > 0.0, r, 1.0)
    # exp(-745) is the smallest number that there is.
    end = math.acosh(max(745.0 / float(distance.min()), 1.0)) + _STEP
    bessel = 0.5 * np.exp(-distance)
    for t in np.arange(_STEP, end + _STEP, _STEP).tolist():
        bessel += np.exp(-distance * math.cosh(t)) * math.cosh(hurst * t)
    scale = 2.0 ** (hurst - 1.0) * math.gamma(hurst)
    return np.where(r > 0.0, distance**hurst * bessel * _STEP / scale, 1.0)


def factor(shape: tuple[int, int], distance: tuple[float, float], hurst: float, variation: float) -> np.ndarray:
    """float64 (cell, cell), lower: its product with its transpose is the covariance of s Z.

    Parameters
    ----------
    shape : (int, int)
        Cells down dip and along strike; those of a row stand together.
    distance : (float, float)
        Between cells along strike and down dip, in correlation lengths.
    """
    down, along = shape
    lags = np.hypot(np.arange(along)[None, :] * distance[0], np.arange(down)[:, None] * distance[1])
    by_lag = np.log1p(variation**2 * correlation(lags, hurst))
    i, j = np.divmod(np.arange(down * along), along)
    return _cholesky(by_lag[np.abs(i[:, None] - i[None, :]), np.abs(j[:, None] - j[None, :])])


class Factors:
    """The last factor, which many scenarios share."""

    def __init__(self) -> None:
        self._known: Optional[tuple[object, np.ndarray]] = None

    def of(self, shape: tuple[int, int], distance: tuple[float, float], hurst: float, variation: float) -> np.ndarray:
        """As `factor`."""
        key = (shape, distance, hurst, variation)
        if self._known is None or self._known[0] != key:
            self._known = (key, factor(shape, distance, hurst, variation))
        return self._known[1]


def _cholesky(matrix: np.ndarray) -> np.ndarray:
    """The factor, written into the lower half of `matrix`, some columns at a time.

    By numpy's own loops: the bits of a library of linear algebra would depend on its threads.
    """
    least = 1e-13 * float(matrix[0, 0])
    for start in range(0, len(matrix), _COLUMNS):
        panel = np.ascontiguousarray(matrix[start:, start : start + _COLUMNS])
        for at in range(panel.shape[1]):
            # Rounding may leave nothing of a cell that the others tell already.
            panel[at:, at] /= math.sqrt(max(panel[at, at], least))
            panel[at + 1 :, at + 1 :] -= panel[at + 1 :, at, None] * panel[None, at + 1 : panel.shape[1], at]
        matrix[start:, start : start + _COLUMNS] = panel
        below, end = panel[_COLUMNS:], start + _COLUMNS
        for row in range(0, len(below), _COLUMNS):
            rows, others = below[row : row + _COLUMNS], below[: row + _COLUMNS]
            left = matrix[end + row : end + row + len(rows), end : end + len(others)]
            left -= np.einsum("ik,jk->ij", rows, others, optimize=False)
    return np.tril(matrix)


def lognormal(normal: np.ndarray, lower: np.ndarray) -> np.ndarray:
    """float64 (scenario, cell): fields of expected value 1.

    Parameters
    ----------
    normal : (scenario, cell)
        Standard normal numbers.
    lower : (cell, cell)
        Of `factor`.
    """
    field = np.zeros(normal.shape)
    # One cell after the other: the bits of a matrix product would depend on the number of scenarios.
    for cell in range(lower.shape[0]):
        field[:, cell:] += normal[:, cell, None] * lower[None, cell:, cell]
    # The variance of every cell is that of the first.
    return np.asarray(np.exp(field - 0.5 * lower[0, 0] ** 2))
