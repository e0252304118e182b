"""A disk that is full, a folder that is not there: an error, and no file under the name."""

import os
import subprocess
import sys

import pytest
from conftest import ROOT, binary_grid, smooth, tdr

FORMATS = ["nc", "tt3", "tif", "asc", "bin", "txt"]

# As if the disk had room for 50 000 bytes more.
LIMITED = """
import resource, signal, sys
signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
resource.setrlimit(resource.RLIMIT_FSIZE, (50000, 50000))
from tidora.commands.main import command
sys.argv[0] = "tdr"
command()
"""


@pytest.mark.parametrize("ending", FORMATS)
def test_a_file_that_finds_no_room_is_an_error_and_leaves_nothing(tmp_path, ending):
    grid = binary_grid(tmp_path / "a.bin", smooth(300, 400), (0.0, 0.0), 100.0)
    (tmp_path / "out").mkdir()
    words = ["convert", grid, tmp_path / "out" / f"a.{ending}", "--coord", "plane", "--crs", "EPSG:32654"]
    result = subprocess.run([sys.executable, "-c", LIMITED, *map(str, words)], capture_output=True, text=True,
                            cwd=ROOT / "python", env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1"})  # fmt: skip
    assert result.returncode == 1
    assert f"a.{ending}: cannot be written" in result.stderr and "Traceback" not in result.stderr
    assert list((tmp_path / "out").iterdir()) == []


@pytest.mark.parametrize("ending", FORMATS)
def test_a_folder_that_is_not_there_is_named(tmp_path, ending):
    grid = binary_grid(tmp_path / "a.bin", smooth(3, 4), (0.0, 0.0), 100.0)
    words = ["convert", grid, tmp_path / "no" / f"a.{ending}", "--coord", "plane", "--crs", "EPSG:32654"]
    assert f"no/a.{ending}: cannot be written" in tdr(*words, status=1).stderr


def test_a_folder_in_place_of_the_result_is_refused(tmp_path):
    grid = binary_grid(tmp_path / "a.bin", smooth(3, 4))
    (tmp_path / "b.bin").mkdir()
    assert "is a folder" in tdr("convert", grid, tmp_path / "b.bin", "--coord", "plane", status=1).stderr


def test_a_fault_file_is_no_field(tmp_path):
    (tmp_path / "f.txt").write_text("36 141 6000 2000 190 15 85 40000 20000 2\n")
    assert "is a fault file" in tdr("convert", tmp_path / "f.txt", tmp_path / "f.nc", status=1).stderr
