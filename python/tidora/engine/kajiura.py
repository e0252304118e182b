"""Kajiura's filter: from the uplift of the sea floor to that of the sea surface."""

from __future__ import annotations

import ctypes
from typing import Any, Callable, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..fields.shape import shape_of
from . import binding, structures as c
from .results import finished, said, variable
from .nodes import Nodes, finite_values, grid_of, increasing

_NAMES = {
    "grid": "topography",
    "topography": "topography",
    "layers": "uplift",
    "uplift": "uplift",
    "options.kernel": "kernel",
    "options.threads": "threads",
    "options.coordinates": "topography",
    "options.parent": "parent",
}


def kajiura(
    uplift: xr.DataArray,
    topography: xr.DataArray,
    *,
    parent: Optional[xr.DataArray] = None,
    kernel: str = "converged",
    threads: Optional[int] = None,
    progress: Optional[Callable[[float], Any]] = None,
) -> xr.DataArray:
    """Uplift of the sea surface above an uplift of the sea floor, which the water smooths.

    Kajiura, K. (1963), The leading wave of a tsunami, Bull. Earthq. Res. Inst. 41, 535-571: in water of depth d a wave
    of the floor of wavenumber k arrives at the surface with 1 / cosh(k d) of its height.

    Parameters
    ----------
    uplift : xarray.DataArray
        Of the sea floor, (y, x) or (time, y, x), m.
    topography : xarray.DataArray
        (y, x) on the same nodes, m, negative below sea level; equal spacing. Nodes at -10 m and above keep their
        value; their uplift is sampled like any other.
    parent : xarray.DataArray, optional
        The uplift on a larger grid, of any spacing, with the layers of `uplift`: taken outside of the own grid. Outside
        of both the uplift is 0.
    kernel : {'converged', 'program'}
        "converged": the sum of Kajiura's series, with weights that sum to one; in degrees the distances are those on
        the ellipsoid. "program": the filter of the program, bit for bit: eleven terms, not normalised, distances in the
        unit of the grid.
    threads : int, optional
        As in `deform`.
    progress : callable, optional
        As in `deform`.

    Returns
    -------
    xarray.DataArray, float32
        ``eta`` in m, with the dimensions of `uplift`.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be used; names it. Values may not be missing.
    """
    field, nodes = increasing(uplift, "uplift"), grid_of(topography, "topography")
    arguments.choice("kernel", kernel, tuple(c.KERNELS))
    workers = 0 if threads is None else arguments.count("threads", threads)
    arguments.callback("progress", progress)
    if nodes.floor is None or nodes.floor.ndim != 2:
        raise TidoraError((Parameter("topography"), " is a topography, (y, x), and no grid of places"))
    check_same_nodes(field, nodes)
    starts = field["time"].values if "time" in field.coords else np.arange(field.sizes.get("time", 0))
    outer = None if parent is None else parent_of(parent, starts if "time" in field.dims else None, nodes)
    values = filtered(finite_values(field, "uplift"), nodes, outer, kernel, workers, progress)
    return _as_field(values, field, nodes, kernel, outer is not None)


def check_same_nodes(field: xr.DataArray, nodes: Nodes) -> None:
    """Refuses a topography on other nodes than the uplift."""
    own = grid_of(field, "uplift")
    if own.kind != nodes.kind:
        raise TidoraError(
            (Parameter("uplift"), f" has {own.kind} co-ordinates, ", Parameter("topography"), f" {nodes.kind} ones")
        )
    near = 1e-3 * nodes.spacing()
    same = own.shape == nodes.shape and bool(
        np.allclose(own.x, nodes.x, rtol=0, atol=near) and np.allclose(own.y, nodes.y, rtol=0, atol=near)
    )
    if not same:
        raise TidoraError((Parameter("uplift"), " and ", Parameter("topography"), " lie on different nodes"))


def parent_of(parent: Any, starts: Optional[np.ndarray], nodes: Nodes) -> tuple[xr.DataArray, Nodes]:
    """The larger field and its nodes.

    Parameters
    ----------
    parent : xarray.DataArray
        What the caller has given.
    starts : numpy.ndarray, optional
        Of the layers that it has to have, s; None when it is one field.
    nodes : Nodes
        Of the own grid.
    """
    outer = increasing(parent, "parent")
    outer_nodes = grid_of(outer, "parent")
    if outer_nodes.kind != nodes.kind:
        raise TidoraError(
            (
                Parameter("parent"),
                f" has {outer_nodes.kind} co-ordinates, ",
                Parameter(nodes.name),
                f" {nodes.kind} ones",
            )
        )
    outer_nodes.spacing()
    if ("time" in outer.dims) != (starts is not None):
        raise TidoraError((Parameter("parent"), " has layers in time exactly when the field of the own grid has them"))
    if starts is not None:
        times = outer["time"].values if "time" in outer.coords else np.arange(outer.sizes["time"])
        if not np.array_equal(times, starts):
            raise TidoraError((Parameter("parent"), " has other layers in time than the field of the own grid"))
    return outer, outer_nodes


def filtered(
    uplift: np.ndarray,
    nodes: Nodes,
    outer: Optional[tuple[xr.DataArray, Nodes]],
    kernel: str,
    threads: int,
    progress: Optional[Callable[[float], Any]],
) -> np.ndarray:
    """float32, (y, x) or (time, y, x) as the uplift: what the library computes."""
    assert nodes.floor is not None
    topography = nodes.topography()
    outer_uplift = None if outer is None else finite_values(outer[0], "parent")
    outer_grid = None if outer is None else _c_grid(outer[1], kernel, outer[0])
    own_grid = _c_grid(nodes, kernel, nodes.floor)
    result = np.empty(uplift.shape, np.float32)
    error = c.Error()

    def call(callback: Any) -> int:
        options = c.FilterOptions(
            coordinates=c.COORDINATES[nodes.kind],
            kernel=c.KERNELS[kernel],
            threads=threads,
            parent=None if outer_grid is None else ctypes.pointer(outer_grid),
            parent_uplift=None if outer_uplift is None else outer_uplift.ctypes.data,
            progress=callback,
        )
        return int(
            binding.library().tidora_filter(
                own_grid,
                topography.ctypes.data,
                uplift.shape[0] if uplift.ndim == 3 else 1,
                uplift.ctypes.data,
                options,
                result.ctypes.data,
                ctypes.byref(error),
            )
        )

    binding.library()
    if result.size:
        status = binding.run(call, progress)
        binding.check(status, error, _NAMES)
    return result


def _c_grid(nodes: Nodes, kernel: str, field: xr.DataArray) -> c.FieldGrid:
    """The grid; for the program with its spacing, which is a number of single precision."""
    spacing = shape_of(field).dx if kernel == "program" else nodes.spacing()
    return c.FieldGrid(
        nx=nodes.x.size, ny=nodes.y.size, west=float(nodes.x[0]), south=float(nodes.y[0]), spacing=spacing
    )


def _as_field(values: np.ndarray, field: xr.DataArray, nodes: Nodes, kernel: str, has_parent: bool) -> xr.DataArray:
    dims = tuple(map(str, field.dims))
    times = {name: field.coords[name].variable for name in ("time", "rise_time") if name in field.coords}
    done = said("kajiura", kernel=kernel, parent="yes" if has_parent else "no")
    before = field.attrs.get("history")
    attrs = {**nodes.attrs, "history": f"{before}\n{done}" if before else done}
    dataset = xr.Dataset({"eta": variable(dims, values, "eta", attrs)}, {**times, **nodes.coords})
    return finished(dataset)["eta"]
