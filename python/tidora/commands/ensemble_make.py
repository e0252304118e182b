"""``tdr ensemble make``: a slip table of stochastic scenarios."""

from __future__ import annotations

import argparse
from typing import Any

import numpy as np

from ..ensemble.units import element_table, open_units
from ..faults.moment import RIGIDITY
from ..faults.ruptures import MEDIAN, SIZES
from ..faults.scaling import RELATIONS
from ..faults.slip_fields import SNCF, SPECTRA
from ..faults.slip_table import write_slip_table
from ..faults.stochastic import stochastic_slip
from .options import add_rigidity, not_negative_whole, whole


def add(commands: Any) -> None:
    """Its options."""
    parser = commands.add_parser(
        "make",
        help="a table of stochastic slip",
        description="Makes a slip table: scenarios of one magnitude with random slip on the units of a store. The same "
        "seed makes the same scenarios.",
    )
    parser.add_argument("units", metavar="UNITS", help="store of tdr units")
    parser.add_argument("-o", "--output", required=True, metavar="TABLE", help=".nc, .zarr or .csv")
    parser.add_argument("--magnitude", type=float, required=True, metavar="MW", help="moment magnitude")
    parser.add_argument("--count", type=whole, required=True, metavar="N", help="number of scenarios")
    parser.add_argument("--seed", type=not_negative_whole, required=True, metavar="S", help="of the random numbers")
    parser.add_argument(
        "--scaling", choices=tuple(RELATIONS), default="strasser2010", help="size of the rupture (%(default)s)"
    )
    parser.add_argument("--spectrum", choices=tuple(SPECTRA), default=SNCF, help="of the slip (%(default)s)")
    parser.add_argument("--size", choices=tuple(SIZES), default=MEDIAN, help="of the relation, or drawn (%(default)s)")
    add_rigidity(parser, RIGIDITY, "moment")
    parser.set_defaults(command=run)


def run(args: argparse.Namespace) -> int:
    """Makes the table."""
    table = stochastic_slip(
        element_table(open_units(args.units)),
        args.magnitude,
        args.count,
        seed=args.seed,
        scaling=args.scaling,
        spectrum=args.spectrum,
        size=args.size,
        rigidity=args.rigidity * 1e9,
    )
    write_slip_table(table, args.output)
    clipped = 100.0 * float(np.mean(table["clipped"].values))
    what = f"{args.count} scenarios of Mw {args.magnitude:g}, {table.sizes['entry']} entries"
    print(f"{args.output}: {what}, negative slip clipped: {clipped:.1f} percent of the moment on average")
    return 0
