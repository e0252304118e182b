"""Tables of comma-separated values with the units in their headings."""

from __future__ import annotations

import re
from typing import NamedTuple, Optional

import numpy as np
import xarray as xr

from .assembling import Model, assembled
from .layout import planes_of_runs
from .model_text import Reading, Rows
from .named_columns import column_of, factor, split_heading


class _Column(NamedTuple):
    name: str
    kind: str
    headings: tuple[str, ...]


_NEEDED = (
    _Column("x", "angle", ("longitude", "lon", "long", "lon centroid")),
    _Column("y", "angle", ("latitude", "lat", "lat centroid")),
    _Column("depth", "length", ("depth", "top depth", "depth centroid")),
    _Column("strike", "angle", ("strike",)),
    _Column("dip", "angle", ("dip",)),
    _Column("rake", "angle", ("rake",)),
    _Column("slip", "length", ("slip",)),
    _Column("length", "length", ("length",)),
    _Column("width", "length", ("width",)),
)
_OTHERS = (
    _Column("lag_time", "time", ("rupture time", "onset", "lag time", "trup", "t rup", "initiation time")),
    _Column("duration", "time", ("rise time", "rise", "duration")),
    _Column("rigidity", "rigidity", ("rigidity", "mu", "shear modulus")),
    _Column("moment", "moment", ("moment", "sf moment")),
)
_LABELS = ("", "id", "no", "name", "number", "subfault")
_SEPARATORS = ",;\t"


def is_model(head: str) -> bool:
    """True for a first line that is no comment and has headings for longitude, latitude and strike."""
    line = next((line for line in head.splitlines() if line.strip() and not line.startswith("#")), "")
    names = {split_heading(word)[0] for word in re.split(f"[{_SEPARATORS}]", line)}
    place = {"longitude", "lon", "long", "lon centroid"} & names
    return (
        bool(place) and bool({"latitude", "lat", "lat centroid"} & names) and len(names & {"strike", "dip", "slip"}) > 0
    )


def read(reading: Reading, reference: Optional[str]) -> xr.Dataset:
    """The table of a model; `reference` if it is not the middle of the upper edges."""
    table = _Table(reading)
    for line in reading.lines():
        if line.text.strip() and not line.text.startswith("#"):
            table.take(line.number, line.text)
    if table.rows is None:
        reading.fail("has no rows of subfaults")
    columns = {name: values * table.factors[name] for name, values in table.rows.columns().items()}
    for name in ("lag_time", "duration"):
        columns.setdefault(name, np.zeros(len(table.rows)))
    said = reference or ("centroid" if table.centroid else "top centre")
    if reference is None and not table.centroid:
        reading.assume(
            "the file does not say which point of a subfault is given: taken as the middle of its upper edge"
        )
    model = Model("CSV with units", columns, table.rows.lines, said)
    model.rigidity, model.moments = columns.pop("rigidity", None), columns.pop("moment", None)
    if model.moments is not None and model.rigidity is not None:
        model.moments = None
    model.layout = planes_of_runs(columns["depth"]) if len(table.rows) else None
    return assembled(reading, model)


class _Table:
    """The headings, and the rows below them."""

    def __init__(self, reading: Reading) -> None:
        self.reading = reading
        self.rows: Optional[Rows] = None
        self.factors: dict[str, float] = {}
        self.centroid = False
        self._separator = ","
        self._places: list[int] = []
        self._count = 0

    def take(self, line: int, text: str) -> None:
        """A line that is no comment."""
        if self.rows is None:
            self._headings(line, text)
            return
        words = text.split(self._separator)
        if len(words) != self._count:
            self.reading.fail(f"a row has {self._count} columns as the headings, not {len(words)}", line)
        self.rows.add(line, [words[at] for at in self._places])

    def _headings(self, line: int, text: str) -> None:
        self._separator = max(_SEPARATORS, key=text.count)
        headings = [split_heading(word) for word in text.split(self._separator)]
        self._count = len(headings)
        names = []
        for column in (*_NEEDED, *_OTHERS):
            at = column_of(headings, column.headings)
            if at is None:
                if column in _NEEDED:
                    self.reading.fail(f"has no column {column.headings[0]}", line)
                continue
            self.factors[column.name] = factor(self.reading, column.kind, headings[at][0], headings[at][1], line)
            self.centroid |= headings[at][0].endswith("centroid")
            names.append(column.name)
            self._places.append(at)
        unused = [name for at, (name, _) in enumerate(headings) if at not in self._places and name not in _LABELS]
        if unused:
            self.reading.assume(f"columns that are not known are not used: {', '.join(unused)[:200]}", line)
        self.rows = Rows(self.reading, names)
