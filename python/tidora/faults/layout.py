"""Which place in its plane a subfault has, from the order of the rows."""

from __future__ import annotations

from typing import Optional, Sequence

import numpy as np

Layout = Optional[dict[str, np.ndarray]]


def of_planes(counts: Sequence[int], rows: Sequence[Optional[int]]) -> Layout:
    """Layout of planes that stand one behind the other, rows along strike first, then down dip.

    Parameters
    ----------
    counts : sequence of int
        Subfaults of each plane.
    rows : sequence of int or None
        Of them along strike; None when it is not known.

    Returns
    -------
    dict or None
        float64 (element,) ``plane``, ``along``, ``down``. None when a plane is not known, or when all of several have
        one subfault: such a file says nothing about its layout.
    """
    if any(row is None for row in rows) or (len(counts) > 1 and max(counts) == 1):
        return None
    number = np.concatenate([np.arange(count) for count in counts])
    length = np.repeat([int(row or 1) for row in rows], counts)
    return {"plane": np.repeat(np.arange(len(counts)), counts), "along": number % length, "down": number // length}


def row_length(depth: np.ndarray, stated: Optional[int]) -> Optional[int]:
    """Subfaults along strike of one plane.

    Parameters
    ----------
    depth : (element,)
        Of rows along strike first, then down dip.
    stated : int, optional
        What the file says.

    Returns
    -------
    int or None
        `stated` where it fits the rows, else the length of the runs of equal depth, where all have the same.
    """
    if stated and depth.size % stated == 0:
        runs = depth.reshape(-1, stated)
        if np.ptp(runs, axis=1).max() <= _SAME:
            return stated
    ends = np.flatnonzero(np.abs(np.diff(depth)) > _SAME) + 1
    lengths = np.diff([0, *ends, depth.size])
    return int(lengths[0]) if np.all(lengths == lengths[0]) else None


def planes_of_runs(depth: np.ndarray) -> Layout:
    """Layout from runs of equal depth alone: a run that is not deeper than the one before begins a new plane."""
    if not depth.size:
        return None
    starts = np.concatenate([[0], np.flatnonzero(np.abs(np.diff(depth)) > _SAME) + 1])
    new = np.concatenate([[0], starts[1:][np.diff(depth[starts]) < 0]]).astype(int)
    counts = np.diff([*new, depth.size])
    pieces = np.split(depth, new[1:])
    return of_planes([int(count) for count in counts], [row_length(piece, None) for piece in pieces])


_SAME = 2.0
"""m: depths that differ by less are equal. They are printed with a metre at worst; rows differ by far more."""
