"""From a table of elements to the initial sea surface."""

from __future__ import annotations

from typing import Any, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..faults.table import checked_columns
from .binding import part_of
from .deform import as_dataset, checked_request, computed, options_of
from .kajiura import filtered, parent_of
from .layers import layers_of
from .results import said, variable
from .nodes import Nodes, Where, nodes_of

_FIRST_PART = 0.8
"""Of the progress, for the displacement; the filter has the rest."""


def source(
    faults: xr.Dataset,
    topography: Where,
    *,
    times: Any = None,
    slope: bool = False,
    kajiura: bool = False,
    parent: Optional[xr.DataArray] = None,
    **as_deform: Any,
) -> xr.Dataset:
    """The initial sea surface of a tsunami: displacement, slope term and filter in one.

    Parameters
    ----------
    faults : xarray.Dataset
        Table of `read_faults` or `make_faults`.
    topography : xarray.DataArray or xarray.Dataset
        (y, x), m, negative below sea level; or what else `deform` takes as ``where``.
    times : None, "intervals" or sequence of float
        As in `deform`.
    slope : bool
        As in `deform`.
    kajiura : bool
        Smooths the sea surface over the depth of the water: the function `kajiura` with its converged kernel. It needs
        a topography of equal spacing.
    parent : xarray.DataArray, optional
        With `kajiura`: ``eta`` without the filter, or ``uz``, on a larger grid, with the same layers in time; taken
        outside of the own grid.
    **as_deform
        ``frame, depth, components, min_depth, tolerance, threads, progress`` of `deform`.

    Returns
    -------
    xarray.Dataset, float32
        As of `deform`: ``uz``, ``slope`` if it is asked for, and ``eta``, the initial sea surface: their sum, filtered
        if that is asked for. With `times` each layer has what it adds.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be used; names it.
    """
    options = options_of(as_deform, "source")
    columns = checked_columns(faults)
    nodes = nodes_of(topography, "topography")
    request = checked_request(faults.attrs["coord"], columns, nodes, slope=slope, **options)
    progress = arguments.callback("progress", as_deform.get("progress"))
    if "uz" not in request.names:
        raise TidoraError((Parameter("components"), " has z, without which there is no sea surface"))
    if arguments.flag("kajiura", kajiura):
        _check_filter(nodes)
    elif parent is not None:
        raise TidoraError((Parameter("parent"), " is for ", Parameter("kajiura"), ", which is off"))
    layers = layers_of(times, columns)
    outer = None if parent is None else parent_of(parent, None if layers is None else layers.starts, nodes)
    first = part_of(progress, 0.0, _FIRST_PART) if kajiura else progress
    values = computed(columns, nodes, request, layers, first)
    result = as_dataset(values, nodes, request, layers)
    eta = values["uz"] + values["slope"] if slope else values["uz"].copy()
    if kajiura:
        if not np.isfinite(eta).all():
            raise TidoraError((Parameter("faults"), " moves the surface by what is no finite number"))
        eta = filtered(eta, nodes, outer, "converged", request.threads, part_of(progress, _FIRST_PART, 1.0))
        done = said("kajiura", kernel="converged", parent="no" if outer is None else "yes")
        result.attrs["history"] += f"\n{done}"
    result["eta"] = variable(
        tuple(map(str, result["uz"].dims)), eta, "eta", {**nodes.attrs, "history": result.attrs["history"]}
    )
    return result


def _check_filter(nodes: Nodes) -> None:
    if not nodes.is_grid or nodes.floor is None:
        raise TidoraError((Parameter("kajiura"), " needs a topography on a grid"))
    nodes.spacing()
