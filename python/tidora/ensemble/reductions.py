"""Figures of many fields at once, made while a piece of them is in memory."""

from __future__ import annotations

import numpy as np

from ..fields.measure import DENSITY, GRAVITY
from .layout import Tile

_PIECE = 512
"""Nodes of a sum in single precision: few enough for its rounding to stay near that of one term. The sums of the pieces
are added in double precision."""


class Reductions:
    """Extremes, volumes and energy of the fields of some scenarios.

    Parameters
    ----------
    scenarios : int
    areas : numpy.ndarray, numpy.ndarray
        float64 (y,) and (x,): their product is the area of each cell of the grid, m2.
    """

    def __init__(self, scenarios: int, areas: tuple[np.ndarray, np.ndarray]) -> None:
        self._areas = areas
        self.highest = np.full(scenarios, -np.inf, np.float32)
        self.lowest = np.full(scenarios, np.inf, np.float32)
        self.highest_at = np.zeros(scenarios, np.int64)
        self.lowest_at = np.zeros(scenarios, np.int64)
        """Number of the node, row by row from the south. Of equal values the first counts."""
        self.raised = np.zeros(scenarios)
        self.lowered = np.zeros(scenarios)
        self._squares = np.zeros(scenarios)

    @property
    def energy(self) -> np.ndarray:
        """float64 (scenario,): potential energy, J."""
        return 0.5 * DENSITY * GRAVITY * self._squares

    def add(self, rows: slice, tile: Tile, first: int, heights: np.ndarray) -> None:
        """Adds what some scenarios are on some nodes.

        Parameters
        ----------
        rows : slice
            Of the scenarios.
        tile : Tile
        first : int
            Number of the first of the nodes within the tile, row by row.
        heights : numpy.ndarray
            float32 (scenario, node), m.
        """
        within = np.arange(first, first + heights.shape[1])
        row, column = tile.y.start + within // tile.shape[1], tile.x.start + within % tile.shape[1]
        node = row * self._areas[1].size + column
        self._extreme(self.highest, self.highest_at, rows, node, heights, heights.argmax(axis=1), np.greater)
        self._extreme(self.lowest, self.lowest_at, rows, node, heights, heights.argmin(axis=1), np.less)
        areas = self._areas[0][row] * self._areas[1][column]
        unit = areas.max()
        relative = (areas / unit).astype(np.float32)
        for start in range(0, heights.shape[1], _PIECE):
            piece, area = heights[:, start : start + _PIECE], relative[start : start + _PIECE]
            self.raised[rows] += unit * (np.maximum(piece, 0) @ area)
            self.lowered[rows] -= unit * (np.minimum(piece, 0) @ area)
            self._squares[rows] += unit * (np.square(piece) @ area)

    @staticmethod
    def _extreme(
        best: np.ndarray, at: np.ndarray, rows: slice, node: np.ndarray, heights: np.ndarray, found: np.ndarray,
        beyond: np.ufunc,
    ) -> None:  # fmt: skip
        value, number = heights[np.arange(found.size), found], node[found]
        better = beyond(value, best[rows]) | ((value == best[rows]) & (number < at[rows]))
        best[rows] = np.where(better, value, best[rows])
        at[rows] = np.where(better, number, at[rows])
