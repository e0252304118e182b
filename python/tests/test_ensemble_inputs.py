"""Bad tables, points, options and places of a store: a clear error, and nothing changed."""

import os
import shutil
import subprocess
import sys
import warnings
from contextlib import nullcontext

import numpy as np
import pytest

import ensemblefiles as files
import tidora
from conftest import tdr
from ensemblefiles import RUN_WORDS, UNITS_WORDS, differing, tree
from tidora.commands import ensemble, units, workers
from tidora.errors import TidoraWarning


@pytest.fixture(scope="module")
def good(tmp_path_factory):
    """Folder with inputs and both stores; three units, eight scenarios."""
    folder = files.inputs(tmp_path_factory.mktemp("good"))
    tidora.write_faults(files.faults(3), folder / "model.txt")
    files.topography(5, 6).rename("elevation").to_netcdf(folder / "floor.nc")
    tidora.write_slip_table(files.slips(8, 3), folder / "table.nc")
    (folder / "points.csv").write_text("x,y\n140.3,36.25\n")
    files.units_by_threads(folder)
    files.run_by_threads(folder)
    return folder


@pytest.fixture
def folder(good, tmp_path, monkeypatch):
    for module in (ensemble, units):  # without processes of its own, which are slow
        monkeypatch.setattr(module, "working", lambda args: nullcontext())
    return shutil.copytree(good, tmp_path / "own")


def refused(folder, *words):
    """What a command says that changes nothing in the folder."""
    before = tree(folder)
    said = tdr(*words, cwd=folder, status=1)
    assert said.stdout == "" and said.stderr.startswith("tdr: ") and said.stderr.count("\n") == 1
    assert differing(tree(folder), before) == []
    return said.stderr


def run_of(words, option, value):
    """The words of a run with another value of an option."""
    changed = list(words)
    changed[changed.index(option) + 1] = value
    return changed


# Scenarios of tables: units, slips, rakes; the reason that one of them has, and where.
TABLES = [
    ("a unit that is not there", [([0, 3], 1.0, 90.0), ([1], 1.0, 90.0)], {0: "unit 3 is not there: units are 0 to 2"}),
    ("a negative unit", [([1], 1.0, 90.0), ([-1], 1.0, 90.0)], {1: "unit -1 is not there: units are 0 to 2"}),
    ("a number of a unit past all", [([2**53], 1.0, 90.0)], {0: f"unit {2**53} is not there: units are 0 to 2"}),
    ("slip that is no number", [([0, 1], [1.0, np.nan], 90.0)], {0: "slip of unit 1 is nan, no finite number"}),
    ("infinite slip", [([2], -np.inf, 90.0), ([2], 1.0, 9.0)], {0: "slip of unit 2 is -inf, no finite number"}),
    ("infinite rake", [([0], 1.0, 9.0), ([2], 1.0, np.inf)], {1: "rake of unit 2 is inf, no finite number"}),
    ("slip past single precision", [([0], 1e39, 90.0), ([0], 1, 90)], {0: "its heights are no finite numbers"}),
    ("slip past double precision", [([0, 0], 1e308, 90.0)], {0: "its heights are no finite numbers"}),
    ("everything wrong", [([9], np.nan, 0.0)] * 3, dict.fromkeys(range(3), "unit 9 is not there: units are 0 to 2")),
    ("scenarios without units", [([], [], []), ([1], 1.0, 90.0), ([], [], [])], {}),
    ("a unit twice", [([1, 1], [1.0, 2.0], 90.0)], {}),
    ("a unit twice that cancels", [([1, 1], [1.0, -1.0], 90.0)], {}),
    ("no slip at all", [([0, 1, 2], 0.0, 90.0)], {}),
    ("slip past what is told from none", [([0], 1e-320, 90.0)], {}),
    ("rake a thousand turns on", [([0], 1.0, 360090.0)], {}),
]


def made(scenarios):
    """A slip table from scenarios."""
    indptr = np.concatenate([[0], np.cumsum([len(unit) for unit, _, _ in scenarios])])
    columns = zip(*[np.broadcast_arrays(*(np.atleast_1d(part) for part in scenario)) for scenario in scenarios])
    unit, slip, rake = (np.concatenate(column) for column in columns)
    return tidora.make_slip_table(indptr, unit.astype(np.int64), slip, rake)


