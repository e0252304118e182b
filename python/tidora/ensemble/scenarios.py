"""Fields of scenarios: a shard of a run, and a single one again."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..engine.figures import add_figures, begun
from ..engine.results import finished, said, variable
from ..errors import Parameter, Path, TidoraError
from ..faults.slip_table import SlipTable
from ..fields.kinds import axis_attributes
from ..fields.measure import area_factors
from .gauges import Gauges, gauges_of
from .layout import BATCH, ScenarioChunks, Tile, UnitChunks
from .reading import Responses
from .reductions import Reductions
from .run_store import FIGURES, REASON, cut_of, open_run, table_of, units_of
from .store import Store, encoded, values_of
from .superpose import Weights, product, rakes_of, unusable, weights_of
from .units import chunks_of, place_of

_NODES = 1024
"""Nodes of one product: its result stays in the cache while it is looked at."""


INFINITE = "its heights are no finite numbers"
"""Why a scenario with so much slip cannot be computed."""


@dataclass(frozen=True)
class _Work:
    """A shard of a run: what it needs."""

    place: Store
    units: Store
    tiles: UnitChunks
    cut: ScenarioChunks
    rows: slice
    slips: SlipTable
    rakes: Optional[np.ndarray]
    axes: dict[str, np.ndarray]
    areas: tuple[np.ndarray, np.ndarray]
    gauges: Optional[Gauges]
    fields: bool

    @property
    def count(self) -> int:
        """Of its scenarios."""
        return self.rows.stop - self.rows.start

    def weights(self, problems: dict[int, str]) -> Weights:
        """Of its scenarios, but those with problems."""
        skipped = np.zeros(self.count, bool)
        skipped[list(problems)] = True
        return weights_of(self.slips, self.rakes, skipped)


def compute_scenarios(place: Store, shard: int) -> None:
    """Computes and writes a shard of a run."""
    work = _work(place, shard)
    problems = unusable(work.slips, work.tiles.unit_count)
    repairable = False
    while True:
        weights = work.weights(problems)
        damaged: dict[int, str] = {}
        found = _superposed(work, weights, problems, damaged)
        more = _damaged_rows(weights, damaged) or found.infinite()
        if not more:
            break
        repairable |= bool(damaged)
        problems.update(more)
    written = {**found.chunks, **_write(work, shard, found, problems)}
    failed = [[work.rows.start + row, problems[row][:REASON]] for row in sorted(problems)]
    place.note(shard, written, {"failed": failed, "again": repairable})


def _work(place: Store, shard: int) -> _Work:
    run = place.opened()
    units = units_of(place, run)
    cut, tiles = cut_of(run), chunks_of(units)
    rows = cut.rows_of(shard)
    slips = table_of(run, rows)
    axes = {axis: units[axis].values for axis in ("y", "x")}
    gauges = None
    if "eta" in run:
        points = {axis: values_of(run, f"point_{axis}") for axis in ("x", "y")}
        gauges = gauges_of(points, units.attrs["coord"], axes["x"], axes["y"])
    return _Work(
        place,
        place_of(units),
        tiles,
        cut,
        rows,
        slips,
        rakes_of(slips, tiles.unit_count) if run.attrs["joined"] else None,
        axes,
        area_factors(axes["x"], axes["y"], units.attrs["coord"]),
        gauges,
        "field" in run,
    )


class _Found:
    """What is found of the scenarios of a shard."""

    def __init__(self, work: _Work) -> None:
        self.figures = Reductions(work.count, work.tiles.columns)
        self.corners = None
        if work.gauges is not None:
            self.corners = np.zeros((work.count, work.gauges.corner.size), np.float32)
        self.chunks: dict[str, list[int]] = {}
        """Of fields, which are written on the way."""

    def infinite(self) -> dict[int, str]:
        """Scenarios whose field is no finite number."""
        figures = self.figures
        values = (figures.value("highest"), figures.value("lowest"), figures.energy)
        fine = np.logical_and.reduce([np.isfinite(value) for value in values])
        return {int(row): INFINITE for row in np.flatnonzero(~fine)}


def _superposed(work: _Work, weights: Weights, problems: dict[int, str], damaged: dict[int, str]) -> _Found:
    """Superposes, tile by tile and batch by batch; only looks for further damage when there is any."""
    found = _Found(work)
    responses = Responses(work.units, work.tiles, weights)
    for tile in work.tiles.tiles():
        work.place.proceed()
        of_tile = responses.on(tile, damaged)
        if damaged:
            continue
        alive = of_tile.any(axis=1)
        corners = _corners_within(work, tile)
        for start in range(0, work.count, BATCH):
            rows = slice(start, min(start + BATCH, work.count))
            _add_batch(work, found, tile, rows, weights.matrix[rows], of_tile, alive, corners, problems)
    return found


def _add_batch(
    work: _Work, found: _Found, tile: Tile, rows: slice, matrix: np.ndarray, responses: np.ndarray, alive: np.ndarray,
    corners: tuple[np.ndarray, np.ndarray], problems: dict[int, str],
) -> None:  # fmt: skip
    """A batch of scenarios on the nodes of a tile. Columns that add nothing here are left out."""
    used = np.flatnonzero(matrix.any(axis=0) & alive)
    own = np.ascontiguousarray(matrix[:, used])
    field = np.empty((own.shape[0], tile.nodes), np.float32) if work.fields else None
    number, place = corners
    areas = np.outer(work.areas[0][tile.y], work.areas[1][tile.x]).ravel()
    figures = begun(own.shape[0])
    with np.errstate(over="ignore", invalid="ignore"):
        for first in range(0, tile.nodes, _NODES):
            piece = slice(first, min(first + _NODES, tile.nodes))
            heights = product(own, _taken(responses, used, piece))
            add_figures(figures, heights, areas[piece], first)
            here = (place >= piece.start) & (place < piece.stop)
            if found.corners is not None and here.any():
                found.corners[rows, number[here]] = heights[:, place[here] - first]
            if field is not None:
                field[:, piece] = heights
    found.figures.add(rows, tile, figures)
    if field is not None:
        _write_fields(work, found, tile, rows, field, problems)


def _taken(responses: np.ndarray, used: np.ndarray, piece: slice) -> np.ndarray:
    """The columns that are used, on some nodes; without a copy when all are."""
    return responses[:, piece] if used.size == responses.shape[0] else responses[used, piece]


def _corners_within(work: _Work, tile: Tile) -> tuple[np.ndarray, np.ndarray]:
    """Numbers of the corners of points that lie in a tile, and the numbers of their nodes there."""
    if work.gauges is None:
        return np.zeros(0, np.int64), np.zeros(0, np.int64)
    row, column = np.divmod(work.gauges.corner.ravel(), work.tiles.columns)
    inside = (row >= tile.y.start) & (row < tile.y.stop) & (column >= tile.x.start) & (column < tile.x.stop)
    return np.flatnonzero(inside), ((row - tile.y.start) * tile.shape[1] + column - tile.x.start)[inside]


def _damaged_rows(weights: Weights, damaged: dict[int, str]) -> dict[int, str]:
    """Scenarios that need what cannot be read, with the reason of the first such unit."""
    rows: dict[int, str] = {}
    for column in np.flatnonzero(np.isin(weights.unit, list(damaged))):
        for row in np.flatnonzero(weights.matrix[:, column]):
            rows.setdefault(int(row), damaged[int(weights.unit[column])])
    return rows


def _write_fields(
    work: _Work, found: _Found, tile: Tile, rows: slice, field: np.ndarray, problems: dict[int, str]
) -> None:
    """Writes the chunks of fields that a batch has on a tile."""
    for row in problems:
        if rows.start <= row < rows.stop:
            field[row - rows.start] = np.nan
    size, first = work.cut.fields, work.rows.start + rows.start
    for start in range(0, field.shape[0], size):
        part = field[start : start + size].reshape(-1, *tile.shape)
        chunk = np.full((size, work.tiles.ny, work.tiles.nx), np.nan, np.float32)
        chunk[: part.shape[0], : tile.shape[0], : tile.shape[1]] = part
        key = f"field/{(first + start) // size}.{tile.row}.{tile.column}"
        found.chunks[key] = work.place.put(key, encoded(chunk))


def _write(work: _Work, shard: int, found: _Found, problems: dict[int, str]) -> dict[str, list[int]]:
    """Writes the figures of a shard: their keys, and what the store has said of them."""
    figures, size = found.figures, work.cut.scenarios
    failed = list(problems)
    columns = {name: figures.value(name) for name in ("highest", "lowest", "raised", "lowered")}
    columns["energy"] = figures.energy
    for name in ("highest", "lowest"):
        at = figures.value(f"{name}_at")
        columns[f"{name}_x"] = work.axes["x"][at % work.tiles.columns]
        columns[f"{name}_y"] = work.axes["y"][at // work.tiles.columns]
    written = {}
    for name, (dtype, _, _) in FIGURES.items():
        chunk = np.full(size, np.nan, f"<{dtype}")
        chunk[: work.count] = columns[name]
        chunk[failed] = np.nan
        written[f"{name}/{shard}"] = work.place.put(f"{name}/{shard}", encoded(chunk))
    reasons = np.full(size, "", f"<U{REASON}")
    for row, reason in problems.items():
        reasons[row] = reason[:REASON]
    written[f"reason/{shard}"] = work.place.put(f"reason/{shard}", encoded(reasons))
    if work.gauges is not None and found.corners is not None:
        heights = np.full((size, work.gauges.x.size), np.nan, np.float32)
        heights[: work.count] = work.gauges.heights(found.corners.reshape(work.count, -1, 4))
        heights[failed] = np.nan
        written[f"eta/{shard}.0"] = work.place.put(f"eta/{shard}.0", encoded(heights))
    return written


def scenario(store: Path, number: int) -> xr.DataArray:
    """The field of a scenario of a run, from its units again.

    Parameters
    ----------
    store : path
        Of `ensemble`; the store of the units lies where it lay, seen from there.
    number : int
        Of the scenario, from 0 on. It does not matter whether it has been done yet.

    Returns
    -------
    xarray.DataArray, float32, (y, x)
        Sea surface, m. Its last digits may differ from those of the figures, which are made of many scenarios at once.

    Raises
    ------
    TypeError, TidoraError
        If there is no such scenario, or it cannot be computed.
    """
    place, run = open_run(store)
    count = run.sizes["scenario"]
    if isinstance(number, (bool, np.bool_)) or not isinstance(number, (int, np.integer)):
        raise TypeError(f"number is a whole number, not {arguments.kind(number)}")
    if not 0 <= number < count:
        raise TidoraError((Parameter("number"), f" is from 0 to {count - 1}, not {number}"))
    units = units_of(place, run)
    tiles, slips = chunks_of(units), table_of(run, slice(int(number), int(number) + 1))
    for reason in unusable(slips, tiles.unit_count).values():
        raise TidoraError((f"{place.path}: scenario {number}: {reason}",))
    weights = weights_of(slips, rakes_of(slips, tiles.unit_count) if run.attrs["joined"] else None)
    responses, damaged = Responses(place_of(units), tiles, weights), dict[int, str]()
    values = np.zeros((tiles.rows, tiles.columns), np.float32)
    for tile in tiles.tiles():
        with np.errstate(over="ignore", invalid="ignore"):
            values[tile.y, tile.x] = product(weights.matrix, responses.on(tile, damaged))[0].reshape(tile.shape)
    for reason in (*damaged.values(), *(() if np.isfinite(values).all() else (INFINITE,))):
        raise TidoraError((f"{place.path}: scenario {number}: {reason}",))
    history = f"{run.attrs['history']}\n{said('scenario', number=int(number))}"
    return sea_surface(values, units, {"history": history})


def sea_surface(values: Any, units: xr.Dataset, attrs: dict[str, Any]) -> xr.DataArray:
    """A field on the nodes of a store of units."""
    own = {
        name: units["response"].attrs[name] for name in ("grid_spacing", "crs_wkt") if name in units["response"].attrs
    }
    axes = {
        axis: (axis, units[axis].values, {**axis_attributes(units.attrs["coord"], axis), **units[axis].attrs})
        for axis in ("y", "x")
    }
    return finished(xr.Dataset({"eta": variable(("y", "x"), values, "eta", {**own, **attrs})}, axes))["eta"]
