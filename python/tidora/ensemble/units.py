"""Responses of units: what one metre of slip of each element does to the sea surface, computed once."""

from __future__ import annotations

import hashlib
import json
from dataclasses import replace
from typing import Any, Mapping, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..engine.deform import Request, checked_request, computed
from ..engine.kajiura import filtered
from ..engine.nodes import NO_TOPOGRAPHY, Nodes, Where, nodes_of
from ..engine.results import said
from ..errors import FileError, Parameter, Path, TidoraError
from ..faults.table import NAMES, checked_columns
from ..fields.kinds import GEOGRAPHIC
from ..fields.reference import GEOGRAPHIC_CRS, to_crs
from ..version import VERSION
from .layout import UnitChunks, unit_chunks
from .shards import WHOLE, Tell, do_shards
from .store import IDENTITY, KIND, Store, encoded, skeleton, values_of

MECHANISMS = {"strike": 0.0, "dip": 90.0}
"""Rakes."""

_RENAMED = {"x": "unit_x", "y": "unit_y"}
"""Variables of the element table that would be axes of the grid."""

_OF_TABLE = ("plane", "along", "down", "rigidity", "name")
"""What else is kept of a table, if it is there."""

MIN_DEPTH = 50.0
"""m: as `tidora.deform`."""


def unit_sources(
    faults: xr.Dataset,
    topography: Where,
    store: Path,
    *,
    slope: bool = False,
    kajiura: bool = False,
    frame: Optional[str] = None,
    depth: Optional[str] = None,
    tolerance: float = 0.0,
    chunks: Optional[Mapping[str, int]] = None,
    progress: Optional[Tell] = None,
) -> xr.Dataset:
    """Computes the response of the sea surface to each element of a table, and keeps it in a zarr store.

    Everything in a source is linear in slip, the filter included: a scenario is a sum of these responses (`combine`,
    `ensemble`). The Dask client that is active computes them, else threads of this process.

    Parameters
    ----------
    faults : xarray.Dataset
        Table of `read_faults` or `make_faults`. Its slip and rake do not count.
    topography : xarray.DataArray
        (y, x), m, negative below sea level; or `grid`, without slope term and filter.
    store : path
        A folder. One that was begun with the same arguments is finished; one made otherwise is refused.
    slope, kajiura : bool
        As in `source`: the slope term is added, the sum is filtered.
    frame : {'plane', 'globe', 'utm'}, optional
        As in `deform`.
    depth : {'datum', 'floor', 'program'}, optional
        As in `deform`; with "program" the number of elements of the table says which depth counts.
    tolerance : float
        m: as in `deform`, each element on its own.
    chunks : mapping, optional
        Units, mechanisms, rows and columns of a chunk: ``unit, mechanism, y, x``. About 10 MB when None.
    progress : callable, optional
        Is called with a fraction from 0 to 1. What it raises stops the work; what is done is kept.

    Returns
    -------
    xarray.Dataset
        The store, opened: ``response`` (unit, mechanism, y, x), float32: the sea surface in m after 1 m of slip with
        rake 0 (mechanism "strike") and 90 ("dip"); the table over ``unit``, its x and y as ``unit_x, unit_y``;
        ``topography``.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be used; names it. `FileError` if the store cannot be written.
    """
    arguments.callback("progress", progress)
    place, cut = begin_units(
        faults, topography, store, slope=slope, kajiura=kajiura, frame=frame, depth=depth, tolerance=tolerance,
        chunks=chunks,
    )  # fmt: skip
    do_shards(compute_units, place, cut.shards, WHOLE, progress)
    return place.opened()


def begin_units(
    faults: xr.Dataset,
    topography: Where,
    store: Path,
    *,
    slope: bool,
    kajiura: bool,
    frame: Optional[str],
    depth: Optional[str],
    tolerance: float,
    chunks: Optional[Mapping[str, int]] = None,
) -> tuple[Store, UnitChunks]:
    """Makes the store of `unit_sources` without responses yet, or finds it."""
    columns = checked_columns(faults)
    arguments.path("store", store)
    nodes = _said_where(nodes_of(topography, "topography"))
    if not nodes.is_grid:
        raise TidoraError((Parameter("topography"), " is a grid, not points"))
    if nodes.x.size * nodes.y.size < 2:
        raise TidoraError((Parameter("topography"), " has one node: no area"))
    if not len(columns["x"]):
        raise TidoraError((Parameter("faults"), " has no elements"))
    request = _request(faults.attrs["coord"], columns, nodes, slope, frame, depth, tolerance)
    if arguments.flag("kajiura", kajiura):
        if nodes.floor is None:
            raise TidoraError((Parameter("kajiura"), " needs a topography on a grid"))
        nodes.spacing()
    cut = unit_chunks(len(columns["x"]), nodes.y.size, nodes.x.size, chunks)
    options = {
        "frame": request.frame, "depth": request.depth, "tolerance": request.tolerance, "slope": bool(slope),
        "kajiura": bool(kajiura), "min_depth": request.min_depth,
    }  # fmt: skip
    dataset = _described(faults, columns, nodes, cut, options)
    place = Store(store)
    place.create(skeleton(dataset, {"response": cut.shape}))
    return place, cut


