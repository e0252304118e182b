"""Compares two builds of the program over examples, command-line cases and generated runs. Called by
scripts/compare-bytes.sh, which says more."""

import argparse
import fnmatch
import os
import secrets
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import List, Tuple

from case_files import Run, read_cases, read_examples
from outcomes import Difference, compare, run_program
from random_runs import random_run

# Plane co-ordinates of a degree grid may move by 1e-8 m; before they meet an element they are rounded to single
# precision, relative to it: 0.008 m at a distance of 100 km. About one in a million then falls on the other side.
# Moving all of them by 1e-8 m was found to change 3 values in a million, by at most 5e-11 of the largest of their file;
# by 1e-3 m, 120 000 and 3e-5. A point on the very border of the finite source may jump by more: look at it then.
_MOST_PER_MILLION = 100.0
_LARGEST = 1e-7  # of the largest value of the file

_TREE = Path(__file__).resolve().parents[2]


def _sets(program: Path) -> List[str]:
    environment = dict(os.environ, TIDORA_COMPARE_SET="list")
    result = subprocess.run([program], env=environment, stdout=subprocess.PIPE, check=True, text=True)
    return result.stdout.split("\n")[:-1]


def _all_runs(count: int, seed: int, only: str) -> List[Run]:
    runs = read_examples(_TREE / "examples") + read_cases(_TREE / "tests" / "cli" / "cases")
    runs = [run for run in runs if fnmatch.fnmatchcase(run.name, only)]
    # Made only when wanted: names first.
    numbers = [n for n in range(count) if fnmatch.fnmatchcase("generated/%d-%d" % (seed, n), only)]
    return runs + [random_run(seed, number) for number in numbers]


class Comparison:
    """Two programs, and a scratch folder."""

    def __init__(self, given: argparse.Namespace) -> None:
        self.programs = {"old": given.old, "new": given.new}
        self.scratch = given.scratch
        self.keep = given.keep
        self.may_move = not given.exact

    def __call__(self, job: Tuple[Run, int]) -> Tuple[Run, bool, Difference]:
        run, number_of_set = job
        place = self.scratch / "runs" / ("%s-set%d" % (run.name.replace("/", "-"), number_of_set))
        outcomes = {
            side: run_program(program, run, number_of_set, place / side) for side, program in self.programs.items()
        }
        found = compare(outcomes["old"], outcomes["new"], self.may_move)
        if found.details and self.keep:
            kept = self.scratch / "differing" / place.name
            shutil.rmtree(kept, ignore_errors=True)
            shutil.copytree(place, kept)
        shutil.rmtree(place)
        if found.largest_at:
            found.largest_at = "%s: %s" % (run.name, found.largest_at)
        is_geographic = any(outcome.is_geographic for outcome in outcomes.values())
        return run, is_geographic, found


def _print_sums(title: str, found: Difference) -> None:
    print("%s" % title)
    print("    compared %8d runs %8d files %9d lines %12d bytes" % (found.runs, found.files, found.lines, found.size))
    print(
        "    differ   %8d runs %8d files %9d lines %12d bytes"
        % (found.differing_runs, found.differing_files, found.differing_lines, found.differing_bytes)
    )


def _values_fail(found: Difference) -> bool:
    """Prints what moved in geographic grids; True when it is more than rounded co-ordinates can do."""
    rate = 1e6 * found.differing_values / max(found.values, 1)
    print(
        "    values   %8d of %d differ: %.1f per million (at most %g)"
        % (found.differing_values, found.values, rate, _MOST_PER_MILLION)
    )
    print("    largest difference %.3g of the largest value of its file (at most %g)" % (found.largest, _LARGEST))
    if found.largest_at:
        print("    there: %s" % found.largest_at)
    print("    lines whose printed largest value moved in its last digits: %d" % found.moved_lines)
    return rate > _MOST_PER_MILLION or found.largest > _LARGEST


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser()
    parser.add_argument("old", type=Path)
    parser.add_argument("new", type=Path)
    parser.add_argument("--scratch", type=Path, required=True)
    parser.add_argument("--runs", type=int, default=300)
    parser.add_argument("--seed", type=int, default=None)
    parser.add_argument("--only", default="*")
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--exact", action="store_true")
    return parser.parse_args()


def main() -> int:
    given = _arguments()
    seed = secrets.randbelow(10**6) if given.seed is None else given.seed
    sets = _sets(given.old)
    if len(sets) != len(_sets(given.new)):
        print("the two programs know different instruction sets", file=sys.stderr)
        return 2
    runs = _all_runs(given.runs, seed, given.only)
    if not runs:
        print("no run is named like %s" % given.only, file=sys.stderr)
        return 2
    print("%d runs on %s; seed %d" % (len(runs), ", ".join(sets), seed), flush=True)
    jobs = [(run, number) for run in runs for number in range(len(sets))]
    plane, geographic = Difference(), Difference()
    comparison = Comparison(given)
    with ThreadPoolExecutor(os.cpu_count()) as workers:
        for (run, number), (_, is_geographic, found) in zip(jobs, workers.map(comparison, jobs)):
            (geographic if is_geographic else plane).add(found)
            if found.details:
                print("%s on %s:\n  %s" % (run.name, sets[number], "\n  ".join(found.details)), flush=True)
    _print_sums("plane runs, and runs without a result", plane)
    _print_sums("geographic runs, apart from values", geographic)
    failed = _values_fail(geographic) or plane.differing_runs > 0 or geographic.differing_runs > 0
    print("Something differs." if failed else "Nothing differs beyond what is said above.")
    return int(failed)


if __name__ == "__main__":
    sys.exit(main())
