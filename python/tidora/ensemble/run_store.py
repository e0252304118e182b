"""The store of a run: the slip table, and what is found of each of its scenarios."""

from __future__ import annotations

import json
import os
from dataclasses import dataclass
from typing import Any, Iterator, Optional, Union

import numpy as np
import xarray as xr

from .. import arguments
from ..engine.results import said
from ..errors import FileError, Parameter, Path, TidoraError
from ..faults.slip_table import SlipTable, checked_slip_table, read_slip_table
from ..version import VERSION
from .layout import ScenarioChunks, scenario_chunks
from .magnitudes import magnitudes
from .gauges import Gauges, gauges_of
from .store import IDENTITY, KIND, Store, skeleton, values_of
from .superpose import rakes_of
from .units import chunks_of, digest, element_table, open_units, place_of

Units = Union[xr.Dataset, Path]

REASON = 120
"""Characters of a reason."""

FIGURES = {
    "highest": ("f4", "m", "greatest height of the sea surface"),
    "highest_x": ("f8", "", "x of the greatest height"),
    "highest_y": ("f8", "", "y of the greatest height"),
    "lowest": ("f4", "m", "least height of the sea surface"),
    "lowest_x": ("f8", "", "x of the least height"),
    "lowest_y": ("f8", "", "y of the least height"),
    "raised": ("f8", "m3", "volume above the sea at rest"),
    "lowered": ("f8", "m3", "volume below the sea at rest, positive"),
    "energy": ("f8", "J", "potential energy, with 1025 kg/m3 and 9.8 m/s2"),
}
"""Variables of a run over scenario: type, unit (that of the axis when empty), meaning."""

_HEIGHT = "initial height of the sea surface"

_TABLE_CHUNK = 1 << 20
"""Entries of the slip table in a chunk."""


def begin_run(
    table: Union[xr.Dataset, Path], units: Units, store: Path, *, at: Any, fields: bool
) -> tuple[Store, ScenarioChunks]:
    """Makes the store of `ensemble` without results yet, or finds it."""
    slips = checked_slip_table(table if isinstance(table, xr.Dataset) else read_slip_table(table))
    opened = _opened_units(units)
    place = Store(arguments.path("store", store))
    arguments.flag("fields", fields)
    if not slips.count:
        raise TidoraError((Parameter("table"), " has no scenarios"))
    gauges = None
    if at is not None:
        gauges = gauges_of(at, opened.attrs["coord"], opened["x"].values, opened["y"].values)
    tile = chunks_of(opened)
    cut = scenario_chunks(slips.count, tile.unit_count, tile.rows * tile.columns, tile.ny * tile.nx)
    dataset, chunks = _described(slips, opened, place, cut, gauges, fields)
    place.create(skeleton(dataset, chunks), replaced=("reason",))
    return place, cut


def _opened_units(units: Units) -> xr.Dataset:
    """The store of units, from its path or from the dataset that was opened from it."""
    if not isinstance(units, xr.Dataset):
        return open_units(units)
    path = units.encoding.get("source")
    if not isinstance(path, str) or IDENTITY not in units.attrs:
        raise TidoraError((Parameter("units"), " is the path of a store of units, or what was opened from it"))
    opened = open_units(path)
    if opened.attrs[IDENTITY] != units.attrs[IDENTITY] or opened.sizes != units.sizes:
        raise TidoraError((Parameter("units"), f" is not what {path} holds: give the store whole"))
    return opened


def _described(
    slips: SlipTable, units: xr.Dataset, place: Store, cut: ScenarioChunks, gauges: Optional[Gauges], fields: bool
) -> tuple[xr.Dataset, dict[str, tuple[int, ...]]]:
    """The store as a dataset, its results still to come, and the chunks of its variables."""
    variables = {**_figures(units, cut), **_table(slips, units, cut.count)}
    coords: dict[str, Any] = {"scenario": ("scenario", np.arange(cut.count), {"long_name": "number of the scenario"})}
    entries = (max(1, min(slips.unit.size, _TABLE_CHUNK)),)
    chunks: dict[str, tuple[int, ...]] = {name: (cut.scenarios,) for name in (*FIGURES, "reason")}
    chunks.update(unit=entries, slip=entries, rake=entries)
    if gauges is not None:
        variables.update(_at_points(gauges, units, cut))
        chunks["eta"] = (cut.scenarios, gauges.x.size)
    if fields:
        tile = chunks_of(units)
        chunks["field"] = (cut.fields, tile.ny, tile.nx)
        values = _to_come((cut.count, tile.rows, tile.columns), "f4", chunks["field"])
        variables["field"] = (("scenario", "y", "x"), values, {"units": "m", "long_name": _HEIGHT})
        coords.update({axis: (axis, units[axis].values, units[axis].attrs) for axis in ("y", "x")})
    points = 0 if gauges is None else gauges.x.size
    attrs = {
        "Conventions": "CF-1.8",
        "title": "figures of tsunami scenarios",
        "history": f"{units.attrs['history']}\n{said('ensemble', fields=fields, points=points)}",
        "units_store": os.path.relpath(place_of(units).path, place.path),
        "joined": int(rakes_of(slips, units.sizes["unit"]) is not None),
        "shard_size": cut.scenarios,
        KIND: "run",
        IDENTITY: json.dumps(_identity(slips, units, gauges, fields), sort_keys=True),
    }
    return xr.Dataset(variables, coords, attrs), chunks


