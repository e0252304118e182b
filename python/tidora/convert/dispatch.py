"""From any format to any other, by the endings of the names."""

from __future__ import annotations

import math
import os
from dataclasses import dataclass
from datetime import datetime
from fractions import Fraction
from typing import Callable, ContextManager, Optional

import numpy as np
import pyproj
import xarray as xr

from ..errors import Message, Parameter, Path, TidoraError, UsageError
from ..geometry import GEOGRAPHIC, MAX_VALUES, PLANE, GridShape, kind_of, row_blocks, shape_of
from ..grid import is_binary_name, write_grid
from ..lazy import Key, as_field, lazily
from ..opening import ending, open_field
from ..resample import ToSource, resampled
from ..series import interval_times, snapshot, total
from .reference import GEOGRAPHIC_CRS, crs_of, kind_of_crs, to_crs, with_crs

DTOPO = (".tt3", ".dtopo", ".dtt3")
SERIES_ENDINGS = (".nc", *DTOPO)
ENDINGS = (*SERIES_ENDINGS, ".asc", ".tif", ".tiff", ".bin", ".txt")

Progress = Callable[[str, int], ContextManager[Callable[[str], None]]]


@dataclass(frozen=True)
class Request:
    """What a conversion shall do."""

    source: Path
    target: Path
    coord: Optional[str] = None
    variable: Optional[str] = None
    start: Optional[float] = None
    """Of a series, the snapshot that starts at this second."""
    whole_sum: bool = False
    """Of a series, the sum."""
    region: Optional[tuple[float, float, float, float]] = None
    """West, east, south, north: first and last nodes."""
    spacing: Optional[Fraction] = None
    crs: Optional[str] = None
    """Of the result."""
    source_crs: Optional[str] = None
    """Of the source, when it has none or a wrong one."""
    resampling: str = "auto"
    """auto, bilinear or mean."""
    fill: Optional[float] = None
    """Takes the place of missing values."""
    step: Optional[float] = None
    """s, of a dtopo file."""
    epoch: Optional[datetime] = None
    """Time 0 of a NetCDF series."""


def convert(request: Request, progress: Progress) -> list[Message]:
    """Converts a file.

    Returns
    -------
    list of str, or of tuples of str and Parameter
        What was done, for the user.
    """
    form = _check_target(request)
    field = open_field(request.source, request.coord, request.variable)
    notes: list[Message] = []
    field = _choose_layer(field, request, form, notes)
    field = _placed(field, request, notes)
    if request.fill is not None:
        field = _filled(field, request.fill)
    layers = field.sizes.get("time", 0)
    shape = _write(field, request, form, layers, progress)
    what = f"{layers} intervals of " if layers else ""
    notes.append(f"{os.fspath(request.target)}: {what}{shape}")
    return notes


def _check_target(request: Request) -> str:
    form = ending(request.target)
    if form not in ENDINGS:
        raise UsageError(
            ("the ending of ", Parameter("target"), f" says the format; '{form}' is none of {', '.join(ENDINGS)}")
        )
    binary = is_binary_name(request.target)
    if form == ".bin" and not binary:
        raise UsageError("a grid that is called .bin and nothing else is read as text by the program")
    if form == ".txt" and binary:
        raise UsageError("with .bin anywhere in its path the program reads a grid as binary; use another name")
    if (
        os.path.exists(request.target)
        and os.path.exists(request.source)
        and os.path.samefile(request.source, request.target)
    ):
        raise UsageError((Parameter("source"), " and ", Parameter("target"), " are the same file"))
    if request.step is not None and form not in DTOPO:
        raise UsageError((Parameter("step"), " is for dtopo files"))
    if request.epoch is not None and form != ".nc":
        raise UsageError((Parameter("epoch"), " is for NetCDF files"))
    return form


