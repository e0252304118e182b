"""Slip tables as comma-separated values, one row for each unit of a scenario."""

from __future__ import annotations

import io
import os
import warnings
from typing import BinaryIO, Iterator, NamedTuple, NoReturn, Optional

import numpy as np

from ..errors import FileError, Path, TidoraWarning
from .slip_rows import SlipTable

COLUMNS = ("scenario", "unit", "slip", "rake")
"""Every file has them, in any order."""
_MAGNITUDE = "magnitude"
"""A file may have it, the same in all rows of a scenario."""

_BLOCK = 1 << 20
"""Bytes that are read at a time, and of a line at most."""
_ROWS = 1 << 16
"""Rows that are written at a time."""

_LARGEST = 2.0**53
"""Whole numbers up to here are exact in double precision."""
_EMPTY = 1_000_000
"""Scenarios without rows at most. A number that is a slip of the pen must not fill the memory."""


class _Block(NamedTuple):
    """Rows of a piece of the file."""

    rows: np.ndarray
    """float64 (row, column)"""
    lines: np.ndarray
    """int64 (row,)"""


def read(path: Path) -> SlipTable:
    """The table of a file.

    Raises
    ------
    FileError
        If the file breaks a rule.
    """
    try:
        with open(path, "rb") as file:
            names, blocks = _read_blocks(path, file)
    except OSError as error:
        raise FileError(path, f"cannot be read: {error.strerror}") from None
    if not any(block.lines.size for block in blocks):
        raise FileError(path, "has no rows")
    scenario = np.concatenate([block.rows[:, names.index("scenario")] for block in blocks]).astype(np.int64)
    _check_largest(path, scenario, blocks)
    order = None if np.all(np.diff(scenario) >= 0) else np.argsort(scenario, kind="stable")

    def column(name: str) -> np.ndarray:
        values = np.concatenate([block.rows[:, names.index(name)] for block in blocks])
        return values if order is None else values[order]

    indptr = np.concatenate([[0], np.cumsum(np.bincount(scenario))])
    _warn_of_empty(path, indptr)
    magnitude = _one_each(path, indptr, column(_MAGNITUDE)) if _MAGNITUDE in names else np.full(indptr.size - 1, np.nan)
    return SlipTable(indptr, column("unit").astype(np.int64), column("slip"), column("rake"), magnitude)


def write(path: Path, table: SlipTable, file: io.TextIOBase) -> None:
    """Writes a table with every digit; `path` is what errors name.

    Raises
    ------
    FileError
        If a scenario has no entries, which rows cannot say.
    """
    entries = np.diff(table.indptr)
    if np.any(entries == 0):
        at = int(np.argmin(entries))
        raise FileError(path, f"scenario {at} has no entries, which rows cannot say: write it as .nc or .zarr")
    columns = [np.repeat(np.arange(table.count), entries), table.unit, table.slip, table.rake]
    known = not np.all(np.isnan(table.magnitude))
    if known:
        columns.append(np.repeat(table.magnitude, entries))
    file.write(",".join((*COLUMNS, _MAGNITUDE) if known else COLUMNS) + "\n")
    for start in range(0, table.unit.size, _ROWS):
        words = [map(repr, values[start : start + _ROWS].tolist()) for values in columns]
        file.write("\n".join(map(",".join, zip(*words))) + "\n")


def _read_blocks(path: Path, file: BinaryIO) -> tuple[list[str], list[_Block]]:
    names: Optional[list[str]] = None
    blocks = []
    for first, lines in _pieces(path, file):
        if names is None:
            at = next((at for at, line in enumerate(lines) if not _is_skipped(line)), None)
            if at is None:
                continue
            names, first, lines = _headings(path, first + at, lines[at]), first + at + 1, lines[at + 1 :]
        if lines:
            blocks.append(_quickly(names, first, lines) or _slowly(path, names, first, lines))
    if names is None:
        raise FileError(path, f"has no headings {','.join(COLUMNS)}")
    return names, blocks


def _pieces(path: Path, file: BinaryIO) -> Iterator[tuple[int, list[str]]]:
    """Whole lines without their ends, some at a time, with the number of the first."""
    first, rest = 1, b""
    while data := file.read(_BLOCK):
        if first == 1 and not rest:
            data = data.removeprefix(b"\xef\xbb\xbf")
        if b"\0" in data:
            raise FileError(path, "is no text: it has a byte of value 0")
        whole, end, rest = (rest + data).rpartition(b"\n")
        if len(rest) > _BLOCK:
            raise FileError(path, f"a line has at most {_BLOCK} characters", first + whole.count(b"\n") + len(end))
        if end:
            lines = whole.decode("latin-1").replace("\r", "").split("\n")
            yield first, lines
            first += len(lines)
    if rest:
        yield first, [rest.decode("latin-1").replace("\r", "")]


