"""Displacement of the surface by the elements of a table."""

from __future__ import annotations

import ctypes
import inspect
from dataclasses import dataclass
from typing import Any, Callable, Mapping, Optional, Sequence

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..faults.table import checked_columns
from ..fields.kinds import PLANE
from ..fields.shape import shape_of
from . import binding, structures as c
from .layers import Layers, layers_of
from .results import finished, said, variable
from .nodes import Nodes, Where, nodes_of

COMPONENTS = {"z": "uz", "e": "ue", "n": "un"}
"""Components and their variables."""

_ELEMENT = ("x", "y", "base_offset", "depth", "strike", "dip", "rake", "length", "width", "slip")
"""tidora_element: numbers of double precision, without gaps."""

_OPTIONS = ("frame", "depth", "components", "min_depth", "tolerance", "threads")
"""Of `deform`, beside those that say what is computed when."""


@dataclass(frozen=True)
class Request:
    """What is asked for, checked."""

    frame: str
    depth: str
    tolerance: float
    min_depth: float
    threads: int
    names: tuple[str, ...]
    """Variables of the result."""
    needs_topography: bool


def deform(
    faults: xr.Dataset,
    where: Where,
    *,
    frame: Optional[str] = None,
    depth: Optional[str] = None,
    times: Any = None,
    components: Sequence[str] = ("z",),
    slope: bool = False,
    min_depth: float = 50.0,
    tolerance: float = 0.0,
    threads: Optional[int] = None,
    progress: Optional[Callable[[float], Any]] = None,
) -> xr.Dataset:
    """Displacement of the surface by rectangular elements in an elastic half-space.

    Okada, Y. (1985), Surface deformation due to shear and tensile faults in a half-space, Bull. Seism. Soc. Am. 75,
    1135-1154, and (1992), Internal deformation due to shear and tensile faults in a half-space, Bull. Seism. Soc. Am.
    82, 1018-1040; Poisson solid. Each node sums the elements in the order of the table, in single precision: the bits
    depend neither on the number of threads nor on how nodes are shared out over calls.

    Parameters
    ----------
    faults : xarray.Dataset
        Table of `read_faults` or `make_faults`.
    where : xarray.DataArray or xarray.Dataset
        A topography, (y, x), in m and negative below sea level; `grid`; or `points`. Places are taken as they are, in
        double precision. Axes that decrease are turned round; so is the result. Whole turns of longitude do not matter.
    frame : {'plane', 'globe', 'utm'}, optional
        How a node becomes metres east and north of an element: "plane", as it is; "globe", the true distance and
        direction from the reference point on GRS80; "utm", the zone of the element, strike from grid north, as the
        program. "plane" for metres and "globe" for degrees when None.
    depth : {'datum', 'floor', 'program'}, optional
        Where the half-space begins: "datum", at sea level; "floor", at the sea floor of each node; "program", as the
        program does it, which takes ``depth`` for one element and the floor for several. When None, "floor" when
        `where` has topography, "datum" when not: for `grid`, and for `points` without topography.
    times : None, "intervals" or sequence of float
        None: all slip at once. "intervals": a layer for each distinct pair of ``lag_time`` and ``duration``, in the
        order of the table, as the program. K + 1 increasing seconds: K layers of what happens from each to before the
        next; what lies before the first goes into the first layer, what lies after the last into the last.
    components : sequence of {'z', 'e', 'n'}
        Variables ``uz``, ``ue``, ``un``. Horizontal ones are true east and north at the node; of the plane, or of the
        grid of the zone, with "plane" and "utm".
    slope : bool
        And ``slope``: the uplift -(ue dh/de + un dh/dn) by the horizontal motion of a sloping floor h. It needs a
        topography of equal spacing. Per true metre, but with "utm" per unit of the grid, as the program.
    min_depth : float
        m: the slope counts where the sea floor is deeper.
    tolerance : float
        m: farther off than errors of this size an element is a point source, and farther still it is left out. 0 takes
        the rectangle everywhere.
    threads : int, optional
        None: ``OMP_NUM_THREADS``, or as many as the process has cores. Other threads of Python go on meanwhile.
    progress : callable, optional
        Is called with a fraction from 0 to 1, several times a second. What it raises stops the work within a second, as
        Ctrl-C does.

    Returns
    -------
    xarray.Dataset, float32
        m; dims (y, x), (point,), or (time, ...) with what each layer adds, ``time`` being its start and ``rise_time``
        its length in s.

    Raises
    ------
    TypeError, TidoraError
        If an argument cannot be used; names it. Missing values of a topography that is needed are an error.
    """
    columns = checked_columns(faults)
    nodes = nodes_of(where, "where")
    request = checked_request(
        faults.attrs["coord"],
        columns,
        nodes,
        slope=slope,
        frame=frame,
        depth=depth,
        components=components,
        min_depth=min_depth,
        tolerance=tolerance,
        threads=threads,
    )
    arguments.callback("progress", progress)
    layers = layers_of(times, columns)
    return as_dataset(computed(columns, nodes, request, layers, progress), nodes, request, layers)


