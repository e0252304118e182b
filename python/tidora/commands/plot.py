"""``tdr plot``: maps, frames and sections."""

from __future__ import annotations

import argparse
from pathlib import Path as FilePath
from typing import Any

import xarray as xr

from ..errors import TidoraError, UsageError
from ..faults.models import read_faults
from ..fields.kinds import kind_of
from ..fields.series import snapshot, total
from ..formats.registry import PICTURE, endings_written, open_field, picture_path
from .options import add_input_options, four_numbers, listed, positive
from .progress import progress


def add(commands: Any) -> None:
    """Its options."""
    parser = commands.add_parser("plot", help="map of a grid, of a snapshot or of the sum of a series; section; frames")
    parser.add_argument("files", nargs="+", metavar="FILE", help="grids or lists of series; several stand side by side")
    pictures = listed(endings_written(PICTURE), "or")
    parser.add_argument("-o", "--output", required=True, metavar="PICTURE", help=f"ends in {pictures}")
    add_input_options(parser)
    parser.add_argument("--topo", metavar="GRID", help="draws the coast, and the floor below a section")
    parser.add_argument("--fault", metavar="FILE", help="draws the outlines of the elements, upper edges thick")
    what = parser.add_mutually_exclusive_group()
    what.add_argument(
        "--snapshot",
        type=float,
        metavar="START",
        help="of a series, what the interval that starts at START seconds adds (the sum of all)",
    )
    what.add_argument(
        "--frames",
        action="store_true",
        help="of a series, every interval and the sum up to it: numbered pictures, or the pages of a pdf",
    )
    parser.add_argument("--section", type=_section, metavar="X0,Y0,X1,Y1", help="a profile along this line")
    parser.add_argument(
        "--limit",
        type=positive,
        metavar="M",
        help="the colours end at plus and minus M metres (the largest amount)",
    )
    parser.set_defaults(command=run)


def _section(word: str) -> tuple[float, ...]:
    return four_numbers(word, "/", ",", "x0,y0,x1,y1")


def run(args: argparse.Namespace) -> int:
    """Draws, and prints the names of the pictures."""
    picture_path(args.output)  # a wrong name is told before anything is read
    if (args.frames or args.section) and len(args.files) > 1:
        raise UsageError("--frames and --section take one file")
    if args.frames and args.section:
        raise UsageError("--frames and --section exclude each other")
    for picture in _draw(args, [open_field(path, args.coord, args.variable) for path in args.files]):
        print(picture)
    return 0


def _draw(args: argparse.Namespace, opened: list[xr.DataArray]) -> list[FilePath]:
    from ..plot.figures import draw_maps
    from ..plot.frames import draw_frames
    from ..plot.overlay import Overlay
    from ..plot.section import draw_section

    kind = kind_of(opened[0])
    faults = read_faults(args.fault, kind) if args.fault else None
    # A fault file has rectangles of the zones of the program, a published model true distances and directions.
    frame = "globe" if faults is not None and faults.attrs["format"] != "fault file" else "utm"
    overlay = Overlay(open_field(args.topo, kind) if args.topo else None, faults, frame)
    if args.frames:
        if "time" not in opened[0].dims:
            raise TidoraError("--frames needs a series, this is one grid")
        with progress("Drawing", opened[0].sizes["time"]) as step:
            return draw_frames(opened[0], args.output, overlay, args.limit, step)
    fields = [_one_layer(field, args.snapshot) for field in opened]
    if args.section:
        return [draw_section(fields[0], args.output, args.section, overlay, args.limit)]
    return [draw_maps(fields, args.output, overlay, args.limit)]


def _one_layer(field: xr.DataArray, start: Any) -> xr.DataArray:
    if "time" not in field.dims:
        return field
    return total(field) if start is None else snapshot(field, start)
