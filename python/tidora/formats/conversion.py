"""From any format to any other."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Optional

import numpy as np
import xarray as xr

from ..errors import Message, Parameter, Path, TidoraError, UsageError
from ..fields.missing import filled
from ..fields.placing import Placing, placed
from ..fields.series import snapshot, total
from .contract import Progress, Writing
from .registry import FORMATS, Format, format_of_target, open_field


@dataclass(frozen=True)
class Source:
    """What is converted."""

    path: Path
    coord: Optional[str] = None
    """Kind of co-ordinates, where the file does not say it."""
    variable: Optional[str] = None
    """Of a NetCDF file."""


@dataclass(frozen=True)
class Layer:
    """What of a series is taken: all of it when nothing is said and the format can hold it, else the sum."""

    start: Optional[float] = None
    """s: the snapshot of the interval that starts then."""
    whole_sum: bool = False


@dataclass(frozen=True)
class Request:
    """What a conversion shall do."""

    source: Source
    target: Path
    layer: Layer = Layer()
    placing: Placing = Placing()
    fill: Optional[float] = None
    """m, in place of missing values."""
    writing: Writing = Writing()


def convert(request: Request, progress: Progress) -> list[Message]:
    """Converts a file.

    Parameters
    ----------
    request : Request
    progress : callable
        Gets what is done and the number of its steps; a context of what is told of each step.

    Returns
    -------
    list of str, or of tuples of str and Parameter
        What was done, for the user.

    Raises
    ------
    UsageError
        If what is asked for does not fit together.
    TidoraError
        If the source breaks a rule, or cannot become what is asked for.
    """
    form = format_of_target(request.target)
    _check_request(request, form)
    field = open_field(request.source.path, request.source.coord, request.source.variable)
    notes: list[Message] = []
    field, chosen = _choose_layer(field, request, form)
    notes += chosen
    field, moved = placed(field, request.placing)
    notes += moved
    if request.fill is not None:
        field = filled(field, request.fill)
    module = form.load()
    with progress("Writing", module.steps(field, request.writing)) as step:
        shape = module.write(field, request.target, request.writing, step)
    layers = field.sizes.get("time", 0)
    notes.append(f"{os.fspath(request.target)}: {f'{layers} intervals of ' if layers else ''}{shape}")
    return notes


def _check_request(request: Request, form: Format) -> None:
    source, target = request.source.path, request.target
    if os.path.exists(target) and os.path.exists(source) and os.path.samefile(source, target):
        raise UsageError((Parameter("source"), " and ", Parameter("target"), " are the same file"))
    for name in ("step", "epoch"):
        if getattr(request.writing, name) is not None and name not in form.takes:
            takers = " and ".join(other.name for other in FORMATS if name in other.takes)
            raise UsageError((Parameter(name), f" is for {takers} files"))


def _choose_layer(field: xr.DataArray, request: Request, form: Format) -> tuple[xr.DataArray, list[Message]]:
    start, whole_sum = Parameter("start"), Parameter("whole_sum")
    if "time" not in field.dims:
        if request.layer.start is not None or request.layer.whole_sum:
            raise UsageError((start, " and ", whole_sum, " are for series, this is one grid"))
        return field, []
    if request.layer.start is not None:
        return snapshot(field, request.layer.start), []
    count, increments = field.sizes["time"], field.attrs.get("time_content") == "increment"
    stays = request.placing.region is None and request.placing.spacing is None
    if form.series and stays and not request.layer.whole_sum:
        if form.increments and not increments:
            unsaid = "the file does not say that its layers are what each interval adds; "
            raise TidoraError((unsaid, start, " chooses one"))
        return field, []
    notes: list[Message] = []
    if count > 1 and not request.layer.whole_sum:
        if not increments:
            raise TidoraError((f"the file has {count} layers in time; ", start, " or ", whole_sum, " chooses"))
        notes.append((f"sum of {count} intervals (", Parameter("start", "START"), " takes one of them)"))
    return total(field, np.float32), notes
