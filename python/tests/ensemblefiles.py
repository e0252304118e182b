"""A small ensemble as files, the processes that work on it, and what a store holds byte by byte."""

from __future__ import annotations

import os
import signal
import subprocess
import sys
import time
from contextlib import contextmanager
from pathlib import Path

import numpy as np
import xarray as xr

import tidora
from conftest import ROOT
from tidora.ensemble.run_store import begin_run
from tidora.ensemble.scenarios import compute_scenarios
from tidora.ensemble.shards import Part, do_shards
from tidora.ensemble.units import begin_units, compute_units

UNITS, SCENARIOS = 5, 600
"""Five shards of units, three of scenarios: the last is not full."""

WORKER_SECONDS = 60
"""What starts here needs a second or two; a loaded machine needs more."""


def topography(ny=14, nx=18, coord="geographic"):
    """A grid on which every node has another depth; some of it is land."""
    x, y = (140.0, 36.0) if coord == "geographic" else (0.0, 0.0)
    step = 0.125 if coord == "geographic" else 12000.0
    rows, columns = np.mgrid[0:ny, 0:nx]
    values = (-4500.0 + 350.0 * columns + 300.0 * np.sin(rows)).astype(np.float32)
    axes = {"y": y + step * np.arange(ny), "x": x + step * np.arange(nx)}
    return xr.DataArray(values, axes, ("y", "x"), attrs={"coord": coord})


def faults(count=UNITS, coord="geographic"):
    """Elements in a row, each of another size and direction."""
    number = np.arange(count)
    x, y, step = (140.6, 36.5, 0.2) if coord == "geographic" else (60e3, 50e3, 18e3)
    return tidora.make_faults(
        x + step * number, y + 0.7 * step * (number % 3), 9e3 + 1e3 * number, 190.0 + 3 * number, 15.0 + number, 90.0,
        30e3, 20e3, 1.0, coord=coord,
    )  # fmt: skip


def slips(scenarios=SCENARIOS, units=UNITS, seed=1):
    """A slip table in which units have several rakes."""
    random = np.random.default_rng(seed)
    counts = random.integers(1, units + 1, scenarios)
    unit = np.concatenate([random.permutation(units)[:count] for count in counts])
    rake = random.choice([80.0, 90.0, 100.5], unit.size)
    return tidora.make_slip_table(np.concatenate([[0], np.cumsum(counts)]), unit, random.random(unit.size) * 9, rake)


def inputs(folder):
    """Writes the files of a small ensemble."""
    folder = Path(folder)
    tidora.write_faults(faults(), folder / "model.txt")
    topography().rename("elevation").to_netcdf(folder / "floor.nc")
    tidora.write_slip_table(slips(), folder / "table.nc")
    (folder / "points.csv").write_text("x,y,name\n140.0,36.0,corner\n141.33,36.71,buoy\n501.5,37.0,a turn further\n")
    return folder


def units_by_threads(folder, **options):
    """The store of units as Python makes it."""
    elements = tidora.read_faults(folder / "model.txt", "geographic")
    floor = tidora.open_grid(folder / "floor.nc", "geographic")
    return tidora.unit_sources(elements, floor, folder / "units.zarr", slope=True, kajiura=True, **options)


def run_by_threads(folder, **options):
    """The store of a run as Python makes it."""
    chosen = {"at": folder / "points.csv", "fields": True, **options}
    return tidora.ensemble(folder / "table.nc", folder / "units.zarr", folder / "run.zarr", **chosen)


def part_of_units(folder, number, count):
    """Does a part of the store of units."""
    elements = tidora.read_faults(folder / "model.txt", "geographic")
    floor = tidora.open_grid(folder / "floor.nc", "geographic")
    options = {"slope": True, "kajiura": True, "frame": None, "depth": None, "tolerance": 0.0}
    store, cut = begin_units(elements, floor, folder / "units.zarr", **options)
    do_shards(compute_units, store, cut.shards, Part(number, count), None)


def part_of_run(folder, number, count):
    """Does a part of the store of a run."""
    table, units = folder / "table.nc", folder / "units.zarr"
    store, cut = begin_run(table, units, folder / "run.zarr", at=folder / "points.csv", fields=True)
    do_shards(compute_scenarios, store, cut.shards, Part(number, count), None)


UNITS_WORDS = ("units", "model.txt", "floor.nc", "-o", "units.zarr", "--coord", "geographic", "--slope", "--kajiura")
RUN_WORDS = ("ensemble", "run", "table.nc", "units.zarr", "-o", "run.zarr", "--at", "points.csv", "--fields")


def tree(folder):
    """Every file of a folder with its bytes, and every folder in it."""
    folder = Path(folder)
    return {str(path.relative_to(folder)): path.read_bytes() if path.is_file() else None for path in folder.rglob("*")}


def differing(one, other):
    """Names under which two trees are not the same: shorter to read than two trees."""
    return sorted(name for name in {*one, *other} if one.get(name, "-") != other.get(name, "-"))


def environment(**more):
    """With which a process finds the package."""
    return {
        **os.environ,
        "PYTHONPATH": f"{ROOT / 'python'}:{Path(__file__).parent}",
        "PYTHONDONTWRITEBYTECODE": "1",
        **more,
    }


def started(*words, cwd, own_group=False):
    """`tdr` as a process, or a program of Python after "-c"; in a group of its own as a terminal would start it."""
    command = [sys.executable, *(() if words[0] == "-c" else ("-m", "tidora")), *map(str, words)]
    return subprocess.Popen(
        command, cwd=cwd, env=environment(), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        start_new_session=own_group, preexec_fn=_hear_interrupts if own_group else None,
    )  # fmt: skip


def _hear_interrupts():
    """What a shell starts in the background ignores them, and so would its children."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)


def ended(process, status=0):
    """Holds the exit status of a process of `started`; has what it said."""
    out, err = process.communicate(timeout=WORKER_SECONDS)
    assert process.returncode == status, out + err
    assert "Traceback" not in err, err
    return out, err


@contextmanager
def scheduler(folder, workers=2):
    """A Dask scheduler and its workers as processes, and the file that tells where it listens."""
    from tidora.ensemble.blas import worker_environment

    file = Path(folder) / "scheduler.json"
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "cwd": folder}
    dask = [sys.executable, "-m", "distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", "0"]
    processes = [subprocess.Popen([*dask, "--no-dashboard", "--scheduler-file", file], env=environment(), **quiet)]
    worker = [sys.executable, "-m", "distributed.cli.dask_worker", "--scheduler-file", file, "--nthreads", "1"]
    worker += ["--no-nanny", "--no-dashboard", "--memory-limit", "0", "--local-directory", Path(folder) / "scratch"]
    for _ in range(workers):
        processes.append(subprocess.Popen(worker, env=environment(**worker_environment()), **quiet))
    try:
        wait_for(file)
        yield file, processes
    finally:
        for process in reversed(processes):
            process.kill()
            process.wait()


@contextmanager
def nobody():
    """In place of a scheduler."""
    yield


def wait_for(file):
    """Until a file is there."""
    end = time.monotonic() + WORKER_SECONDS
    while not file.exists():
        assert time.monotonic() < end, f"{file} does not appear"
        time.sleep(0.02)