@pytest.mark.parametrize("case", TABLES, ids=lambda case: case[0])
def test_a_scenario_that_cannot_be_computed_has_a_reason_and_the_others_are_done(case, folder):
    _, scenarios, reasons = case
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        run = tidora.ensemble(made(scenarios), folder / "units.zarr", folder / "new.zarr", fields=True)
    assert [warning.category for warning in caught] == [TidoraWarning] * bool(reasons), [str(w) for w in caught]
    counted = f"{len(reasons)} of {len(scenarios)} scenarios could not be computed; the first is "
    assert all(counted in str(warning.message) for warning in caught)
    assert run["reason"].values.tolist() == [reasons.get(row, "") for row in range(len(scenarios))]
    for name in ("highest", "lowest", "highest_x", "lowest_y", "raised", "lowered", "energy"):
        assert np.isnan(run[name].values).tolist() == [row in reasons for row in range(len(scenarios))]
    for row in range(len(scenarios)):
        if row in reasons:
            assert np.isnan(run["field"].values[row]).all()
            with pytest.raises(tidora.TidoraError, match=reasons[row]):
                tidora.scenario(folder / "new.zarr", row)
        else:
            assert np.allclose(tidora.scenario(folder / "new.zarr", row), run["field"].values[row], rtol=0, atol=1e-5)


def test_no_height_at_all_is_none_of_nothing(folder):
    run = tidora.ensemble(made([([], [], []), ([0], 0.0, 90.0)]), folder / "units.zarr", folder / "new.zarr").load()
    for row in range(2):
        one = run.isel(scenario=row)
        assert (one.highest, one.lowest, one.raised, one.lowered, one.energy) == (0.0, 0.0, 0.0, 0.0, 0.0)
        assert (one.highest_x, one.highest_y, one.lowest_x, one.lowest_y) == (140.0, 36.0, 140.0, 36.0)
        assert np.isnan(one.magnitude)


# Content of a table's file, and what is said of it.
TABLE_FILES = [
    ("nothing", b"", "has no headings"),
    ("a heading and no scenarios", b"scenario,unit,slip,rake\n", "has no rows"),
    ("another heading", b"scenario,unit,slip\n0,1,2\n", "rake"),
    ("too many columns", b"scenario,unit,slip,rake\n0,1,2,3,4\n", "not 5"),
    ("a word", b"scenario,unit,slip,rake\n0,one,2,3\n", "one"),
    ("half a unit", b"scenario,unit,slip,rake\n0,0.5,2,3\n", "0.5"),
    ("bytes of a picture", b"\x89PNG\r\n\x1a\n" + bytes(range(256)), "is no text"),
    ("the beginning of a NetCDF file", b"\x89HDF\r\n\x1a\n", "bad.csv"),
]


@pytest.mark.parametrize("case", TABLE_FILES, ids=lambda case: case[0])
def test_a_table_that_is_none_is_refused_before_there_is_a_store(case, folder):
    (folder / "bad.csv").write_bytes(case[1])
    words = ["ensemble", "run", "bad.csv", "units.zarr", "-o", "new.zarr"]
    assert case[2] in refused(folder, *words)


POINTS = [
    ("outside", b"x,y\n140.1,36.1\n139.99,36.1\n", "point 1 at 139.99, 36.1 lies outside of the grid (1 such)"),
    ("outside to the north", b"x,y,name\n140.1,36.6,far\n", "point 0 (far) at 140.1, 36.6 lies outside"),
    ("half a turn away", b"x,y\n-39.7,36.1\n", "lies outside"),
    ("no number", b"x,y\nnan,36.1\n", "x of point 0 is no finite number"),
    ("infinite", b"x,y\n140.1,inf\n", "y of point 0 is no finite number"),
    ("a word", b"x,y\n140.1,36,1\n", "bad.csv:2: a point has 2 columns, not 3"),
    ("too few columns", b"x,y,name\n140.1,36.1\n", "bad.csv:2: a point has 3 columns, not 2"),
    ("another heading", b"lon,lat\n140.1,36.1\n", "bad.csv:1: a list of points begins with a line x,y or x,y,name"),
    ("no heading", b"140.1,36.1\n", "bad.csv:1: a list of points begins"),
    ("a heading twice", b"x,x\n140.1,36.1\n", "bad.csv:1: a list of points begins"),
    ("nothing", b"", "begins with a line x,y"),
    ("a heading and no points", b"x,y\n", "--at has no points"),
    ("bytes", bytes(range(256)), "is no text"),
    ("zeros", b"x,y\n140.1,\x0036\n", "bad.csv"),
    ("a line without an end", b"x,y\n" + b"1" * 70000, "shorter"),
    ("a quotation without an end", b'x,y,name\n140.1,36.1,"a\n140.1,36.1,b\n', None),
]