def _is_skipped(line: str) -> bool:
    return not line.strip() or line.startswith("#")


def _headings(path: Path, line: int, text: str) -> list[str]:
    names = [word.strip().strip('"').lower() for word in text.split(",")]
    for name in COLUMNS:
        if names.count(name) != 1:
            raise FileError(path, f"the headings are {','.join(COLUMNS)}, not {text.strip()[:80]!r}", line)
    others = [name for name in names if name not in COLUMNS]
    if others not in ([], [_MAGNITUDE]):
        wrong = next((name for name in others if name != _MAGNITUDE), _MAGNITUDE)
        raise FileError(path, f"{wrong!r} is no heading of a slip table, or stands twice", line)
    return names


def _quickly(names: list[str], first: int, lines: list[str]) -> Optional[_Block]:
    """Rows of plain numbers without anything else between them; None when there is anything to be looked at."""
    try:
        rows = np.loadtxt(lines, np.float64, comments=None, delimiter=",", ndmin=2) if lines[0] else np.zeros((0, 0))
    except ValueError:
        return None
    if rows.shape != (len(lines), len(names)):
        return None
    scenario, unit = rows[:, names.index("scenario")], rows[:, names.index("unit")]
    if not np.all((scenario >= 0) & _is_whole(scenario) & _is_whole(unit)):
        return None
    return _Block(rows, np.arange(first, first + len(lines)))


def _is_whole(values: np.ndarray) -> np.ndarray:
    with np.errstate(invalid="ignore"):
        found: np.ndarray = (np.abs(values) <= _LARGEST) & (values == np.floor(values))
    return found


def _slowly(path: Path, names: list[str], first: int, lines: list[str]) -> _Block:
    """The same with empty lines, comments and empty words, or the error of the first line that has one."""
    rows, numbers = [], []
    for number, line in enumerate(lines, first):
        if _is_skipped(line):
            continue
        words = line.split(",")
        if len(words) != len(names):
            raise FileError(path, f"a row has the {len(names)} columns {','.join(names)}, not {len(words)}", number)
        rows.append([_number(path, number, name, word.strip()) for name, word in zip(names, words)])
        numbers.append(number)
    return _Block(np.array(rows, np.float64).reshape(len(rows), len(names)), np.array(numbers, np.int64))


def _number(path: Path, line: int, name: str, word: str) -> float:
    """A number. Where it may be missing, an empty word is not a number."""

    def fail(what: str) -> NoReturn:
        raise FileError(path, f"column {name} is {what}, not '{word[:40]}'", line)

    if name in ("scenario", "unit"):
        try:
            value = float("" if "_" in word else word)
        except ValueError:
            fail("a whole number")
        if not (abs(value) <= _LARGEST and value == int(value)):
            fail("a whole number")
        if name == "scenario" and value < 0:
            fail("a whole number from 0 on")
        return value
    try:
        return float("" if "_" in word else word or "nan")
    except ValueError:
        fail("a number")


def _check_largest(path: Path, scenario: np.ndarray, blocks: list[_Block]) -> None:
    at = int(np.argmax(scenario))
    if scenario[at] >= scenario.size + _EMPTY:
        line = int(np.concatenate([block.lines for block in blocks])[at])
        said = f"scenarios count from 0 on: {scenario[at]} leaves too many of them without rows, of which there are "
        raise FileError(path, f"{said}{scenario.size}", line)


def _warn_of_empty(path: Path, indptr: np.ndarray) -> None:
    empty = np.flatnonzero(np.diff(indptr) == 0)
    if empty.size:
        said = f"{empty.size} scenarios have no rows, the first of them {empty[0]}: they have no slip"
        warnings.warn(TidoraWarning(f"{os.fspath(path)}: {said}"), stacklevel=4)


def _one_each(path: Path, indptr: np.ndarray, magnitude: np.ndarray) -> np.ndarray:
    """float64 (scenario,) from the magnitudes of the entries."""
    entries = np.diff(indptr)
    found = np.full(entries.size, np.nan)
    found[entries > 0] = magnitude[indptr[:-1][entries > 0]]
    same = np.repeat(found, entries)
    wrong = ~((same == magnitude) | (np.isnan(same) & np.isnan(magnitude)))
    if np.any(wrong):
        at = int(np.searchsorted(indptr, np.argmax(wrong), side="right")) - 1
        raise FileError(path, f"scenario {at} has several magnitudes")
    return found
