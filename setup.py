"""Puts the library into the Python package; everything else about the package stands in pyproject.toml.

TIDORA_LIBRARY names a library that is taken as it is. Without it CMake builds one from the source, with the options of
CMAKE_ARGS. TIDORA_LIBRARY=none makes a package without a library, which uses that of the system, for distributions that
have both.
"""

from __future__ import annotations

import os
import shlex
import shutil
import subprocess
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # before setuptools 70.1
    from wheel.bdist_wheel import bdist_wheel

TREE = Path(__file__).resolve().parent
READY = os.environ.get("TIDORA_LIBRARY", "")


class BuildLibrary(build_ext):
    """The library as a file of the package. It is loaded by its path and knows nothing of Python."""

    def run(self) -> None:
        # An editable package is the source folder, which has build/libtidora.so.
        if not self.inplace and not getattr(self, "editable_mode", False):
            super().run()

    def get_ext_filename(self, fullname: str) -> str:
        return os.path.join(*fullname.split(".")) + ".so"

    def build_extension(self, ext: Extension) -> None:
        if READY and not os.path.isfile(READY):
            raise SystemExit(f"{READY}, which TIDORA_LIBRARY names, is not there")
        target = Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(READY or self.built(), target)

    def built(self) -> Path:
        folder = TREE / "build-library"
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DTIDORA_BUILD_TESTS=OFF", "-DTIDORA_INSTALL=OFF"]
        given = shlex.split(os.environ.get("CMAKE_ARGS", ""))
        subprocess.run(["cmake", "-S", str(TREE), "-B", str(folder), *options, *given], check=True)
        jobs = str(self.parallel or os.cpu_count() or 1)
        subprocess.run(["cmake", "--build", str(folder), "--target", "tidora_shared", "--parallel", jobs], check=True)
        return folder / "libtidora.so"


class Wheel(bdist_wheel):
    """One wheel for every Python, of the system and processor that it was built on."""

    def get_tag(self) -> tuple[str, str, str]:
        platform = super().get_tag()[2]
        return "py3", "none", platform


setup(
    ext_modules=[] if READY == "none" else [Extension("tidora._lib.libtidora", sources=[])],
    cmdclass={"build_ext": BuildLibrary, "bdist_wheel": Wheel},
)
