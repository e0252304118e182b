"""The metadata table of the unit sources of NOAA's propagation data base."""

from __future__ import annotations

import re
from typing import Optional

import numpy as np
import xarray as xr

from .assembling import Model, assembled
from .model_text import Reading, Rows

_COLUMNS = ("Long(deg)", "Lat(deg)", "Slip(m)", "Strike(deg)", "Dip(deg)", "Depth(km)", "Length(km)", "Width(km)",
            "Rake(deg)")  # fmt: skip
_HEADING = re.compile(r"Name\s*,[^,\n]*,\s*" + r"\s*,\s*".join(re.escape(name) for name in _COLUMNS), re.IGNORECASE)
_NAME = re.compile(r"([a-z]+sz)([a-z])(\d+)", re.IGNORECASE)
_DOWN = "bazyxwv"
"""Rows of a subduction zone from the trench down."""
_OUTER = "cd"
"""Rows beyond the trench, which are planes of their own."""


def is_model(head: str) -> bool:
    """True for a text with the headings of the table."""
    return _HEADING.search(head) is not None


def read(reading: Reading, reference: Optional[str]) -> xr.Dataset:
    """The table of the unit sources; `reference` if it is not the published one."""
    rows, names = Rows(reading, _COLUMNS), []
    for line in reading.lines():
        if not line.text.strip() or line.text.lstrip().startswith("#") or _HEADING.search(line.text):
            continue
        words = [word.strip() for word in line.text.split(",")]
        if len(words) != len(_COLUMNS) + 2:
            reading.fail(f"a unit source has {len(_COLUMNS) + 2} columns, not {len(words)}", line.number)
        names.append(words[0])
        rows.add(line.number, words[2:])
    lon, lat, slip, strike, dip, depth, length, width, rake = rows.columns().values()
    columns = {
        "x": lon, "y": lat, "depth": depth * 1e3, "strike": strike, "dip": dip, "rake": rake, "length": length * 1e3,
        "width": width * 1e3, "slip": slip, "lag_time": np.zeros(len(rows)), "duration": np.zeros(len(rows)),
    }  # fmt: skip
    model = Model("NOAA unit sources", columns, rows.lines, reference or "noaa", coords={"name": np.array(names, str)})
    model.layout = _layout(names)
    return assembled(reading, model)


def _layout(names: list[str]) -> Optional[dict[str, np.ndarray]]:
    """From the names: zone, row, number along strike. None when a name is of another kind."""
    planes: dict[tuple[str, bool], int] = {}
    found = []
    for name in names:
        parts = _NAME.fullmatch(name)
        row = parts.group(2).lower() if parts else ""
        if parts is None or row not in _DOWN + _OUTER:
            return None
        outer = row in _OUTER
        plane = planes.setdefault((parts.group(1).lower(), outer), len(planes))
        found.append((plane, min(int(parts.group(3)), 10**9), (_OUTER if outer else _DOWN).index(row)))
    return dict(zip(("plane", "along", "down"), np.array(found, dtype=np.int64).reshape(-1, 3).T))
