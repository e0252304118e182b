"""Figures of many fields, piece by piece."""

from __future__ import annotations

import ctypes

import numpy as np

from . import binding, structures as c


def begun(fields: int) -> np.ndarray:
    """`structures.FIGURES` (field,): figures of fields of which nothing is known yet."""
    figures = np.zeros(fields, c.FIGURES)
    figures["highest_at"] = figures["lowest_at"] = -1
    return figures


def add_figures(figures: np.ndarray, heights: np.ndarray, areas: np.ndarray, first: int) -> None:
    """Adds some nodes of several fields to their figures.

    Parameters
    ----------
    figures : numpy.ndarray
        Of `begun`.
    heights : numpy.ndarray
        float32 (field, node), m.
    areas : numpy.ndarray
        float64 (node,), m2.
    first : int
        Number of the first node; the others count on. Of equal extremes the lowest number counts.
    """
    fields, nodes = heights.shape
    assert heights.dtype == np.float32 and heights.strides[1] == 4 and heights.strides[0] >= 4 * nodes
    assert areas.dtype == np.float64 and areas.shape == (nodes,) and areas.flags.c_contiguous
    assert figures.shape == (fields,) and figures.dtype == c.FIGURES and figures.flags.c_contiguous
    error = c.Error()
    status = binding.library().tidora_measure(
        fields,
        nodes,
        heights.ctypes.data,
        heights.strides[0] // 4,
        areas.ctypes.data,
        first,
        figures.ctypes.data,
        ctypes.byref(error),
    )
    binding.check(status, error, {})
