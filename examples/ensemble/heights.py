#!/usr/bin/env python3
"""How often the sea surface at each point is how high: heights.py RUN UNITS PICTURE"""

import sys

import matplotlib
import numpy as np
import tidora
import xarray as xr

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

SHOWN = (0.5, 2.0, 5.0)
"""m: heights of the table."""

OUTLINE = ("unit_x", "unit_y", "strike", "dip", "length", "width")
"""What says where the units lie."""


def exceeded(heights: np.ndarray, level: float) -> float:
    """Part of the scenarios whose height is above a level."""
    return float(np.mean(heights > level))


def table(run: xr.Dataset) -> str:
    """A line for each point, from north to south as in the list."""
    head = "".join(f"{f'> {level:g} m':>9}" for level in SHOWN)
    lines = [f"{'point':12}{head}{'lowest':>9}{'highest':>9}"]
    for name, heights in zip(run["point_name"].values, run["eta"].values.T):
        parts = "".join(f"{100.0 * exceeded(heights, level):7.1f} %" for level in SHOWN)
        lines.append(f"{name:12}{parts}{heights.min():7.2f} m{heights.max():7.2f} m")
    return "\n".join(lines)


def draw(run: xr.Dataset, units: xr.Dataset, path: str) -> None:
    """A map of the units, of the points, and of where each scenario is highest; the curves of the points beside it."""
    colours = plt.get_cmap("turbo")(np.linspace(0.03, 0.97, run.sizes["point"]))
    figure, (place, curves) = plt.subplots(1, 2, figsize=(11.5, 5.6), layout="constrained")
    draw_map(place, run, units, colours)
    parts = np.arange(run.sizes["scenario"], 0, -1) / run.sizes["scenario"]
    for name, heights, colour in zip(run["point_name"].values, run["eta"].values.T, colours):
        curves.step(np.sort(heights), parts, where="pre", color=colour, label=name)
    curves.set(xlim=(0.0, None), ylim=(0.8 / parts.size, 0.5), yscale="log")
    curves.set(xlabel="height of the initial sea surface (m)", ylabel="part of the scenarios that are higher")
    curves.grid(True, which="both", linewidth=0.3)
    curves.legend(frameon=False)
    figure.savefig(path, dpi=100)


def draw_map(axes, run: xr.Dataset, units: xr.Dataset, colours: np.ndarray) -> None:
    x, y, floor = (units[name].values for name in ("x", "y", "topography"))
    axes.contourf(x, y, floor, levels=[0, 1e9], colors=["0.85"])
    axes.contour(x, y, floor, levels=[0], colors=["0.4"], linewidths=0.6)
    # The table of elements again: unit_x and unit_y are its x and y.
    elements = xr.Dataset({name.replace("unit_", ""): ("element", units[name].values) for name in OUTLINE})
    for corners in tidora.outlines(elements.assign_attrs(coord="geographic"), "globe"):
        axes.plot(*np.vstack([corners, corners[:1]]).T, color="0.6", linewidth=0.4)
    dots = axes.scatter(run["highest_x"], run["highest_y"], c=run["highest"], s=5, cmap="viridis_r", zorder=3)
    plt.colorbar(dots, ax=axes, label="dots: greatest height of each scenario (m)", shrink=0.8)
    axes.scatter(run["point_x"], run["point_y"], c=colours, s=55, marker="v", edgecolors="black", zorder=4)
    for name, east, north in zip(run["point_name"].values, run["point_x"].values, run["point_y"].values):
        axes.annotate(name, (east, north), (9, -9), textcoords="offset points", fontsize=8, zorder=5)
    axes.set(xlim=(x[0], x[-1]), ylim=(y[0], y[-1]), aspect=1.0 / np.cos(np.radians(y.mean())))
    axes.set(xlabel="longitude", ylabel="latitude")


def main() -> None:
    run, units = xr.open_zarr(sys.argv[1]).load(), xr.open_zarr(sys.argv[2]).drop_vars("response").load()
    print(table(run))
    draw(run, units, sys.argv[3])


if __name__ == "__main__":
    main()
