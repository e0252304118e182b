"""Runs to compare: configurations that nobody wrote, from a seed. Run n of a seed is the same wherever it is made."""

import struct
from dataclasses import dataclass
from typing import Any, List, Sequence, Tuple

import numpy as np
from case_files import Run


class Draw:
    """Choices of one run."""

    def __init__(self, seed: int, number: int) -> None:
        self.random = np.random.default_rng([seed, number])

    def chance(self, probability: float) -> bool:
        return bool(self.random.random() < probability)

    def among(self, *choices: Any) -> Any:
        return choices[int(self.random.integers(len(choices)))]

    def weighted(self, choices: Sequence[Tuple[float, Any]]) -> Any:
        weights = np.array([weight for weight, _ in choices])
        return choices[int(self.random.choice(len(choices), p=weights / weights.sum()))][1]

    def between(self, least: float, most: float) -> float:
        return float(self.random.uniform(least, most))

    def count(self, least: int, most: int) -> int:
        return int(self.random.integers(least, most + 1))


@dataclass
class Grid:
    """A topography: values[row, column], rows from south to north."""

    org_x: float
    org_y: float
    dx: float
    values: np.ndarray
    is_binary: bool

    @property
    def ny(self) -> int:
        return int(self.values.shape[0])

    @property
    def nx(self) -> int:
        return int(self.values.shape[1])

    def content(self) -> bytes:
        return self._binary() if self.is_binary else self._text()

    def _binary(self) -> bytes:
        header = struct.pack("<ddiif", self.org_x, self.org_y, self.nx, self.ny, self.dx)
        return header + self.values.astype("<f4").tobytes()

    def _text(self) -> bytes:
        ends = (self.org_x, self.org_y, self.org_x + self.dx * (self.nx - 1), self.org_y + self.dx * (self.ny - 1))
        lines = ["# topography", "%d %d" % (self.nx, self.ny), " ".join(repr(end) for end in ends)]
        lines += [" ".join("%.7g" % value for value in row) for row in self.values]
        return ("\n".join(lines) + "\n").encode()


# Columns lie along y: the second range. A column longer than 1024 points is worked on in pieces.
_SHAPES = (
    (0.15, ((1, 4), (1, 4))),
    (0.10, ((1, 4), (1025, 2300))),
    (0.05, ((200, 1500), (1, 3))),
    (0.60, ((5, 70), (5, 70))),
    (0.10, ((80, 130), (80, 130))),
)


def _topography(draw: Draw, ny: int, nx: int) -> np.ndarray:
    """Sea mostly, m, upwards; sometimes flat, with steps, land or holes."""
    depth = draw.among(0.0, draw.between(1.0, 300.0), draw.between(300.0, 8000.0))
    rows, columns = np.mgrid[0:ny, 0:nx]
    tilt = draw.between(-1.0, 1.0) * columns / max(nx, 2) + draw.between(-1.0, 1.0) * rows / max(ny, 2)
    values = -depth * (1.0 + draw.among(0.0, 0.3, 1.5) * tilt)
    values += draw.among(0.0, 1.0, 100.0, 1000.0) * draw.random.standard_normal((ny, nx))
    if draw.chance(0.2):
        values = np.round(values, -2)
    if draw.chance(0.03):
        values[draw.count(0, ny - 1), draw.count(0, nx - 1)] = draw.among(np.nan, np.inf, -np.inf, 1e30)
    return values


def _plane_place(draw: Draw, is_binary: bool) -> Tuple[float, float, float]:
    dx = 10.0 ** draw.between(1.5, 4.3)
    if not is_binary:
        dx = max(np.round(dx * 4.0) / 4.0, 0.25)  # the spacings of both axes must come out equal
    return float(np.round(draw.between(-1e6, 1e6))), float(np.round(draw.between(-1e6, 5e6))), float(np.float32(dx))


def _geographic_place(draw: Draw, is_binary: bool, nx: int, ny: int) -> Tuple[float, float, float]:
    dx = draw.among(1 / 4, 1 / 8, 1 / 16, 1 / 64)
    if max(nx, ny) > 130:
        dx = 1 / 512
    if is_binary:
        dx *= draw.between(0.7, 1.0)
    return draw.count(-170 * 8, 150 * 8) / 8, draw.count(-65 * 8, 50 * 8) / 8, float(np.float32(dx))


def _grid(draw: Draw, is_geographic: bool) -> Grid:
    columns, rows = draw.weighted(_SHAPES)
    nx, ny = draw.count(*columns), draw.count(*rows)
    is_binary = draw.chance(0.4) or min(nx, ny) == 1  # one column or row has no spacing in a text grid
    if is_geographic:
        org_x, org_y, dx = _geographic_place(draw, is_binary, nx, ny)
    else:
        org_x, org_y, dx = _plane_place(draw, is_binary)
    return Grid(org_x, org_y, dx, _topography(draw, ny, nx), is_binary)


