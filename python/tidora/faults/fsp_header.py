"""The comments of an ``.fsp`` file, which say what its rows are."""

from __future__ import annotations

import re
from dataclasses import dataclass, field
from typing import Optional, Sequence

from .model_text import Line, Reading, Rows, to_number

_TAGGED = re.compile(r"^\s*%\s*(Loc|Size|Mech|Rupt|Invs)\s*:")
_SEGMENT = re.compile(r"^\s*%\s*SEGMENT\s*#\s*\d+", re.IGNORECASE)
_COLUMNS = re.compile(r"^\s*%\s*LAT\s+LON\b(?!\s*=)")
_VALUE = re.compile(r"([A-Za-z]\w*)\s*=\s*([-+.\w]+)")
_POINT = re.compile(r"Coordinates are given for\s+(.*?)\s+of each", re.IGNORECASE)
_OF_SEGMENT = ("STRIKE", "DIP", "LEN", "WID", "Dx", "Dz", "Z2top", "Nsbfs")


def known(value: Optional[float], otherwise: Optional[float] = None) -> Optional[float]:
    """A value, or `otherwise` where it is missing or a mark: 999 is unknown, -99 variable."""
    return otherwise if value is None or value in (999, -99) else value


@dataclass
class Segment:
    """A plane."""

    line: int
    values: dict[str, float] = field(default_factory=dict)
    rows: int = 0


class Header:
    """What the comments have said so far, and the rows below them."""

    def __init__(self, reading: Reading, columns: Sequence[str]) -> None:
        self.reading = reading
        self.usual = tuple(columns)
        self.tagged: dict[str, dict[str, float]] = {}
        self.lines: dict[str, int] = {}
        self.segments = [Segment(1)]
        self.names: Optional[tuple[str, ...]] = None
        self.columns_line: Optional[int] = None
        self.rows: Optional[Rows] = None
        self.reference: Optional[str] = None
        self.moment_unit = ""

    @property
    def agency(self) -> str:
        """SRCMOD gives the middle of upper edges, NEIC centres."""
        return "SRCMOD" if self.reference == "top centre" else "NEIC"

    def value(self, tag: str, name: str) -> Optional[float]:
        """A number of the lines of a tag."""
        return self.tagged.get(tag, {}).get(name)

    def line(self, tag: str) -> Optional[int]:
        """The first line of a tag."""
        return self.lines.get(tag)

    def stated_moment(self) -> Optional[float]:
        """N m"""
        moment = known(self.value("Size", "Mo"))
        return None if moment is None or moment <= 0 else moment * (1e-7 if self.moment_unit.startswith("dy") else 1.0)

    def segments_with_rows(self) -> list[Segment]:
        """The planes; a file without the word SEGMENT is one."""
        for segment in self.segments[1:]:
            if not segment.rows:
                self.reading.fail("this segment has no rows", segment.line)
        return [segment for segment in self.segments if segment.rows]

    def take(self, line: Line) -> None:
        """A comment."""
        if tag := _TAGGED.match(line.text):
            self._take_tagged(tag.group(1), line)
        elif _SEGMENT.match(line.text):
            self.segments.append(Segment(line.number, self._values(line)))
        elif _COLUMNS.match(line.text):
            self._take_columns(line)
        elif point := _POINT.search(line.text):
            self.reference = "top centre" if "top" in point.group(1).lower() else "centroid"
        elif "hypocenter" not in line.text.lower():
            segment = self.segments[-1]
            found = {name: value for name, value in self._values(line).items() if name in _OF_SEGMENT}
            if found and not segment.values and segment is self.segments[0]:
                segment.line = line.number
            segment.values.update(found)

    def row(self, line: int, words: Sequence[str]) -> None:
        """A row of numbers."""
        if self.rows is None:
            if self.names is None:
                if not 6 <= len(words) <= len(self.usual):
                    self.reading.fail(f"a row has at least six columns, not {len(words)}", line)
                self.names = self.usual[: len(words)]
                said = f"no line names the columns: taken as {' '.join(self.names)}"
                self.reading.assume(said, line)
            self.rows = Rows(self.reading, self.names)
        self.rows.add(line, words)
        self.segments[-1].rows += 1

    def _take_tagged(self, tag: str, line: Line) -> None:
        self.lines.setdefault(tag, line.number)
        values = self.tagged.setdefault(tag, {})
        for name, value in self._values(line).items():
            values.setdefault(name, value)
        if unit := re.search(r"Mo\s*=\s*\S+\s*([A-Za-z]+)", line.text):
            self.moment_unit = unit.group(1).lower()

    def _take_columns(self, line: Line) -> None:
        names = tuple(word.split("==")[0].upper() for word in line.text.replace("%", " ").split())
        if len(set(names)) != len(names):
            self.reading.fail("a column is named twice", line.number)
        if len(names) < 6:
            self.reading.fail(f"a row has at least six columns, not {' '.join(names)}", line.number)
        if self.rows is not None and names != self.rows.names:
            self.reading.fail(f"the columns are {' '.join(self.rows.names)} in the first plane", line.number)
        self.names, self.columns_line = names, line.number

    def _values(self, line: Line) -> dict[str, float]:
        found = {}
        for name, word in _VALUE.findall(line.text):
            try:
                found[name] = to_number(word)
            except ValueError:
                if name in ("Dx", "Dz", "STRIKE", "STRK", "DIP", "RAKE", "Nx", "Nz", "Nsbfs"):
                    self.reading.fail(f"{name} is a number, not '{word[:40]}'", line.number)
        return found