def _choose_layer(field: xr.DataArray, request: Request, form: str, notes: list[Message]) -> xr.DataArray:
    if "time" not in field.dims:
        if request.start is not None or request.whole_sum:
            raise UsageError((Parameter("start"), " and ", Parameter("whole_sum"), " are for series, this is one grid"))
        return field
    if request.start is not None:
        return snapshot(field, request.start)
    places = request.region is not None or request.spacing is not None
    if not request.whole_sum and form in SERIES_ENDINGS and not places:
        if form in DTOPO and field.attrs.get("time_content") != "increment":
            raise TidoraError(
                (
                    "the file does not say that its layers are what each interval adds; ",
                    Parameter("start"),
                    " chooses one",
                )
            )
        return field
    if not request.whole_sum and field.sizes["time"] > 1:
        if field.attrs.get("time_content") != "increment":
            layers = f"the file has {field.sizes['time']} layers in time; "
            raise TidoraError((layers, Parameter("start"), " or ", Parameter("whole_sum"), " chooses"))
        summed = f"sum of {field.sizes['time']} intervals ("
        notes.append((summed, Parameter("start", "START"), " takes one of them)"))
    return total(field, np.float32)


def _filled(field: xr.DataArray, value: float) -> xr.DataArray:
    """The field with `value` in place of missing ones, put there when it is read."""

    def read(key: Key) -> np.ndarray:
        part = np.asarray(field[key].values, dtype=np.float32)
        return np.where(np.isnan(part), np.float32(value), part)

    return as_field(field.dims, lazily(field.shape, read), field.attrs, field.coords)


def _placed(field: xr.DataArray, request: Request, notes: list[Message]) -> xr.DataArray:
    """The field on the nodes that are asked for."""
    if request.source_crs is not None:
        field = with_crs(field, to_crs(request.source_crs))
    own = crs_of(field)
    wanted = to_crs(request.crs) if request.crs is not None else own
    if own is None and wanted is not None:
        field, own = with_crs(field, wanted), wanted  # a plane grid of the program
    assert wanted is None or own is not None
    same = (
        wanted is None
        or own is None
        or wanted.equals(own, ignore_axis_order=True)
        or (wanted.is_geographic and own.is_geographic and request.source_crs is None and "crs_wkt" not in field.attrs)
    )
    if same and request.spacing is None:
        if wanted is not None:
            field = with_crs(field, wanted)
        return field if request.region is None else _cropped(field, request.region, notes)
    if "time" in field.dims:
        whole = "a whole series cannot be put on other nodes; "
        raise TidoraError((whole, Parameter("start"), " or ", Parameter("whole_sum"), " chooses one layer"))
    if request.spacing is None:
        raise UsageError(("another reference system needs ", Parameter("spacing"), ", in the units of the new one"))
    kind = kind_of(field) if wanted is None else kind_of_crs(wanted)
    shape = _target_shape(field, request, kind, own, None if same else wanted)
    to_source = None if same or own is None or wanted is None else _to_source(wanted, own)
    return _put(field, shape, kind, to_source, wanted, request.resampling, notes)


def _cropped(field: xr.DataArray, region: tuple[float, float, float, float], notes: list[Message]) -> xr.DataArray:
    """The nodes of a field within a region."""
    west, east, south, north = region
    spacing = float(field["x"][1] - field["x"][0]) if field.sizes["x"] > 1 else 1.0
    x, y = np.asarray(field["x"].values), np.asarray(field["y"].values)
    if kind_of(field) == GEOGRAPHIC:
        turn = 360.0 * math.floor((west - x[0]) / 360.0 + 1e-9)
        west, east = west - turn, east - turn
    near = 1e-4 * spacing
    columns = np.flatnonzero((x >= west - near) & (x <= east + near))
    rows = np.flatnonzero((y >= south - near) & (y <= north + near))
    if (
        columns.size == 0
        or rows.size == 0
        or west < x[0] - spacing
        or east > x[-1] + spacing
        or (south < y[0] - spacing)
        or north > y[-1] + spacing
    ):
        outside = (
            f"the region {'/'.join(f'{value:g}' for value in region)} is not within the grid, "
            f"{x[0]:.10g}/{x[-1]:.10g}/{y[0]:.10g}/{y[-1]:.10g}"
        )
        if kind_of(field) != GEOGRAPHIC:
            raise TidoraError(outside)
        raise TidoraError((outside, "; ", Parameter("spacing"), " resamples across the edge of a global grid"))
    cut = field.isel(x=slice(int(columns[0]), int(columns[-1]) + 1), y=slice(int(rows[0]), int(rows[-1]) + 1))
    notes.append(
        f"nodes within the region: x {float(cut['x'][0]):.10g} to {float(cut['x'][-1]):.10g}, "
        f"y {float(cut['y'][0]):.10g} to {float(cut['y'][-1]):.10g}"
    )
    return cut


