#!/usr/bin/env python3
"""Times units and ensembles, and prints what comes out beside its bars.

    TIDORA_LIBRARY=build-bench/libtidora.so PYTHONPATH=python bench/ensemble_bench.py [PART...] [--small] [--folder F]

Parts: superposition, workers, memory, units; all of them take some minutes, `units` half an hour. Ratios are made in
turns. Each part is a process of its own, with one thread for its products and the kernels that workers take. `--small`
does a hundredth of the work, to see that everything runs; its ratios say little.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path
from typing import Callable, Dict, List, NamedTuple

import numpy as np
import tidora
from tidora.ensemble.blas import worker_environment

ROOT = Path(__file__).resolve().parents[1]
DATA = ROOT / "examples" / "ensemble" / "data"
TDR = [sys.executable, "-m", "tidora"]
TURNS = 3
UNITS = 50
KINDS = ("rakes the same", "rakes mixed")


def line(name: str, value: str, bar: str) -> None:
    print(f"{name:58} {value:>34}   {bar}", flush=True)


def ratios(name: str, slow: Callable[[], float], fast: Callable[[], float], bar: str) -> None:
    """Median, least and most of slow over fast, in turns; and the seconds of the last turn."""
    times = [(slow(), fast()) for _ in range(TURNS)]
    found = sorted(one / two for one, two in times)
    spread = f"{statistics.median(found):.3g} ({found[0]:.3g} to {found[-1]:.3g})"
    line(name, spread, f"{bar}   last: {times[-1][0]:.4g} s over {times[-1][1]:.4g} s")


def units_of(folder: Path, count: int):
    """A store of units off the Kurils on 10^5 nodes, without slope term and filter; made once."""
    faults = tidora.read_faults(DATA / "noaa_unit_sources.txt")
    kuril = np.flatnonzero(np.char.startswith(faults["name"].values.astype(str), "kisz"))
    faults = faults.isel(element=kuril[:count])
    where = tidora.grid(140.0, 140.0 + 384 / 12, 40.0, 40.0 + 259 / 12, 1 / 12)
    store = folder / f"units{count}.zarr"
    return faults, where, store, tidora.unit_sources(faults, where, store)


def table_of(count: int, units: int, mixed: bool = False):
    """Scenarios in each of which all units slip."""
    random = np.random.default_rng(7)
    entries = count * units
    rake = random.uniform(0.0, 180.0, entries) if mixed else np.full(entries, 90.0)
    unit = np.tile(np.arange(units), count)
    return tidora.make_slip_table(np.arange(count + 1) * units, unit, random.uniform(0.0, 9.0, entries), rake)


def superposition(folder: Path, small: bool) -> None:
    """Processor seconds of `ensemble`, beginning and end included, against `deform` of the same scenarios."""
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})  # one thread for the shards too
    count = 10 if small else 1000
    faults, where, store, _ = units_of(folder, UNITS)
    for kind in KINDS:
        table = table_of(count, UNITS, kind == KINDS[1])
        first = slice(0, UNITS)
        own = faults.assign(
            slip=("element", table["slip"].values[first]), rake=("element", table["rake"].values[first])
        )

        def direct() -> float:
            """Of all scenarios, from three of them."""
            start = time.process_time()
            for _ in range(3):
                tidora.deform(own, where, threads=1)
            return (time.process_time() - start) / 3 * count

        def superposed() -> float:
            shutil.rmtree(folder / "run.zarr", ignore_errors=True)
            start = time.process_time()
            tidora.ensemble(table, store, folder / "run.zarr")
            return time.process_time() - start

        ratios(f"superposed over direct, {count} of {UNITS} units, {kind}", direct, superposed, "at least 100")


class Watched(NamedTuple):
    """What a command took."""

    seconds: float
    peak: float
    """GB of all its processes at once; pages that they share count once."""


def watched(command: List[str]) -> Watched:
    """Runs a command, and looks at its processes every tenth of a second."""
    start, most = time.perf_counter(), 0.0
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    done = threading.Event()

    def look() -> None:
        nonlocal most
        while not done.wait(0.1):
            most = max(most, sum(map(_shared_out, _family(process.pid))))

    watcher = threading.Thread(target=look)
    watcher.start()
    status = process.wait()
    seconds = time.perf_counter() - start
    done.set()
    watcher.join()
    if status:
        raise SystemExit(f"{' '.join(command)}: exit status {status}")
    return Watched(seconds, most / 1e6)


def _family(process: int) -> List[int]:
    """A process and all that it started."""
    parents: Dict[int, List[int]] = {}
    for entry in filter(str.isdigit, os.listdir("/proc")):
        try:
            parent = Path("/proc", entry, "stat").read_text(encoding="ascii", errors="replace").rpartition(")")[2]
            parents.setdefault(int(parent.split()[1]), []).append(int(entry))
        except (OSError, IndexError):  # it has ended
            pass
    found = [process]
    for one in found:
        found += parents.get(one, [])
    return found


def _shared_out(process: int) -> float:
    """kB of a process; shared pages in equal parts for those that share them."""
    try:
        text = Path("/proc", str(process), "smaps_rollup").read_text(encoding="ascii")
    except OSError:
        return 0.0
    return sum(float(row.split()[1]) for row in text.splitlines() if row.startswith("Pss:"))


def _command_run(folder: Path, table: str, units: Path, workers: int) -> Watched:
    shutil.rmtree(folder / "run.zarr", ignore_errors=True)
    run = [*TDR, "ensemble", "run", str(folder / table), str(units), "-o", str(folder / "run.zarr")]
    return watched([*run, "--workers", str(workers)])


def workers(folder: Path, small: bool) -> None:
    """Wall time of the whole command, start included."""
    count = 600 if small else 60000
    store = units_of(folder, UNITS)[2]
    tidora.write_slip_table(table_of(count, UNITS), folder / "table.nc")
    ratios(
        f"one worker over two, {count} of {UNITS} units",
        lambda: _command_run(folder, "table.nc", store, 1).seconds,
        lambda: _command_run(folder, "table.nc", store, 2).seconds,
        "at least 1.7",
    )


def memory(folder: Path, small: bool) -> None:
    """Of all processes of a run."""
    count = 1000 if small else 100000
    store = units_of(folder, UNITS)[2]
    for kind in KINDS:
        tidora.write_slip_table(table_of(count, UNITS, kind == KINDS[1]), folder / "table.nc")
        found = _command_run(folder, "table.nc", store, 2)
        name = f"{count} scenarios, 10^5 nodes, 2 workers, {kind}"
        line(name, f"{found.peak:.2f} GB, {found.seconds:.4g} s", "at most 1.5 GB")


def units(folder: Path, small: bool) -> None:
    """All unit sources of the table on the whole Pacific."""
    model = DATA / "noaa_unit_sources.txt"
    if small:
        model = folder / "some.txt"
        rows = (DATA / "noaa_unit_sources.txt").read_text(encoding="utf-8").splitlines(keepends=True)
        model.write_text("".join(rows[:2] + rows[2::100]), encoding="utf-8")
    for tolerance in ("0", "0.001"):
        store = folder / f"pacific{tolerance}.zarr"
        command = [*TDR, "units", str(model), str(DATA / "pacific_etopo20.nc"), "-o", str(store), "--workers", "2"]
        found = watched([*command, "--slope", "--kajiura", "--tolerance", tolerance])
        size, dense = _stored(store)
        name = f"units of the Pacific, slope, filter, tolerance {tolerance} m, 2 workers"
        line(name, f"{found.seconds:.4g} s, {found.peak:.2f} GB", f"stored {size:.3f} GB of {dense:.3f}")
        shutil.rmtree(store)


def _stored(store: Path) -> "tuple[float, float]":
    """GB of all files of a store, and of its responses as plain numbers."""
    import xarray as xr

    size = sum(file.stat().st_size for file in store.rglob("*") if file.is_file())
    return size / 1e9, xr.open_zarr(store)["response"].nbytes / 1e9


PARTS = {"superposition": superposition, "workers": workers, "memory": memory, "units": units}


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("parts", nargs="*", metavar="PART", help=", ".join(PARTS))
    parser.add_argument("--small", action="store_true", help="a hundredth of the work")
    parser.add_argument("--folder", help="for the stores, some 4 GB; a temporary one when not given")
    parser.add_argument("--here", action="store_true", help=argparse.SUPPRESS)
    args = parser.parse_args()
    chosen = args.parts or list(PARTS)
    if wrong := set(chosen) - set(PARTS):
        parser.error(f"no part {sorted(wrong)[0]}")
    if args.here:
        PARTS[chosen[0]](Path(args.folder), args.small)
        return
    print(tidora.library_path(), flush=True)
    with tempfile.TemporaryDirectory(dir=args.folder) as folder:
        for part in chosen:
            again = [sys.executable, __file__, part, "--here", "--folder", folder, *["--small"] * args.small]
            subprocess.run(again, env={**os.environ, **worker_environment()}, check=True)


if __name__ == "__main__":
    main()
