"""From any format to any other, by the endings of the names."""

from __future__ import annotations

import os
from dataclasses import dataclass
from datetime import datetime
from fractions import Fraction
from typing import Callable, ContextManager, Optional

import numpy as np
import xarray as xr

from ..errors import Message, Parameter, Path, TidoraError, UsageError
from ..fields.missing import filled
from ..fields.placing import Placing, placed
from ..fields.series import interval_times, snapshot, total
from ..fields.shape import GridShape, row_blocks, shape_of
from ..grid import is_binary_name, write_grid
from ..opening import ending, open_field

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
    field, said = placed(
        field, Placing(request.region, request.spacing, request.crs, request.source_crs, request.resampling)
    )
    notes += said
    if request.fill is not None:
        field = filled(field, request.fill)
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