def _said_where(nodes: Nodes) -> Nodes:
    """The same nodes with the reference system that is taken for degrees: whoever opened the topography, and how."""
    if nodes.kind != GEOGRAPHIC or nodes.attrs.get("crs_wkt"):
        return nodes
    return replace(nodes, attrs={**nodes.attrs, "crs_wkt": to_crs(GEOGRAPHIC_CRS).to_wkt()})


def _request(
    coord: str, columns: Mapping[str, np.ndarray], nodes: Nodes, slope: Any, frame: Any, depth: Any, tolerance: Any
) -> Request:
    """The options of `deform`. Among several elements the depth "program" is the floor for each of them."""
    request = checked_request(
        coord, columns, nodes, slope=slope, frame=frame, depth=depth, components=("z",), min_depth=MIN_DEPTH,
        tolerance=tolerance, threads=1,
    )  # fmt: skip
    if request.depth == "program" and len(columns["x"]) > 1:
        return _request(coord, columns, nodes, slope, frame, "floor", tolerance)
    return request


def _described(
    faults: xr.Dataset, columns: Mapping[str, np.ndarray], nodes: Nodes, cut: UnitChunks, options: Mapping[str, Any]
) -> xr.Dataset:
    """The store as a dataset, its responses still to come."""
    import dask.array

    count = cut.unit_count
    table = {_RENAMED.get(name, name): ("unit", columns[name], _plain(faults[name].attrs, name)) for name in NAMES}
    for name in _OF_TABLE:
        if name in faults.variables and faults[name].dims == ("element",):
            table[name] = ("unit", _storable(faults[name].values), _plain(faults[name].attrs, name))
    shape = (count, len(MECHANISMS), *nodes.shape)
    meaning = {"units": "m", "long_name": "height of the sea surface after 1 m of slip", **_numbers(nodes.attrs)}
    variables: dict[str, Any] = {
        "response": (
            ("unit", "mechanism", "y", "x"),
            dask.array.empty(shape, dtype=np.float32, chunks=cut.shape),
            meaning,
        ),
        **table,
    }
    if nodes.floor is not None:
        of_floor = {"units": "m", "long_name": "topography, negative below sea level", **_numbers(nodes.attrs)}
        variables["topography"] = (("y", "x"), nodes.topography(), of_floor)
    coords = {
        "unit": ("unit", np.arange(count), {"long_name": "number of the element in its table"}),
        "mechanism": ("mechanism", np.array(list(MECHANISMS)), {"long_name": "direction of the slip: rake 0, or 90"}),
        **nodes.coords,
    }
    identity = {
        **options,
        "coord": nodes.kind,
        "grid": _numbers(nodes.attrs),
        "chunks": list(cut.shape),
        "elements": digest(*(np.asarray(values) for _, values, _ in table.values())),
        "topography": digest(nodes.x, nodes.y, *(() if nodes.floor is None else (nodes.topography(),))),
        "version": VERSION,
    }
    attrs = {
        "Conventions": "CF-1.8",
        "title": "responses of the sea surface to unit slip",
        "history": said("unit_sources", **options),
        "coord": nodes.kind,
        **{name: int(value) if isinstance(value, bool) else value for name, value in options.items()},
        KIND: "units",
        IDENTITY: json.dumps(identity, sort_keys=True),
    }
    return xr.Dataset(variables, coords, attrs)


def _plain(attrs: Mapping[Any, Any], name: str) -> dict[str, Any]:
    kept = {key: attrs[key] for key in ("units", "long_name") if isinstance(attrs.get(key), str)}
    return {"units": "1", **kept} if name not in ("name", "plane", "along", "down") else kept


def _numbers(attrs: Mapping[str, Any]) -> dict[str, Any]:
    """Attributes as JSON has them: a number of single precision is one of double precision there."""
    return {name: value.item() if isinstance(value, np.generic) else value for name, value in attrs.items()}


def _storable(values: np.ndarray) -> np.ndarray:
    return values.astype(str) if values.dtype.kind in "OU" else values


