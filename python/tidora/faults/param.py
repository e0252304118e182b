"""``.param`` files of NEIC and of UCSB."""

from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Optional

import numpy as np
import pyproj
import xarray as xr

from .assembling import Model, assembled
from .layout import of_planes
from .model_text import Line, Reading, Rows, to_number

_NUMBER = r"([-+]?[\d.]+(?:[eEdD][-+]?\d+)?)"
_TOTAL = re.compile(r"Total\s+number\s+of\s+fault_segments\s*=\s*(\d+)", re.IGNORECASE)
_SEGMENT = re.compile(
    rf"Fault_segment\s*=\s*\d+\s+nx\s*\(.*?\)\s*=\s*(\d+)\s+Dx\s*=\s*{_NUMBER}\s*km\s+ny\s*\(.*?\)\s*=\s*(\d+)"
    rf"\s+Dy\s*=\s*{_NUMBER}\s*km",
    re.IGNORECASE,
)
_HEADING = re.compile(r"^\s*#.*Fault_segment\s*=\s*\d+\s+nx\s*\(", re.IGNORECASE | re.MULTILINE)
_HYPOCENTRE = re.compile(
    rf"EQ\s+in\s+cell\s*\(?\s*(\d+)\s*,\s*(\d+)\s*\)?\s*\.?\s*Lon\s*:\s*{_NUMBER}\s+Lat\s*:\s*{_NUMBER}", re.IGNORECASE
)
_CORNERS = re.compile(r"#\s*Lon\.?\s+Lat\.?\s+Depth\b", re.IGNORECASE)
_COLUMNS = re.compile(r"#\s*Lat\.?\s+Lon\.?\s+depth\b.*slip", re.IGNORECASE)

_NAMES = ("lat", "lon", "depth", "slip", "rake", "strike", "dip", "t_rup", "t_ris", "t_fal")
_ROUNDING = 15.0
"""m: a hypocentre with four decimals of a degree, in both directions."""

_ELLIPSOID = pyproj.Geod(ellps="GRS80")


@dataclass
class _Segment:
    line: int
    along: int
    length: float
    down: int
    width: float
    rows: int = 0
    hypocentre: Optional[tuple[int, int, float, float]] = None
    """Cell along strike and down dip, from 1; longitude, latitude."""


def is_model(head: str) -> bool:
    """True for a text with the heading of a plane."""
    return head.lstrip()[:1] == "#" and _HEADING.search(head) is not None


def read(reading: Reading, reference: Optional[str]) -> xr.Dataset:
    """The table of a model; `reference` if its rows give another point than the file says."""
    file = _File(reading)
    for line in reading.lines():
        file.take(line)
    if file.rows is None or not len(file.rows):
        reading.fail("has no rows of subfaults")
    file.check_counts()
    given, segments = file.rows.columns(), [segment for segment in file.segments if segment.rows]
    counts = [segment.rows for segment in segments]
    columns = {
        "x": given["lon"], "y": given["lat"], "depth": given["depth"] * 1e3, "slip": given["slip"] / 100.0,
        "strike": given["strike"], "dip": given["dip"],
        # Rakes above 360 stand in some files: the same direction, a turn further.
        "rake": np.where((given["rake"] > 360.0) & (given["rake"] <= 720.0), given["rake"] - 360.0, given["rake"]),
        "length": np.repeat([segment.length for segment in segments], counts),
        "width": np.repeat([segment.width for segment in segments], counts),
        "lag_time": given["t_rup"], "duration": given["t_ris"] + given["t_fal"],
    }  # fmt: skip
    agency = "UCSB" if "rigidity" in given else "NEIC"
    rows = [segment.along if segment.rows % segment.along == 0 else None for segment in segments]
    model = Model(f"{agency} .param", columns, file.rows.lines, reference or "centroid", layout=of_planes(counts, rows))
    if "mo" in given:
        model.moments = given["mo"] * 1e-7
    elif "rigidity" in given:
        model.rigidity = given["rigidity"] * 0.1
    if reference is None and not file.centroids:
        _to_centres(reading, model, segments)
    return assembled(reading, model)