def _to_come(shape: tuple[int, ...], dtype: str, chunks: tuple[int, ...]) -> Any:
    """An array that only says what it will be."""
    import dask.array

    return dask.array.empty(shape, dtype=dtype, chunks=chunks)


def _figures(units: xr.Dataset, cut: ScenarioChunks) -> dict[str, Any]:
    variables: dict[str, Any] = {}
    for name, (dtype, unit, meaning) in FIGURES.items():
        attrs = {"units": unit or units[name[-1]].attrs["units"], "long_name": meaning}
        variables[name] = ("scenario", _to_come((cut.count,), dtype, (cut.scenarios,)), attrs)
    empty = np.full(cut.count, "", f"<U{REASON}")
    return {**variables, "reason": ("scenario", empty, {"long_name": "why the scenario could not be computed"})}


def _table(slips: SlipTable, units: xr.Dataset, count: int) -> dict[str, Any]:
    size = magnitudes(slips, element_table(units))
    return {
        "magnitude": ("scenario", size, {"long_name": "moment magnitude", "units": "1"}),
        "indptr": ("scenario_edge", slips.indptr, {"long_name": "first entry of each scenario"}),
        "unit": ("entry", slips.unit, {"long_name": "number of the unit"}),
        "slip": ("entry", slips.slip, {"long_name": "slip", "units": "m"}),
        "rake": ("entry", slips.rake, {"long_name": "direction of the slip", "units": "degree"}),
    }


def _at_points(gauges: Gauges, units: xr.Dataset, cut: ScenarioChunks) -> dict[str, Any]:
    shape = (cut.count, gauges.x.size)
    about = {"units": "m", "long_name": _HEIGHT, "coordinates": "point_x point_y"}
    variables: dict[str, Any] = {
        "eta": (("scenario", "point"), _to_come(shape, "f4", (cut.scenarios, shape[1])), about),
        "point_x": ("point", gauges.x, {"units": units["x"].attrs["units"]}),
        "point_y": ("point", gauges.y, {"units": units["y"].attrs["units"]}),
    }
    if gauges.name is not None:
        variables["point_name"] = ("point", gauges.name, {"long_name": "name of the point"})
    return variables


def _identity(slips: SlipTable, units: xr.Dataset, gauges: Optional[Gauges], fields: bool) -> dict[str, Any]:
    names = () if gauges is None or gauges.name is None else (gauges.name,)
    return {
        "units": _digest_of(units),
        "table": digest(slips.indptr, slips.unit, slips.slip, slips.rake, slips.magnitude),
        "points": None if gauges is None else digest(gauges.x, gauges.y, *names),
        "fields": fields,
        "version": VERSION,
    }


def _digest_of(units: xr.Dataset) -> str:
    """Of all that a store of units was made from."""
    return digest(np.frombuffer(units.attrs[IDENTITY].encode(), np.uint8))


def open_run(store: Path) -> tuple[Store, xr.Dataset]:
    """A store of `ensemble`, opened.

    Raises
    ------
    FileError
        If it is none.
    """
    place = Store(arguments.path("store", store))
    if place.attributes()[KIND] != "run":
        raise FileError(place.path, "is no store of a run")
    return place, place.opened()


def cut_of(run: xr.Dataset) -> ScenarioChunks:
    """How the scenarios of a run are cut."""
    fields = run["field"].encoding["chunks"][0] if "field" in run else 1
    return ScenarioChunks(int(run.attrs["shard_size"]), fields, run.sizes["scenario"])


def units_of(place: Store, run: xr.Dataset) -> xr.Dataset:
    """The units of a run.

    Raises
    ------
    FileError
        If they are not where they were, or other ones.
    """
    units = open_units(os.path.normpath(os.path.join(place.path, run.attrs["units_store"])))
    wanted = json.loads(run.attrs[IDENTITY])["units"]
    if _digest_of(units) != wanted:
        raise FileError(place_of(units).path, f"are not the units of {place.path}")
    return units


def table_of(run: xr.Dataset, rows: slice) -> SlipTable:
    """The slip table of some scenarios of a run; nothing else of it is read."""
    edges = values_of(run, "indptr", slice(rows.start, rows.stop + 1))
    entries = slice(int(edges[0]), int(edges[-1]))
    unit, slip, rake = (values_of(run, name, entries) for name in ("unit", "slip", "rake"))
    return SlipTable(edges - edges[0], unit, slip, rake, values_of(run, "magnitude", rows))


def records(place: Store, cut: ScenarioChunks) -> Iterator[tuple[int, dict[str, Any]]]:
    """The shards that are there, and what they have noted."""
    for shard in range(cut.shards):
        found = place.record(shard)
        if found is not None:
            yield shard, found


@dataclass(frozen=True)
class Status:
    """How far a run has got.

    Attributes
    ----------
    scenarios, done, missing : int
        All; those that are there, without the failed ones; those that are not there yet.
    failed : list of (int, str)
        Numbers and reasons.
    shards, shards_done : int
    """

    scenarios: int
    done: int
    missing: int
    failed: list[tuple[int, str]]
    shards: int
    shards_done: int


def status(store: Path) -> Status:
    """How far a run has got."""
    place, run = open_run(store)
    cut = cut_of(run)
    there = failed = 0
    problems: list[tuple[int, str]] = []
    shards = 0
    for shard, found in records(place, cut):
        rows = cut.rows_of(shard)
        shards += 1
        there += rows.stop - rows.start
        problems += [(int(number), str(reason)) for number, reason in found["failed"]]
    failed = len(problems)
    return Status(cut.count, there - failed, cut.count - there, problems, cut.shards, shards)
