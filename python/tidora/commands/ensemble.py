"""``tdr ensemble``: many scenarios over the same units."""

from __future__ import annotations

import argparse
import sys
from typing import Any

from ..ensemble.run_store import begin_run, records, status
from ..ensemble.scenarios import compute_scenarios, scenario
from ..ensemble.shards import do_shards
from ..faults.slip_table import read_slip_table
from ..fields.placing import Placing, placed
from . import ensemble_make
from .fields import check_ending, summary, write_field
from .options import in_options, region
from .progress import fraction_bar
from .workers import add_worker_options, working

_LISTED = 20
"""Failed scenarios that a run lists; ``status`` lists all."""


def add(commands: Any) -> None:
    """Its commands and their options."""
    parser = commands.add_parser("ensemble", help="many scenarios over the same units", description=__doc__)
    own = parser.add_subparsers(required=True, metavar="COMMAND")
    ensemble_make.add(own)
    _add_run(own)
    _add_status(own)
    _add_show(own)


def _add_run(commands: Any) -> None:
    parser = commands.add_parser(
        "run",
        help="figures of every scenario of a table",
        description="Superposes units for every scenario of TABLE, and keeps extremes, volumes, energy and heights at "
        "points. A store that was begun with the same options is finished. Exit status 1 when a scenario failed.",
    )
    parser.add_argument("table", metavar="TABLE", help="slip table: NetCDF, zarr, or CSV scenario,unit,slip,rake")
    parser.add_argument("units", metavar="UNITS", help="store of tdr units")
    parser.add_argument("-o", "--output", required=True, metavar="STORE", help="a folder, run.zarr")
    parser.add_argument("--at", metavar="POINTS", help="CSV x,y or x,y,name: heights there")
    parser.add_argument("--fields", action="store_true", help="keeps the fields too")
    add_worker_options(parser)
    parser.set_defaults(command=run)


def _add_status(commands: Any) -> None:
    parser = commands.add_parser("status", help="how far a run has got", description="Counts the scenarios of a run.")
    parser.add_argument("store", metavar="STORE", help="of tdr ensemble run")
    parser.set_defaults(command=show_status)


def _add_show(commands: Any) -> None:
    parser = commands.add_parser(
        "show",
        help="the sea surface of one scenario",
        description="Rebuilds the field of one scenario from its units. The ending of OUT says the format.",
    )
    parser.add_argument("store", metavar="STORE", help="of tdr ensemble run")
    parser.add_argument("number", metavar="NUMBER", type=int, help="of the scenario, from 0 on")
    parser.add_argument("-o", "--output", required=True, metavar="OUT")
    parser.add_argument("--region", type=region, metavar="W/E/S/N", help="part of the grid")
    parser.set_defaults(command=show)


def run(args: argparse.Namespace) -> int:
    """Does what is missing of a run, and lists what failed."""
    store, cut = begin_run(read_slip_table(args.table), args.units, args.output, at=args.at, fields=args.fields)
    with working(args), fraction_bar("Superposing") as tell:
        do_shards(compute_scenarios, store, cut.shards, args.part, tell)
    own = set(args.part.of(cut.shards))
    failed = [problem for shard, found in records(store, cut) if shard in own for problem in found["failed"]]
    for number, reason in failed[:_LISTED]:
        print(f"tdr: scenario {number}: {reason}", file=sys.stderr)
    if len(failed) > _LISTED:
        print(f"tdr: and {len(failed) - _LISTED} more: tdr ensemble status {args.output}", file=sys.stderr)
    print(_counts(args.output))
    return 1 if failed else 0


def _counts(store: str) -> str:
    found = status(store)
    parts = f"{found.done} done, {len(found.failed)} failed, {found.missing} missing"
    return f"{store}: {found.scenarios} scenarios: {parts} ({found.shards_done} of {found.shards} shards)"


def show_status(args: argparse.Namespace) -> int:
    """Counts what is there, and lists what failed."""
    print(_counts(args.store))
    for number, reason in status(args.store).failed:
        print(f"scenario {number}: {reason}")
    return 0


def show(args: argparse.Namespace) -> int:
    """Writes the field of a scenario."""
    check_ending(args.output)
    field, notes = placed(scenario(args.store, args.number), Placing(args.region))
    notes.append(write_field(field, args.output, f"tdr ensemble show {args.number}"))
    print("\n".join(map(in_options, notes)))
    print(f"scenario {args.number}: {summary(field)}")
    return 0
