"""Where an ``.fsp`` file contradicts itself: rows count, and a warning says so."""

from __future__ import annotations

import numpy as np

from .assembling import Model
from .fsp_header import Header, Segment, known
from .model_text import Reading
from .moment import magnitude

_MAGNITUDES = 0.05
"""Published files state a magnitude and a moment that differ by up to 0.034."""

_MOMENTS = 0.02
"""Magnitudes: rows are rounded to three digits, their sum is far better than that."""


def check_counts(reading: Reading, header: Header, segments: list[Segment], lines: np.ndarray) -> None:
    """Numbers of subfaults and planes, and their area."""
    line = header.line("Invs")
    planes = known(header.value("Invs", "Nsg"))
    if planes is not None and planes != len(segments):
        reading.assume(f"Nsg is {planes:g}, the file has {len(segments)} planes: these count", line)
    along, down = (known(header.value("Invs", name)) for name in ("Nx", "Nz"))
    for number, segment in enumerate(segments, 1):
        stated = known(segment.values.get("Nsbfs", header.segments[0].values.get("Nsbfs")))
        if stated is not None and stated != segment.rows:
            reading.assume(f"Nsbfs is {stated:g}, plane {number} has {segment.rows} rows: these count", segment.line)
        if along is not None and down is not None and along * down != segment.rows:
            said = (
                f"Nx {along:g} and Nz {down:g} are {along * down:g} subfaults, plane {number} has {segment.rows} rows"
            )
            reading.assume(f"{said}: these count", line)
    _check_area(reading, header, lines.size)


def _check_area(reading: Reading, header: Header, count: int) -> None:
    sizes = [
        header.value(tag, name) for tag, name in (("Size", "LEN"), ("Size", "WID"), ("Invs", "Dx"), ("Invs", "Dz"))
    ]
    if any(known(size) is None or not size for size in sizes):
        return
    length, width, along, down = (float(size or 0.0) for size in sizes)
    # Planes side by side may share length or width with the whole: a factor of two says nothing.
    if not 0.45 < length * width / (along * down * count) < 2.2:
        said = f"LEN {length:g} km and WID {width:g} km do not go with {count} subfaults of {along:g} km by {down:g} km"
        reading.assume(f"{said}: these count", header.line("Size"))


def check_depths(
    reading: Reading, header: Header, segments: list[Segment], columns: dict[str, np.ndarray], reference: str
) -> None:
    """The depth of the upper edges, where the file states it."""
    part = 0.5 if reference == "centroid" else 0.0
    height = columns["width"] * np.sin(np.radians(columns["dip"]))
    upper = columns["depth"] - part * height
    whole = known(header.value("Mech", "Htop"))
    ends = np.cumsum([segment.rows for segment in segments])
    for number, (segment, end) in enumerate(zip(segments, ends), 1):
        here = slice(end - segment.rows, end)
        stated = known(segment.values.get("Z2top"), whole if len(segments) == 1 else None)
        # A quarter of a subfault is more than rounding, and less than from one reference point to another.
        if stated is not None and abs(stated * 1e3 - upper[here].min()) > 0.25 * height[here].max() + 100.0:
            said = f"the upper edge of plane {number} is stated at {stated:g} km, its rows put it at "
            line = segment.line if known(segment.values.get("Z2top")) is not None else header.line("Mech")
            reading.assume(f"{said}{upper[here].min() / 1e3:.4g} km: these count", line)


def check_moment(reading: Reading, model: Model) -> None:
    """The sum of the moments against what the header states."""
    stated, moment = model.attrs["stated_magnitude"], model.attrs["stated_moment"]
    sizes = [float(stated)] if isinstance(stated, float) else []
    sizes += [magnitude(moment)] if isinstance(moment, float) else []
    if len(sizes) == 2 and abs(sizes[0] - sizes[1]) > _MAGNITUDES:
        reading.assume(f"the header states Mw {sizes[0]:.3f} and a moment of Mw {sizes[1]:.3f}")
    if model.moments is None or not sizes:
        return
    with np.errstate(over="ignore"):  # what is no moment is refused with the other columns
        of_rows = magnitude(float(model.moments.sum()))
    if not np.isfinite(of_rows):
        return
    if min(abs(size - of_rows) for size in sizes) > _MOMENTS:
        reading.assume(f"the moments of the rows are Mw {of_rows:.3f} in all, the header states {sizes[0]:.3f}")
