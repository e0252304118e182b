"""Pictures of maps, and what they share with those of frames and sections."""

from __future__ import annotations

from pathlib import Path as FilePath
from typing import Optional, Sequence

import xarray as xr
from matplotlib.axes import Axes
from matplotlib.cm import ScalarMappable
from matplotlib.figure import Figure

from ..errors import Path
from ..formats.picture import write
from ..formats.registry import picture_path
from .backend import STYLE, plt
from .extent import aspect, edges
from .limits import colour_limit, largest
from .maps import draw_map
from .overlay import Overlay
from .titles import title_of


def panel_size(field: xr.DataArray, across: float) -> tuple[float, float]:
    """Inches of a map whose width, or height when it is taller, is `across`."""
    west, east, south, north = edges(field)
    ratio = (north - south) * aspect(field) / (east - west)
    return (across, max(across * ratio, 1.5)) if ratio <= 1 else (max(across / ratio, 2.5), across)


def colour_bar(figure: Figure, image: ScalarMappable, axes: Sequence[Axes], top: float) -> None:
    """The bar beside maps of common colours, of whose values `top` is the largest amount, m."""
    # Pointed where values lie beyond the last colour.
    extend = "both" if top > image.norm.vmax * (1 + 1e-6) else "neither"
    bar = figure.colorbar(image, ax=list(axes), pad=0.02, aspect=28, shrink=0.9, extend=extend)
    bar.set_label("metres")
    bar.outline.set_linewidth(0.6)


def draw_maps(
    fields: Sequence[xr.DataArray],
    path: Path,
    overlay: Overlay = Overlay(),
    limit: Optional[float] = None,
) -> FilePath:
    """One map, or several side by side under common colours.

    Parameters
    ----------
    fields : sequence of xarray.DataArray, (y, x)
        Values in m.
    path : path
        Picture: png, pdf or svg.
    overlay : Overlay
        Coast and fault, the same on all maps.
    limit : float, optional
        The colours run from ``-limit`` to ``limit`` m. The largest amount of all fields when None.

    Returns
    -------
    pathlib.Path
        Where the picture lies.
    """
    picture = picture_path(path)
    for field in fields:
        overlay.check(field)
    columns = min(len(fields), 3)
    rows = -(-len(fields) // columns)
    width, height = panel_size(fields[0], 6.2 if len(fields) == 1 else 4.6)
    with plt.rc_context(STYLE):
        figure, grid = plt.subplots(
            rows,
            columns,
            squeeze=False,
            layout="compressed",
            figsize=(columns * (width + 0.6) + 1.2, rows * (height + 0.9)),
        )
        scale = limit or colour_limit(fields)
        image = None
        for axes, field in zip(grid.flat, fields):
            image = draw_map(axes, field, scale, overlay)
            axes.set_title(title_of(field))
        for axes in grid.flat[len(fields) :]:
            axes.set_axis_off()
        assert image is not None
        colour_bar(figure, image, list(grid.flat), largest(fields))
        write(figure, picture)
        plt.close(figure)
    return picture
