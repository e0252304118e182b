"""``tdr source``: from a rupture and bathymetry to the initial sea surface."""

from __future__ import annotations

import argparse
import math
import os
from typing import Any

import numpy as np
import xarray as xr

from ..engine.source import source
from ..engine.structures import DEPTHS, FRAMES
from ..errors import UsageError
from ..faults.moment import RIGIDITY, seismic_moment
from ..faults.models import read_faults
from ..fields.kinds import kind_of
from ..fields.placing import Placing, placed
from ..fields.series import total
from ..formats.contract import Writing
from ..formats.registry import PICTURE, Format, ending, endings_written, format_of_target, open_field
from ..version import VERSION
from .fields import summary
from .options import add_input_options, in_options, not_negative, positive, region, spacing, whole
from .progress import fraction_bar, progress


def add(commands: Any) -> None:
    """Its options."""
    parser = commands.add_parser(
        "source",
        help="the initial sea surface from a rupture and bathymetry",
        description="The initial sea surface of a tsunami on the nodes of TOPOGRAPHY, or on those of --region and "
        "--spacing. The ending of OUT says the format: .nc has all variables and layers, formats of one field get eta, "
        ".tt3 the layers in time too, a picture the map of eta.",
    )
    parser.add_argument("model", metavar="MODEL", help="fault file or published rupture model")
    parser.add_argument("topography", metavar="TOPOGRAPHY", help="grid of any format, negative below sea level")
    parser.add_argument("-o", "--output", required=True, metavar="OUT")
    add_input_options(parser)
    parser.add_argument("--region", type=region, metavar="W/E/S/N", help="first and last nodes")
    parser.add_argument("--spacing", type=spacing, metavar="D", help="of the result, 0.1 or 1/12: resamples TOPOGRAPHY")
    parser.add_argument("--frame", choices=tuple(FRAMES), help="plane for metres, globe or utm for degrees (globe)")
    parser.add_argument("--depth", choices=tuple(DEPTHS), help="where the half-space begins (floor)")
    parser.add_argument("--times", type=positive, metavar="STEP", help="layers of STEP seconds instead of all at once")
    parser.add_argument("--slope", action="store_true", help="uplift by the horizontal motion of a sloping floor")
    parser.add_argument("--kajiura", action="store_true", help="smooths the sea surface over the depth of the water")
    parser.add_argument("--tolerance", type=not_negative, default=0.0, metavar="M", help="m, of far elements (0)")
    parser.add_argument("--threads", type=whole, metavar="N", help="as many as the process has cores")
    parser.set_defaults(command=run)


def run(args: argparse.Namespace) -> int:
    """Computes, writes, and prints what came out."""
    picture = ending(args.output) in endings_written(PICTURE)
    form = None if picture else format_of_target(args.output)  # a wrong name is told before anything is read
    _check_files(args)
    opened = open_field(args.topography, args.coord, args.variable)
    topography, notes = placed(opened, Placing(args.region, args.spacing))
    faults = read_faults(args.model, kind_of(topography))
    result = _computed(args, faults, topography)
    surface = total(result["eta"], np.float32)
    if form is None:
        from ..plot.figures import draw_maps
        from ..plot.overlay import Overlay

        draw_maps([surface], args.output, Overlay(topography, faults, "utm" if args.frame == "utm" else "globe"))
        notes.append(args.output)
    else:
        notes.append(f"{args.output}: {_write(result, surface, form, args.output)}")
    print("\n".join(map(in_options, notes)))
    print(_summary(faults, surface))
    return 0


def _check_files(args: argparse.Namespace) -> None:
    for name, path in (("MODEL", args.model), ("TOPOGRAPHY", args.topography)):
        if os.path.exists(args.output) and os.path.exists(path) and os.path.samefile(args.output, path):
            raise UsageError(f"{name} and OUT are the same file")


def _computed(args: argparse.Namespace, faults: xr.Dataset, topography: xr.DataArray) -> xr.Dataset:
    with fraction_bar("Computing") as tell:
        return source(
            faults,
            topography,
            times=None if args.times is None else _layers(faults, args.times),
            slope=args.slope,
            kajiura=args.kajiura,
            frame=args.frame,
            depth=args.depth,
            tolerance=args.tolerance,
            threads=args.threads,
            progress=tell,
        )


def _layers(faults: xr.Dataset, step: float) -> list[float]:
    """Starts of layers from the multiple of the step before the first slip on, and the end of the last."""
    if not faults.sizes["element"]:
        return [0.0, step]
    start = faults["lag_time"].values
    first = math.floor(float(start.min()) / step)
    end = math.ceil(float((start + faults["duration"].values).max()) / step)
    return [number * step for number in range(first, max(end, first + 1) + 1)]


def _write(result: xr.Dataset, surface: xr.DataArray, form: Format, path: str) -> str:
    """Writes a file; what it holds, for the user."""
    module = form.load()
    writing = Writing(history=f"{result.attrs['history']}\ntdr source {VERSION}")
    layers = result.sizes.get("time", 0)
    if form.several:
        names = [str(name) for name in result.data_vars]
        with progress("Writing", len(names) * max(layers, 1)) as step:
            shape = module.write_several({name: result[name] for name in names}, path, writing, step)
        return f"{', '.join(names)}{_in_time(layers)} on {shape}"
    field = result["eta"] if form.series and layers else surface
    with progress("Writing", module.steps(field, writing)) as step:
        shape = module.write(field, path, writing, step)
    return f"eta{_in_time(layers if form.series else 0)} on {shape}"


def _in_time(layers: int) -> str:
    return f", {layers} layers in time," if layers else ""


def _summary(faults: xr.Dataset, surface: xr.DataArray) -> str:
    size = seismic_moment(faults)
    rigidity = "rigidities of the model" if "rigidity" in faults else f"{RIGIDITY / 1e9:g} GPa"
    magnitude = f"Mw {size.magnitude:.2f} ({rigidity})" if size.moment > 0 else "no slip"
    return f"{magnitude}, {summary(surface)}"