@pytest.mark.parametrize("case", POINTS, ids=lambda case: case[0])
def test_points_that_cannot_be_are_refused_before_there_is_a_store(case, folder):
    (folder / "bad.csv").write_bytes(case[1])
    words = ["ensemble", "run", "table.nc", "units.zarr", "-o", "new.zarr", "--at", "bad.csv"]
    if case[2] is None:
        tdr(*words, cwd=folder)
    else:
        assert case[2] in refused(folder, *words)


def test_points_in_other_co_ordinates_are_refused(folder):
    at = tidora.points([1e5], [1e5], coord="plane")
    with pytest.raises(tidora.TidoraError, match="plane co-ordinates, the units geographic"):
        tidora.ensemble(folder / "table.nc", folder / "units.zarr", folder / "new.zarr", at=at)
    with pytest.raises(TypeError, match="at is a path, or a table"):
        tidora.ensemble(folder / "table.nc", folder / "units.zarr", folder / "new.zarr", at=[(140.1, 36.1)])
    assert not (folder / "new.zarr").exists()


OPTIONS = [
    ("--part", "0/3"), ("--part", "4/3"), ("--part", "a/b"), ("--part", "1"), ("--part", "1/2/3"), ("--part", ""),
    ("--part", "1/0"), ("--part", "-1/3"), ("--part", "1/99999999999"), ("--part", "\u0661/3"), ("--workers", "0"),
    ("--workers", "-1"), ("--workers", "two"), ("--workers", "1.5"),
]  # fmt: skip


@pytest.mark.parametrize("words", [UNITS_WORDS, RUN_WORDS], ids=["units", "run"])
@pytest.mark.parametrize("option, value", OPTIONS)
def test_options_that_cannot_be_change_nothing(option, value, words, folder):
    before = tree(folder)
    said = tdr(*words, f"{option}={value}", cwd=folder, status=2)
    assert option in said.stderr and said.stdout == "" and "Traceback" not in said.stderr
    assert differing(tree(folder), before) == []


def test_workers_and_a_scheduler_exclude_each_other(folder):
    said = tdr(*RUN_WORDS, "--scheduler", "tcp://127.0.0.1:9", "--workers", "2", cwd=folder, status=2)
    assert "not allowed with" in said.stderr


SCHEDULERS = [
    ("nobody listens", "tcp://127.0.0.1:9", None),
    ("no address", "not an address", None),
    ("another protocol", "carrier-pigeon://127.0.0.1:1", None),
    ("an empty file", "file.json", b""),
    ("a file that is no JSON", "file.json", b"tcp://127.0.0.1:9"),
    ("a list", "file.json", b"[1, 2]"),
    ("no address in it", "file.json", b"{}"),
    ("a number as address", "file.json", b'{"address": 7}'),
    ("bytes", "file.json", bytes(range(256))),
]


@pytest.mark.parametrize("case", SCHEDULERS, ids=lambda case: case[0])
def test_a_scheduler_that_cannot_be_reached_is_said(case, folder, monkeypatch):
    monkeypatch.undo()
    monkeypatch.setattr(workers, "CONNECT", 1)
    if case[2] is not None:
        (folder / "file.json").write_bytes(case[2])
    shutil.rmtree(folder / "run.zarr")
    said = tdr(*RUN_WORDS, "--scheduler", case[1], cwd=folder, status=1)
    assert said.stderr.startswith(f"tdr: --scheduler {case[1]} cannot be reached: ") and said.stderr.count("\n") == 1


