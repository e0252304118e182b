"""What a run of the program leaves behind, and how two such outcomes differ."""

import os
import re
import shutil
import subprocess
from dataclasses import dataclass, field
from pathlib import Path
from typing import Dict, List, Optional

import numpy as np
from case_files import Run

_TIME_LIMIT = 900  # seconds; only ends what waits for ever
_CALC_TIME = re.compile(rb"(Calc Time : )[0-9.e+-]+(\[sec\])")
_NUMBER = re.compile(rb"[-+]?(?:\d+\.?\d*(?:e[-+]?\d+)?|inf|nan)")
# Lines of the program whose numbers are largest values of a grid.
_VALUE_LINE = re.compile(rb"maxval = |\d+/\d+ Completed  Max Value Each ELEM\. : ")
_HEADER_SIZE = 28  # of a binary grid: two doubles, two 32-bit integers, one float
_PRINTED_STEP = 1.001e-5  # six digits are printed: one unit of the last one, of a number that starts with 1


@dataclass
class Outcome:
    """Exit status, texts with processor times masked, and every file and folder that is there afterwards."""

    status: str
    texts: Dict[str, bytes]
    entries: Dict[str, Optional[bytes]]

    @property
    def is_geographic(self) -> bool:
        return b"Co-ordinates Translate" in self.texts["stdout"]


@dataclass
class Difference:
    """Sums over runs of what was compared and of what differs."""

    runs: int = 0
    files: int = 0
    lines: int = 0
    size: int = 0
    differing_runs: int = 0
    differing_files: int = 0
    differing_lines: int = 0
    differing_bytes: int = 0
    values: int = 0
    differing_values: int = 0
    largest: float = 0.0  # relative to the largest value of the file
    largest_at: str = ""
    moved_lines: int = 0  # lines whose printed largest value differs in its last digit
    details: List[str] = field(default_factory=list)

    def add(self, other: "Difference") -> None:
        if other.largest > self.largest:
            self.largest, self.largest_at = other.largest, other.largest_at
        self.details += other.details
        for name in ("runs", "files", "lines", "size", "values", "moved_lines"):
            setattr(self, name, getattr(self, name) + getattr(other, name))
        for name in ("runs", "files", "lines", "bytes", "values"):
            name = "differing_" + name
            setattr(self, name, getattr(self, name) + getattr(other, name))


def _lay_out(run: Run, folder: Path) -> None:
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name in run.directories:
        (folder / name).mkdir(parents=True, exist_ok=True)
    for name, content in run.files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)


def run_program(program: Path, run: Run, number_of_set: int, folder: Path) -> Outcome:
    """Lays the run out in a folder of its own and runs the program in it."""
    _lay_out(run, folder)
    arguments = [os.fsencode(program)] + [argument.encode("latin-1") for argument in run.arguments]
    environment = dict(os.environ, TIDORA_COMPARE_SET=str(number_of_set))
    result = subprocess.run(
        arguments,
        cwd=folder / run.folder,
        env=environment,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        timeout=_TIME_LIMIT,
    )
    entries: Dict[str, Optional[bytes]] = {}
    for path in sorted(folder.rglob("*")):
        entries[path.relative_to(folder).as_posix()] = None if path.is_dir() else path.read_bytes()
    texts = {"stdout": _CALC_TIME.sub(rb"\1*\2", result.stdout), "stderr": result.stderr}
    return Outcome(str(result.returncode), texts, entries)


def _bytes_that_differ(old: bytes, new: bytes) -> int:
    common = min(len(old), len(new))
    here = np.frombuffer(old, np.uint8, common)
    there = np.frombuffer(new, np.uint8, common)
    return int(np.count_nonzero(here != there)) + max(len(old), len(new)) - common


def _is_moved(old: bytes, new: bytes) -> bool:
    """True when the lines differ only by the last digits of a largest value."""
    if not _VALUE_LINE.match(old) or _NUMBER.sub(b"*", old) != _NUMBER.sub(b"*", new):
        return False
    pairs = zip(_NUMBER.findall(old), _NUMBER.findall(new))
    return all(a == b or abs(float(a) - float(b)) <= _PRINTED_STEP * abs(float(a)) for a, b in pairs)


def _compare_text(name: str, old: bytes, new: bytes, may_move: bool, found: Difference) -> None:
    before, after = old.split(b"\n"), new.split(b"\n")
    found.lines += max(len(before), len(after)) - 1
    found.size += max(len(old), len(new))
    if old == new:
        return
    hard = abs(len(before) - len(after))
    for number, (a, b) in enumerate(zip(before, after), 1):
        if a != b and may_move and _is_moved(a, b):
            found.moved_lines += 1
        elif a != b:
            hard += 1
            if hard == 1:
                found.details.append("%s, line %d\n    - %r\n    + %r" % (name, number, a[:120], b[:120]))
    if hard and len(before) != len(after):
        found.details.append("%s: %d lines, now %d" % (name, len(before) - 1, len(after) - 1))
    found.differing_lines += hard
    found.differing_bytes += _bytes_that_differ(old, new) if hard else 0


def _compare_values(name: str, old: bytes, new: bytes, found: Difference) -> bool:
    """Counts values of two grids of one size that differ; False when it is not the values alone."""
    if len(old) != len(new) or old[:_HEADER_SIZE] != new[:_HEADER_SIZE]:
        return False
    before, after = (np.frombuffer(content, "<f4", offset=_HEADER_SIZE) for content in (old, new))
    finite = np.isfinite(before)
    if not np.array_equal(before[~finite], after[~finite], equal_nan=True) or not np.isfinite(after[finite]).all():
        return False
    differing = int(np.count_nonzero(before.view("<u4") != after.view("<u4")))
    found.differing_values += differing
    if differing:
        here, there = before[finite].astype(float), after[finite].astype(float)
        scale = float(np.abs(here).max())
        largest = float(np.abs(there - here).max()) / scale if scale > 0.0 else float("inf")
        if largest > found.largest:
            found.largest, found.largest_at = largest, name
    return True


def _compare_file(name: str, old: bytes, new: bytes, may_move: bool, found: Difference) -> None:
    found.files += 1
    found.size += max(len(old), len(new))
    is_grid = may_move and name.endswith(".bin") and len(old) >= _HEADER_SIZE
    if is_grid:
        found.values += (len(old) - _HEADER_SIZE) // 4
    if old == new or (is_grid and _compare_values(name, old, new, found)):
        return
    found.differing_files += 1
    found.differing_bytes += _bytes_that_differ(old, new)
    found.details.append("%s: %d of %d bytes differ" % (name, _bytes_that_differ(old, new), len(new)))


def compare(old: Outcome, new: Outcome, may_move: bool = True) -> Difference:
    """How the new outcome differs. In geographic runs, values of grids and largest values printed are counted only, if
    they may move."""
    found = Difference(runs=1)
    may_move = may_move and old.is_geographic and new.is_geographic
    if old.status != new.status:
        found.details.append("exit status %s, now %s" % (old.status, new.status))
    for name, text in old.texts.items():
        _compare_text(name, text, new.texts[name], may_move, found)
    for name in sorted(set(old.entries) | set(new.entries)):
        before, after = old.entries.get(name), new.entries.get(name)
        if (name in old.entries) != (name in new.entries) or (before is None) != (after is None):
            found.differing_files += 1
            found.differing_bytes += max(len(before or b""), len(after or b""))
            found.details.append("%s: only in one outcome" % name)
        elif before is not None and after is not None:
            _compare_file(name, before, after, may_move, found)
    found.differing_runs = int(bool(found.details))
    return found
