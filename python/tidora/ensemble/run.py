"""Runs of many scenarios over the same units."""

from __future__ import annotations

import warnings
from typing import Any, Optional, Union

import xarray as xr

from .. import arguments
from ..errors import Path, TidoraWarning
from .run_store import Units, begin_run, records
from .scenarios import compute_scenarios
from .shards import WHOLE, Tell, do_shards


def ensemble(
    table: Union[xr.Dataset, Path],
    units: Units,
    store: Path,
    *,
    at: Any = None,
    fields: bool = False,
    progress: Optional[Tell] = None,
) -> xr.Dataset:
    """Superposes the responses of units for every scenario of a slip table, and keeps what is asked of the fields.

    The Dask client that is active does it, else threads of this process. Scenarios that cannot be computed have a
    reason, and a `TidoraWarning` counts them; the others are done.

    Parameters
    ----------
    table : xarray.Dataset or path
        Slip table: `stochastic_slip`, `make_slip_table`, `read_slip_table`.
    units : xarray.Dataset or path
        Store of `unit_sources`.
    store : path
        A folder. One that was begun with the same arguments is finished; one made otherwise is refused.
    at : path or table, optional
        Points ``x, y`` and perhaps ``name``, in the co-ordinates of the grid: ``eta`` there is bilinear in the heights
        of the four nodes around. Whole turns of longitude do not matter.
    fields : bool
        Keeps the fields themselves too: ``field`` (scenario, y, x).
    progress : callable, optional
        Is called with a fraction from 0 to 1. What it raises stops the work; what is done is kept.

    Returns
    -------
    xarray.Dataset
        The store, opened. Over ``scenario``: ``highest, highest_x, highest_y, lowest, lowest_x, lowest_y`` (m, and
        co-ordinates of the grid; of equal values the southernmost, then the westernmost), ``raised, lowered`` (m3, both
        positive), ``energy`` (J), ``magnitude``, ``reason`` (empty where all is well); ``eta`` (scenario, point); the
        slip table. All nodes count. What is not there yet is not a number.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be used; names it. `FileError` if the store cannot be written.
    """
    arguments.callback("progress", progress)
    place, cut = begin_run(table, units, store, at=at, fields=fields)
    do_shards(compute_scenarios, place, cut.shards, WHOLE, progress)
    failed = [problem for _, found in records(place, cut) for problem in found["failed"]]
    if failed:
        number, reason = failed[0]
        what = f" {len(failed)} of {cut.count} scenarios could not be computed; the first is {number}: {reason}"
        warnings.warn(TidoraWarning((f"{place.path}:", what)), stacklevel=2)
    return place.opened()
