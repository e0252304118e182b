"""The configuration file of a run, as far as its results are to be found and understood."""

from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Iterator

from .. import text
from ..errors import FileError, Path
from ..fields.kinds import GEOGRAPHIC, PLANE


@dataclass(frozen=True)
class RegionEntry:
    """One region of a configuration."""

    number: int
    name: str
    parent: int
    coord: int
    topography: str

    @property
    def kind(self) -> str:
        """`PLANE` or `GEOGRAPHIC`."""
        return GEOGRAPHIC if self.coord == 1 else PLANE


@dataclass(frozen=True)
class Configuration:
    """Values of a configuration; paths are relative to the folder of the run."""

    title: str
    output: str
    slope_term: bool
    kajiura_filter: bool
    fault_coord: int
    fault_file: str
    regions: tuple[RegionEntry, ...]
    """In the order in which they run: by number, the first of each."""

    @property
    def fault_kind(self) -> str:
        """`PLANE` or `GEOGRAPHIC`."""
        return GEOGRAPHIC if self.fault_coord == 1 else PLANE


def _integer(word: str) -> int:
    match = re.match(r"\s*[+-]?\d+", word)
    return int(match.group()) if match else 0


class _Pairs:
    """Caption and value lines."""

    def __init__(self, path: Path) -> None:
        self._path = path
        self._lines = text.bounded_lines(path, text.DATA_LINE)

    def value_line(self) -> text.Line:
        """The line behind the next caption."""
        lines: Iterator[text.Line] = self._lines
        next(lines, None)
        line = next(lines, None)
        if line is None:
            raise FileError(self._path, "the file ends before the last value")
        return line

    def block(self, count: int) -> list[str]:
        """First tokens of the values of `count` pairs; a value line with ``#`` in front gives none."""
        values, number = [], 0
        for _ in range(count):
            line = self.value_line()
            number = line.number
            if line.is_comment:
                continue
            words = line.text.split()
            if not words:
                raise FileError(self._path, "a value line is empty", number)
            values.append(words[0])
        if len(values) < count:
            raise FileError(
                self._path, f"{count} values are needed, {len(values)} are there: a value line starts with '#'", number
            )
        return values


def read_configuration(path: Path) -> Configuration:
    """Reads a configuration file as the program does.

    Raises
    ------
    FileError
        If it ends too early, or a value line is empty or starts with ``#``.
    """
    pairs = _Pairs(path)
    values = pairs.block(10)
    count = _integer(pairs.value_line().text)
    regions: dict[int, RegionEntry] = {}
    for _ in range(count):
        number, name, parent, coord, topography = pairs.block(5)
        regions.setdefault(
            _integer(number), RegionEntry(_integer(number), name, _integer(parent), _integer(coord), topography)
        )
    return Configuration(
        values[0],
        values[1],
        _integer(values[3]) == 1,
        _integer(values[4]) == 1,
        _integer(values[5]),
        values[6],
        tuple(regions[number] for number in sorted(regions)),
    )
