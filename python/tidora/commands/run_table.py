"""The table at the end of a run."""

from __future__ import annotations

from pathlib import Path as FilePath
from typing import Optional

from ..faults.moment import RIGIDITY, seismic_moment
from ..faults.table import read_fault_file
from ..fields.kinds import GEOGRAPHIC
from ..fields.measure import Extreme, measure
from ..fields.series import total
from ..formats.configuration import Configuration
from ..formats.series_list import open_series
from .program import Display
from .report_text import place, volume


def summary(configuration: Configuration, display: Display, rigidity: float = RIGIDITY) -> str:
    """The table at the end of a run: extremes and volume of the sum of every series, magnitude, files."""
    faults = read_fault_file(configuration.fault_file, configuration.fault_kind)
    size = seismic_moment(faults, rigidity)
    geographic = [region.kind == GEOGRAPHIC for region in configuration.regions]
    rows = [("series", "highest", "at", "lowest", "at", "volume")]
    tags = ("Tdr", "VRT", "HRZ") if configuration.slope_term else ("Tdr", "VRT")
    for region, in_degrees in zip(configuration.regions, geographic):
        for tag in tags:
            list_file = FilePath(configuration.output) / f"{tag}_{region.name}.txt"
            if list_file.is_file() and list_file.stat().st_size == 0:
                rows.append((list_file.stem, "no rupture interval", "", "", "", ""))
                continue
            figures = measure(total(open_series(list_file, region.kind)))
            rows.append(
                (
                    list_file.stem,
                    *_at(figures.highest, in_degrees),
                    *_at(figures.lowest, in_degrees),
                    volume(figures.volume),
                )
            )
    widths = [max(len(row[column]) for row in rows) for column in range(6)]
    lines = [
        "  ".join(
            f"{cell:<{width}}" if column in (0, 2, 4) else f"{cell:>{width}}"
            for column, (cell, width) in enumerate(zip(row, widths))
        ).rstrip()
        for row in rows
    ]
    unit = "degrees" if all(geographic) else "metres" if not any(geographic) else "degrees or metres"
    magnitude = f"Mw {size.magnitude:.2f}" if size.moment > 0 else "no slip"
    written = [*display.files]
    lines += [
        "",
        f"Sums over {display.intervals} rupture intervals; places in {unit}; volume: raised less lowered.",
        f"{magnitude} for a rigidity of {rigidity / 1e9:g} GPa, {faults.sizes['element']} elements.",
        f"{len(set(written))} grids and {len(tags) * len(configuration.regions)} lists in {configuration.output}.",
    ]
    return "\n".join(lines) + "\n"


def _at(extreme: Optional[Extreme], geographic: bool) -> tuple[str, str]:
    return ("none", "") if extreme is None else (f"{extreme.value:.2f} m", place(extreme.x, extreme.y, geographic))