def options_of(given: Mapping[str, Any], function: str) -> dict[str, Any]:
    """The options of `checked_request` among what a function has taken for `deform`, with their defaults.

    Raises
    ------
    TypeError
        If `deform` has no such option.
    """
    own = inspect.signature(deform).parameters
    options = {name: own[name].default for name in _OPTIONS}
    for name, value in given.items():
        if name in options:
            options[name] = value
        elif name != "progress":
            raise TypeError(f"{function}() got an unexpected keyword argument {name!r}")
    return options


def checked_request(
    kind: str,
    columns: Mapping[str, np.ndarray],
    nodes: Nodes,
    *,
    slope: Any,
    frame: Any,
    depth: Any,
    components: Any,
    min_depth: Any,
    tolerance: Any,
    threads: Any,
) -> Request:
    """The options of `deform`, checked one by one and against each other."""
    if kind != nodes.kind:
        raise TidoraError(
            (Parameter("faults"), f" has {kind} co-ordinates, ", Parameter(nodes.name), f" {nodes.kind} ones")
        )
    names = _variables(components) + (("slope",) if arguments.flag("slope", slope) else ())
    if not names:
        raise TidoraError((Parameter("components"), " has none, and there is no slope term either"))
    chosen_frame = _frame(frame, kind)
    chosen_depth = _depth(depth, nodes, len(columns["x"]))
    if slope and (not nodes.is_grid or nodes.floor is None):
        raise TidoraError((Parameter("slope"), f" needs a topography on a grid as {nodes.name}"))
    return Request(
        chosen_frame,
        chosen_depth,
        arguments.number("tolerance", tolerance, 0.0),
        arguments.number("min_depth", min_depth),
        0 if threads is None else arguments.count("threads", threads),
        names,
        slope or (chosen_depth != "datum" and nodes.floor is not None),
    )


def _variables(components: Any) -> tuple[str, ...]:
    try:
        wanted = list(components)
    except TypeError:
        raise TypeError(f"components is a sequence of words, not {arguments.kind(components)}") from None
    for component in wanted:
        arguments.choice("components", component, tuple(COMPONENTS))
    return tuple(name for component, name in COMPONENTS.items() if component in wanted)


def _frame(frame: Any, kind: str) -> str:
    if frame is None:
        return "plane" if kind == PLANE else "globe"
    arguments.choice("frame", frame, tuple(c.FRAMES))
    if (frame == "plane") != (kind == PLANE):
        unit = "metres" if kind == PLANE else "degrees"
        raise TidoraError((Parameter("frame"), f" {frame} is of no use for co-ordinates in {unit}"))
    return str(frame)


