"""Finite-source rupture models: ``.fsp`` files of NEIC and of SRCMOD."""

from __future__ import annotations

import re
from typing import Optional

import numpy as np
import xarray as xr

from .assembling import Model, assembled
from .fsp_header import Header, Segment, known
from .fsp_checks import check_counts, check_depths, check_moment
from .layout import of_planes, row_length
from .model_text import Reading

_COLUMNS = ("LAT", "LON", "X", "Y", "Z", "SLIP", "RAKE", "TRUP", "RISE", "SF_MOMENT")
_NEEDED = ("LAT", "LON", "Z", "SLIP")


def is_model(head: str) -> bool:
    """True for a text whose first line that is not blank begins with a percent sign and that has the known headings."""
    return (
        head.lstrip()[:1] == "%"
        and re.search(r"FINITE-SOURCE|SOURCE MODEL PARAMETERS|%\s*LAT\s+LON\b", head) is not None
    )


def read(reading: Reading, reference: Optional[str]) -> xr.Dataset:
    """The table of a model; `reference` if it is not what the file says."""
    header = Header(reading, _COLUMNS)
    for line in reading.lines():
        words = line.text.split()
        if line.text.lstrip().startswith("%"):
            header.take(line)
        elif words:
            header.row(line.number, words)
    if header.rows is None or not len(header.rows):
        reading.fail("has no rows of subfaults")
    given = header.rows.columns()
    missing = [name for name in _NEEDED if name not in given]
    if missing:
        reading.fail(f"has no column {' '.join(missing)}", header.columns_line)
    lines, segments = header.rows.lines, header.segments_with_rows()
    counts = [segment.rows for segment in segments]
    check_counts(reading, header, segments, lines)
    columns = {
        "x": given["LON"], "y": given["LAT"], "depth": given["Z"] * 1e3, "slip": given["SLIP"],
        "strike": _angles(reading, header, segments, given, "STRIKE"),
        "dip": _angles(reading, header, segments, given, "DIP"),
        "length": np.repeat([_size(reading, header, segment, "Dx") for segment in segments], counts),
        "width": np.repeat([_size(reading, header, segment, "Dz") for segment in segments], counts),
        "rake": _rake(reading, header, given, lines),
        "lag_time": _seconds(reading, given, "TRUP", lines),
        "duration": _seconds(reading, given, "RISE", lines),
    }  # fmt: skip
    if columns["duration"].any():
        reading.assume("RISE is taken as the whole rise time; older files hold its first half")
    said = reference or _reference(reading, header)
    check_depths(reading, header, segments, columns, said)
    model = Model(f"{header.agency} .fsp", columns, lines, said, layout=_layout(header, segments, given["Z"] * 1e3))
    model.attrs = {"stated_magnitude": known(header.value("Size", "Mw")), "stated_moment": header.stated_moment()}
    if "SF_MOMENT" in given:
        model.moments = given["SF_MOMENT"]
        check_moment(reading, model)
    return assembled(reading, model)


def _reference(reading: Reading, header: Header) -> str:
    if header.reference is None:
        reading.assume("does not say which point of a subfault is given: taken as its centre")
        return "centroid"
    return header.reference


def _layout(header: Header, segments: list[Segment], depth: np.ndarray) -> Optional[dict[str, np.ndarray]]:
    counts = [segment.rows for segment in segments]
    along = known(header.value("Invs", "Nx"))
    pieces = np.split(depth, np.cumsum(counts)[:-1])
    return of_planes(counts, [row_length(piece, int(along) if along else None) for piece in pieces])


def _angles(
    reading: Reading, header: Header, segments: list[Segment], given: dict[str, np.ndarray], name: str
) -> np.ndarray:
    """STRIKE or DIP: of the rows, else of each segment, else of the whole."""
    for column in (name, "STRK") if name == "STRIKE" else (name,):
        if column in given:
            return given[column]
    whole = known(header.value("Mech", "STRK" if name == "STRIKE" else name))
    found = []
    for segment in segments:
        value = known(segment.values.get(name), whole)
        if value is None:
            reading.fail(f"{name} of a plane is not known (999 and -99 mark what is not)", segment.line)
        found.append(value)
    return np.repeat(found, [segment.rows for segment in segments])


def _size(reading: Reading, header: Header, segment: Segment, name: str) -> float:
    """Dx or Dz in m, of the segment where it has them."""
    value = known(segment.values.get(name), known(header.value("Invs", name)))
    if value is None or value <= 0:
        reading.fail(f"{name} of the subfaults is a length above 0 in km, {value} was found", segment.line)
    return value * 1e3


def _rake(reading: Reading, header: Header, given: dict[str, np.ndarray], lines: np.ndarray) -> np.ndarray:
    whole = known(header.value("Mech", "RAKE"))
    rake = given.get("RAKE", np.full(lines.size, 999.0))
    # One row at -99 degrees slips that way; a column of nothing else is the mark for a variable rake.
    unknown = (rake == 999) | np.full(lines.size, bool(np.all(rake == -99)))
    if not unknown.any():
        return rake
    if whole is None:
        reading.fail("the rake is neither in the rows nor in the header", int(lines[np.argmax(unknown)]))
    what = (
        "the file has no rake of its subfaults" if unknown.all() else f"{np.count_nonzero(unknown)} rakes are unknown"
    )
    reading.assume(f"{what}: the {whole:g} degrees of the header are taken", header.line("Mech"))
    return np.where(unknown, whole, rake)


def _seconds(reading: Reading, given: dict[str, np.ndarray], name: str, lines: np.ndarray) -> np.ndarray:
    """TRUP or RISE; 0 where it is not known."""
    if name not in given:
        reading.assume(f"the file has no {name}: 0 s are taken")
        return np.zeros(lines.size)
    unknown = (given[name] == 999) | (given[name] == -99)
    if unknown.any():
        at = int(lines[np.argmax(unknown)])
        reading.assume(f"{name} is not known in {np.count_nonzero(unknown)} rows: 0 s are taken", at)
    return np.where(unknown, 0.0, given[name])
