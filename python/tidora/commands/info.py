"""``tdr info``: what is in a file, as text or as JSON."""

from __future__ import annotations

import argparse
import json
from typing import Any

from ..fields.measure import DENSITY, GRAVITY
from .options import add_input_options, add_reference, positive
from .report import describe, without_nan
from .report_text import to_text


def add(commands: Any) -> None:
    """Its options."""
    parser = commands.add_parser("info", help="geometry, extremes, volume, energy; moment and depths of a fault")
    parser.add_argument(
        "files", nargs="+", metavar="FILE", help="grid, list of a series, fault file or published rupture model"
    )
    add_input_options(parser)
    parser.add_argument("--topo", metavar="GRID", help="volume and energy of the nodes where this grid is below 0")
    parser.add_argument(
        "--rigidity",
        type=positive,
        metavar="GPA",
        help="for the moment, in GPa (those of a model that has some, else 40)",
    )
    add_reference(parser)
    parser.add_argument("--density", type=positive, default=DENSITY, metavar="RHO", help="kg/m3 (%(default)g)")
    parser.add_argument("--gravity", type=positive, default=GRAVITY, metavar="G", help="m/s2 (%(default)g)")
    parser.add_argument("--all", action="store_true", help="every element of a fault file")
    parser.add_argument("--json", action="store_true", help="a JSON list, one entry per file, every element")
    parser.set_defaults(command=run)


def run(args: argparse.Namespace) -> int:
    """Prints a report of every file."""
    rigidity = None if args.rigidity is None else args.rigidity * 1e9
    reports = [
        describe(path, args.coord, args.variable, args.topo, args.density, args.gravity, rigidity, args.reference)
        for path in args.files
    ]
    if args.json:
        print(json.dumps(without_nan(reports), indent=2, allow_nan=False))
    else:
        print("\n".join(to_text(report, args.all) for report in reports), end="")
    return 0
