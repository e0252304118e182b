"""Damaged stores: what is lost is said, and made again by the same command; nothing wrong is computed from them."""

import itertools
import os
import shutil
from contextlib import nullcontext

import numpy as np
import pytest
import xarray as xr

import ensemblefiles as files
import tidora
from conftest import tdr
from ensemblefiles import RUN_WORDS, UNITS_WORDS, differing, tree
from tidora.commands import ensemble, units
from tidora.ensemble.run_store import cut_of, open_run, status
from tidora.ensemble.scenarios import compute_scenarios
from tidora.ensemble.shards import WHOLE, do_shards
from tidora.errors import TidoraError

STORES = ("units.zarr", "run.zarr")

DAMAGES = {
    "removed": lambda content, other: None,
    "empty": lambda content, other: b"",
    "cut in half": lambda content, other: content[: len(content) // 2],
    "cut by a byte": lambda content, other: content[:-1],
    "longer": lambda content, other: content + b"\0",
    "a bit changed": lambda content, other: content[:-9] + bytes([content[-9] ^ 16]) + content[-8:],
    "something else": lambda content, other: other,
    "JSON of another kind": lambda content, other: b'{"a": [1]}',
}


@pytest.fixture(scope="module")
def good(tmp_path_factory):
    """Folder with inputs and both stores, and the bytes of these: two shards each."""
    folder = files.inputs(tmp_path_factory.mktemp("good"))
    tidora.write_faults(files.faults(2), folder / "model.txt")
    files.topography(5, 6).rename("elevation").to_netcdf(folder / "floor.nc")
    tidora.write_slip_table(files.slips(300, 2), folder / "table.nc")
    (folder / "points.csv").write_text("x,y\n140.3,36.25\n")
    files.units_by_threads(folder)
    files.run_by_threads(folder)
    return folder, {name: tree(folder / name) for name in STORES}


@pytest.fixture
def folder(good, tmp_path):
    return shutil.copytree(good[0], tmp_path / "own")


@pytest.fixture
def by_threads(monkeypatch):
    """The command without processes of its own, which are tested elsewhere and slow."""
    for module in (ensemble, units):
        monkeypatch.setattr(module, "working", lambda args: nullcontext())


def files_of(store, good):
    """Its files, sorted by what they are: one of each array is enough, and all that is no array."""
    chosen = {}
    for name in sorted(name for name, content in good[1][store].items() if content is not None):
        chosen.setdefault((name.split("/")[0], name.rsplit("/")[-1].startswith(".z")), name)
    return sorted(chosen.values())


def refused_or_fine(call):
    """None, or what a call refuses with; anything else that is raised is a failure."""
    try:
        call()
        return None
    except TidoraError as error:
        return str(error)


def put(path, content):
    if content is None:
        path.unlink()
    else:
        path.write_bytes(content)


@pytest.mark.parametrize("store", STORES)
def test_any_damage_of_any_file_is_mended_by_the_same_command_or_refused(store, good, folder):
    other = good[1]["units.zarr"]["response/1.0.0.0"]
    make = {"units.zarr": files.units_by_threads, "run.zarr": files.run_by_threads}[store]
    damages = itertools.cycle(DAMAGES.items())
    for name in files_of(store, good):
        why, damage = next(damages)
        content = good[1][store][name]
        put(folder / store / name, damage(content, other))
        for call in (status, lambda path: tidora.scenario(path, 7)):
            refused_or_fine(lambda: call(folder / "run.zarr"))
        said = refused_or_fine(lambda: make(folder))
        if said is not None:  # by hand, as the user who has read it
            # A store is known by its attributes, and axes are read with it: no command overwrites what is no store.
            assert name == ".zattrs" and store in said, f"{name} {why}: {said}"
            assert differing(tree(folder / store), good[1][store]) == [name]
            put(folder / store / name, content)
        assert differing(tree(folder / store), good[1][store]) == [], f"{name} {why}"


RESPONSES = {
    "a chunk is missing": ("removed", "is not there"),
    "a chunk is empty": ("empty", "is damaged"),
    "a chunk is cut in half": ("cut in half", "is damaged"),
    "a chunk lacks a byte": ("cut by a byte", "is damaged"),
    "a chunk has a byte more": ("longer", "is damaged"),
    "a chunk has a wrong bit": ("a bit changed", "is damaged"),
    "a chunk is that of another array": ("something else", "is damaged"),
}


@pytest.mark.parametrize("why", RESPONSES)
def test_scenarios_that_need_a_damaged_unit_fail_and_are_done_when_it_is_mended(why, few, folder, by_threads):
    damage, reason = RESPONSES[why]
    chunk = folder / "units.zarr" / "response" / "1.1.0.1"
    put(chunk, DAMAGES[damage](chunk.read_bytes(), (folder / "units.zarr" / "x" / "0").read_bytes()))
    said = tdr(*RUN_WORDS, cwd=folder, status=1)
    hold_failed(said, folder, f"unit 1: units.zarr/response/1.1.0.1: {reason}")
    again_when_mended(folder, few)


USERS = list(range(0, 256, 3))
"""Scenarios that need unit 1: all of them in the first shard."""


@pytest.fixture
def few(good, folder):
    """A table of two shards, of which one needs unit 1; the bytes of its run."""
    entries = [(row, unit) for row in range(300) for unit in ((0, 1) if row in USERS else (0,))]
    indptr = np.searchsorted([row for row, _ in entries], range(301))
    unit = [unit for _, unit in entries]
    tidora.write_slip_table(tidora.make_slip_table(indptr, unit, 1.5, 80.0), folder / "table.nc")
    shutil.rmtree(folder / "run.zarr")
    files.run_by_threads(folder)
    bytes_of_run = tree(folder / "run.zarr")
    shutil.rmtree(folder / "run.zarr")
    return bytes_of_run


def hold_failed(said, folder, reason):
    """The scenarios that need unit 1 have failed, each with its reason; the others are done."""
    counts = f"{300 - len(USERS)} done, {len(USERS)} failed, 0 missing (2 of 2 shards)"
    assert said.stdout == f"run.zarr: 300 scenarios: {counts}\n"
    lines = said.stderr.splitlines()
    assert lines[:20] == [f"tdr: scenario {row}: {reason}" for row in USERS[:20]]
    assert lines[20:] == [f"tdr: and {len(USERS) - 20} more: tdr ensemble status run.zarr"]
    assert status(folder / "run.zarr").failed == [(row, reason) for row in USERS]
    listed = tdr("ensemble", "status", "run.zarr", cwd=folder).stdout
    assert listed == said.stdout + "".join(f"scenario {row}: {reason}\n" for row in USERS)
    run = xr.open_zarr(folder / "run.zarr")
    for name in ("highest", "lowest_x", "energy"):
        assert np.flatnonzero(np.isnan(run[name].values)).tolist() == USERS
    assert np.flatnonzero(np.isnan(run["field"].values).any(axis=(1, 2))).tolist() == USERS
    assert np.flatnonzero(np.isnan(run["eta"].values[:, 0])).tolist() == USERS
    assert [str(word) for word in run["reason"].values[:2]] == [reason, ""]
    with pytest.raises(TidoraError, match="scenario 3: unit 1: "):
        tidora.scenario(folder / "run.zarr", 3)
    assert tidora.scenario(folder / "run.zarr", 4).shape == (5, 6)


def again_when_mended(folder, bytes_of_run):
    """The units are mended by their own command, and the same run does the shard that failed, and no other."""
    tdr(*UNITS_WORDS, cwd=folder)
    before = [(folder / "run.zarr" / ".shards" / name).stat().st_ino for name in "01"]
    said = tdr(*RUN_WORDS, cwd=folder)
    assert said.stderr == "" and "300 done, 0 failed" in said.stdout
    after = [(folder / "run.zarr" / ".shards" / name).stat().st_ino for name in "01"]
    assert [old != new for old, new in zip(before, after)] == [True, False]
    assert differing(tree(folder / "run.zarr"), bytes_of_run) == []


def test_units_that_are_not_finished_spoil_only_the_scenarios_that_need_them(few, folder, by_threads):
    shutil.rmtree(folder / "units.zarr")
    files.part_of_units(folder, 1, 2)
    said = tdr(*RUN_WORDS, cwd=folder, status=1)
    hold_failed(said, folder, "unit 1: units.zarr/response/1.0.0.0: is not there")
    again_when_mended(folder, few)


def test_units_that_are_moved_or_replaced_are_missed_before_anything_is_changed(good, folder, by_threads):
    os.rename(folder / "units.zarr", folder / "elsewhere.zarr")
    said = tdr(*RUN_WORDS, cwd=folder, status=1)
    assert said.stderr.startswith("tdr: ") and "units.zarr: is not there" in said.stderr
    for words in (("ensemble", "show", "run.zarr", 3, "-o", "eta.nc"), ("ensemble", "status", "run.zarr")):
        tdr(*words, cwd=folder, status=int("show" in words))
    tidora.unit_sources(
        files.faults(2), tidora.open_grid(folder / "floor.nc", "geographic"), folder / "units.zarr"
    )  # neither slope nor filter
    said = tdr(*RUN_WORDS, cwd=folder, status=1)
    assert "was made otherwise (another units)" in said.stderr
    said = tdr("ensemble", "show", "run.zarr", 3, "-o", "eta.nc", cwd=folder, status=1)
    assert "are not the units of" in said.stderr and not (folder / "eta.nc").exists()
    assert differing(tree(folder / "run.zarr"), good[1]["run.zarr"]) == []


def test_units_that_are_replaced_while_a_run_is_at_work_end_it_with_an_error(good, folder):
    (folder / "run.zarr" / ".shards" / "1").unlink()
    before = tree(folder / "run.zarr")
    shutil.rmtree(folder / "units.zarr")
    tidora.unit_sources(files.faults(2), tidora.open_grid(folder / "floor.nc", "geographic"), folder / "units.zarr")
    place, run = open_run(folder / "run.zarr")
    with pytest.raises(TidoraError, match="are not the units of"):
        do_shards(compute_scenarios, place, cut_of(run).shards, WHOLE, None)
    assert differing(tree(folder / "run.zarr"), before) == []


def test_commands_say_which_part_of_a_damaged_run_cannot_be_read(folder):
    for name, damage, reason in (
        ("slip/0", "a bit changed", "run.zarr/slip: cannot be read"),
        ("unit/0", "removed", "run.zarr/unit/0: is not there"),
        (".zmetadata", "removed", "is not complete"),
        (".zmetadata", "JSON of another kind", "cannot be opened"),
        (".zattrs", "cut in half", "is no store of units or of a run"),
    ):
        content = (folder / "run.zarr" / name).read_bytes()
        put(folder / "run.zarr" / name, DAMAGES[damage](content, b""))
        said = tdr("ensemble", "show", "run.zarr", 3, "-o", "eta.nc", cwd=folder, status=1)
        assert reason in said.stderr and said.stderr.count("\n") == 1 and "Traceback" not in said.stderr
        put(folder / "run.zarr" / name, content)
    tdr("ensemble", "show", "run.zarr", 3, "-o", "eta.nc", cwd=folder)
