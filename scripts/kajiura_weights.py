#!/usr/bin/env python3
"""Makes the weights of the converged Kajiura filter.

  scripts/kajiura_weights.py          prints the table of src/kajiura/ConvergedLattice.h and its errors
  scripts/kajiura_weights.py --check  compares them with what stands there; exit status 1 where they differ

The filter answers a wave of wave number k over water of depth d with 1 / cosh(k d): K. Kajiura (1963), The leading wave
of a tsunami, Bull. Earthq. Res. Inst. 41, 535-571. Its weight is constant on the cells between lines x = +-a and
y = +-a, in units of the depth. A cell's own response is known, so the weights follow from least squares: over waves in
all directions, under the condition that they sum to 1. Weights depend on the sizes of two intervals alone, which makes
them symmetric.

Needs numpy (Debian: python3-numpy).
"""

import re
import sys
from pathlib import Path

import numpy as np

HEADER = Path(__file__).resolve().parent.parent / "src" / "kajiura" / "ConvergedLattice.h"

# Distances of the cells' edges: found by a random search for eight lines that keep the errors of waves and of a step
# small, and rounded. Short waves ripple least when the inner cells have different sizes: no wave then meets all of
# their side lobes at once.
EDGES = np.array([0.37, 0.73, 1.07, 1.32, 1.82, 2.53, 3.35, 4.44])
# Cells that lie wholly beyond this distance have no weight: the four in the corners.
REACH = 4.6
# Up to here the response is fitted; beyond it waves are only to be damped, which counts as little as this.
FITTED = 6.0
BEYOND = 0.02
# The finest grid: its spacing in depths. Waves of up to pi / FINEST along both axes are seen by it.
FINEST = 1.0 / 27.0
DECIMALS = 6
# Largest errors, stated in the comments of the header: of long and of short waves, of a step along an axis.
STATED = (1.1e-3, 2.9e-2, 4.2e-3)


def intervals(k):
    """Integral of cos(k x) over both intervals of each distance, one row each."""
    k = np.where(np.abs(k) < 1e-6, 1e-6, k)
    return 2.0 * np.diff(np.sin(np.outer(np.concatenate([[0.0], EDGES]), k)) / k, axis=0)


def pairs():
    """(i, j), i <= j: one for each weight that is free."""
    inner = np.concatenate([[0.0], EDGES[:-1]])
    n = len(EDGES)
    return [(i, j) for i in range(n) for j in range(i, n) if np.hypot(inner[i], inner[j]) < REACH]


def responses(waves):
    """A row for each wave: the responses of the cells (i, j) and (j, i) together, of density 1."""
    x, y = intervals(waves[:, 0]), intervals(waves[:, 1])
    return np.array([x[i] * y[j] if i == j else x[i] * y[j] + x[j] * y[i] for i, j in pairs()]).T


def polar(numbers, angles):
    return np.array([(k * np.cos(a), k * np.sin(a)) for k in numbers for a in np.radians(angles)])


def wanted(waves):
    return 1.0 / np.cosh(np.hypot(waves[:, 0], waves[:, 1]))


def fitted():
    """Densities of the cells, rounded; symmetric matrix."""
    long = polar(np.linspace(0.2, FITTED, 60), np.linspace(0.0, 45.0, 13))
    short = polar(np.arange(6.2, 40.0, 0.2), np.linspace(0.0, 45.0, 13))
    rows = np.vstack([responses(long), BEYOND * responses(short)])
    aims = np.concatenate([wanted(long), BEYOND * wanted(short)])
    area = responses(np.zeros((1, 2)))
    count = rows.shape[1]
    # Lagrange: the least of |rows w - aims|^2 under area w = 1.
    system = np.block([[rows.T @ rows, area.T], [area, np.zeros((1, 1))]])
    solution = np.linalg.solve(system, np.concatenate([rows.T @ aims, [1.0]]))[:count]
    matrix = np.zeros((len(EDGES), len(EDGES)))
    for (i, j), density in zip(pairs(), solution):
        matrix[i, j] = matrix[j, i] = round(density, DECIMALS)
    return matrix


def flat(matrix):
    return np.array([matrix[i, j] for i, j in pairs()])


def errors(matrix):
    """Largest differences from 1 / cosh(k d): up to k d = 6, and of shorter waves; and of a step from theory."""
    densities = flat(matrix) / (responses(np.zeros((1, 2))) @ flat(matrix))
    angles = np.linspace(0.0, 45.0, 46)
    highest = np.pi / FINEST
    axis = np.linspace(0.0, highest, 340)
    square = np.array([(x, y) for x in axis for y in axis if y <= x and np.hypot(x, y) > FITTED])
    found = []
    for waves in (
        polar(np.linspace(0.0, FITTED, 601), angles),
        np.vstack([polar(np.arange(FITTED, 40.0, 0.05), angles), square]),
    ):
        found.append(np.abs(responses(waves) @ densities - wanted(waves)).max())
    return (*found, step_error(matrix))


def step_error(matrix):
    """Largest difference of the height beside a step along an axis from 2 / pi arctan(exp(pi x / 2 d))."""
    edges = np.concatenate([[0.0], EDGES])
    marginal = matrix @ np.diff(edges)
    share = np.concatenate([[0.0], np.cumsum(marginal * np.diff(edges))])
    x = np.linspace(0.0, 8.0, 8001)
    height = 0.5 + 0.5 * np.interp(x, edges, share / share[-1])
    return np.abs(height - 2.0 / np.pi * np.arctan(np.exp(np.pi * x / 2.0))).max()


def rows_of(matrix):
    return ["{" + ", ".join(f"{value:.{DECIMALS}f}" for value in row) + "}" for row in matrix]


def print_all():
    matrix = fitted()
    print("distances of the edges:")
    print("    " + ", ".join(f"{edge:g}" for edge in EDGES))
    print("densities:")
    for row in rows_of(matrix):
        print(f"    {row},")
    print(f"least of them that is not 0      {matrix[matrix != 0].min():.{DECIMALS}f}")
    names = ("k d up to 6, largest error", "shorter waves, largest error", "step along an axis, error")
    for name, value in zip(names, errors(matrix)):
        print(f"{name:32} {value:.3e}")


def numbers_of(name, text):
    """The numbers between the braces of a constant."""
    body = re.search(r"\b" + name + r"(?:\[\w*\])+ = \{(.*?)\};", text, re.DOTALL)
    return [float(number) for number in re.findall(r"\d+\.\d+", body.group(1))] if body else None


def check():
    matrix = fitted()
    text = HEADER.read_text(encoding="utf-8")
    failures = 0
    for name, values in (("kEdgeDistance", EDGES), ("kCellDensity", matrix.ravel())):
        found = numbers_of(name, text)
        if found != [float(value) for value in values]:
            print(f"{HEADER}: {name} is {found}, not {list(values)}")
            failures += 1
    for value, stated in zip(errors(matrix), STATED):
        if not 0.95 * stated <= value <= stated:
            print(f"error {value:.3e}, not {stated:.3e}")
            failures += 1
    print(f"kajiura_weights: {len(EDGES)} edges and {matrix.size} densities compared, {failures} failures")
    return failures == 0


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        sys.exit(0 if check() else 1)
    if sys.argv[1:]:
        sys.exit("Usage: scripts/kajiura_weights.py [--check]")
    print_all()