def _nested(draw: Draw, outer: Grid) -> Grid:
    """A finer grid within another one, at times reaching beyond it."""
    nx, ny = draw.count(2, 60), draw.count(2, 60)
    x = outer.org_x + outer.dx * draw.count(-1, max(outer.nx - 1, 0))
    y = outer.org_y + outer.dx * draw.count(-1, max(outer.ny - 1, 0))
    return Grid(x, y, outer.dx / draw.among(1.0, 2.0, 4.0), _topography(draw, ny, nx), draw.chance(0.4))


def _element(draw: Draw, grid: Grid, is_geographic: bool) -> List[float]:
    """Ten columns of a fault file."""
    metre = 1.0 / 111e3 if is_geographic else 1.0
    x = grid.org_x + grid.dx * grid.nx * draw.between(-0.3, 1.3)
    y = grid.org_y + grid.dx * grid.ny * draw.between(-0.3, 1.3)
    if draw.chance(0.08):  # far away
        distance = 10.0 ** draw.between(5.5, 6.3 if is_geographic else 7.5) * metre
        angle = draw.between(0.0, 2.0 * np.pi)
        x, y = x + distance * np.cos(angle), y + distance * np.sin(angle)
    if is_geographic:
        x, y = min(max(x, -179.5), 179.5), min(max(y, -82.0), 82.0)
    if draw.chance(0.1):  # on a grid point
        x = grid.org_x + grid.dx * draw.count(0, grid.nx - 1)
        y = grid.org_y + grid.dx * draw.count(0, grid.ny - 1)
    # 89.9995 and 89.99995: about where the cosine of the dip is taken for zero.
    dip = draw.weighted(((6, draw.between(1, 89)), (2, draw.among(0, 30, 45, 90)), (1, draw.between(89.9993, 90.0))))
    strike = draw.weighted(((6, draw.between(-90, 400)), (2, draw.among(0, 90, 180, 270, 360))))
    rake = draw.weighted(((6, draw.between(-180, 180)), (2, draw.among(0, 90, -90, 180))))
    depth = draw.weighted(((1, 0.0), (8, draw.between(1, 5e4)), (0.3, draw.between(-2000, 0))))
    slip = draw.weighted(((1.5, 0.0), (7, draw.between(0.01, 20)), (1, draw.between(-5, 0))))
    length, width = 10.0 ** draw.between(2.5, 5.3), 10.0 ** draw.between(2.5, 5.0)
    return [y, x, draw.between(0, 2e4), depth, strike, dip, rake, length, width, slip]


def _fault_file(draw: Draw, grid: Grid, is_geographic: bool) -> str:
    lines = ["# elements"]
    has_times = draw.chance(0.5)
    for _ in range(draw.weighted(((4, 1), (5, draw.count(2, 6)), (1, draw.count(10, 30))))):
        columns = ["%.9g" % value for value in _element(draw, grid, is_geographic)]
        if has_times:
            columns += ["0", "%g" % draw.among(0, 0, 30, 60, 90.5), "%g" % draw.among(0, 30, 30, 45.25)]
        lines.append(" ".join(columns))
    return "\n".join(lines) + "\n"


def configuration(values: Sequence[Any]) -> bytes:
    """A configuration file of these values, in order, a caption before each."""
    return "".join("value %d\n%s\n" % (number, value) for number, value in enumerate(values, 1)).encode()


def random_run(seed: int, number: int) -> Run:
    """Run `number` of a seed."""
    draw = Draw(seed, number)
    is_geographic = draw.chance(0.3)
    grids = [_grid(draw, is_geographic)]
    for _ in range(draw.weighted(((65, 0), (25, 1), (10, 2)))):
        grids.append(_nested(draw, draw.among(*grids)) if draw.chance(0.8) else _grid(draw, is_geographic))
    tolerance = draw.weighted(((4, 0), (4, draw.among(1e-6, 1e-5, 1e-4, 1e-3, 0.01, 0.1, 1)), (2, draw.between(0, 1))))
    coord = int(is_geographic)
    values = ["generated", "out", "%.6g" % tolerance, int(draw.chance(0.5)), int(draw.chance(0.4)), coord, "fault.txt"]
    values += [draw.weighted(((6, -1), (2, 0), (2, 1))), "%.5g" % draw.between(0, 5)]
    values += ["%.7g" % (grids[0].dx * draw.between(0, 20)), len(grids)]
    files = {"fault.txt": _fault_file(draw, draw.among(*grids), is_geographic).encode()}
    for index, grid in enumerate(grids, 1):
        name = "grid%d.%s" % (index, "bin" if grid.is_binary else "txt")
        files[name] = grid.content()
        parent = draw.weighted(((3, 0), (1, index), (0.1, -1), (0.05, 9), (4, draw.count(1, index))))
        kind = 1 - coord if draw.chance(0.01) else coord
        values += [index, "r%d" % index, parent, kind, name]
    files["conf.txt"] = configuration(values)
    return Run("generated/%d-%d" % (seed, number), ["conf.txt"], files)
