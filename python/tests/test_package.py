"""The package as somebody installs it: a source package, a wheel made of that, an environment of its own, no source."""

import os
import shutil
import subprocess
import sys
import tarfile
import zipfile
from email.parser import Parser
from pathlib import Path

import pytest
from conftest import ROOT

import tidora

CHILE = ROOT / "examples" / "chile1995" / "data"
NEEDED = ("src", "include", "cmake", "python/tidora", "docs", "examples/c", "examples/fortran")
NOT_SHIPPED = shutil.ignore_patterns("build*", ".git", "out", "__pycache__", "tests", "bench", "*.egg-info", "dist")

DEFORM = """
import numpy as np, tidora
faults = tidora.make_faults(140, 38, 2e4, 200, 15, 90, 5e4, 3e4, 4)
print(float(tidora.deform(faults, tidora.grid(139, 142, 37, 40, 0.25)).uz.max()))
"""


def called(*command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    assert result.returncode == 0, result.stdout + result.stderr
    return result.stdout


def clean_environment(**more):
    """Without anything that leads back to the source, and without anybody's settings of pip."""
    known = {name: value for name, value in os.environ.items() if not name.startswith(("PIP_", "PYTHON", "TIDORA_"))}
    return {**known, "PIP_CONFIG_FILE": os.devnull, "PIP_NO_INDEX": "1", **more}


class Package:
    """A source package and a wheel, and an environment with the wheel."""

    def __init__(self, folder):
        library = os.environ.get("TIDORA_LIBRARY") or str(ROOT / "build" / "libtidora.so")
        tree, made = folder / "tree", folder / "made"
        shutil.copytree(ROOT, tree, ignore=NOT_SHIPPED)
        script = f"from setuptools import build_meta as b; b.build_sdist({str(made)!r})"
        called(sys.executable, "-c", script, cwd=tree, env=clean_environment(TIDORA_LIBRARY=library))
        shutil.rmtree(tree)
        (self.source,) = made.glob("*.tar.gz")
        command = [sys.executable, "-m", "pip", "wheel", "--no-build-isolation", "--no-deps", "-w", made, self.source]
        called(*command, env=clean_environment(TIDORA_LIBRARY=library, TMPDIR=str(folder)))
        (self.wheel,) = made.glob("*.whl")
        self.place = folder / "environment"
        called(sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", self.place)
        # Without --no-deps: what the package asks for has to be what Debian has.
        command = [sys.executable, "-m", "pip", "--python", self.place / "bin" / "python", "install", self.wheel]
        called(*command, env=clean_environment())

    def run(self, command, *arguments, cwd):
        return called(self.place / "bin" / command, *arguments, cwd=cwd, env=clean_environment())


@pytest.fixture(scope="module")
def package(tmp_path_factory):
    for module in ("pip", "setuptools", "wheel"):
        if subprocess.run([sys.executable, "-c", f"import {module}"], capture_output=True).returncode:
            pytest.fail(f"{module} is missing: scripts/setup.sh --tests installs it")
    return Package(tmp_path_factory.mktemp("package"))


def test_the_source_package_has_all_that_the_library_and_the_program_are_made_of(package):
    with tarfile.open(package.source) as archive:
        names = {str(Path(*Path(name).parts[1:])) for name in archive.getnames()}
    needed = [path for folder in NEEDED for path in (ROOT / folder).rglob("*") if path.is_file()]
    needed = {
        str(path.relative_to(ROOT)) for path in needed if "__pycache__" not in path.parts and "out" not in path.parts
    }
    needed -= {name for name in needed if name.startswith("python/tidora/_lib/")}
    assert len(needed) > 300
    assert (needed | {"CMakeLists.txt", "VERSION", "setup.py", "pyproject.toml"}) - names == set()


def test_the_wheel_serves_every_python_of_this_kind_of_machine(package):
    machine = os.uname().machine
    assert package.wheel.name == f"tidora-{tidora.__version__}-py3-none-linux_{machine}.whl"
    with zipfile.ZipFile(package.wheel) as archive:
        names = archive.namelist()
        (said,) = [name for name in names if name.endswith("METADATA")]
        metadata = Parser().parsestr(archive.read(said).decode())
    assert {"tidora/py.typed", "tidora/_lib/libtidora.so", "tidora/engine/binding.py"} <= set(names)
    assert any(name.endswith("data/share/bash-completion/completions/tdr") for name in names)
    assert not [name for name in names if "test" in name]
    assert metadata["Version"] == tidora.__version__ and metadata["License"].startswith("Copyright")
    assert "# tidora for Python" in metadata.get_payload()


def test_package_and_library_stand_in_the_environment_and_are_of_one_version(package, tmp_path):
    library = package.run("python", "-c", "import tidora; print(tidora.library_path())", cwd=tmp_path).strip()
    assert Path(library).is_relative_to(package.place) and Path(library).parts[-3:] == (
        "tidora",
        "_lib",
        "libtidora.so",
    )
    version = tidora.__version__
    assert package.run("tdr", "--version", cwd=tmp_path) == f"tdr {version}\nlibrary {version}, {library}\n"
    assert (package.place / "share" / "bash-completion" / "completions" / "tdr").is_file()


def test_a_source_is_made_far_from_the_project(package, tmp_path):
    assert float(package.run("python", "-c", DEFORM, cwd=tmp_path)) > 0.5
    arguments = [CHILE / "chile1995_neic.fsp", CHILE / "chile_etopo5.nc", "--region", "-74/-68/-27/-20"]
    assert "Mw 8.16" in package.run("tdr", "source", *arguments, "--kajiura", "-o", "chile.nc", cwd=tmp_path)
    assert (tmp_path / "chile.nc").stat().st_size > 10000


def test_scenarios_are_computed_far_from_the_project(package, tmp_path):
    arguments = [CHILE / "chile1995_neic.fsp", CHILE / "chile_etopo5.nc", "--region", "-72/-70/-26/-24"]
    package.run("tdr", "units", *arguments, "-o", "units.zarr", "--part", "1/1", cwd=tmp_path)
    (tmp_path / "slip.csv").write_text("scenario,unit,slip,rake\n0,0,2.0,90\n1,3,1.0,80\n1,4,1.5,100\n")
    done = package.run(
        "tdr", "ensemble", "run", "slip.csv", "units.zarr", "-o", "run.zarr", "--workers", "1", cwd=tmp_path
    )
    assert "2 done, 0 failed, 0 missing" in done
