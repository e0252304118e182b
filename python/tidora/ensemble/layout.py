"""How the values of a store are cut into chunks."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, Iterator, Mapping, Optional

from .. import arguments
from ..errors import Parameter, TidoraError

CHUNK = 10_000_000
"""Bytes of a chunk, about: a file that neither a scheduler nor a file system finds small."""

_BLOCK = 1 << 28
"""Bytes that the responses of all units on the nodes of one chunk may have: a worker holds them."""

_FIELDS = 1 << 28
"""Bytes of the fields that a worker holds while it computes units."""

_SHARDS = 16
"""Shards that even few units are cut into, for as many workers."""

_UNITS = 32
"""Units of a chunk at most: with more, a shard takes too long to be lost."""

_VALUE = 4
"""Bytes."""


@dataclass(frozen=True)
class UnitChunks:
    """Chunks of the responses, and the numbers of all units and nodes.

    The chunks of ``units`` units on all nodes and of both mechanisms are a shard.
    """

    units: int
    mechanisms: int
    ny: int
    nx: int
    unit_count: int
    rows: int
    columns: int

    @property
    def shape(self) -> tuple[int, int, int, int]:
        """Of a chunk: unit, mechanism, y, x."""
        return (self.units, self.mechanisms, self.ny, self.nx)

    @property
    def shards(self) -> int:
        """Number of shards."""
        return math.ceil(self.unit_count / self.units)

    def units_of(self, shard: int) -> range:
        """The units of a shard."""
        return range(shard * self.units, min((shard + 1) * self.units, self.unit_count))

    def tiles(self) -> list["Tile"]:
        """The pieces of the grid, each of the nodes of a chunk; from the south, and from the west."""
        return list(tiles(self.rows, self.columns, self.ny, self.nx))


@dataclass(frozen=True)
class Tile:
    """The nodes of a chunk."""

    row: int
    column: int
    """Numbers of the chunk along y and x."""
    y: slice
    x: slice

    @property
    def shape(self) -> tuple[int, int]:
        """Rows and columns of nodes."""
        return (self.y.stop - self.y.start, self.x.stop - self.x.start)

    @property
    def nodes(self) -> int:
        """Number of nodes."""
        return self.shape[0] * self.shape[1]


def tiles(rows: int, columns: int, ny: int, nx: int) -> Iterator[Tile]:
    """The tiles of a grid, cut every `ny` rows and `nx` columns."""
    for row in range(math.ceil(rows / ny)):
        for column in range(math.ceil(columns / nx)):
            y = slice(row * ny, min((row + 1) * ny, rows))
            x = slice(column * nx, min((column + 1) * nx, columns))
            yield Tile(row, column, y, x)


def unit_chunks(unit_count: int, rows: int, columns: int, wanted: Optional[Mapping[str, Any]]) -> UnitChunks:
    """How responses are cut.

    Some `CHUNK` bytes in a chunk, but so many shards that workers have something to do, and so few nodes that all units
    on them fit into the memory of a worker.

    Parameters
    ----------
    unit_count, rows, columns : int
    wanted : mapping, optional
        Of ``unit, mechanism, y, x`` to numbers, where the caller knows better.
    """
    chosen = _checked(wanted)
    of_one = max(1, rows * columns * _VALUE)
    units = min(math.ceil(unit_count / _SHARDS), _UNITS, max(1, _FIELDS // of_one))
    units = min(chosen.get("unit", max(units, 1)), max(unit_count, 1))
    nodes = max(1, min(CHUNK // (_VALUE * units), _BLOCK // (_VALUE * 2 * max(unit_count, 1))))
    ny, nx = _tile_shape(rows, columns, nodes)
    return UnitChunks(
        units,
        min(chosen.get("mechanism", 1), 2),
        min(chosen.get("y", ny), rows),
        min(chosen.get("x", nx), columns),
        unit_count,
        rows,
        columns,
    )


def _tile_shape(rows: int, columns: int, nodes: int) -> tuple[int, int]:
    """Rows and columns of tiles of about `nodes` nodes, about as wide as high, and all of about the same size."""
    pieces = max(1.0, rows * columns / nodes)
    across = min(columns, max(1, math.ceil(math.sqrt(pieces * columns / rows))))
    nx = math.ceil(columns / across)
    down = min(rows, max(1, math.ceil(rows * nx / nodes)))
    return math.ceil(rows / down), nx


def _checked(wanted: Optional[Mapping[str, Any]]) -> dict[str, int]:
    if wanted is None:
        return {}
    names = ("unit", "mechanism", "y", "x")
    if not isinstance(wanted, Mapping):
        if not isinstance(wanted, (tuple, list)) or len(wanted) != len(names):
            raise TypeError(f"chunks is a mapping of {', '.join(names)} to numbers, or the four numbers")
        wanted = dict(zip(names, wanted))
    for name in wanted:
        if name not in names:
            raise TidoraError((Parameter("chunks"), f" is of {', '.join(names)}, not of {name!r}"))
    return {name: arguments.count("chunks", value) for name, value in wanted.items()}


@dataclass(frozen=True)
class ScenarioChunks:
    """Chunks of what a run finds: a shard is ``scenarios`` scenarios, which is a whole number of batches."""

    scenarios: int
    fields: int
    """Scenarios of a chunk of fields; divides `BATCH`."""
    count: int

    @property
    def shards(self) -> int:
        """Number of shards."""
        return math.ceil(self.count / self.scenarios)

    def rows_of(self, shard: int) -> slice:
        """The scenarios of a shard."""
        return slice(shard * self.scenarios, min((shard + 1) * self.scenarios, self.count))


BATCH = 256
"""Scenarios of one product: enough for the matrices to be wide, few enough for the result to stay in the cache."""

_TASK = 2.0
"""s: what a shard should take."""

_WEIGHTS = 1 << 24
"""Weights of the scenarios of a shard, which a worker holds."""

_FEW = 4096
"""Scenarios: up to so many, shards are single batches, so that several workers have something to do."""


def scenario_chunks(count: int, unit_count: int, nodes: int, tile_nodes: int) -> ScenarioChunks:
    """How the scenarios of a run are cut, by what is known before anything is read."""
    per_scenario = nodes * (min(unit_count, 200) * 0.04e-9 + 2e-9)
    most = max(1, _WEIGHTS // (2 * unit_count * BATCH))
    batches = 1 if count <= _FEW else min(64, most, max(2, round(_TASK / (per_scenario * BATCH))))
    fields = 1 << max(0, min(BATCH.bit_length() - 1, int(math.log2(max(1.0, CHUNK / (_VALUE * tile_nodes))))))
    return ScenarioChunks(min(batches * BATCH, max(count, 1)), min(fields, max(count, 1)), count)
