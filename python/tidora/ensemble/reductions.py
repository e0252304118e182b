"""Figures of many fields at once, made while a piece of them is in memory."""

from __future__ import annotations

import numpy as np

from ..engine.figures import begun
from ..fields.measure import DENSITY, GRAVITY
from .layout import Tile


class Reductions:
    """Extremes, volumes and energy of the fields of some scenarios.

    Parameters
    ----------
    scenarios : int
    columns : int
        Nodes of a row of the grid.
    """

    def __init__(self, scenarios: int, columns: int) -> None:
        self._columns = columns
        self._figures = begun(scenarios)

    def value(self, name: str) -> np.ndarray:
        """(scenario,): ``highest``, ``lowest``, ``raised``, ``lowered``; the extremes at ``highest_at``, ``lowest_at``:
        numbers of nodes, row by row from the south, of equal values the first."""
        return self._figures[name]

    @property
    def energy(self) -> np.ndarray:
        """float64 (scenario,): potential energy, J."""
        return 0.5 * DENSITY * GRAVITY * self._figures["squares"]

    def add(self, rows: slice, tile: Tile, found: np.ndarray) -> None:
        """Adds what some scenarios are on a tile.

        Parameters
        ----------
        rows : slice
            Of the scenarios.
        tile : Tile
        found : numpy.ndarray
            Figures of `tidora.engine.figures` of these scenarios, nodes counted row by row within the tile.
        """
        own = self._figures[rows]
        fresh = own["highest_at"] < 0
        for name, sign in (("highest", 1), ("lowest", -1)):
            row, column = np.divmod(found[f"{name}_at"], tile.shape[1])
            node = (tile.y.start + row) * self._columns + tile.x.start + column
            same = (found[name] == own[name]) & (node < own[f"{name}_at"])
            better = fresh | (sign * found[name] > sign * own[name]) | same
            own[name] = np.where(better, found[name], own[name])
            own[f"{name}_at"] = np.where(better, node, own[f"{name}_at"])
        for name in ("raised", "lowered", "squares"):
            own[name] += found[name]
