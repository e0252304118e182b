"""Workers that die, schedulers that are gone, and disks that are full, in the middle of a run."""

import os
import shutil
import signal
import subprocess
import sys
import threading
import time

import distributed
import pytest

import ensemblefiles as files
from conftest import tdr
from ensemblefiles import RUN_WORDS, UNITS_WORDS, differing, started, tree
from tidora.commands import workers
from tidora.ensemble import shards

MAKE = {"units.zarr": files.units_by_threads, "run.zarr": files.run_by_threads}
WORDS = {"units.zarr": UNITS_WORDS, "run.zarr": RUN_WORDS}


@pytest.fixture(scope="module")
def whole(tmp_path_factory):
    """Folder with inputs and both stores, and their bytes."""
    folder = files.inputs(tmp_path_factory.mktemp("whole"))
    for make in MAKE.values():
        make(folder)
    return folder, {name: tree(folder / name) for name in MAKE}


@pytest.fixture
def folder(whole, tmp_path):
    return shutil.copytree(whole[0], tmp_path / "own")


SLOW = """
import time
from tidora.ensemble import scenarios
write = scenarios._write
def slowly(*words):
    time.sleep(0.7)
    return write(*words)
scenarios._write = slowly
"""
"""For workers: shards take long enough for somebody to die in one."""


@pytest.fixture
def slow_workers(folder, monkeypatch):
    (folder / "slow").mkdir()
    (folder / "slow" / "sitecustomize.py").write_text(SLOW)
    known = files.environment()["PYTHONPATH"]
    monkeypatch.setattr(
        files, "environment", lambda **more: {**os.environ, "PYTHONPATH": f"{folder}/slow:{known}", **more}
    )


def test_a_worker_of_a_scheduler_that_is_killed_costs_its_shard_only(folder, whole, slow_workers):
    shutil.rmtree(folder / "run.zarr")
    with files.scheduler(folder) as (file, processes):
        with distributed.Client(scheduler_file=str(file)) as client:
            client.wait_for_workers(2, timeout=files.WORKER_SECONDS)
            killer = threading.Timer(0.5, processes[1].kill)
            killer.start()
            files.run_by_threads(folder)
            assert processes[1].poll() == -signal.SIGKILL  # while it was at work, or waited for the other
    assert differing(tree(folder / "run.zarr"), whole[1]["run.zarr"]) == []


def children(pid):
    """Processes of Python that a process has started."""
    found = subprocess.run(["ps", "-o", "pid=,args=", "--ppid", str(pid)], capture_output=True, text=True).stdout
    return [int(line.split()[0]) for line in found.splitlines() if "spawn_main" in line]


def test_a_process_of_this_machine_that_is_killed_costs_its_shard_only(folder, whole, slow_workers):
    shutil.rmtree(folder / "run.zarr")
    process = started(*RUN_WORDS, "--workers", 2, cwd=folder)
    files.wait_for(folder / "run.zarr" / "field" / "0.0.0")  # a shard is in the middle of it
    os.kill(children(process.pid)[0], signal.SIGKILL)
    out, err = process.communicate(timeout=files.WORKER_SECONDS)
    # Python and Dask may have their own words on standard error for a process that was killed; ours has none.
    assert process.returncode == 0 and "600 done, 0 failed" in out and "tdr: " not in err
    assert differing(tree(folder / "run.zarr"), whole[1]["run.zarr"]) == []


@pytest.mark.parametrize("who", ["workers", "scheduler"])
def test_a_run_whose_workers_or_scheduler_are_all_gone_ends_with_an_error(
    who, folder, whole, slow_workers, monkeypatch
):
    monkeypatch.setattr(shards, "_PULSE", 0.2)
    monkeypatch.setattr(shards, "_PATIENCE", 5)
    monkeypatch.setattr(workers, "CONNECT", 3)  # and so long a client tries again
    shutil.rmtree(folder / "run.zarr")
    with files.scheduler(folder) as (file, processes):
        gone = processes[1:] if who == "workers" else processes[:1]
        killer = threading.Timer(
            0.0, lambda: (files.wait_for(folder / "run.zarr/field/0.0.0"), [one.kill() for one in gone])
        )
        killer.start()
        begun = time.monotonic()
        said = tdr(*RUN_WORDS, "--scheduler", file, cwd=folder, status=1)
        killer.join()
    assert f"{who} are gone" in said.stderr or "the scheduler is gone" in said.stderr, said.stderr
    assert said.stderr.count("\n") == 1 and time.monotonic() - begun < files.WORKER_SECONDS
    files.run_by_threads(folder)
    assert differing(tree(folder / "run.zarr"), whole[1]["run.zarr"]) == []


