"""The program: where it is, and what its standard output tells of a run."""

from __future__ import annotations

import os
import re
import shutil
from pathlib import Path as FilePath
from typing import Optional

from ..errors import Path, TidoraError

_ELEMENT = re.compile(r"(\d+)/(\d+) Completed ")
_WRITTEN = re.compile(r">+ Write File : (.*)")


def find_program(stated: Optional[Path] = None) -> str:
    """The program: `stated`, the variable ``TIDORA_PROGRAM``, ``Tidora`` of the search path, or ``build/Tidora``.

    Raises
    ------
    TidoraError
        If there is none.
    """
    if stated is None:
        stated = os.environ.get("TIDORA_PROGRAM") or None
    if stated is not None:
        found = shutil.which(os.fspath(stated))
        if found is None:
            raise TidoraError(f"{os.fspath(stated)} is no program")
        return os.path.abspath(found)
    built = FilePath(__file__).resolve().parents[3] / "build" / "Tidora"
    found = shutil.which("Tidora") or (str(built) if os.access(built, os.X_OK) else None)
    if found is None:
        raise TidoraError(f"the program Tidora is neither in the search path nor at {built}; --program names it")
    return found


class Display:
    """What a run has reached, told from its standard output line by line."""

    def __init__(self, region_names: list[str]) -> None:
        self.region_names = region_names
        self.regions_begun = 0
        self.element = 0
        self.element_count = 0
        self.intervals = 0
        self.phase = ""
        self.files: list[str] = []

    def take(self, line: str) -> bool:
        """Takes a line of the program. True when something has changed that is shown."""
        if line.startswith("order       :"):
            self.intervals += 1
        elif line.startswith(">>>>> Fault Deform : "):
            self.regions_begun += 1
            self.element = 0
            self.phase = "deformation"
        elif line.startswith(">>>>> Kajiura Filter Calc"):
            self.phase = "filter"
        elif element := _ELEMENT.match(line):
            self.element, self.element_count = int(element.group(1)), int(element.group(2))
        elif written := _WRITTEN.match(line):
            self.files.append(written.group(1))
            self.phase = "writing"
        else:
            return False
        return True

    @property
    def region(self) -> str:
        """Number and name of the region that is computed."""
        if not self.regions_begun:
            return "reading"
        name = self.region_names[self.regions_begun - 1] if self.regions_begun <= len(self.region_names) else ""
        count = f" of {len(self.region_names)}" if self.region_names else ""
        return f"region {self.regions_begun}{count} {name}".rstrip()
