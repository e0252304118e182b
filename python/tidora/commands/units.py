"""``tdr units``: the responses of the elements of a rupture, for ensembles."""

from __future__ import annotations

import argparse
import os
from typing import Any

from ..engine.structures import DEPTHS, FRAMES
from ..ensemble.shards import do_shards
from ..ensemble.units import begin_units, compute_units
from ..faults.models import read_faults
from ..fields.kinds import kind_of
from ..fields.placing import Placing, placed
from ..formats.registry import open_field
from .options import add_input_options, add_reference, in_options, not_negative, region, spacing
from .progress import fraction_bar
from .workers import add_worker_options, working


def add(commands: Any) -> None:
    """Its options."""
    parser = commands.add_parser(
        "units",
        help="the response of the sea surface to 1 m of slip of each element",
        description="Computes the sea surface after 1 m of slip of each element of MODEL, with rake 0 and 90, and "
        "keeps all of them in a zarr store for tdr ensemble. A store begun with the same options is finished.",
    )
    parser.add_argument("model", metavar="MODEL", help="fault file or published rupture model")
    parser.add_argument("topography", metavar="TOPOGRAPHY", help="grid of any format, negative below sea level")
    parser.add_argument("-o", "--output", required=True, metavar="STORE", help="a folder, units.zarr")
    add_input_options(parser)
    add_reference(parser)
    parser.add_argument("--region", type=region, metavar="W/E/S/N", help="first and last nodes")
    parser.add_argument("--spacing", type=spacing, metavar="D", help="of the result, 0.1 or 1/12: resamples TOPOGRAPHY")
    parser.add_argument("--frame", choices=tuple(FRAMES), help="plane for metres, globe or utm for degrees (globe)")
    parser.add_argument("--depth", choices=tuple(DEPTHS), help="where the half-space begins (floor)")
    parser.add_argument("--slope", action="store_true", help="uplift by the horizontal motion of a sloping floor")
    parser.add_argument("--kajiura", action="store_true", help="smooths the sea surface over the depth of the water")
    parser.add_argument("--tolerance", type=not_negative, default=0.0, metavar="M", help="m, of far elements (0)")
    add_worker_options(parser)
    parser.set_defaults(command=run)


def run(args: argparse.Namespace) -> int:
    """Computes what is missing, and says what is there."""
    opened = open_field(args.topography, args.coord, args.variable)
    topography, notes = placed(opened, Placing(args.region, args.spacing))
    faults = read_faults(args.model, kind_of(topography), reference=args.reference)
    store, cut = begin_units(
        faults,
        topography,
        args.output,
        slope=args.slope,
        kajiura=args.kajiura,
        frame=args.frame,
        depth=args.depth,
        tolerance=args.tolerance,
    )
    with working(args), fraction_bar("Computing units") as tell:
        do_shards(compute_units, store, cut.shards, args.part, tell)
    missing = [shard for shard in range(cut.shards) if store.record(shard) is None]
    size = f"{cut.unit_count} units on {cut.columns} x {cut.rows} nodes"
    there = "" if not missing else f", {len(missing)} of {cut.shards} shards are missing"
    print("\n".join([*map(in_options, notes), f"{args.output}: {size}{there}, {_size(store.path) / 1e6:.1f} MB"]))
    return 0


def _size(folder: str) -> int:
    """Bytes of all files in a folder."""
    total = 0
    for place, _, names in os.walk(folder):
        for name in names:
            try:
                total += os.path.getsize(os.path.join(place, name))
            except OSError:  # somebody else is at it too
                pass
    return total