def _to_source(wanted: pyproj.CRS, own: pyproj.CRS) -> ToSource:
    transformer = pyproj.Transformer.from_crs(wanted, own, always_xy=True)

    def transform(x: np.ndarray, y: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
        a, b = transformer.transform(x, y)
        return np.asarray(a), np.asarray(b)

    return transform


def _target_shape(
    field: xr.DataArray, request: Request, kind: str, own: Optional[pyproj.CRS], wanted: Optional[pyproj.CRS]
) -> GridShape:
    assert request.spacing is not None
    spacing = float(request.spacing)
    region = request.region
    if region is None:
        if wanted is not None:
            raise UsageError(("another reference system needs ", Parameter("region")))
        x, y = field["x"].values, field["y"].values
        region = (float(x[0]), float(x[-1]), float(y[0]), float(y[-1]))
        # The last node may lie before the end.
        counts = [math.floor((last - first) / spacing + 1e-4) + 1 for first, last in (region[:2], region[2:])]
        return _checked(GridShape(region[0], region[2], counts[0], counts[1], spacing))
    if wanted is not None and kind == PLANE and max(abs(edge) for edge in region) <= 360:
        region = _covering(region, wanted, spacing)
    counts = []
    for first, last, axis in ((*region[:2], "x"), (*region[2:], "y")):
        steps = (last - first) / spacing
        if steps < 0:
            raise UsageError("a region is west/east/south/north, with the smaller number first")
        if abs(steps - round(steps)) > 1e-4:
            raise UsageError(
                f"{first:.10g} to {last:.10g} along {axis} is no multiple of the spacing {spacing:.9g}: "
                f"{steps:.6g} steps"
            )
        counts.append(round(steps) + 1)
    return _checked(GridShape(region[0], region[2], counts[0], counts[1], spacing))


def _checked(shape: GridShape) -> GridShape:
    if shape.nx < 2 or shape.ny < 2 or shape.nx * shape.ny > MAX_VALUES:
        raise UsageError(f"the result would have {shape.nx} x {shape.ny} nodes")
    return shape


def _covering(
    region: tuple[float, float, float, float], wanted: pyproj.CRS, spacing: float
) -> tuple[float, float, float, float]:
    """The plane rectangle around a region in degrees, its edges multiples of the spacing."""
    west, east, south, north = region
    transformer = pyproj.Transformer.from_crs(GEOGRAPHIC_CRS, wanted, always_xy=True)
    left, bottom, right, top = transformer.transform_bounds(west, south, east, north, densify_pts=101)
    if not all(map(math.isfinite, (left, bottom, right, top))):
        raise TidoraError(f"the region {west:g}/{east:g}/{south:g}/{north:g} cannot be projected into {wanted.name}")
    return (
        math.floor(left / spacing) * spacing,
        math.ceil(right / spacing) * spacing,
        math.floor(bottom / spacing) * spacing,
        math.ceil(top / spacing) * spacing,
    )


def _put(
    field: xr.DataArray,
    shape: GridShape,
    kind: str,
    to_source: Optional[ToSource],
    wanted: Optional[pyproj.CRS],
    resampling: str,
    notes: list[Message],
) -> xr.DataArray:
    ratio = shape.dx / _source_spacing(field, shape, kind)
    samples = max(1, round(ratio)) if resampling == "mean" or (resampling == "auto" and ratio >= 1.999) else 1
    _check_covered(field, shape, to_source)
    result = resampled(field, shape, kind, to_source, samples)
    notes.append(
        f"resampled: {'bilinear' if samples == 1 else f'mean of {samples} x {samples} bilinear values'}, "
        f"the spacing is {ratio:.3g} times that of the source"
    )
    return result if wanted is None else with_crs(result, wanted)


def _source_spacing(field: xr.DataArray, shape: GridShape, kind: str) -> float:
    """Spacing of the source in the units of the target, at the middle of the target."""
    steps = [float(field[axis][-1] - field[axis][0]) / (field.sizes[axis] - 1) for axis in ("x", "y")]
    own_kind = kind_of(field)
    if own_kind == kind:
        return max(steps)
    metres = 111_195.0  # of a degree of latitude, on the mean sphere
    return max(steps) * metres if own_kind == GEOGRAPHIC else max(steps) / metres


def _check_covered(field: xr.DataArray, shape: GridShape, to_source: Optional[ToSource]) -> None:
    """Refuses a target whose edge nodes lie outside of the source."""
    x, y = shape.x, shape.y
    edge_x = np.concatenate([x, x, np.full(y.size, x[0]), np.full(y.size, x[-1])])
    edge_y = np.concatenate([np.full(x.size, y[0]), np.full(x.size, y[-1]), y, y])
    source_x, source_y = (edge_x, edge_y) if to_source is None else to_source(edge_x, edge_y)
    own_x, own_y = np.asarray(field["x"].values, float), np.asarray(field["y"].values, float)
    near_x, near_y = 1e-4 * (own_x[1] - own_x[0]), 1e-4 * (own_y[1] - own_y[0])
    if kind_of(field) == GEOGRAPHIC:
        source_x = source_x - 360.0 * np.floor((source_x - own_x[0] + near_x) / 360.0)
        if own_x[-1] + 1.5 * (own_x[1] - own_x[0]) > own_x[0] + 360.0:
            source_x = np.clip(source_x, own_x[0], own_x[-1])  # around the earth
    outside = ~(
        (source_x >= own_x[0] - near_x)
        & (source_x <= own_x[-1] + near_x)
        & (source_y >= own_y[0] - near_y)
        & (source_y <= own_y[-1] + near_y)
    )
    if outside.any():
        at = int(np.flatnonzero(outside)[0])
        raise TidoraError(
            f"the region reaches out of the source: node {edge_x[at]:.10g}, {edge_y[at]:.10g} lies at "
            f"{source_x[at]:.6g}, {source_y[at]:.6g}, the source spans {own_x[0]:.6g} to {own_x[-1]:.6g}, "
            f"{own_y[0]:.6g} to {own_y[-1]:.6g}"
        )


def _write(field: xr.DataArray, request: Request, form: str, layers: int, progress: Progress) -> GridShape:
    target = request.target
    if form == ".nc":
        from .netcdf import write_netcdf

        with progress("Writing", max(layers, 1)) as step:
            return write_netcdf(field, target, request.epoch, step)
    if form in DTOPO:
        from .dtopo import time_steps, write_dtopo

        count = 1
        if layers:
            count = time_steps(*interval_times(field), request.step)[2]
        with progress("Writing", count) as step:
            return write_dtopo(field, target, request.step, step)
    blocks = len(row_blocks(shape_of(field)))
    if form == ".asc":
        from .esri import write_esri

        with progress("Writing", blocks) as step:
            return write_esri(field, target, step)
    if form in (".tif", ".tiff"):
        from .geotiff import write_geotiff

        with progress("Writing", blocks) as step:
            return write_geotiff(field, target, step)
    with progress("Writing", blocks) as step:
        return write_grid(field, target, step)