class _File:
    """What the comments have said so far, and the rows below them."""

    def __init__(self, reading: Reading) -> None:
        self.reading = reading
        self.segments: list[_Segment] = []
        self.total: Optional[int] = None
        self.centroids = False
        self.rows: Optional[Rows] = None
        self._last = ""
        self._corners = False

    def take(self, line: Line) -> None:
        """A line."""
        words = line.text.split()
        if line.text.lstrip().startswith("#"):
            self._comment(line)
        elif words and self._corners:
            Rows(self.reading, ("lon", "lat", "depth")).add(line.number, words)  # an edge is looked at, and not used
        elif words:
            self._row(line.number, words)

    def _comment(self, line: Line) -> None:
        if found := _TOTAL.search(line.text):
            self.total = int(self._numbers(line, found)[0])
        elif found := _SEGMENT.search(line.text):
            along, length, down, width = self._numbers(line, found)
            if not (along and down and length > 0 and width > 0):
                self.reading.fail("nx, Dx, ny and Dy are above 0", line.number)
            self.segments.append(_Segment(line.number, int(along), length * 1e3, int(down), width * 1e3))
        elif "fault_segment" in line.text.lower() and "=" in line.text:
            self.reading.fail("a plane has nx, Dx in km, ny and Dy in km", line.number)
        elif found := _HYPOCENTRE.search(line.text):
            if self.segments:
                along, down, lon, lat = self._numbers(line, found)
                self.segments[-1].hypocentre = (int(along), int(down), lon, lat)
        elif "centroid" in line.text.lower():
            self.centroids = True
        if _CORNERS.search(line.text):
            self._corners = True
        elif _COLUMNS.search(line.text):
            self._corners = False
            named = line.text.lower()
            self._last = "rigidity" if "rigidity" in named else "mo" if re.search(r"\bmo\b|moment", named) else ""

    def _numbers(self, line: Line, found: re.Match[str]) -> list[float]:
        """What the groups of a pattern have matched."""
        values = []
        for word in found.groups():
            try:
                values.append(to_number(word))
            except ValueError:
                self.reading.fail(f"is a finite number, not '{word[:40]}'", line.number)
        return values

    def _row(self, line: int, words: list[str]) -> None:
        if not self.segments:
            self.reading.fail("rows stand below the heading of their plane", line)
        if self.rows is None:
            self.rows = Rows(self.reading, self._names(line, words))
        self.rows.add(line, words)
        self.segments[-1].rows += 1

    def _names(self, line: int, words: list[str]) -> tuple[str, ...]:
        if len(words) != len(_NAMES) + 1:
            return _NAMES
        if not self._last:
            self.reading.assume("no heading says what the eleventh column is: it is left out", line)
        return (*_NAMES, self._last or "eleventh")

    def check_counts(self) -> None:
        """Rows count; a warning says where the headings say something else."""
        if self.total is not None and self.total != len(self.segments):
            said = f"{self.total} planes are announced, the file has {len(self.segments)}: these count"
            self.reading.assume(said, 1)
        for number, segment in enumerate(self.segments, 1):
            if not segment.rows:
                self.reading.fail("this plane has no rows", segment.line)
            if segment.rows != segment.along * segment.down:
                said = f"nx {segment.along} and ny {segment.down} are {segment.along * segment.down} subfaults, plane "
                self.reading.assume(f"{said}{number} has {segment.rows} rows: these count", segment.line)


def _to_centres(reading: Reading, model: Model, segments: list[_Segment]) -> None:
    """Moves rows, each the place of a point source, to the centres of their subfaults.

    The hypocentre is the centre of its cell: what it is off along strike and down dip, every row of the file is.
    """
    columns, first, why = model.columns, 0, "no hypocentre says where in a subfault its row lies"
    for segment in segments:
        start, first = first, first + segment.rows
        if segment.hypocentre is None:
            continue
        offset = _offset(segment, columns, start)
        if offset is None:
            why = "no plane has the hypocentre in the cell that is said"
            continue
        along, down = offset
        if along or down:
            _move(columns, along, down)
        model.moved = f" (rows moved {along / 1e3:.2f} km along strike and {down / 1e3:.2f} km down dip)"
        return
    reading.assume(f"{why}: rows are taken as centres", segments[0].line)


def _offset(segment: _Segment, columns: dict[str, np.ndarray], start: int) -> Optional[tuple[float, float]]:
    """Metres from the row of the cell of the hypocentre to the hypocentre; None when it is not in that cell."""
    assert segment.hypocentre is not None
    along, down, lon, lat = segment.hypocentre
    cell = (down - 1) * segment.along + along - 1
    if not (1 <= along <= segment.along and 1 <= down and cell < segment.rows and abs(lat) <= 90):
        return None
    row = start + cell
    x, y = float(columns["x"][row]), float(columns["y"][row])
    if abs(y) > 90:
        return None
    azimuth, _, way = _ELLIPSOID.inv(x, y, lon, lat)
    if way <= _ROUNDING:
        return 0.0, 0.0
    turn = np.radians(azimuth - columns["strike"][row])
    by_strike, across = way * float(np.cos(turn)), way * float(np.sin(turn))
    slope = float(np.cos(np.radians(columns["dip"][row])))
    by_dip = 0.0 if abs(across) <= _ROUNDING else across / slope if slope > 1e-6 else np.inf
    inside = abs(by_strike) <= 0.5 * segment.length + _ROUNDING and abs(by_dip) <= 0.5 * segment.width + _ROUNDING
    return (by_strike, float(by_dip)) if inside else None


def _move(columns: dict[str, np.ndarray], along: float, down: float) -> None:
    dip = np.radians(columns["dip"])
    across = down * np.cos(dip)
    azimuth = columns["strike"] + np.degrees(np.arctan2(across, along))
    valid = np.abs(columns["y"]) <= 90
    lon, lat, _ = _ELLIPSOID.fwd(columns["x"], np.where(valid, columns["y"], 0.0), azimuth, np.hypot(along, across))
    moved = columns["x"] + np.remainder(np.asarray(lon) - columns["x"] + 180.0, 360.0) - 180.0  # in the same turn
    columns["x"], columns["y"] = moved, np.where(valid, lat, columns["y"])
    columns["depth"] = columns["depth"] + down * np.sin(dip)
