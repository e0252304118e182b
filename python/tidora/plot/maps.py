"""One map on one pair of axes."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, Optional

import numpy as np
import pyproj
import xarray as xr
from matplotlib.axes import Axes
from matplotlib.collections import LineCollection
from matplotlib.image import AxesImage
from matplotlib.patheffects import withStroke
from matplotlib.ticker import FuncFormatter, MaxNLocator

from ..errors import TidoraError
from ..faults.outlines import outlines
from ..fields.kinds import GEOGRAPHIC, kind_of
from ..fields.resample import sample

COLOURS = "RdBu_r"
COAST = "#3a3a32"
LAND = "#8d8a7c"
FAULT = "#1f5f3a"
MAX_NODES = 2000
"""Nodes of an axis that a picture shows; of more, every second, third, ... is drawn."""

_HALO = [withStroke(linewidth=2.5, foreground="white")]
_ELLIPSOID = pyproj.Geod(ellps="GRS80")


@dataclass(frozen=True)
class Overlay:
    """What is drawn over the colours of a map."""

    topography: Optional[xr.DataArray] = None
    """(y, x): its contour of 0 is the coast."""
    faults: Optional[xr.Dataset] = None
    """Elements: outlines, the upper edges thick."""

    def check(self, field: xr.DataArray) -> None:
        """Refuses overlays in co-ordinates of another kind than the field."""
        kind = kind_of(field)
        for what, other in (
            ("topography", None if self.topography is None else kind_of(self.topography)),
            ("fault", None if self.faults is None else self.faults.attrs["coord"]),
        ):
            if other is not None and other != kind:
                raise TidoraError(f"the {what} has {other} co-ordinates, the field {kind} ones: they share no map")


def thinned(field: xr.DataArray) -> xr.DataArray:
    """Every n-th node of a field, so that no axis has more than `MAX_NODES`."""
    steps = {axis: max(1, -(-field.sizes[axis] // MAX_NODES)) for axis in ("y", "x")}
    return field.isel({axis: slice(None, None, step) for axis, step in steps.items()})


def edges(field: xr.DataArray) -> tuple[float, float, float, float]:
    """West, east, south and north edge of the cells of a field."""
    limits = []
    for axis in ("x", "y"):
        nodes = np.asarray(field[axis].values)
        half = 0.5 * (nodes[1] - nodes[0]) if nodes.size > 1 else 0.5 * float(field.attrs.get("grid_spacing", 1.0))
        limits += [float(nodes[0] - half), float(nodes[-1] + half)]
    return limits[0], limits[1], limits[2], limits[3]


def aspect(field: xr.DataArray) -> float:
    """Length of a unit of y over that of a unit of x: true at the middle latitude of a geographic map."""
    if kind_of(field) != GEOGRAPHIC:
        return 1.0
    middle = 0.5 * float(field["y"][0] + field["y"][-1])
    return 1.0 / max(math.cos(math.radians(middle)), 0.05)


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
        _draw_faults(axes, overlay.faults)
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


def _draw_faults(axes: Axes, faults: xr.Dataset) -> None:
    corners = np.unique(np.round(outlines(faults), 9), axis=0)
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
        axes.plot(x, y, marker, color="black", markeredgecolor="white", markersize=7, zorder=7)
        axes.annotate(
            _metres(values[row, column]),
            (x, y),
            xytext=(9 if right else -9, 0),
            textcoords="offset points",
            va="center",
            ha="left" if right else "right",
            fontsize=9,
            path_effects=_HALO,
            zorder=8,
        )


def _metres(value: float) -> str:
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


def nice(length: float) -> float:
    """The largest of 1, 2, 5, 10, ... that is not above `length`."""
    power = 10.0 ** math.floor(math.log10(length))
    return max(step * power for step in (1, 2, 5) if step * power <= length)


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
        color="black",
        linewidth=2.5,
        solid_capstyle="butt",
        zorder=9,
        path_effects=[withStroke(linewidth=4.5, foreground="white")],
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


def profile(field: xr.DataArray, section: tuple[float, float, float, float]) -> tuple[np.ndarray, np.ndarray]:
    """Values along a straight line of the map.

    Parameters
    ----------
    field : xarray.DataArray, (y, x)
    section : tuple of float
        x0, y0, x1, y1 in the co-ordinates of the field.

    Returns
    -------
    distance, values : numpy.ndarray
        m from the start (on the GRS80 ellipsoid for degrees), and bilinear values in m, about two to a node.
    """
    x0, y0, x1, y1 = section
    spacing = float(field["x"][1] - field["x"][0])
    count = int(min(max(2 * math.hypot(x1 - x0, y1 - y0) / spacing, 50), 5000)) + 1
    x, y = np.linspace(x0, x1, count), np.linspace(y0, y1, count)
    if kind_of(field) == GEOGRAPHIC:
        _, _, steps = _ELLIPSOID.inv(x[:-1], y[:-1], x[1:], y[1:])
    else:
        steps = np.hypot(np.diff(x), np.diff(y))
    return np.concatenate([[0.0], np.cumsum(steps)]), sample(field, x, y)
