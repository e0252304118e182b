"""A store has the same bytes whoever made it."""

import json
import os
import shutil
import time

import distributed
import pytest

from conftest import tdr

from ensemblefiles import (
    RUN_WORDS, UNITS_WORDS, WORKER_SECONDS, differing, ended, inputs, part_of_run, part_of_units, run_by_threads,
    scheduler, started, tree, units_by_threads,
)  # fmt: skip
from tidora.commands import workers
from tidora.ensemble import shards
from tidora.ensemble.blas import CORE_TYPE, worker_environment

STORES = ("units.zarr", "run.zarr")


@pytest.fixture(scope="module")
def good(tmp_path_factory):
    """Both stores as threads of one process make them."""
    folder = inputs(tmp_path_factory.mktemp("good"))
    units_by_threads(folder)
    run_by_threads(folder)
    return {store: tree(folder / store) for store in STORES}


@pytest.fixture
def folder(tmp_path):
    return inputs(tmp_path)


def hold(folder, good):
    """Both stores are the good ones, to the byte, and nothing lies in them beside."""
    for store in STORES:
        assert differing(tree(folder / store), good[store]) == []


def test_a_store_holds_shards_chunks_and_metadata_and_nothing_else(good):
    for store, count, result in (("units.zarr", 5, "response"), ("run.zarr", 3, "field")):
        names = set(good[store])
        assert {f".shards/{number}" for number in range(count)} <= names
        assert not [name for name in names if "partial" in name]
        noted = [json.loads(good[store][f".shards/{number}"].splitlines()[0])["chunks"] for number in range(count)]
        listed = {name for chunks in noted for name in chunks}
        assert {name for name in names if name.startswith(f"{result}/") and name[-1].isdigit()} <= listed <= names


def test_one_thread_makes_the_bytes_of_several(folder, good, monkeypatch):
    monkeypatch.setattr(shards, "cores", lambda: 1)
    units_by_threads(folder)
    run_by_threads(folder)
    hold(folder, good)


@pytest.mark.parametrize("order", [(1, 2, 3), (3, 1, 2), (2, 3, 1)])
def test_parts_in_any_order_make_the_bytes_of_the_whole(order, folder, good):
    for number in order:
        part_of_units(folder, number, 3)
    for number in order:
        part_of_run(folder, number, 3)
        left = folder / "run.zarr" / ".partial"
        assert left.exists() == (number != order[-1])
    hold(folder, good)


_PARTS = """
import sys, time
from pathlib import Path
import ensemblefiles as files
number, start = int(sys.argv[1]), float(sys.argv[2])
time.sleep(max(0.0, start - time.time()))
files.part_of_units(Path.cwd(), number, 3)
while len(list(Path("units.zarr/.shards").iterdir())) < files.UNITS:
    time.sleep(0.001)
files.part_of_run(Path.cwd(), number, 3)
"""
"""A process for each part, so that all of them begin the same store within some milliseconds."""


def test_three_parts_that_start_at_once_make_the_bytes_of_the_whole(folder, good):
    start = time.time() + 3.0
    for part in [started("-c", _PARTS, number, start, cwd=folder) for number in (1, 2, 3)]:
        out, err = ended(part)
        assert err == ""
    hold(folder, good)


def test_the_command_does_the_part_that_is_asked_for(folder, good, monkeypatch):
    monkeypatch.setattr(workers, "cores", lambda: 1)
    units_by_threads(folder)
    said = tdr(*RUN_WORDS, "--part", "2/2", cwd=folder)
    assert said.stdout == "run.zarr: 600 scenarios: 256 done, 0 failed, 344 missing (1 of 3 shards)\n"
    part_of_run(folder, 1, 2)
    hold(folder, good)


def test_a_part_that_has_one_core_is_done_without_another_process(folder, good, monkeypatch):
    # Named kernels: those of this process are then the ones that a worker would take.
    monkeypatch.setenv(CORE_TYPE, os.environ.get(CORE_TYPE, "as they are"))
    monkeypatch.setattr(workers, "cores", lambda: 1)
    monkeypatch.setattr(workers, "_processes", lambda count: pytest.fail("processes have been started"))
    for number in (2, 1):
        tdr(*UNITS_WORDS, "--part", f"{number}/2", cwd=folder)
    for number in (2, 1):
        tdr(*RUN_WORDS, "--part", f"{number}/2", cwd=folder)
    hold(folder, good)


def test_processes_of_this_machine_make_the_bytes_of_threads(folder, good):
    tdr(*UNITS_WORDS, "--workers", 2, cwd=folder)
    for count in (2, 1):
        shutil.rmtree(folder / "run.zarr", ignore_errors=True)
        said = tdr(*RUN_WORDS, "--workers", count, cwd=folder)
        assert said.stdout == "run.zarr: 600 scenarios: 600 done, 0 failed, 0 missing (3 of 3 shards)\n"
        assert said.stderr == ""
        hold(folder, good)


@pytest.fixture(scope="module")
def cluster(tmp_path_factory):
    """File and address of a scheduler with two workers."""
    with scheduler(tmp_path_factory.mktemp("scheduler")) as (file, _):
        yield file, json.loads(file.read_text())["address"]


def test_workers_of_a_scheduler_make_the_bytes_of_threads(folder, good, cluster):
    file, address = cluster
    tdr(*UNITS_WORDS, "--scheduler", file, cwd=folder)
    tdr(*RUN_WORDS, "--scheduler", address, cwd=folder)
    hold(folder, good)


def test_a_client_that_is_active_is_taken(folder, good, cluster, monkeypatch):
    monkeypatch.delattr(shards, "cores")  # which threads of this process would ask
    with distributed.Client(cluster[1], timeout=WORKER_SECONDS) as client:
        client.wait_for_workers(2, timeout=WORKER_SECONDS)
        units_by_threads(folder)
        run_by_threads(folder)
    hold(folder, good)


def test_a_worker_takes_one_thread_and_the_kernels_that_somebody_chose(monkeypatch):
    monkeypatch.delenv("OPENBLAS_CORETYPE", raising=False)
    assert worker_environment()["OPENBLAS_NUM_THREADS"] == "1"
    monkeypatch.setenv("OPENBLAS_CORETYPE", "Haswell")
    assert "OPENBLAS_CORETYPE" not in worker_environment()
