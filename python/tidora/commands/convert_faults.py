"""``tdr convert``, from a rupture to a fault file of the program."""

from __future__ import annotations

import argparse
import os

import numpy as np

from ..errors import UsageError
from ..faults.models import read_faults
from ..faults.table import write_faults
from ..faults.windows import in_windows
from ..formats.registry import FAULTS, ending, named, recognise

_OF_GRIDS = ("variable", "snapshot", "sum", "region", "spacing", "crs", "from_crs", "fill", "dt", "epoch")
_OF_FAULTS = ("window", "reference")


def wants_faults(args: argparse.Namespace) -> bool:
    """True when a rupture is to become a fault file.

    Raises
    ------
    UsageError
        If options for ruptures are given for a grid.
    """
    # The ending first: a wrong one is told before anything is read, as it is for grids.
    wanted = ending(args.target) in named("text grid").writes and recognise(args.source).holds == FAULTS
    for name in _OF_FAULTS:
        if getattr(args, name) is not None and not wanted:
            raise UsageError(f"--{name} is for a rupture that becomes a fault file (.txt)")
    return wanted


def convert_faults(args: argparse.Namespace) -> str:
    """Converts; what was done, for the user."""
    for name in _OF_GRIDS:
        if getattr(args, name) not in (None, False):
            raise UsageError(f"--{name.replace('_', '-')} is for grids, {args.source} is a rupture")
    if os.path.exists(args.target) and os.path.samefile(args.source, args.target):
        raise UsageError("IN and OUT are the same file")
    faults = read_faults(args.source, args.coord, reference=args.reference)
    if args.window is not None:
        faults = in_windows(faults, args.window)
    write_faults(faults, args.target)
    pairs = np.unique(np.stack([faults["lag_time"].values, faults["duration"].values]), axis=1).shape[1]
    return f"{args.target}: {faults.sizes['element']} elements in {pairs} intervals of time"
