"""The slip table: which units slip in which scenario, and how far, in compressed rows."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Mapping, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..version import VERSION

ENTRY, SCENARIO, EDGE = "entry", "scenario", "scenario_edge"
"""Dimensions."""

_VARIABLES = {
    "indptr": (EDGE, "1", "the entries of scenario i are those from indptr[i] to below indptr[i + 1]"),
    "unit": (ENTRY, "1", "number of the unit, from 0"),
    "slip": (ENTRY, "m", "slip of the unit"),
    "rake": (ENTRY, "degree", "direction of slip of the hanging wall: 0 left-lateral, 90 reverse"),
    "magnitude": (SCENARIO, "1", "moment magnitude, not a number where it is not known"),
}

_UNITS = {"slip": ("m", "metre", "metres", "meter", "meters"), "rake": ("degree", "degrees", "deg")}
"""Words for the unit of a variable, where there is any doubt."""

_LARGEST = 2.0**53
"""Whole numbers up to here are exact in double precision, as which a file may hold them."""


@dataclass(frozen=True)
class SlipTable:
    """A slip table as arrays, each of them contiguous."""

    indptr: np.ndarray
    """int64 (count + 1,)"""
    unit: np.ndarray
    """int64 (entry,)"""
    slip: np.ndarray
    """float64 (entry,), m"""
    rake: np.ndarray
    """float64 (entry,), degrees"""
    magnitude: np.ndarray
    """float64 (count,)"""

    @property
    def count(self) -> int:
        """Of scenarios."""
        return int(self.indptr.size - 1)


def make_slip_table(
    indptr: Any, unit: Any, slip: Any, rake: Any, magnitude: Any = None, attrs: Optional[Mapping[str, Any]] = None
) -> xr.Dataset:
    """A slip table from arrays.

    Parameters
    ----------
    indptr : array_like of int, (count + 1,)
        Where the entries of each scenario begin; from 0, never decreasing, the last is the number of entries.
    unit : array_like of int, (entry,)
        Numbers of units, from 0. A unit may stand several times in a scenario: its slips add up.
    slip, rake : array_like, (entry,)
        m and degrees. One number stands for all entries.
    magnitude : array_like, (count,), optional
        Not a number where it is not known.
    attrs : mapping, optional
        Of the table; ``history`` says what has made it.

    Returns
    -------
    xarray.Dataset
        ``indptr`` over ``scenario_edge``, ``unit``, ``slip`` and ``rake`` over ``entry``, ``magnitude`` over
        ``scenario``.

    Raises
    ------
    TypeError, TidoraError
        If the arrays do not make a table.
    """
    columns = {name: _array(name, value) for name, value in (("indptr", indptr), ("unit", unit))}
    entries = columns["unit"].shape
    for name, value in (("slip", slip), ("rake", rake)):
        values = _array(name, value)
        columns[name] = np.broadcast_to(values, entries) if values.ndim == 0 else values
    if magnitude is None:
        columns["magnitude"] = np.full(max(columns["indptr"].size - 1, 0), np.nan)
    else:
        columns["magnitude"] = _array("magnitude", magnitude)
    table = _checked(columns, lambda name, rule: TidoraError((Parameter(name), rule)))
    own = {"Conventions": "CF-1.8", "title": "slip of the units of scenarios"}
    return as_dataset(table, {**own, "history": f"tidora {VERSION}: make_slip_table", **(attrs or {})})


def as_dataset(table: SlipTable, attrs: Mapping[str, Any]) -> xr.Dataset:
    """The same as a dataset with the attributes of CF."""
    variables = {
        name: xr.Variable((dim,), getattr(table, name), {"units": unit, "long_name": meaning})
        for name, (dim, unit, meaning) in _VARIABLES.items()
    }
    return xr.Dataset(variables, attrs=dict(attrs))


def checked_slip_table(table: xr.Dataset) -> SlipTable:
    """The arrays of a slip table that somebody has made, changed or read.

    Only the structure is looked at: a unit that is not there and a slip that is no number belong to single scenarios,
    and spoil only those.

    Raises
    ------
    TypeError, TidoraError
        If it is no slip table.
    """
    if not isinstance(table, xr.Dataset):
        raise TypeError(f"table is a slip table (xarray.Dataset), not {arguments.kind(table)}")
    columns: dict[str, np.ndarray] = {}
    for name, (dim, _, _) in _VARIABLES.items():
        if name not in table.variables:
            if name == "magnitude":
                columns[name] = np.full(max(columns["indptr"].size - 1, 0), np.nan)
                continue
            raise TidoraError((Parameter("table"), f" has no variable {name}"))
        dims = table[name].dims
        if len(dims) != 1 or (dim != EDGE and dims[0] != dim):
            raise TidoraError((Parameter("table"), f": {name} is over {dim}, not over ({', '.join(map(str, dims))})"))
        units = table[name].attrs.get("units")
        if units is not None and units not in _UNITS.get(name, (units,)):
            raise TidoraError((Parameter("table"), f": {name} is in {_UNITS[name][0]}, not in {units!r}"))
        columns[name] = np.asarray(table[name].values)
    return _checked(columns, lambda name, rule: TidoraError((Parameter("table"), f": {name}{rule}")))


def _array(name: str, value: Any) -> np.ndarray:
    try:
        return np.asarray(value)
    except ValueError:  # rows of different lengths
        raise TypeError(f"{name} is an array of numbers") from None


def _checked(columns: Mapping[str, np.ndarray], wrong: Any) -> SlipTable:
    """A table from its columns; `wrong` makes an error from a column and the rule that it breaks."""
    for name, values in columns.items():
        if values.dtype.kind not in "iuf":
            raise wrong(name, f" is an array of numbers, not of {values.dtype}")
        if values.ndim != 1:
            raise wrong(name, f" has one dimension, not {values.ndim}")
    indptr, unit = (whole(name, columns[name], wrong) for name in ("indptr", "unit"))
    if not indptr.size or indptr[0] != 0:
        raise wrong("indptr", " begins with 0")
    if np.any(np.diff(indptr) < 0):
        raise wrong("indptr", f" decreases behind scenario {int(np.argmax(np.diff(indptr) < 0))}")
    if indptr[-1] != unit.size:
        raise wrong("indptr", f" ends with the number of entries, {unit.size}, not with {indptr[-1]}")
    for name, size in (("slip", unit.size), ("rake", unit.size), ("magnitude", indptr.size - 1)):
        if columns[name].size != size:
            raise wrong(name, f" has {columns[name].size} values, not {size}")
    others = (np.ascontiguousarray(columns[name], np.float64) for name in ("slip", "rake", "magnitude"))
    return SlipTable(indptr, unit, *others)


def whole(name: str, values: np.ndarray, wrong: Any) -> np.ndarray:
    """int64: the same values, all of them whole numbers, whatever type holds them."""
    if values.dtype.kind == "f":
        # Written so that what is no number fails too.
        bad = ~((np.abs(values) <= _LARGEST) & (values == np.floor(values)))
    else:
        bad = values > np.iinfo(np.int64).max if values.dtype == np.uint64 else np.zeros(0, bool)
    if np.any(bad):
        raise wrong(name, f" has whole numbers, not {values[np.argmax(bad)]}")
    return np.ascontiguousarray(values, np.int64)