def _depth(depth: Any, nodes: Nodes, elements: int) -> str:
    if depth is None:
        return "datum" if nodes.floor is None else "floor"
    arguments.choice("depth", depth, tuple(c.DEPTHS))
    if nodes.floor is None and (depth == "floor" or (depth == "program" and elements > 1)):
        raise TidoraError((Parameter("depth"), f" {depth} needs a topography as {nodes.name}"))
    return str(depth)


def computed(
    columns: Mapping[str, np.ndarray],
    nodes: Nodes,
    request: Request,
    layers: Optional[Layers],
    progress: Optional[Callable[[float], Any]],
) -> dict[str, np.ndarray]:
    """float32 for each variable: what the library computes."""
    elements = np.ascontiguousarray(np.stack([columns[name] for name in _ELEMENT], axis=-1))
    topography = nodes.topography() if request.needs_topography else None
    shape = nodes.shape if layers is None else (layers.starts.size, *nodes.shape)
    results = {name: np.empty(shape, np.float32) for name in request.names}
    error = c.Error()

    def call(callback: Any) -> int:
        options = c.DeformOptions(
            frame=c.FRAMES[request.frame],
            depth=c.DEPTHS[request.depth],
            tolerance=request.tolerance,
            min_depth=request.min_depth,
            spacing=_stated_spacing(nodes) if "slope" in results and request.frame != "globe" else 0.0,
            threads=request.threads,
            progress=callback,
        )
        slices = None if layers is None else c.Layers(count=layers.starts.size, shares=layers.shares.ctypes.data)
        return int(
            binding.library().tidora_deform(
                elements.ctypes.data,
                len(elements),
                _c_nodes(nodes, topography),
                slices,
                options,
                c.Displacement(**{name: values.ctypes.data for name, values in results.items()}),
                ctypes.byref(error),
            )
        )

    binding.library()  # that it is not there is said before anything starts
    if layers is None or layers.starts.size:
        status = binding.run(call, progress)
        binding.check(status, error, _names(nodes.name))
    return results


def _stated_spacing(nodes: Nodes) -> float:
    """The spacing of a grid that says it, which the program takes for slopes; 0 for one that does not."""
    return shape_of(nodes.floor).dx if nodes.floor is not None and "grid_spacing" in nodes.attrs else 0.0


def _c_nodes(nodes: Nodes, topography: Optional[np.ndarray]) -> c.Nodes:
    return c.Nodes(
        layout=c.GRID if nodes.is_grid else c.POINTS,
        nx=nodes.x.size,
        ny=nodes.y.size if nodes.is_grid else 1,
        x=nodes.x.ctypes.data,
        y=nodes.y.ctypes.data,
        topography=None if topography is None else topography.ctypes.data,
    )


def _names(where: str) -> dict[str, str]:
    """What arguments of the C function are called here."""
    options = {f"options.{name}": name for name in ("frame", "depth", "tolerance", "min_depth", "threads")}
    return {
        "elements": "faults",
        "element_count": "faults",
        "nodes": where,
        "options.spacing": where,
        "layers": "times",
        "layers.shares": "faults",
        "out": "components",
        "out.slope": "slope",
        **options,
    }


def as_dataset(
    values: Mapping[str, np.ndarray], nodes: Nodes, request: Request, layers: Optional[Layers]
) -> xr.Dataset:
    """The result, with its attributes."""
    dims = nodes.dims if layers is None else ("time", *nodes.dims)
    coords = nodes.coords if layers is None else {**layers.coords(), **nodes.coords}
    history = said("deform", frame=request.frame, depth=request.depth, tolerance=f"{request.tolerance:g}")
    if "slope" in values:
        history += f" min_depth={request.min_depth:g}"
    if layers is not None:
        history += f" times={layers.text.replace(' ', '_')}"
    # Each variable has it too: whoever takes one out of the dataset keeps it.
    attrs = {**nodes.attrs, "history": history}
    variables = {name: variable(dims, array, name, attrs) for name, array in values.items()}
    return finished(xr.Dataset(variables, coords, {"Conventions": "CF-1.8", "history": history}))
