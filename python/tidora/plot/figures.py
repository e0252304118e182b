"""Pictures of maps, frames and sections."""

from __future__ import annotations

import math
from pathlib import Path as FilePath
from typing import Callable, Iterator, Optional, Sequence

import matplotlib

matplotlib.use("Agg")

import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import xarray as xr  # noqa: E402
from matplotlib.axes import Axes  # noqa: E402
from matplotlib.cm import ScalarMappable  # noqa: E402
from matplotlib.figure import Figure  # noqa: E402

from ..errors import Path, TidoraError  # noqa: E402
from ..fields.series import total  # noqa: E402
from ..formats.picture import pages, write  # noqa: E402
from ..formats.registry import picture_path  # noqa: E402
from .maps import Overlay, aspect, draw_map, edges, profile, thinned  # noqa: E402

Section = tuple[float, float, float, float]
Progress = Callable[[str], None]

_STYLE = {
    "font.size": 10,
    "axes.titlesize": 10.5,
    "axes.titlelocation": "left",
    "svg.hashsalt": "tidora",
    "pdf.fonttype": 42,
    "axes.linewidth": 0.8,
}
_LINE = "#b2182b"


def largest(fields: Sequence[xr.DataArray]) -> float:
    """Largest amount of all values, m; 1 when all are 0."""
    found = 0.0
    for field in fields:
        values = np.asarray(field.values)
        if np.isfinite(values).any():
            found = max(found, float(np.nanmax(np.abs(values[np.isfinite(values)]))))
    return found or 1.0


def colour_limit(fields: Sequence[xr.DataArray]) -> float:
    """Where the colours end when nobody says it, m.

    The largest amount, unless it stands far above what the rest of the map shows: then a round number above 97 percent
    of the nodes that have more than a fiftieth of it. What lies beyond gets the last colour, and the colour bar ends
    in a point.
    """
    top = largest(fields)
    amounts = [np.abs(np.asarray(thinned(field).values)).ravel() for field in fields]
    visible = np.concatenate([amount[amount > 0.02 * top] for amount in amounts])
    if visible.size == 0:
        return top
    rounded = round_up(float(np.percentile(visible, 97)))
    return rounded if rounded < 0.8 * top else top


def round_up(value: float) -> float:
    """The smallest of 1, 1.5, 2, 3, 4, 5, 6, 8, 10, 15, ... that is not below `value`."""
    power = 10.0 ** math.floor(math.log10(value))
    return min(step * power for step in (1, 1.5, 2, 3, 4, 5, 6, 8, 10) if step * power >= value * (1 - 1e-12))


def panel_size(field: xr.DataArray, across: float) -> tuple[float, float]:
    """Inches of a map whose width, or height when it is taller, is `across`."""
    west, east, south, north = edges(field)
    ratio = (north - south) * aspect(field) / (east - west)
    return (across, max(across * ratio, 1.5)) if ratio <= 1 else (max(across / ratio, 2.5), across)


def _colour_bar(figure: Figure, image: ScalarMappable, axes: Sequence[Axes], top: float) -> None:
    # Pointed where values lie beyond the last colour.
    extend = "both" if top > image.norm.vmax * (1 + 1e-6) else "neither"
    bar = figure.colorbar(image, ax=list(axes), pad=0.02, aspect=28, shrink=0.9, extend=extend)
    bar.set_label("metres")
    bar.outline.set_linewidth(0.6)


def span_of(field: xr.DataArray) -> str:
    """What of a series a field is, for a title; empty for a grid."""
    if "intervals" in field.attrs:
        start, end = field.attrs["time_span"]
        return f"sum of {field.attrs['intervals']} intervals, {start:g} s to {end:g} s"
    if "time" in field.coords:
        start, length = float(field["time"]), float(field.coords.get("rise_time", 0.0))
        return f"added from {start:g} s to {start + length:g} s" if length else f"added at {start:g} s"
    return ""


def title_of(field: xr.DataArray) -> str:
    """Two lines: what it is, and which part of it."""
    lines = [field.attrs.get("long_name", ""), field.attrs.get("source_file", "")]
    if span_of(field):
        lines[1] += f": {span_of(field)}"
    return "\n".join(lines)


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
    with plt.rc_context(_STYLE):
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
        _colour_bar(figure, image, list(grid.flat), largest(fields))
        write(figure, picture)
        plt.close(figure)
    return picture


def draw_frames(
    series: xr.DataArray,
    path: Path,
    overlay: Overlay = Overlay(),
    limit: Optional[float] = None,
    progress: Progress = lambda _: None,
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
    with plt.rc_context(_STYLE):
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
    _colour_bar(figure, image, list(grid), top)
    return figure


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
    with plt.rc_context(_STYLE):
        figure, grid = plt.subplots(
            len(ratios),
            1,
            layout="constrained",
            height_ratios=ratios,
            figsize=(max(width, 5.5) + 1.8, sum(ratios) + 1.6),
        )
        image = draw_map(grid[0], field, limit or colour_limit([field]), overlay)
        grid[0].set_title(title_of(field))
        _colour_bar(figure, image, [grid[0]], largest([field]))
        _draw_line(grid[0], section)
        _draw_profile(grid[1], distance, values, field.attrs.get("units", "m"))
        if land is not None:
            _draw_floor(grid[2], *land)
        grid[-1].set_xlabel("distance from A, km")
        for axes in grid[1:]:
            axes.set_xlim(0, distance[-1] / 1000)
            axes.annotate(
                "A",
                (0, 1),
                xycoords="axes fraction",
                xytext=(0, 3),
                textcoords="offset points",
                ha="center",
                weight="bold",
            )
            axes.annotate(
                "B",
                (1, 1),
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
    axes.plot([x0, x1], [y0, y1], color="black", linewidth=1.3, linestyle=(0, (5, 2)), zorder=6)
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
            bbox={"boxstyle": "round,pad=0.15", "facecolor": "white", "edgecolor": "none", "alpha": 0.8},
        )


def _draw_profile(axes: Axes, distance: np.ndarray, values: np.ndarray, unit: str) -> None:
    kilometres = distance / 1000
    axes.axhline(0, color="0.5", linewidth=0.7)
    axes.fill_between(
        kilometres, 0, values, where=values >= 0, color="#d6604d", alpha=0.35, linewidth=0, interpolate=True
    )
    axes.fill_between(
        kilometres, 0, values, where=values <= 0, color="#4393c3", alpha=0.35, linewidth=0, interpolate=True
    )
    axes.plot(kilometres, values, color="black", linewidth=1.2)
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
        color="#9ecae1",
        alpha=0.5,
        linewidth=0,
        interpolate=True,
    )
    axes.fill_between(kilometres, heights, floor, color="#8d8a7c", alpha=0.6, linewidth=0)
    axes.plot(kilometres, heights, color="#3a3a32", linewidth=1.0)
    axes.set_ylabel("topography, m")
    axes.grid(True, linewidth=0.4, alpha=0.6)
