"""``tdr convert``: from any format to any other."""

from __future__ import annotations

import argparse
from datetime import datetime, timezone
from itertools import groupby
from typing import Any

from ..fields.placing import Placing, RESAMPLINGS
from ..formats.contract import Writing
from ..formats.conversion import Layer, Request, Source, convert
from ..formats.registry import FIELD, FORMATS
from ..version import VERSION
from .convert_faults import convert_faults, wants_faults
from .options import add_input_options, add_reference, in_options, listed, positive, region, spacing
from .progress import progress


def add(commands: Any) -> None:
    """Its options."""
    parser = commands.add_parser("convert", help=f"to and from {_titles()}", description=_description())
    parser.add_argument(
        "source", metavar="IN", help=f"grid, list of a series, {_endings_read()}; fault file or published model"
    )
    parser.add_argument("target", metavar="OUT")
    add_input_options(parser)
    what = parser.add_mutually_exclusive_group()
    what.add_argument(
        "--snapshot", type=float, metavar="START", help="of a series, the interval that starts at START s"
    )
    what.add_argument("--sum", action="store_true", help="of a series, the sum of all intervals")
    parser.add_argument(
        "--region",
        type=region,
        metavar="W/E/S/N",
        help="first and last nodes; with --crs of a plane "
        "either metres, or degrees: then the plane rectangle around them",
    )
    parser.add_argument("--spacing", type=spacing, metavar="D", help="of the result, 0.1 or 1/12")
    parser.add_argument(
        "--crs",
        metavar="CODE",
        help="of the result, EPSG:32654 say; a plane grid of the program, which has none, is said to be in it",
    )
    parser.add_argument("--from-crs", metavar="CODE", help="of IN, if it has none or a wrong one")
    parser.add_argument(
        "--resampling",
        choices=RESAMPLINGS,
        default=RESAMPLINGS[0],
        help="auto: the mean over the new cell when that is at least twice as wide, else bilinear",
    )
    parser.add_argument("--fill", type=float, metavar="VALUE", help="in place of missing values")
    parser.add_argument("--dt", type=positive, metavar="S", help="time step of a dtopo file")
    parser.add_argument(
        "--epoch", type=_epoch, metavar="TIME", help="time 0 of a NetCDF series, 2011-03-11T05:46:18 UTC say"
    )
    parser.add_argument(
        "--window",
        type=positive,
        metavar="S",
        help="of a rupture that becomes a fault file: windows of S seconds, because a run writes a grid for each "
        "pair of start and length",
    )
    add_reference(parser)
    parser.set_defaults(command=run)


def _titles() -> str:
    written = [form for form in FORMATS if form.holds == FIELD and form.writes]
    return listed(list(dict.fromkeys(form.title or form.name for form in written)), "and")


def _description() -> str:
    """The usual ending of every format; those of which the same is said stand together."""
    written = [form for form in FORMATS if form.holds == FIELD and form.writes]
    groups = groupby(written, key=lambda form: form.help or form.title or form.name)
    endings = [f"{listed([form.writes[0] for form in group], 'and')} ({said})" for said, group in groups]
    return f"The ending of OUT says the format: {', '.join(endings)}. Of a series, formats of one grid get the sum."


def _endings_read() -> str:
    """The usual endings, before all those of files that say most about themselves."""
    read = [form for form in FORMATS if form.holds == FIELD and form.reads]
    read.sort(key=lambda form: (form.series, form.system), reverse=True)
    return listed([form.reads[0] for form in read], "or")


def _epoch(word: str) -> datetime:
    time = datetime.fromisoformat(word.replace(" UTC", "").replace("Z", "+00:00"))
    return time if time.tzinfo else time.replace(tzinfo=timezone.utc)


def run(args: argparse.Namespace) -> int:
    """Converts, and prints what was done."""
    if wants_faults(args):
        print(convert_faults(args))
        return 0
    request = Request(
        Source(args.source, args.coord, args.variable),
        args.target,
        Layer(args.snapshot, args.sum),
        Placing(args.region, args.spacing, args.crs, args.from_crs, args.resampling),
        args.fill,
        Writing(args.dt, args.epoch, f"tdr convert {VERSION}"),
    )
    print("\n".join(map(in_options, convert(request, progress))))
    return 0
