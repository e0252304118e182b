"""Pictures of every interval of a series."""

from __future__ import annotations

from pathlib import Path as FilePath
from typing import Iterator, Optional

import numpy as np
import xarray as xr
from matplotlib.figure import Figure

from ..errors import Path, TidoraError
from ..fields.series import total
from ..formats.contract import Step, no_progress
from ..formats.picture import pages, write
from ..formats.registry import picture_path
from .backend import STYLE, plt
from .figures import colour_bar, panel_size
from .limits import colour_limit, largest
from .maps import draw_map
from .overlay import Overlay
from .titles import title_of


def draw_frames(
    series: xr.DataArray,
    path: Path,
    overlay: Overlay = Overlay(),
    limit: Optional[float] = None,
    progress: Step = no_progress,
) -> list[FilePath]:
    """Every interval of a series: what it adds, and the sum up to its end, under common colours.

    Parameters
    ----------
    series : xarray.DataArray, (time, y, x)
        In order of time.
    path : path
        A pdf gets a page for each interval. For png and svg the start of the interval in whole seconds is put behind
        the name: ``frames_0030s.png``.
    overlay, limit :
        As for `draw_maps`.
    progress : callable
        Is told of each frame.

    Returns
    -------
    list of pathlib.Path
        The pictures.
    """
    picture = picture_path(path)
    if "time" not in series.dims:
        raise TidoraError("a picture of frames needs a series, this is one grid")
    overlay.check(series)
    top = _largest_of_frames(series)
    figures = _frames(series, limit or min(top, colour_limit([total(series)])), top, overlay)
    with plt.rc_context(STYLE):
        if picture.suffix.lower() == ".pdf":
            with pages(picture) as add:
                for start, figure in figures:
                    add(figure)
                    progress(f"{start:g} s")
            return [picture]
        written = []
        for start, figure in figures:
            name = picture.with_name(f"{picture.stem}_{int(start):04d}s{picture.suffix}")
            write(figure, name)
            written.append(name)
            progress(f"{start:g} s")
        return written


def _frames(series: xr.DataArray, scale: float, top: float, overlay: Overlay) -> Iterator[tuple[float, Figure]]:
    """Start of each interval, and its figure, which is closed when the next one is asked for."""
    running = np.zeros((series.sizes["y"], series.sizes["x"]))
    start = np.asarray(series["time"].values, float)
    for layer in range(series.sizes["time"]):
        added = series.isel(time=layer)
        running += added.values
        attrs = {
            **added.attrs,
            "intervals": layer + 1,
            "time_span": (float(start[0]), float(start[layer] + added.coords.get("rise_time", 0.0))),
        }
        so_far = xr.DataArray(running.copy(), {"y": added["y"], "x": added["x"]}, ("y", "x"), attrs=attrs)
        figure = _frame(added, so_far, scale, top, overlay)
        yield float(start[layer]), figure
        plt.close(figure)


def _largest_of_frames(series: xr.DataArray) -> float:
    running = np.zeros((series.sizes["y"], series.sizes["x"]))
    found = 0.0
    for layer in range(series.sizes["time"]):
        added = series.isel(time=layer)
        running += added.values
        found = max(found, largest([added]) if bool((added != 0).any()) else 0.0, float(np.abs(running).max()))
    return found or 1.0


def _frame(added: xr.DataArray, so_far: xr.DataArray, scale: float, top: float, overlay: Overlay) -> Figure:
    width, height = panel_size(added, 4.8)
    figure, grid = plt.subplots(1, 2, layout="compressed", figsize=(2 * (width + 0.6) + 1.2, height + 0.9))
    for axes, field in zip(grid, (added, so_far)):
        image = draw_map(axes, field, scale, overlay)
        axes.set_title(title_of(field))
    colour_bar(figure, image, list(grid), top)
    return figure