def test_a_scheduler_without_workers_is_waited_for_and_left(folder, monkeypatch):
    monkeypatch.setattr(workers, "_PATIENCE", 0.5)
    with files.scheduler(folder, workers=0) as (file, _):
        said = tdr(*RUN_WORDS, "--scheduler", file, cwd=folder, status=1)
    assert said.stderr == "tdr: --scheduler has had no workers for 0.5 s\n"


LIMITED = """
import contextlib, resource, sys
from tidora.commands import ensemble, units
from tidora.commands.main import main
for module in (ensemble, units):
    module.working = lambda args: contextlib.nullcontext()
limit = int(sys.argv[1])
if limit:
    resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
sys.exit(main(sys.argv[2:]))
"""


def by_threads(folder, limit, words):
    """The command in a process that may write files of so many bytes; 0 for any."""
    command = [sys.executable, "-c", LIMITED, str(limit), *words]
    return subprocess.run(command, cwd=folder, env=files.environment(), capture_output=True, text=True)


@pytest.mark.parametrize(
    "name, limit", [("units.zarr", 300), ("units.zarr", 2500), ("run.zarr", 1000), ("run.zarr", 20000)]
)
def test_a_file_that_cannot_grow_is_said_and_the_store_finished_later(name, limit, folder, whole):
    shutil.rmtree(folder / name)
    found = by_threads(folder, limit, WORDS[name])
    assert found.returncode == 1 and found.stdout == "" and found.stderr.count("\n") == 1, found.stderr
    assert found.stderr.startswith("tdr: ") and "cannot be written: File too large" in found.stderr
    MAKE[name](folder)
    assert differing(tree(folder / name), whole[1][name]) == []


@pytest.fixture
def small_disk(tmp_path):
    """A disk of 200 kB."""
    place = tmp_path / "disk"
    place.mkdir()
    mounted = subprocess.run(
        ["mount", "-t", "tmpfs", "-o", "size=200k", "tmpfs", place], capture_output=True, text=True
    )
    if mounted.returncode != 0:
        pytest.skip(f"no disk of our own: {mounted.stderr.strip()}")
    yield place
    subprocess.run(["umount", place], check=True)


@pytest.mark.parametrize("name", MAKE)
def test_a_full_disk_is_said_and_the_store_finished_when_there_is_room(name, folder, whole, small_disk):
    for other in ("model.txt", "floor.nc", "table.nc", "points.csv", "units.zarr"):
        if other != name:
            os.symlink(folder / other, small_disk / other)
    filler = small_disk / "filler"
    filler.write_bytes(bytes(120_000))
    found = by_threads(small_disk, 0, WORDS[name])
    assert found.returncode == 1 and found.stdout == "" and found.stderr.count("\n") == 1, found.stderr
    assert found.stderr.startswith("tdr: ") and "No space left on device" in found.stderr
    filler.unlink()
    subprocess.run(["mount", "-o", "remount,size=8M", small_disk], check=True)
    found = by_threads(small_disk, 0, WORDS[name])
    assert found.returncode == 0 and found.stderr == ""
    made, good = tree(small_disk / name), whole[1][name]
    assert differing(made, good) == []


def test_two_runs_on_one_store_at_once_both_end_well(folder, whole):
    for name in MAKE:
        shutil.rmtree(folder / name)
        errors = []

        def one():
            try:
                MAKE[name](folder)
            except BaseException as error:
                errors.append(error)

        both = [threading.Thread(target=one) for _ in range(3)]
        for thread in both:
            thread.start()
        for thread in both:
            thread.join()
        assert errors == []
        assert differing(tree(folder / name), whole[1][name]) == []
