"""What the tests share: files made by the rules of the formats, without the package, and the tools of others."""

from __future__ import annotations

import io
import os
import shutil
import struct
import subprocess
import sys
from contextlib import redirect_stderr, redirect_stdout
from pathlib import Path

import numpy as np
import pytest

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "python"))

DATA = ROOT / "examples" / "tohoku2011" / "data"
DX = np.float32(1.0 / 12.0)


def pytest_configure(config):
    """A guess that a test does not expect is a failure."""
    config.addinivalue_line("filterwarnings", "error::tidora.errors.TidoraWarning")


def binary_grid(path, values, org=(138.0, 33.0), dx=DX, tail=b""):
    """Writes a binary grid by its byte table; values (ny, nx), southern row first."""
    values = np.asarray(values, np.float32)
    header = struct.pack("=ddiif", *org, values.shape[1], values.shape[0], float(dx))
    Path(path).write_bytes(header + values.tobytes() + tail)
    return Path(path)


def series(folder, layers, starts, lengths, name="VRT_a", org=(138.0, 33.0), dx=DX, listed_in="out"):
    """Writes snapshots and their list, as a run with the output directory `listed_in` would."""
    folder = Path(folder)
    lines = []
    for values, start, length in zip(layers, starts, lengths):
        file = f"{name}_{int(start):04d}s.bin"
        binary_grid(folder / file, values, org, dx)
        lines.append("%-16f%-16f%s\n" % (start, length, f"{listed_in}/{file}"))
    (folder / f"{name}.txt").write_text("".join(lines))
    return folder / f"{name}.txt"


def smooth(ny, nx, seed=1):
    """float32 (ny, nx): a smooth field with noise, so that every bit of a value counts."""
    random = np.random.default_rng(seed)
    y, x = np.mgrid[0:ny, 0:nx]
    return (3 * np.sin(0.3 * x + seed) * np.cos(0.2 * y) + 0.01 * random.standard_normal((ny, nx))).astype(np.float32)


def tool(*command, **options):
    """Standard output of a program of somebody else, which has to be there and to succeed."""
    if shutil.which(command[0]) is None:
        pytest.fail(f"{command[0]} is missing: scripts/setup.sh --tests installs it")
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    assert result.returncode == 0, result.stderr
    return result.stdout


def tdr(*arguments, status=0, cwd=None):
    """Runs the command and holds its exit status; has what it prints as `stdout` and `stderr`."""
    from tidora.commands.main import main

    out, err = io.StringIO(), io.StringIO()
    before = os.getcwd()
    try:
        os.chdir(cwd or before)
        with redirect_stdout(out), redirect_stderr(err):
            found = main([str(word) for word in arguments])
    finally:
        os.chdir(before)
    assert found == status, out.getvalue() + err.getvalue()
    return subprocess.CompletedProcess(arguments, found, out.getvalue(), err.getvalue())


@pytest.fixture(scope="session")
def program():
    """The program itself."""
    path = Path(os.environ.get("TIDORA_PROGRAM", ROOT / "build" / "Tidora"))
    if not os.access(path, os.X_OK):
        pytest.fail(f"{path} is missing: build it, or name it with TIDORA_PROGRAM")
    return path.resolve()


@pytest.fixture(scope="session")
def tohoku(tmp_path_factory, program):
    """Folder of the geographic example after a run."""
    folder = tmp_path_factory.mktemp("tohoku2011")
    shutil.copytree(DATA, folder / "data")
    (folder / "geo").mkdir()
    shutil.copy(DATA.parent / "geo" / "TdrConf.txt", folder / "geo")
    subprocess.run([str(program), "TdrConf.txt"], cwd=folder / "geo", check=True, capture_output=True)
    return folder / "geo"
