"""``.rupt`` tables of synthetic ruptures: one line a subfault, slip in two parts."""

from __future__ import annotations

import re
from typing import Optional

import numpy as np
import xarray as xr

from .assembling import Model, assembled
from .layout import planes_of_runs
from .model_text import Reading, Rows

_COLUMNS = (
    # name, what its heading begins with
    ("no", ("no",)), ("lon", ("lon",)), ("lat", ("lat",)), ("z", ("z",)), ("strike", ("strike",)), ("dip", ("dip",)),
    ("type", ("type", "rise")), ("rise", ("rise", "dura")), ("ss", ("ss",)), ("ds", ("ds",)),
    ("length", ("l", "ss_len")), ("width", ("w", "ds_len")), ("onset", ("onset", "rupt")), ("mu", ("mu", "rigid")),
)  # fmt: skip
_NAMES = tuple(name for name, _ in _COLUMNS)
_SEPARATORS = re.compile(r"[\s,]+")


def _headings(line: str) -> list[str]:
    """Words of a heading without their units."""
    bare = re.sub(r"\(.*?\)", "", line).strip().lstrip("#")
    return [re.sub(r"-slip$", "", word.lower()) for word in _SEPARATORS.split(bare) if word]


def _is_heading(line: str) -> bool:
    words = _headings(line)
    return len(words) >= len(_COLUMNS) and {"lon", "lat", "strike", "dip", "ss", "ds"} <= set(words)


def is_model(head: str) -> bool:
    """True when one of the first lines has the headings of the table."""
    return any(_is_heading(line) for line in head.splitlines()[:20])


def read(reading: Reading, reference: Optional[str]) -> xr.Dataset:
    """The table of a model; `reference` if it is not the centroid."""
    rows: Optional[Rows] = None
    for line in reading.lines():
        if rows is None and _is_heading(line.text):
            rows = Rows(reading, _names(reading, line.text, line.number))
        elif line.text.strip() and not line.text.lstrip().startswith("#"):
            if rows is None:
                reading.fail("rows stand below their headings", line.number)
            rows.add(line.number, [word for word in _SEPARATORS.split(line.text) if word])
    if rows is None:
        reading.fail("has no headings")
    given = rows.columns()
    if reference is None:
        reading.assume("the file does not say which point of a subfault is given: taken as its centroid")
    columns = {
        "x": given["lon"], "y": given["lat"], "depth": given["z"] * 1e3, "strike": given["strike"],
        "dip": given["dip"], "rake": np.degrees(np.arctan2(given["ds"], given["ss"])),
        "slip": np.hypot(given["ss"], given["ds"]), "length": given["length"], "width": given["width"],
        "lag_time": given["onset"], "duration": given["rise"],
    }  # fmt: skip
    for part in ("ss", "ds"):
        marks = np.flatnonzero((given[part] == 999) | (given[part] == -99))
        if marks.size:
            reading.fail(
                f"{part} {given[part][marks[0]]:g} m marks a value that is not known", int(rows.lines[marks[0]])
            )
    model = Model(".rupt table", columns, rows.lines, reference or "centroid", rigidity=given["mu"])
    if len(rows) and not given["mu"].any():
        reading.assume("the rigidities are all 0: none is taken")
        model.rigidity = None
    model.layout = planes_of_runs(columns["depth"]) if len(rows) else None
    return assembled(reading, model)


def _names(reading: Reading, text: str, line: int) -> tuple[str, ...]:
    """Names of the columns; what stands behind the known ones is not used."""
    words = _headings(text)
    for word, (name, starts) in zip(words, _COLUMNS):
        if word not in starts and not any(word.startswith(start) and len(start) > 2 for start in starts):
            reading.fail(f"column {name} stands where '{word[:40]}' was found", line)
    return (*_NAMES, *(f"column {at + 1}" for at in range(len(_NAMES), len(words))))
