"""One field: written in any format, or told in a line."""

from __future__ import annotations

from typing import Optional

import xarray as xr

from ..errors import Path
from ..fields.kinds import GEOGRAPHIC, kind_of
from ..fields.measure import Extreme, measure
from ..formats.contract import Writing
from ..formats.registry import PICTURE, ending, endings_written, format_of_target
from ..version import VERSION
from .progress import progress
from .report_text import place, volume


def check_ending(path: Path) -> None:
    """Refuses a name that no format has, before anything is computed."""
    if ending(path) not in endings_written(PICTURE):
        format_of_target(path)


def write_field(field: xr.DataArray, path: Path, command: str) -> str:
    """Writes a field, or draws its map; what was written, for the user."""
    if ending(path) in endings_written(PICTURE):
        from ..plot.figures import draw_maps
        from ..plot.overlay import Overlay

        draw_maps([field], path, Overlay())
        return f"{path}"
    module = format_of_target(path).load()
    writing = Writing(history=f"{field.attrs['history']}\n{command} {VERSION}")
    with progress("Writing", module.steps(field, writing)) as step:
        return f"{path}: eta on {module.write(field, path, writing, step)}"


def summary(field: xr.DataArray) -> str:
    """Extremes and volume of a field."""
    figures, geographic = measure(field), kind_of(field) == GEOGRAPHIC
    high, low = (_at(extreme, geographic) for extreme in (figures.highest, figures.lowest))
    return f"highest {high}, lowest {low}, volume {volume(figures.volume)}"


def _at(extreme: Optional[Extreme], geographic: bool) -> str:
    return "none" if extreme is None else f"{extreme.value:.4g} m at {place(extreme.x, extreme.y, geographic)}"
