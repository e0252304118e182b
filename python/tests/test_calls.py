"""The library: where it is, how far it has got, and how it is stopped."""

import os
import shutil
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

import numpy as np
import pytest
from conftest import ROOT, tdr

import tidora
from tidora.engine import binding

FAULTS = tidora.make_faults(np.linspace(139, 142, 400), 38, 1e4, 200, 15, 90, 4e4, 2e4, 1)
LARGE = tidora.grid(139, 142, 37, 40, 3 / 1999)
"""Nodes for which the elements take far longer than a test waits."""


class Stop(Exception):
    pass


def test_the_progress_goes_from_0_to_1_and_never_back():
    told = []
    here = threading.get_ident()

    def tell(fraction):
        assert threading.get_ident() == here
        told.append(fraction)

    tidora.deform(FAULTS.isel(element=slice(0, 40)), LARGE, progress=tell)
    assert told == sorted(told) and told[-1] == 1.0 and len(told) > 2 and min(told) >= 0
    told.clear()
    small = tidora.grid(139, 142, 37, 40, 0.05) - 3000
    tidora.source(FAULTS, small, kajiura=True, progress=tell)
    assert told == sorted(told) and told[-1] == 1.0


def test_what_the_progress_raises_stops_the_work_within_a_second():
    began = []

    def fail(fraction):
        began.append(time.perf_counter())
        raise Stop(fraction)

    with pytest.raises(Stop):
        tidora.deform(FAULTS, LARGE, components="zen", progress=fail)
    took = time.perf_counter() - began[0]
    print(f"stopped after {took:.3f} s")
    assert len(began) == 1 and took < 1.0


INTERRUPTED = """
import sys, time
import numpy as np
import tidora
faults = tidora.make_faults(np.linspace(139, 142, 400), 38, 1e4, 200, 15, 90, 4e4, 2e4, 1)
grid = tidora.grid(139, 142, 37, 40, 3 / 1999)
def tell(fraction):
    print("under way", flush=True)
try:
    {before}
    tidora.deform(faults, grid, components="zen"{progress})
except KeyboardInterrupt:
    print("interrupted", flush=True)
    small = tidora.deform(faults, tidora.grid(139, 142, 37, 40, 0.5))
    print(bool(np.isfinite(small["uz"].values).all()), flush=True)
"""


@pytest.mark.parametrize("progress, before", [(", progress=tell", ""), ("", "tell(0)")])
def test_ctrl_c_stops_the_work_within_two_seconds_and_the_next_call_is_sound(progress, before):
    environment = {**os.environ, "PYTHONPATH": str(ROOT / "python")}
    script = INTERRUPTED.format(progress=progress, before=before)
    with subprocess.Popen(
        [sys.executable, "-c", script], stdout=subprocess.PIPE, text=True, env=environment
    ) as process:
        assert process.stdout.readline() == "under way\n"
        time.sleep(0.3)
        began = time.perf_counter()
        process.send_signal(signal.SIGINT)
        rest = [line for line in process.stdout if line != "under way\n"]
        took = time.perf_counter() - began
    print(f"ended {took:.3f} s after the signal")
    assert rest == ["interrupted\n", "True\n"] and process.returncode == 0 and took < 2.0


