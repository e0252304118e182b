"""A run that is killed at any moment is finished by the next, to the same bytes, and nothing is left over.

TIDORA_KILLS says how many moments are tried of each kind of run (1), and with 20 or more all calls that change files.
"""

import os
import random
import shutil
import signal
import time
import traceback

import pytest

import ensemblefiles as files
from ensemblefiles import RUN_WORDS, UNITS_WORDS, differing, started, tree
from tidora.ensemble import shards, store

KILLS = int(os.environ.get("TIDORA_KILLS", "1"))
SEED = int(os.environ.get("TIDORA_SEED", "1"))

STRIDE = 1 if KILLS >= 20 else 97
"""Calls from one kill to the next."""

_FIRST = 6 + SEED % STRIDE % 5
"""Calls that are all tried: by them a store comes to be what it is."""

MAKE = {"units.zarr": files.units_by_threads, "run.zarr": files.run_by_threads}


def in_child(work):
    """Does work in a child of this process, which has loaded everything already; its wait status."""
    child = os.fork()
    if child == 0:
        status = 1
        try:
            work()
            status = 0
        except BaseException:
            traceback.print_exc()
        finally:
            os._exit(status)
    return os.waitpid(child, 0)[1]


def die():
    os.kill(os.getpid(), signal.SIGKILL)


class Fate:
    """Kills the process at its n-th call that changes files: in the middle of it if it is a write, else before it."""

    CALLS = ("replace", "link", "fsync", "unlink", "mkdir", "rmdir")

    def __init__(self, calls):
        self.left = calls
        for name in self.CALLS:
            setattr(os, name, self.counted(getattr(os, name)))
        store.open = self.opened

    def counted(self, call):
        def counting(*words, **options):
            self.left -= 1
            if self.left <= 0:
                die()
            return call(*words, **options)

        return counting

    def opened(self, path, mode="r", **options):
        file = open(path, mode, **options)
        if "w" in mode:
            self.left -= 1
            if self.left <= 0:
                file.write = lambda content, write=file.write: (
                    write(content[: len(content) // 2]),
                    file.flush(),
                    die(),
                )
        return file


@pytest.fixture(scope="module")
def good(tmp_path_factory):
    """Folder with inputs and both stores, made by a child, and their bytes."""
    folder = files.inputs(tmp_path_factory.mktemp("good"))
    # Small stores: a kill at each of their calls is to be bearable.
    files.tidora.write_faults(files.faults(2), folder / "model.txt")
    files.topography(5, 6).rename("elevation").to_netcdf(folder / "floor.nc")
    files.tidora.write_slip_table(files.slips(300, 2), folder / "table.nc")
    (folder / "points.csv").write_text("x,y\n140.3,36.25\n")
    for make in MAKE.values():
        assert in_child(lambda: make(folder)) == 0
    return folder, {name: tree(folder / name) for name in MAKE}


@pytest.fixture
def folder(good, tmp_path):
    """What is needed to make a store, in a folder of its own."""
    shutil.copytree(good[0], tmp_path / "own")
    return tmp_path / "own"


def one_thread():
    """One shard after another: the calls of several threads would come in any order."""
    shards.cores = lambda: 1


def killed(make, folder, calls):
    def work():
        one_thread()
        Fate(calls)
        make(folder)

    return in_child(work) == signal.SIGKILL


@pytest.mark.parametrize("name", MAKE)
def test_a_process_that_is_killed_at_any_call_leaves_what_the_next_finishes(name, folder, good):
    calls, tried = 1, 0
    while True:
        shutil.rmtree(folder / name)
        if not killed(MAKE[name], folder, calls):
            break
        assert in_child(lambda: MAKE[name](folder)) == 0, f"after a kill at call {calls}"
        assert differing(tree(folder / name), good[1][name]) == [], f"after a kill at call {calls}"
        calls, tried = calls + (1 if calls < _FIRST else STRIDE), tried + 1
    assert tried > _FIRST + 200 // STRIDE
    assert differing(tree(folder / name), good[1][name]) == []


@pytest.mark.parametrize("name", MAKE)
def test_processes_that_are_killed_again_and_again_finish_a_store(name, folder, good):
    shutil.rmtree(folder / name)
    processes = 0
    while killed(MAKE[name], folder, 150):  # a shard needs fewer
        processes += 1
        assert processes < 20
    assert processes >= 2 and differing(tree(folder / name), good[1][name]) == []


# Kinds of runs, and who of them dies: all of its processes at once, or only the first, whose workers are left alone.
KINDS = {
    "two workers": (("--workers", 2), True),
    "two workers, the first process": (("--workers", 2), False),
    "one worker": (("--workers", 1), True),
    "one worker, the first process": (("--workers", 1), False),
    "a part": (("--part", "1/2"), True),
    "a scheduler, the client": (("--scheduler", "scheduler.json"), True),
}


@pytest.fixture(scope="module")
def whole(tmp_path_factory):
    """Larger stores, which take a second: folder and bytes."""
    folder = files.inputs(tmp_path_factory.mktemp("whole"))
    for make in MAKE.values():
        assert in_child(lambda: make(folder)) == 0
    return folder, {name: tree(folder / name) for name in MAKE}


@pytest.mark.parametrize("number", range(KILLS))
@pytest.mark.parametrize("kind", KINDS if KILLS > 1 else ["two workers", "two workers, the first process"])
def test_a_command_that_is_killed_at_any_moment_is_finished_by_the_next(kind, number, whole, tmp_path):
    chosen = random.Random(f"{SEED} {kind} {number}")
    name, words = chosen.choice([("units.zarr", UNITS_WORDS), ("run.zarr", RUN_WORDS)])
    folder = shutil.copytree(whole[0], tmp_path / "own")
    shutil.rmtree(folder / name)
    options, everybody = KINDS[kind]
    with files.scheduler(folder) if "--scheduler" in options else files.nobody():
        process = started(*words, *options, cwd=folder, own_group=True)
        files.wait_for(folder / name)
        # Most of the time goes into the start of workers; the writing itself is over in some tenths of a second.
        await_some(folder / name, chosen.choice([0, 0, 1, 1, 2, 3]), process)
        time.sleep(chosen.random() * 0.2)
        if everybody:
            os.killpg(process.pid, signal.SIGKILL)
        else:
            process.kill()
        process.communicate()  # ends when the last of its workers has closed its output
        assert in_child(lambda: MAKE[name](folder)) == 0
    assert differing(tree(folder / name), whole[1][name]) == []


def await_some(folder, shards_there, process):
    """Until so many shards are there, or the process has ended."""
    end = time.monotonic() + files.WORKER_SECONDS
    while process.poll() is None and time.monotonic() < end:
        if len(list(folder.glob(".shards/*"))) >= shards_there:
            return
        time.sleep(0.005)


def test_an_interrupted_command_ends_at_once_and_without_a_word(whole, tmp_path):
    folder = shutil.copytree(whole[0], tmp_path / "own")
    shutil.rmtree(folder / "run.zarr")
    process = started(*RUN_WORDS, "--workers", 1, cwd=folder, own_group=True)
    files.wait_for(folder / "run.zarr" / ".zmetadata")
    os.killpg(process.pid, signal.SIGINT)
    out, err = files.ended(process, 130)
    assert out == "" and err == ""
    assert in_child(lambda: files.run_by_threads(folder)) == 0
    assert differing(tree(folder / "run.zarr"), whole[1]["run.zarr"]) == []
