"""Where the nodes of a grid lie."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
import xarray as xr

from ..errors import Parameter, TidoraError

MAX_VALUES = 2**31 - 1
"""nx times ny of a grid is below 2^31."""

Region = tuple[float, float, float, float]
"""West, east, south and north."""


@dataclass(frozen=True)
class GridShape:
    """Nodes of a grid, as the header of a binary grid has them.

    Attributes
    ----------
    org_x, org_y : float
        The first column and the southern row, in metres or degrees.
    nx, ny : int
        Columns eastward, rows northward.
    dx : float
        Spacing of both axes; always a number of single precision, as in the file.
    """

    org_x: float
    org_y: float
    nx: int
    ny: int
    dx: float

    def __post_init__(self) -> None:
        object.__setattr__(self, "dx", float(np.float32(self.dx)))

    @staticmethod
    def _axis(origin: float, count: int, dx: float) -> np.ndarray:
        # Index times spacing is rounded to single precision before the sum, as the program does it.
        return origin + (np.arange(count, dtype=np.float32) * np.float32(dx)).astype(np.float64)

    @property
    def x(self) -> np.ndarray:
        """float64 (nx,): co-ordinates of the columns."""
        return self._axis(self.org_x, self.nx, self.dx)

    @property
    def y(self) -> np.ndarray:
        """float64 (ny,): co-ordinates of the rows, from the south."""
        return self._axis(self.org_y, self.ny, self.dx)

    def __str__(self) -> str:
        return f"{self.nx} x {self.ny} nodes from {self.org_x:.10g}, {self.org_y:.10g}, spacing {self.dx:.7g}"


def _spacing_candidates(axis: np.ndarray) -> list[np.float32]:
    mean = np.float32((axis[-1] - axis[0]) / (len(axis) - 1))
    first = np.float32(axis[1] - axis[0])
    infinity = np.float32(np.inf)
    return [first, mean, np.nextafter(mean, -infinity), np.nextafter(mean, infinity)]


def _axis_spacing(axis: np.ndarray, name: str) -> list[tuple[np.float32, float]]:
    """Spacings that an axis may have, each with its largest misfit in units of the spacing."""
    fits = []
    for dx in _spacing_candidates(axis):
        if not dx > 0:
            raise TidoraError(f"the {name} co-ordinates do not increase")
        misfit = float(np.max(np.abs(GridShape._axis(float(axis[0]), len(axis), float(dx)) - axis))) / float(dx)
        fits.append((dx, misfit))
    return fits


def shape_of(field: xr.DataArray) -> GridShape:
    """Shape of a field whose last two dimensions are ``y`` and ``x``, both increasing.

    The spacing is the number of single precision that repeats the co-ordinates; a field that was read from a grid
    gives exactly the spacing of its file.

    Raises
    ------
    TidoraError
        If the nodes are not equally spaced within a thousandth of the spacing, or the axes differ.
    """
    x = np.asarray(field["x"].values, dtype=np.float64)
    y = np.asarray(field["y"].values, dtype=np.float64)
    stated = field.attrs.get("grid_spacing")
    if stated is not None and float(np.float32(stated)) == float(stated):
        shape = GridShape(float(x[0]), float(y[0]), x.size, y.size, float(stated))
        if np.allclose(shape.x, x, rtol=0, atol=1e-4 * shape.dx) and np.allclose(
            shape.y, y, rtol=0, atol=1e-4 * shape.dx
        ):
            return shape
    if x.size < 2 or y.size < 2:
        raise TidoraError("a grid of one row or column has no spacing")
    fits_x, fits_y = _axis_spacing(x, "x"), dict(_axis_spacing(y, "y"))
    common = [(max(misfit, fits_y[dx]), dx) for dx, misfit in fits_x if dx in fits_y]
    best_x, best_y = min(fits_x, key=lambda fit: fit[1]), min(fits_y.items(), key=lambda fit: fit[1])
    if not common:
        # Axes of nearly the same spacing, computed in different ways, agree in the mean.
        if abs(float(best_x[0]) - float(best_y[0])) > 1e-6 * float(best_x[0]):
            raise TidoraError(
                (
                    f"the spacings differ: {float(best_x[0]):.9g} along x, {float(best_y[0]):.9g} along y; ",
                    Parameter("spacing"),
                    " resamples",
                )
            )
        common = [(max(best_x[1], best_y[1]), best_x[0])]
    misfit, dx = min(common, key=lambda fit: fit[0])
    if misfit > 1e-3:
        raise TidoraError(f"the nodes are not equally spaced: off by up to {misfit:.3g} of a spacing")
    return GridShape(float(x[0]), float(y[0]), x.size, y.size, float(dx))


def checked_shape(field: xr.DataArray) -> GridShape:
    """Shape of a field that is to be a grid of the program.

    Raises
    ------
    TidoraError
        As `shape_of`; or if there are more values than `MAX_VALUES`.
    """
    shape = shape_of(field)
    if shape.nx * shape.ny > MAX_VALUES:
        raise TidoraError(f"a grid has fewer than 2^31 values, not {shape.nx} x {shape.ny}")
    return shape


def row_blocks(shape: GridShape, values: int = 1 << 18) -> list[slice]:
    """Slices of rows of about `values` values each, from the south."""
    step = max(1, values // shape.nx)
    return [slice(first, min(first + step, shape.ny)) for first in range(0, shape.ny, step)]