def resident():
    """Bytes of memory that the process has."""
    return int(Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def test_memory_does_not_grow_with_calls_that_are_stopped():
    def fail(_):
        raise Stop

    def stopped(count):
        for _ in range(count):
            with pytest.raises(Stop):
                tidora.deform(FAULTS, LARGE, components="zen", progress=fail)

    stopped(5)
    before = resident()
    stopped(50)
    grown = resident() - before
    print(f"grown by {grown / 1e6:.1f} MB, a result has {3 * 4 * LARGE.size / 1e6:.0f} MB")
    assert grown < 3 * 4 * LARGE.size  # one result at most, whose pages the allocator may keep
    assert not [thread for thread in threading.enumerate() if thread.name == "tidora"]


def test_other_threads_of_python_go_on():
    counted = [0]
    done = threading.Event()

    def count():
        while not done.is_set():
            counted[0] += 1
            time.sleep(0.001)

    other = threading.Thread(target=count)
    other.start()
    before = counted[0]
    tidora.deform(FAULTS.isel(element=slice(0, 40)), LARGE, threads=1)
    during = counted[0] - before
    done.set()
    other.join()
    assert during > 20


def test_the_library_is_the_one_that_is_named_and_its_absence_is_said(tmp_path, monkeypatch):
    assert Path(tidora.library_path()).name.startswith("libtidora")
    monkeypatch.setenv("TIDORA_LIBRARY", str(tmp_path / "none.so"))
    with pytest.raises(tidora.TidoraError, match="none.so, which TIDORA_LIBRARY names, is not there"):
        tidora.library_path()
    with pytest.raises(tidora.TidoraError, match="none.so"):
        tidora.deform(FAULTS, LARGE)
    (tmp_path / "none.so").write_text("no library")
    with pytest.raises(tidora.TidoraError, match="none.so cannot be used as the library"):
        tidora.deform(FAULTS, LARGE)


def test_without_a_name_it_is_the_one_beside_the_package_then_the_one_of_the_source_folder(tmp_path, monkeypatch):
    monkeypatch.delenv("TIDORA_LIBRARY", raising=False)
    monkeypatch.setattr(binding, "__file__", str(tmp_path / "python" / "tidora" / "engine" / "binding.py"))
    monkeypatch.setattr(binding, "_SONAME", "libtidora.so.of-no-system")
    absence = "neither at .*/tidora/_lib/.* nor at .*/build/.*, and the system has no libtidora.so.of-no-system"
    with pytest.raises(tidora.TidoraError, match=absence):
        tidora.library_path()
    for folder in ("build", "python/tidora/_lib"):
        (tmp_path / folder).mkdir(parents=True)
        (tmp_path / folder / "libtidora.so").write_text("")
        assert tidora.library_path() == str(tmp_path / folder / "libtidora.so")


def test_last_of_all_it_is_the_one_that_the_loader_finds_by_its_soname(tmp_path):
    shutil.copytree(ROOT / "python" / "tidora", tmp_path / "site" / "tidora", ignore=shutil.ignore_patterns("_lib"))
    (tmp_path / "VERSION").write_text("somebody's")
    (tmp_path / "site" / "tidora.egg-info").mkdir()
    (tmp_path / "site" / "tidora.egg-info" / "PKG-INFO").write_text(f"Name: tidora\nVersion: {tidora.__version__}\n")
    (tmp_path / "system").mkdir()
    shutil.copy(tidora.library_path(), tmp_path / "system" / "libtidora.so.1")
    known = {name: value for name, value in os.environ.items() if name != "TIDORA_LIBRARY"}
    environment = {**known, "PYTHONPATH": str(tmp_path / "site"), "LD_LIBRARY_PATH": str(tmp_path / "system")}
    script = "import tidora; from tidora.engine import binding; print(binding.library()._name, tidora.__file__)"
    done = subprocess.run([sys.executable, "-c", script], env=environment, cwd=tmp_path, capture_output=True, text=True)
    expected = f"{tmp_path}/system/libtidora.so.1 {tmp_path}/site/tidora/__init__.py\n"
    assert (done.stdout, done.stderr) == (expected, "")


def test_the_command_says_which_package_and_which_library_it_is_also_when_there_is_none(monkeypatch):
    version, library = tidora.__version__, tidora.library_path()
    assert tdr("--version").stdout == f"tdr {version}\nlibrary {version}, {library}\n"
    monkeypatch.setenv("TIDORA_LIBRARY", "/no/such.so")
    said = tdr("--version").stdout
    assert said == f"tdr {version}\nlibrary not usable: /no/such.so, which TIDORA_LIBRARY names, is not there\n"


def test_a_library_of_another_version_is_refused(monkeypatch):
    monkeypatch.setattr(binding, "VERSION", "0.1")
    monkeypatch.setattr(binding, "_loaded", {})
    with pytest.raises(tidora.TidoraError, match=f"is version {tidora.__version__}, the package 0.1: build both"):
        tidora.deform(FAULTS, LARGE)
