"""Pictures of sections: a map with a line on it, and the values along that line."""

from __future__ import annotations

from pathlib import Path as FilePath
from typing import Optional

import numpy as np
import xarray as xr
from matplotlib.axes import Axes

from ..errors import Path, TidoraError
from ..fields.profile import Section, profile
from ..formats.picture import write
from ..formats.registry import picture_path
from .backend import STYLE, plt
from .colours import COAST, INK, LAND, LOWERED, PAPER, RAISED, REST, WATER
from .figures import colour_bar, panel_size
from .limits import colour_limit, largest
from .maps import draw_map
from .overlay import Overlay
from .titles import title_of


def draw_section(
    field: xr.DataArray,
    path: Path,
    section: Section,
    overlay: Overlay = Overlay(),
    limit: Optional[float] = None,
) -> FilePath:
    """A map with a line on it, and the values along that line; the topography too when there is one.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
    path : path
        Picture: png, pdf or svg.
    section : tuple of float
        x0, y0, x1, y1.
    overlay, limit :
        As for `draw_maps`.
    """
    picture = picture_path(path)
    overlay.check(field)
    distance, values = profile(field, section)
    if not np.isfinite(values).any():
        raise TidoraError("the section {:g},{:g},{:g},{:g} does not touch the grid".format(*section))
    if section[:2] == section[2:]:
        raise TidoraError("a section has two different ends")
    land = None if overlay.topography is None else profile(overlay.topography, section)
    width, height = panel_size(field, 6.2)
    ratios = [height, 2.2] if land is None else [height, 2.2, 1.6]
    with plt.rc_context(STYLE):
        figure, grid = plt.subplots(
            len(ratios),
            1,
            layout="constrained",
            height_ratios=ratios,
            figsize=(max(width, 5.5) + 1.8, sum(ratios) + 1.6),
        )
        image = draw_map(grid[0], field, limit or colour_limit([field]), overlay)
        grid[0].set_title(title_of(field))
        colour_bar(figure, image, [grid[0]], largest([field]))
        _draw_line(grid[0], section)
        _draw_profile(grid[1], distance, values, field.attrs.get("units", "m"))
        if land is not None:
            _draw_floor(grid[2], *land)
        grid[-1].set_xlabel("distance from A, km")
        for axes in grid[1:]:
            axes.set_xlim(0, distance[-1] / 1000)
            for name, at in (("A", 0), ("B", 1)):
                axes.annotate(
                    name,
                    (at, 1),
                    xycoords="axes fraction",
                    xytext=(0, 3),
                    textcoords="offset points",
                    ha="center",
                    weight="bold",
                )
        write(figure, picture)
        plt.close(figure)
    return picture


def _draw_line(axes: Axes, section: Section) -> None:
    x0, y0, x1, y1 = section
    axes.plot([x0, x1], [y0, y1], color=INK, linewidth=1.3, linestyle=(0, (5, 2)), zorder=6)
    for name, x, y, shift in (("A", x0, y0, -9), ("B", x1, y1, 9)):
        axes.annotate(
            name,
            (x, y),
            xytext=(shift if x1 >= x0 else -shift, 0),
            textcoords="offset points",
            ha="center",
            va="center",
            weight="bold",
            zorder=8,
            annotation_clip=True,
            bbox={"boxstyle": "round,pad=0.15", "facecolor": PAPER, "edgecolor": "none", "alpha": 0.8},
        )


def _draw_profile(axes: Axes, distance: np.ndarray, values: np.ndarray, unit: str) -> None:
    kilometres = distance / 1000
    axes.axhline(0, color=REST, linewidth=0.7)
    axes.fill_between(kilometres, 0, values, where=values >= 0, color=RAISED, alpha=0.35, linewidth=0, interpolate=True)
    axes.fill_between(
        kilometres, 0, values, where=values <= 0, color=LOWERED, alpha=0.35, linewidth=0, interpolate=True
    )
    axes.plot(kilometres, values, color=INK, linewidth=1.2)
    axes.set_ylabel(f"height, {unit}")
    axes.grid(True, linewidth=0.4, alpha=0.6)


def _draw_floor(axes: Axes, distance: np.ndarray, heights: np.ndarray) -> None:
    kilometres = distance / 1000
    if not np.isfinite(heights).any():
        return
    floor = float(np.nanmin(heights))
    axes.fill_between(
        kilometres,
        np.minimum(heights, 0),
        0,
        where=heights < 0,
        color=WATER,
        alpha=0.5,
        linewidth=0,
        interpolate=True,
    )
    axes.fill_between(kilometres, heights, floor, color=LAND, alpha=0.6, linewidth=0)
    axes.plot(kilometres, heights, color=COAST, linewidth=1.0)
    axes.set_ylabel("topography, m")
    axes.grid(True, linewidth=0.4, alpha=0.6)