def digest(*arrays: np.ndarray) -> str:
    """SHA-256 of the values, types and shapes of arrays."""
    found = hashlib.sha256()
    for array in arrays:
        found.update(f"{array.dtype.str} {array.shape};".encode())
        found.update(np.ascontiguousarray(array).tobytes())
    return found.hexdigest()


def compute_units(store: Store, shard: int) -> None:
    """Computes and writes a shard of a store of units."""
    units = store.opened()
    cut = chunks_of(units)
    table = element_table(units)
    columns, nodes = checked_columns(table), _nodes(units)
    request = _request(
        units.attrs["coord"], columns, nodes, bool(units.attrs["slope"]), units.attrs["frame"], units.attrs["depth"],
        units.attrs["tolerance"],
    )  # fmt: skip
    numbers, per_chunk = cut.units_of(shard), cut.mechanisms
    written: dict[str, list[int]] = {}
    rakes = list(MECHANISMS.values())
    for first in range(0, len(rakes), per_chunk):
        responses = np.full((cut.units, per_chunk, *nodes.shape), np.nan, np.float32)
        for place, unit in enumerate(numbers):
            store.proceed()
            for number, rake in enumerate(rakes[first : first + per_chunk]):
                responses[place, number] = _response(columns, unit, rake, nodes, request, bool(units.attrs["kajiura"]))
        for tile in cut.tiles():
            chunk = np.full(cut.shape, np.nan, np.float32)
            chunk[..., : tile.shape[0], : tile.shape[1]] = responses[..., tile.y, tile.x]
            key = chunk_key(shard, first // per_chunk, tile.row, tile.column)
            written[key] = store.put(key, encoded(chunk))
    store.note(shard, written, {})


def chunk_key(*numbers: int) -> str:
    """The file of a chunk of the responses: its numbers along unit, mechanism, y, x."""
    return "response/" + ".".join(map(str, numbers))


def _response(
    columns: Mapping[str, np.ndarray], unit: int, rake: float, nodes: Nodes, request: Request, smooth: bool
) -> np.ndarray:
    """float32 (y, x): the sea surface after 1 m of slip of one element."""
    own = {name: values[unit : unit + 1] for name, values in columns.items()}
    own.update(slip=np.ones(1), rake=np.array([rake]))
    moved = computed(own, nodes, request, None, None)
    surface = moved["uz"] + moved["slope"] if "slope" in moved else moved["uz"]
    if not np.isfinite(surface).all():
        raise TidoraError((Parameter("faults"), f": element {unit} moves the surface by what is no finite number"))
    return filtered(surface, nodes, None, "converged", 1, None) if smooth else surface


def _nodes(units: xr.Dataset) -> Nodes:
    """The nodes of a store of units, as they were given."""
    if "topography" in units:
        floor = units["topography"]
        return nodes_of(floor.copy(data=values_of(units, "topography")), "topography")
    axes = {axis: units[axis] for axis in ("y", "x")}
    attrs = {**NO_TOPOGRAPHY, **units["response"].attrs}
    zeros = np.zeros((units.sizes["y"], units.sizes["x"]), np.float32)
    return nodes_of(xr.DataArray(zeros, axes, ("y", "x"), attrs=attrs), "topography")


def chunks_of(units: xr.Dataset) -> UnitChunks:
    """How the responses of a store are cut."""
    count, _, rows, columns = units["response"].shape
    of_unit, of_mechanism, ny, nx = units["response"].encoding["chunks"]
    return UnitChunks(of_unit, of_mechanism, ny, nx, count, rows, columns)


def open_units(store: Path) -> xr.Dataset:
    """A store of `unit_sources`, opened.

    Raises
    ------
    FileError
        If it is none.
    """
    place = Store(arguments.path("units", store))
    if place.attributes()[KIND] != "units":
        raise FileError(place.path, "is no store of units")
    return place.opened()


def place_of(units: xr.Dataset) -> Store:
    """The folder of a store that was opened."""
    return Store(str(units.encoding["source"]))


def element_table(units: xr.Dataset) -> xr.Dataset:
    """The table of elements that a store of units was made from, as of `read_faults`."""
    back = {new: name for name, new in _RENAMED.items()}
    table = {}
    for name in (*(_RENAMED.get(name, name) for name in NAMES), *_OF_TABLE):
        if name not in units.variables:
            continue
        variable = units[name]
        table[back.get(name, name)] = ("element", values_of(units, name), variable.attrs)
    return xr.Dataset(table, attrs={"coord": units.attrs["coord"]})