CHANGES = [
    ("another table", {"table": True}, "another table"),
    ("other points", {"at": "x,y\n140.3,36.26\n"}, "another points"),
    ("the same points with a name", {"at": "x,y,name\n140.3,36.25,a\n"}, "another points"),
    ("no points", {"words": [w for w in RUN_WORDS if w not in ("--at", "points.csv")]}, "another points"),
    ("no fields", {"words": [w for w in RUN_WORDS if w != "--fields"]}, "fields True there, False here"),
    ("no slope", {"words": [w for w in UNITS_WORDS if w != "--slope"]}, "slope True there, False here"),
    ("no filter", {"words": [w for w in UNITS_WORDS if w != "--kajiura"]}, "kajiura True there, False here"),
    ("a tolerance", {"words": (*UNITS_WORDS, "--tolerance", "1e-3")}, "tolerance 0.0 there, 0.001 here"),
    ("a frame", {"words": (*UNITS_WORDS, "--frame", "utm")}, "frame globe there, utm here"),
    ("a depth", {"words": (*UNITS_WORDS, "--depth", "datum")}, "depth floor there, datum here"),
    ("a part of the grid", {"words": (*UNITS_WORDS, "--region", "140/140.5/36/36.5")}, "another topography"),
    ("another model", {"model": True}, "another elements"),
    ("units over a run", {"words": run_of(UNITS_WORDS, "-o", "run.zarr")}, "is no store of units"),
    ("a run over units", {"words": run_of(RUN_WORDS, "-o", "units.zarr")}, "is no store of a run"),
    ("a run as units", {"words": [w.replace("units.zarr", "run.zarr") for w in RUN_WORDS]}, "is no store of units"),
    ("a run on nothing", {"words": [w.replace("units.zarr", "x.zarr") for w in RUN_WORDS]}, "x.zarr: is not there"),
    ("over a file", {"words": run_of(RUN_WORDS, "-o", "points.csv")}, "is a file, and no store"),
    ("beneath a file", {"words": run_of(RUN_WORDS, "-o", "points.csv/run.zarr")}, "is a file, and no store"),
    ("over another folder", {"words": run_of(RUN_WORDS, "-o", ".")}, "is a folder with something else in it"),
    ("over another zarr store", {"words": run_of(RUN_WORDS, "-o", "table.zarr"), "zarr": True}, "is no store of units"),
]


def test_units_of_other_rigidities_or_names_are_other_units(folder):
    elements = tidora.read_faults(folder / "model.txt", "geographic").isel(element=[0, 1])
    floor = tidora.open_grid(folder / "floor.nc", "geographic")
    named = elements.assign(name=("element", ["a", "b"]), rigidity=("element", [3e10, 4e10]))
    store = folder / "named.zarr"
    tidora.unit_sources(named, floor, store)
    before = tree(store)
    softer = named.assign(rigidity=("element", [3e10, 3e10]))
    renamed = named.assign(name=("element", ["a", "c"]))
    for other in (elements, softer, renamed):
        with pytest.raises(tidora.TidoraError, match="another elements"):
            tidora.unit_sources(other, floor, store)
    tidora.unit_sources(named, floor, store)
    assert differing(tree(store), before) == []


@pytest.mark.parametrize("case", CHANGES, ids=lambda case: case[0])
def test_a_store_made_otherwise_is_refused_and_stays_as_it_is(case, folder):
    _, change, reason = case
    if "table" in change:
        tidora.write_slip_table(files.slips(8, 3, seed=2), folder / "table.nc")
    if "at" in change:
        (folder / "points.csv").write_text(change["at"])
    if "model" in change:
        tidora.write_faults(files.faults(2), folder / "model.txt")
    if "zarr" in change:
        tidora.write_slip_table(files.slips(8, 3), folder / "table.zarr")
    assert reason in refused(folder, *change.get("words", UNITS_WORDS if "model" in change else RUN_WORDS))


def test_a_folder_that_may_not_be_read_or_written_is_said(folder):
    program = (
        "from tidora.commands import ensemble; import contextlib, sys\n"
        "ensemble.working = lambda args: contextlib.nullcontext()\n"
        "from tidora.commands.main import main; sys.exit(main(sys.argv[1:]))"
    )
    # For root no folder is closed, unless these are taken away.
    limited = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.getuid() == 0 else []
    for name, mode in (("run.zarr", 0o000), ("closed", 0o555)):
        (folder / name).mkdir(exist_ok=True)
        (folder / name).chmod(mode)
        words = run_of(RUN_WORDS, "-o", name if mode == 0 else f"{name}/run.zarr")
        command = [*limited, sys.executable, "-c", program, *words]
        found = subprocess.run(command, cwd=folder, env=files.environment(), capture_output=True, text=True)
        (folder / name).chmod(0o755)
        assert found.returncode == 1 and "Permission denied" in found.stderr, found.stderr
        assert found.stderr.startswith("tdr: ") and found.stderr.count("\n") == 1
