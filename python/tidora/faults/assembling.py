"""From the columns of a published model to the table of its elements."""

from __future__ import annotations

import os
from dataclasses import dataclass, field
from typing import Any, Mapping, Optional

import numpy as np
import xarray as xr

from ..errors import TidoraError
from ..fields.kinds import GEOGRAPHIC
from .making import make_faults
from .model_text import Reading
from .table import NAMES

_DOWN = {"centroid": 0.5, "bottom start": 1.0, "bottom centre": 1.0}
"""Part of the width between the upper edge and the point whose depth is given; none for the other reference points."""

_NEAR = 1e-3
"""m: an upper edge counts as being at the surface. Depths are printed with a metre at best."""

_LIMITS = {
    # m and degrees. Strikes and rakes are printed between -360 and 720; beyond stand marks for what is unknown (999).
    "x": (-360.0, 720.0), "y": (-90.0, 90.0), "depth": (-9e3, 1e6), "strike": (-360.0, 720.0), "dip": (0.0, 90.0),
    "rake": (-360.0, 720.0), "length": (1e-3, 5e6), "width": (1e-3, 5e6), "duration": (0.0, 1e6),
    "lag_time": (-1e6, 1e6),
    # N m and Pa: far above any earthquake and any rock, whatever their unit was, and far below where sums overflow.
    "moment": (-1e35, 1e35), "rigidity": (-1e20, 1e20),
}  # fmt: skip

_WORDS = {"x": "longitude", "y": "latitude", "lag_time": "onset", "duration": "rise time"}

_UNITS = {
    **dict.fromkeys(("length", "width", "depth", "slip"), "m"), "lag_time": "s", "duration": "s", "moment": "N m",
    "rigidity": "Pa",
}  # fmt: skip
"""All others are degrees."""

_PLAUSIBLE = (1e9, 5e11)
"""Pa: rigidities of rock, from soft sediments to the bottom of the mantle."""

_LEAST_POTENCY = 1e-9
"""m3, area times slip: less is no slip, and no moment is divided by it."""


@dataclass
class Model:
    """What a file has said."""

    format: str
    columns: dict[str, np.ndarray]
    """By the names of the table, without ``base_offset``: metres, degrees, seconds."""
    lines: np.ndarray
    reference: str
    """Which point of an element is given."""
    moved: str = ""
    """What has been done to reach it."""
    moments: Optional[np.ndarray] = None
    """N m"""
    rigidity: Optional[np.ndarray] = None
    """Pa"""
    layout: Optional[dict[str, np.ndarray]] = None
    """``plane``, ``along``, ``down``, counted from 0."""
    attrs: dict[str, object] = field(default_factory=dict)
    coords: dict[str, np.ndarray] = field(default_factory=dict)


def assembled(reading: Reading, model: Model) -> xr.Dataset:
    """The table of a model.

    Raises
    ------
    FileError
        If a value cannot be.
    """
    count = model.lines.size
    if not count:
        reading.fail("has no rows of subfaults")
    columns = {name: np.broadcast_to(values, count) for name, values in model.columns.items()}
    _check(reading, {**columns, "moment": model.moments, "rigidity": model.rigidity}, model.lines)
    columns["depth"] = _below_surface(reading, columns, model)
    try:
        table = make_faults(**columns, coord=GEOGRAPHIC, reference=model.reference)
    except TidoraError as error:
        reading.fail(str(error))
    rigidity = _rigidity(reading, model, columns)
    table = table.assign_coords(line=("element", model.lines))
    for name, values in model.coords.items():
        table = table.assign_coords({name: ("element", values)})
    if rigidity is not None:
        table["rigidity"] = ("element", rigidity, {"units": "Pa", "long_name": "rigidity"})
    for name, values in (model.layout or {}).items():
        table[name] = ("element", values.astype(np.float64), {"units": "1", "long_name": _LAYOUT[name]})
    table.attrs.update(
        source_file=os.path.basename(os.fspath(reading.path)),
        format=model.format,
        reference=model.reference + model.moved,
        assumptions=list(reading.assumptions),
        **{name: value for name, value in model.attrs.items() if value is not None},
    )
    return table


_LAYOUT = {
    "plane": "number of the fault plane, from 0",
    "along": "number along strike within the plane, from 0",
    "down": "number down dip within the plane, from 0",
}


def _check(reading: Reading, columns: Mapping[str, Any], lines: np.ndarray) -> None:
    """Refuses what cannot be, and the marks for unknown values, which are no slip. A column may be None."""
    for name in (*NAMES, "moment", "rigidity"):
        if (values := columns.get(name)) is None:
            continue
        least, largest = _LIMITS.get(name, (-1e3, 1e3))
        wrong = np.flatnonzero(~((values >= least) & (values <= largest)))
        if wrong.size:
            said = f"is from {least:g} to {largest:g} {_UNITS.get(name, 'degrees')}, not {values[wrong[0]]:g}"
            reading.fail(f"{_WORDS.get(name, name)} {said}", int(lines[wrong[0]]))
    slip = columns["slip"]
    marks = np.flatnonzero((slip == 999) | (slip == -99))
    if marks.size:
        reading.fail(f"slip {slip[marks[0]]:g} m marks a value that is not known", int(lines[marks[0]]))


def _below_surface(reading: Reading, columns: dict[str, np.ndarray], model: Model) -> np.ndarray:
    """Depths of the reference points, so that no upper edge lies above the surface."""
    least = _DOWN.get(model.reference, 0.0) * columns["width"] * np.sin(np.radians(columns["dip"]))
    above = np.flatnonzero(columns["depth"] < least - _NEAR)
    if above.size:
        worst = float((least - columns["depth"])[above].max())
        who = f"element {above[0]}" if above.size == 1 else f"{above.size} elements, the first of them {above[0]},"
        reading.assume(
            f"the upper edge of {who} would come out above the surface (by up to {worst:.0f} m): its depth is 0, "
            "its place and size stay",
            int(model.lines[above[0]]),
        )
    return np.maximum(columns["depth"], least)


def _rigidity(reading: Reading, model: Model, columns: dict[str, np.ndarray]) -> Optional[np.ndarray]:
    """Pa: of the file, or from its moments; None where it has neither."""
    rigidity, potency = model.rigidity, columns["length"] * columns["width"] * np.abs(columns["slip"])
    potency = np.where(potency < _LEAST_POTENCY, 0.0, potency)
    if model.moments is not None:
        if np.any(model.moments < 0) or not np.any((model.moments > 0) & (potency > 0)):
            reading.assume("the moments of the subfaults are not positive numbers: they are left out")
            return None
        mean = float(model.moments[potency > 0].sum() / potency.sum())
        known = (potency > 0) & (model.moments > 0)
        rigidity = np.full(potency.shape, mean)
        rigidity[known] = model.moments[known] / potency[known]
    elif rigidity is not None:
        if np.any((rigidity <= 0) & (potency > 0)):
            at = int(np.flatnonzero((rigidity <= 0) & (potency > 0))[0])
            reading.assume(f"rigidity {rigidity[at]:g} is not above 0: none is taken", int(model.lines[at]))
            return None
    if rigidity is not None and potency.any():
        mean = float((rigidity * potency).sum() / potency.sum())
        if not _PLAUSIBLE[0] <= mean <= _PLAUSIBLE[1]:
            reading.assume(f"moments or rigidities mean {mean / 1e9:.3g} GPa, which no rock has: are the units others?")
    return rigidity
