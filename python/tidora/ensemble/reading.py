"""Reading the responses of a store of units, chunk by chunk, whatever state it is in."""

from __future__ import annotations

import numpy as np

from ..errors import FileError
from .kept import LIMIT, KeptChunks
from .layout import Tile, UnitChunks
from .store import Store
from .superpose import Weights
from .units import chunk_key

_KEPT = KeptChunks(LIMIT)


class Responses:
    """Responses of the columns of some weights, one tile of the grid at a time.

    Parameters
    ----------
    store : Store
        Of units.
    cut : UnitChunks
    weights : Weights
        Whose columns are wanted.
    """

    def __init__(self, store: Store, cut: UnitChunks, weights: Weights) -> None:
        self._store, self._cut, self._weights = store, cut, weights
        self._chunks: dict[int, list[int]] = {}
        for column, unit in enumerate(weights.unit.tolist()):
            self._chunks.setdefault(unit // cut.units, []).append(column)

    def on(self, tile: Tile, damaged: dict[int, str]) -> np.ndarray:
        """float32 (column, node): the responses on the nodes of a tile, row by row.

        Parameters
        ----------
        tile : Tile
        damaged : dict
            Gets the units whose responses cannot be read, with the reason; their columns are 0.
        """
        found = np.zeros((self._weights.unit.size, tile.nodes), np.float32)
        for number, columns in self._chunks.items():
            try:
                self._add(found, tile, number, columns)
            except FileError as error:
                units = self._weights.unit[columns]
                found[columns] = 0.0
                damaged.update({int(unit): f"unit {unit}: {error}" for unit in units if int(unit) not in damaged})
        return found

    def _add(self, found: np.ndarray, tile: Tile, number: int, columns: list[int]) -> None:
        cut, share = self._cut, self._weights.share
        for group in range(-(-share.shape[1] // cut.mechanisms)):
            own = range(group * cut.mechanisms, min((group + 1) * cut.mechanisms, share.shape[1]))
            wanted = [column for column in columns if share[column, own.start : own.stop].any()]
            if not wanted:
                continue
            chunk = _KEPT.chunk(self._store, chunk_key(number, group, tile.row, tile.column), "<f4", cut.shape)
            for column in wanted:
                place = int(self._weights.unit[column]) - number * cut.units
                field = found[column].reshape(tile.shape)
                for mechanism in own:
                    part = chunk[place, mechanism - own.start, : tile.shape[0], : tile.shape[1]]
                    if share[column, mechanism] == 1.0 and not share[column, :mechanism].any():
                        field[...] = part  # the only one so far, as it is: nearly every column
                    elif share[column, mechanism] != 0.0:
                        field += share[column, mechanism] * part
