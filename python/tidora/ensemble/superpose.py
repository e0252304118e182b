"""Sums of responses as products of matrices."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Optional

import numpy as np

from ..faults.slip_table import SlipTable
from .units import MECHANISMS

_DEPTH = 256
"""Columns of one product. Kernels of OpenBLAS cut longer sums where it suits them; up to here they all add them up in
one go, so that kernels for one kind of processor agree."""

_SMALL = 2
"""Rows of a product at least: a single row would be another routine, with another order of the sum."""


def components(slip: np.ndarray, rake: np.ndarray) -> np.ndarray:
    """float64 (entry, mechanism): slip along strike and up dip, m. Exact for whole right angles."""
    turns = np.remainder(rake, 360.0)
    radians = np.radians(turns)
    cosine = np.where(np.isin(turns, (90.0, 270.0)), 0.0, np.cos(radians))
    sine = np.where(np.isin(turns, (0.0, 180.0)), 0.0, np.sin(radians))
    return np.stack([slip * cosine, slip * sine], axis=-1)


@dataclass(frozen=True)
class Weights:
    """Weights of responses in scenarios.

    Attributes
    ----------
    matrix : numpy.ndarray
        float32 (scenario, column).
    unit : numpy.ndarray
        int64 (column,).
    share : numpy.ndarray
        float32 (column, mechanism): what a column is of the two responses of its unit.
    """

    matrix: np.ndarray
    unit: np.ndarray
    share: np.ndarray


def rakes_of(table: SlipTable, unit_count: int) -> Optional[np.ndarray]:
    """float64 (unit,): the rake of each unit when it is the same wherever the unit slips; None when it is not.

    Then the two responses of a unit can be joined before the product, which is half as large.
    """
    there = (table.unit >= 0) & (table.unit < unit_count) & np.isfinite(table.rake)
    unit, rake = table.unit[there], table.rake[there]
    rakes = np.zeros(unit_count)
    rakes[unit] = rake
    return rakes if bool(np.all(rakes[unit] == rake)) else None


def unusable(table: SlipTable, unit_count: int) -> dict[int, str]:
    """The scenarios of a table that cannot be computed, each with the reason."""
    unit, slip, rake = table.unit, table.slip, table.rake
    wrong = np.flatnonzero((unit < 0) | (unit >= unit_count) | ~np.isfinite(slip) | ~np.isfinite(rake))
    scenario = np.searchsorted(table.indptr, wrong, side="right") - 1
    problems: dict[int, str] = {}
    for row, entry in zip(scenario.tolist(), wrong.tolist()):
        if row not in problems:
            problems[row] = _problem(unit[entry], slip[entry], rake[entry], unit_count)
    return problems


def _problem(unit: int, slip: float, rake: float, unit_count: int) -> str:
    if not 0 <= unit < unit_count:
        return f"unit {unit} is not there: units are 0 to {unit_count - 1}"
    name, value = ("slip", slip) if not np.isfinite(slip) else ("rake", rake)
    return f"{name} of unit {unit} is {value}, no finite number"


def selected(table: SlipTable, numbers: np.ndarray) -> SlipTable:
    """A table of some of the scenarios, in the order of `numbers`."""
    counts = np.diff(table.indptr)[numbers]
    indptr = np.concatenate([[0], np.cumsum(counts)]).astype(np.int64)
    entry = np.arange(indptr[-1]) + np.repeat(table.indptr[numbers] - indptr[:-1], counts)
    return SlipTable(indptr, table.unit[entry], table.slip[entry], table.rake[entry], table.magnitude[numbers])


def weights_of(table: SlipTable, rakes: Optional[np.ndarray], skipped: Optional[np.ndarray] = None) -> Weights:
    """Weights of the scenarios of a table.

    Parameters
    ----------
    table : SlipTable
    rakes : numpy.ndarray, optional
        Of `rakes_of`.
    skipped : numpy.ndarray, optional
        bool, of the scenarios: those that cannot be computed get no weights.
    """
    counts = np.diff(table.indptr)
    scenario = np.repeat(np.arange(counts.size), counts)
    kept = np.ones(scenario.size, bool) if skipped is None else ~skipped[scenario]
    scenario, unit, slip, rake = scenario[kept], table.unit[kept], table.slip[kept], table.rake[kept]
    if rakes is not None:
        columns, of_entry = np.unique(unit, return_inverse=True)
        share = components(np.ones(columns.size), rakes[columns])
        return Weights(_summed(counts.size, columns.size, scenario, of_entry, slip), columns, share.astype(np.float32))
    mechanisms = len(MECHANISMS)
    parts = components(slip, rake).ravel()
    counting = parts != 0.0
    code = (unit[:, None] * mechanisms + np.arange(mechanisms)).ravel()[counting]
    columns, of_entry = np.unique(code, return_inverse=True)
    row = np.repeat(scenario, mechanisms)[counting]
    matrix = _summed(counts.size, columns.size, row, of_entry, parts[counting])
    return Weights(matrix, columns // mechanisms, np.eye(mechanisms, dtype=np.float32)[columns % mechanisms])


def _summed(rows: int, columns: int, row: np.ndarray, column: np.ndarray, values: np.ndarray) -> np.ndarray:
    """float32 (row, column): the sum of the values of each place."""
    flat = np.bincount(row * max(columns, 1) + column, values, minlength=rows * columns)
    with np.errstate(over="ignore"):  # its scenario has no finite heights, and says so
        return flat.reshape(rows, columns).astype(np.float32)


def product(weights: np.ndarray, responses: np.ndarray) -> np.ndarray:
    """float32 (scenario, node): the fields of scenarios.

    Parameters
    ----------
    weights : numpy.ndarray
        float32 (scenario, column).
    responses : numpy.ndarray
        float32 (column, node).
    """
    rows = weights.shape[0]
    if rows < _SMALL:
        weights = np.concatenate([weights, np.zeros((_SMALL - rows, weights.shape[1]), np.float32)])
    total = np.empty((weights.shape[0], responses.shape[1]), np.float32)
    if not weights.shape[1]:
        total.fill(0.0)
    for start in range(0, weights.shape[1], _DEPTH):
        columns = slice(start, start + _DEPTH)
        if start == 0:
            np.matmul(weights[:, columns], responses[columns], out=total)
        else:
            total += weights[:, columns] @ responses[columns]
    return total[:rows]
