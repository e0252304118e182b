"""Compares the speed of two builds, in turns. Called by scripts/compare-speed.sh, which says more."""

import argparse
import re
import resource
import shutil
import statistics
import subprocess
import sys
from collections import defaultdict
from pathlib import Path
from typing import Dict, List, Tuple

import numpy as np
from case_files import Run
from random_runs import Grid, configuration

# work, ratio, least, most, bar; "(at most)" where less is better.
_LINE = re.compile(r"(\S.*?) +(\d+\.\d+) +(\d+\.\d+) +(\d+\.\d+) +\S+(?: \(at (least|most)\))?$")
_SECTION = re.compile(r"(?:instruction set: (.+)|with every instruction set)$")
_SAME_SET = {"plain": "baseline"}
_SLOWER = 0.97  # beyond what the median of some turns moves on an idle machine

Key = Tuple[str, str]  # instruction set, work


def speeds_of(report: str) -> Dict[Key, float]:
    """Figures of a report of tidora_bench, each so that more is faster."""
    found = {}
    name = ""
    for line in report.splitlines():
        section = _SECTION.match(line)
        if section:
            name = (section.group(1) or "every set").lower()
            name = _SAME_SET.get(name, name)
        match = _LINE.match(line)
        if match:
            ratio = float(match.group(2))
            found[(name, match.group(1))] = 1.0 / ratio if match.group(5) == "most" else ratio
    return found


def _sea(nx: int, ny: int, org: Tuple[float, float], dx: float) -> Grid:
    rows, columns = np.mgrid[0:ny, 0:nx]
    depth = 3500.0 + 3000.0 * np.sin(0.013 * columns) * np.cos(0.017 * rows)
    return Grid(org[0], org[1], dx, -depth, True)


def _faults(count: int, org: Tuple[float, float], end: Tuple[float, float], size: float) -> bytes:
    """Elements on a diagonal, from one corner towards the other, all slipping."""
    lines = []
    for number in range(count):
        share = (number + 0.5) / count
        x, y = (first + share * (last - first) for first, last in zip(org, end))
        columns = (y, x, 8000.0 + 50.0 * number, 5000.0, 190.0 + number, 13.0, 88.0, size, 0.5 * size, 1.0 + share)
        lines.append(" ".join("%.9g" % column for column in columns))
    return ("\n".join(lines) + "\n").encode()


def _whole_run(name: str, grid: Grid, elements: int, size: float, **slots: float) -> Run:
    end = (grid.org_x + grid.dx * grid.nx, grid.org_y + grid.dx * grid.ny)
    kind = slots.get("geographic", 0)
    values = [name, "out", slots.get("tolerance", 0), slots.get("slope", 0), slots.get("filter", 0), kind]
    values += ["fault.txt", -1, 0, 1, 1, 1, "sea", 0, kind, "sea.bin"]
    files = {"conf.txt": configuration(values), "sea.bin": grid.content()}
    files["fault.txt"] = _faults(elements, (grid.org_x, grid.org_y), end, size)
    return Run(name, ["conf.txt"], files)


def whole_runs() -> List[Run]:
    """Runs of about a second each."""
    plane = (1e5, 4e6)
    return [
        _whole_run("plane 900 x 900, 60 elements, slope", _sea(900, 900, plane, 500.0), 60, 2e4, slope=1),
        _whole_run("plane 1500 x 1500, 300, tolerance", _sea(1500, 1500, plane, 500.0), 300, 5e3, tolerance=0.01),
        _whole_run("geographic 700 x 600, 60 elements", _sea(700, 600, (138.0, 33.0), 1 / 60), 60, 3e4, geographic=1),
        _whole_run("filter 600 x 600, one element", _sea(600, 600, plane, 1000.0), 1, 5e4, filter=1),
    ]


def _user_seconds(program: Path, run: Run, folder: Path) -> float:
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, content in run.files.items():
        (folder / name).write_bytes(content)
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    subprocess.run([str(program)] + run.arguments, cwd=folder, stdout=subprocess.DEVNULL, check=True)
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before


def _measure(build: Path, wanted: str, runs: List[Run], scratch: Path) -> Dict[Key, float]:
    """One turn of one side."""
    command = [build / "bench" / "tidora_bench"] + ([wanted] if wanted else [])
    found = speeds_of(subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True).stdout)
    for run in runs:
        found[("program, user time", run.name)] = 1.0 / _user_seconds(build / "Tidora", run, scratch / "speed-run")
    return found


def _print_table(turns: List[Tuple[Dict[Key, float], Dict[Key, float]]]) -> None:
    ratios: Dict[Key, List[float]] = defaultdict(list)
    for old, new in turns:
        for key in old:
            if key in new:
                ratios[key].append(new[key] / old[key])
    heading = ""
    for (name, work), values in ratios.items():
        if name != heading:
            heading = name
            print("\n%-62s %8s %8s %8s" % (name + ": new over old", "median", "least", "most"))
        median = statistics.median(values)
        mark = "   SLOWER" if median < _SLOWER else ""
        print("%-62s %8.3f %8.3f %8.3f%s" % (work, median, min(values), max(values), mark))
    first_old, first_new = turns[0]
    for title, here, there in (("old", first_old, first_new), ("new", first_new, first_old)):
        for name, work in here:
            if (name, work) not in there:
                print("only the %s side knows: %s (%s)" % (title, work, name))


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser()
    parser.add_argument("old", type=Path)
    parser.add_argument("new", type=Path)
    parser.add_argument("wanted", nargs="?", default="")
    parser.add_argument("--scratch", type=Path, required=True)
    parser.add_argument("--rounds", type=int, default=5)
    return parser.parse_args()


def main() -> int:
    given = _arguments()
    runs = [run for run in whole_runs() if given.wanted in run.name]
    turns = []
    for number in range(max(given.rounds, 1)):
        print("turn %d of %d" % (number + 1, given.rounds), file=sys.stderr, flush=True)
        old, new = (_measure(build, given.wanted, runs, given.scratch) for build in (given.old, given.new))
        turns.append((old, new))
    if not any(turns[0]):
        print("no benchmark and no run is named like %s" % given.wanted, file=sys.stderr)
        return 2
    _print_table(turns)
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except subprocess.CalledProcessError as error:
        print(error, file=sys.stderr)
        sys.exit(2)
