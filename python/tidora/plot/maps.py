"""One map on one pair of axes."""

from __future__ import annotations

from typing import Any

import numpy as np
import pyproj
import xarray as xr
from matplotlib.axes import Axes
from matplotlib.collections import LineCollection
from matplotlib.image import AxesImage
from matplotlib.patheffects import withStroke
from matplotlib.ticker import FuncFormatter, MaxNLocator

from ..faults.outlines import outlines
from ..fields.kinds import GEOGRAPHIC, kind_of
from .colours import COAST, COLOURS, FAULT, INK, LAND, PAPER
from .extent import aspect, edges, thinned
from .limits import nice
from .overlay import Overlay

_HALO = [withStroke(linewidth=2.5, foreground=PAPER)]
_ELLIPSOID = pyproj.Geod(ellps="GRS80")


def draw_map(axes: Axes, field: xr.DataArray, limit: float, overlay: Overlay, marks: bool = True) -> AxesImage:
    """Draws a field with its overlays.

    Parameters
    ----------
    axes : matplotlib.axes.Axes
    field : xarray.DataArray, (y, x)
        Values in m.
    limit : float
        The colours run from ``-limit`` to ``limit``.
    overlay : Overlay
    marks : bool
        Points out the highest and the lowest node.

    Returns
    -------
    matplotlib.image.AxesImage
        For the colour bar.
    """
    shown = thinned(field)
    west, east, south, north = edges(shown)
    image = axes.imshow(
        np.ma.masked_invalid(shown.values),
        cmap=COLOURS,
        vmin=-limit,
        vmax=limit,
        origin="lower",
        extent=(west, east, south, north),
        interpolation="nearest",
        zorder=1,
    )
    if overlay.topography is not None:
        _draw_coast(axes, overlay.topography)
    if overlay.faults is not None:
        _draw_faults(axes, outlines(overlay.faults, overlay.frame), field)
    if marks:
        _draw_extremes(axes, shown)
    axes.set_xlim(west, east)
    axes.set_ylim(south, north)
    axes.set_aspect(aspect(field))
    _label_axes(axes, field, (west, east, south, north))
    _draw_scale(axes, field, (west, east, south, north))
    return image


def _draw_coast(axes: Axes, topography: xr.DataArray) -> None:
    land = thinned(topography)
    if min(land.shape) < 2:
        return  # no contour without cells
    heights = np.ma.masked_invalid(np.asarray(land.values, dtype=float))
    if heights.count() == 0 or not float(heights.min()) < 0 < float(heights.max()):
        return
    x, y = land["x"].values, land["y"].values
    axes.contourf(x, y, heights, levels=[0, 1e9], colors=[LAND], alpha=0.28, zorder=2)
    axes.contour(x, y, heights, levels=[0], colors=[COAST], linewidths=0.8, zorder=3)


def _draw_faults(axes: Axes, corners: np.ndarray, field: xr.DataArray) -> None:
    corners = np.unique(np.round(corners, 9), axis=0)
    if kind_of(field) == GEOGRAPHIC:
        # In the turn of the map, whichever way its longitudes count.
        middle = 0.5 * (float(field["x"][0]) + float(field["x"][-1]))
        corners[..., 0] += 360.0 * np.round((middle - corners[:, :1, 0]) / 360.0)
    axes.add_collection(
        LineCollection(
            [np.vstack([element, element[:1]]) for element in corners],
            colors=FAULT,
            linewidths=0.5,
            alpha=0.7,
            zorder=4,
        )
    )
    axes.add_collection(
        LineCollection(
            [element[:2] for element in corners],
            colors=FAULT,
            linewidths=1.3,
            zorder=5,
            capstyle="butt",
            label="fault elements, upper edges thick",
        )
    )
    axes.legend(loc="lower right", fontsize=8.5, handlelength=1.2, framealpha=0.85, borderpad=0.4)


def _draw_extremes(axes: Axes, shown: xr.DataArray) -> None:
    values = np.asarray(shown.values, dtype=float)
    if not np.isfinite(values).any():
        return
    high, low = (divmod(int(at), values.shape[1]) for at in (np.nanargmax(values), np.nanargmin(values)))
    # The labels point away from each other, and into the map.
    high_right = high[1] >= low[1] if abs(high[1] - low[1]) < 0.5 * values.shape[1] else high[1] < low[1]
    for (row, column), marker, right in ((high, "^", high_right), (low, "v", not high_right)):
        if values[row, column] == 0:
            continue
        if not 0.15 < column / values.shape[1] < 0.85:
            right = column < 0.5 * values.shape[1]
        x, y = float(shown["x"][column]), float(shown["y"][row])
        axes.plot(x, y, marker, color=INK, markeredgecolor=PAPER, markersize=7, zorder=7)
        axes.annotate(
            metres(values[row, column]),
            (x, y),
            xytext=(9 if right else -9, 0),
            textcoords="offset points",
            va="center",
            ha="left" if right else "right",
            fontsize=9,
            path_effects=_HALO,
            zorder=8,
        )


def metres(value: float) -> str:
    """A height at its mark: centimetres while they are to be seen, and a real minus."""
    return f"{value:.{2 if abs(value) < 100 else 0}f} m".replace("-", "\u2212")


def _degrees(names: str) -> FuncFormatter:
    def text(value: float, _: Any) -> str:
        turned = (value + 180.0) % 360.0 - 180.0 if names == "EW" else value
        side = "" if turned == 0 or abs(turned) == 180 else names[0 if turned > 0 else 1]
        return f"{abs(turned):g}°{side}"

    return FuncFormatter(text)


def _label_axes(axes: Axes, field: xr.DataArray, box: tuple[float, float, float, float]) -> None:
    for axis in (axes.xaxis, axes.yaxis):
        axis.set_major_locator(MaxNLocator(nbins=6, steps=[1, 2, 5, 10]))
    if kind_of(field) == GEOGRAPHIC:
        axes.xaxis.set_major_formatter(_degrees("EW"))
        axes.yaxis.set_major_formatter(_degrees("NS"))
    elif max(abs(value) for value in box) >= 5000:
        kilometres = FuncFormatter(lambda value, _: f"{value / 1000:g}")
        axes.xaxis.set_major_formatter(kilometres)
        axes.yaxis.set_major_formatter(kilometres)
        axes.set_xlabel("x, km")
        axes.set_ylabel("y, km")
    else:
        axes.set_xlabel("x, m")
        axes.set_ylabel("y, m")
    axes.tick_params(direction="out", length=3, labelsize=9)


def _draw_scale(axes: Axes, field: xr.DataArray, box: tuple[float, float, float, float]) -> None:
    west, east, south, north = box
    x, y = west + 0.05 * (east - west), south + 0.05 * (north - south)
    if kind_of(field) == GEOGRAPHIC:
        _, _, metres = _ELLIPSOID.inv(x, y, x + 0.01 * (east - west), y)
        unit = metres / (0.01 * (east - west))
    else:
        unit = 1.0
    if not unit > 0:
        return
    length = nice(0.25 * (east - west) * unit)
    label = f"{length / 1000:g} km" if length >= 1000 else f"{length:g} m"
    axes.plot(
        [x, x + length / unit],
        [y, y],
        color=INK,
        linewidth=2.5,
        solid_capstyle="butt",
        zorder=9,
        path_effects=[withStroke(linewidth=4.5, foreground=PAPER)],
    )
    axes.annotate(
        label,
        (x + 0.5 * length / unit, y),
        xytext=(0, 4),
        textcoords="offset points",
        ha="center",
        va="bottom",
        fontsize=8.5,
        path_effects=_HALO,
        zorder=9,
    )
