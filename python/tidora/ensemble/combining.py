"""Fields of scenarios as one lazy array."""

from __future__ import annotations

from typing import Any, Optional, Union

import numpy as np
import xarray as xr

from ..errors import Parameter, Path, TidoraError
from ..faults.slip_table import SlipTable, checked_slip_table, read_slip_table
from .layout import BATCH
from .superpose import product, rakes_of, selected, unusable, weights_of
from .units import open_units

_CHUNK = 32_000_000
"""Bytes of a piece of the result."""


def combine(units: Union[xr.Dataset, Path], table: Union[xr.Dataset, Path], *, scenarios: Any = None) -> xr.DataArray:
    """The sea surface of the scenarios of a slip table, computed when values are asked for.

    Parameters
    ----------
    units : xarray.Dataset or path
        Of `unit_sources`; parts of it along y and x will do.
    table : xarray.Dataset or path
        Slip table.
    scenarios : int, slice or sequence of int, optional
        Which of the scenarios; all when None.

    Returns
    -------
    xarray.DataArray, float32, (scenario, y, x)
        m, as dask array.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be used, or a scenario names a unit that is not there, or a slip that is no number.
    """
    import dask.array

    opened = units if isinstance(units, xr.Dataset) else open_units(units)
    if "response" not in opened or opened["response"].dims != ("unit", "mechanism", "y", "x"):
        raise TidoraError((Parameter("units"), " is a store of units: it has no responses (unit, mechanism, y, x)"))
    slips = checked_slip_table(table if isinstance(table, xr.Dataset) else read_slip_table(table))
    numbers = _numbers(scenarios, slips.count)
    chosen = selected(slips, numbers)
    count = opened.sizes["unit"]
    problems = unusable(chosen, count)
    for row, reason in problems.items():
        raise TidoraError((Parameter("table"), f": scenario {numbers[row]}: {reason}"))
    response = dask.array.asarray(opened["response"].data)
    rakes = rakes_of(chosen, count)
    nodes = max(1, response.chunksize[2] * response.chunksize[3])
    batch = max(1, min(BATCH, _CHUNK // (4 * nodes)))
    parts = [
        _part(response, chosen, slice(start, min(start + batch, chosen.count)), rakes)
        for start in range(0, chosen.count, batch)
    ]
    shape = (0, opened.sizes["y"], opened.sizes["x"])
    values = dask.array.concatenate(parts) if parts else dask.array.zeros(shape, dtype=np.float32)
    coords = {"scenario": numbers, "y": opened["y"], "x": opened["x"]}
    attrs = {**opened["response"].attrs, "long_name": "initial height of the sea surface"}
    return xr.DataArray(values, coords, ("scenario", "y", "x"), "eta", attrs)


def _numbers(scenarios: Any, count: int) -> np.ndarray:
    """The numbers of scenarios that are asked for."""
    everything = np.arange(count)
    if scenarios is None:
        return everything
    if isinstance(scenarios, slice):
        return everything[scenarios]
    wanted = np.atleast_1d(np.asarray(scenarios))
    if wanted.ndim != 1 or (wanted.size and wanted.dtype.kind not in "iu"):
        raise TypeError("scenarios is a number, a slice, or a sequence of whole numbers")
    outside = wanted[(wanted < 0) | (wanted >= count)]
    if outside.size:
        raise TidoraError((Parameter("scenarios"), f" are from 0 to {count - 1}, not {outside[0]}"))
    return wanted.astype(np.int64)


def _part(response: Any, slips: SlipTable, rows: slice, rakes: Optional[np.ndarray]) -> Any:
    """The fields of some scenarios, from their units alone."""
    import dask.array

    own = selected(slips, np.arange(rows.start, rows.stop))
    units, own_units = np.unique(own.unit, return_inverse=True)
    own = SlipTable(own.indptr, own_units.astype(np.int64), own.slip, own.rake, own.magnitude)
    needed = response[units].rechunk({0: -1, 1: -1})
    return dask.array.map_blocks(
        _combined,
        needed,
        own,
        None if rakes is None else rakes[units],
        drop_axis=[0, 1],
        new_axis=[0],
        chunks=((own.count,), *needed.chunks[2:]),
        dtype=np.float32,
        meta=np.empty((0, 0, 0), np.float32),
    )


def _combined(response: np.ndarray, slips: SlipTable, rakes: Optional[np.ndarray]) -> np.ndarray:
    """float32 (scenario, y, x) from the responses of all units of the scenarios on some nodes."""
    weights = weights_of(slips, rakes)
    of_units = response[weights.unit].reshape(weights.unit.size, 2, -1)
    columns = np.einsum("cm,cmn->cn", weights.share, of_units)
    return product(weights.matrix, columns).reshape(slips.count, *response.shape[2:])
