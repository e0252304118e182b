#!/usr/bin/python3
"""Makes the polynomials and the rounded constants of the sources, with 50 digits.

  scripts/polynomials.py          prints them, and how far each polynomial is from its function
  scripts/polynomials.py --check  compares them with what stands in src/; exit status 1 where they differ

Needs mpmath (Debian: python3-mpmath), which nothing else here does and scripts/setup.sh does not install; --check
says so and succeeds without it.
"""

import math
import re
import sys
from pathlib import Path

try:
    import mpmath as mp
except ImportError:
    print("polynomials: skipped, there is no mpmath (Debian: python3-mpmath)")
    sys.exit(0 if sys.argv[1:] == ["--check"] else 2)

SOURCES = Path(__file__).resolve().parent.parent / "src"
mp.mp.dps = 50

# The bits of a positive number, read as an integer, are an exponent and a fraction f that stands for the binary
# logarithm of 1 + f. The error of that estimate is largest where its derivative vanishes, at f = 1 / ln 2 - 1.
ESTIMATE_ERROR = mp.log(1 / mp.log(2), 2) - (1 / mp.log(2) - 1)
# A difference of two estimates is off by that much at most, and its rounding to an integer by half a unit: that is
# the binary logarithm of the ratio which is left, and s = tanh(half of the natural one).
LARGEST_EXPONENT = ESTIMATE_ERROR + mp.mpf(1) / 2
LARGEST_S = mp.tanh(LARGEST_EXPONENT * mp.log(2) / 2)
TANGENT_OF_EIGHTH = mp.tan(mp.pi / 8)


def artanh_rest(w):
    """(2 artanh(s) / s - 2) / s^2 with s^2 = w"""
    if w < mp.mpf(10) ** -12:
        return mp.mpf(2) / 3 + 2 * w / 5
    s = mp.sqrt(w)
    return (2 * mp.atanh(s) / s - 2) / w


def arctan_rest(w):
    """(arctan(t) / t - 1) / t^2 with t^2 = w"""
    if w < mp.mpf(10) ** -12:
        return -mp.mpf(1) / 3 + w / 5
    t = mp.sqrt(w)
    return (mp.atan(t) / t - 1) / w


def arcsine_rest(w):
    """(arcsin(v) / v - 1) / v^2 with v^2 = w"""
    if w < mp.mpf(10) ** -12:
        return mp.mpf(1) / 6 + 3 * w / 40
    v = mp.sqrt(w)
    return (mp.asin(v) / v - 1) / w


class Polynomial:
    """A table of coefficients of x^0, x^1, ... that interpolates `function` at the Chebyshev points of [0, end]."""

    def __init__(self, name, function, terms, end, largest, stated_error):
        self.name = name
        self.function = function
        self.terms = terms
        self.end = end
        self.largest = largest  # of the argument in use
        self.stated_error = stated_error  # in the comment of the source

    def coefficients(self):
        points = [self.end / 2 * (1 - mp.cos(mp.pi * (2 * i + 1) / (2 * self.terms))) for i in range(self.terms)]
        powers = mp.matrix([[x**n for n in range(self.terms)] for x in points])
        return list(mp.lu_solve(powers, mp.matrix([self.function(x) for x in points])))

    def error(self, coefficients):
        """Largest error of the logarithm or the angle: s^3 times that of the polynomial, s^2 being its argument."""
        worst = mp.mpf(0)
        for i in range(2001):
            x = self.largest * i / 2000
            worst = max(worst, x**1.5 * abs(mp.polyval(coefficients[::-1], x) - self.function(x)))
        return worst

    def least_error(self):
        """The same of the best polynomial of as many terms: Remez' exchange, weight s^3."""
        n = self.terms
        grid = [self.largest / 2 * (1 - mp.cos(mp.pi * i / 800)) for i in range(1, 801)]
        points = [grid[round((i + 0.5) * 799 / (n + 1))] for i in range(n + 1)]
        for _ in range(10):
            rows = [[x**k for k in range(n)] + [(-1) ** i * x**-1.5] for i, x in enumerate(points)]
            solution = mp.lu_solve(mp.matrix(rows), mp.matrix([self.function(x) for x in points]))
            best = list(solution)[:n]
            extremes = []
            for x in grid:
                error = x**1.5 * (mp.polyval(best[::-1], x) - self.function(x))
                if extremes and (extremes[-1][1] > 0) == (error > 0):
                    extremes[-1] = max(extremes[-1], (x, error), key=lambda e: abs(e[1]))
                else:
                    extremes.append((x, error))
            while len(extremes) > n + 1:
                extremes.pop(0 if abs(extremes[0][1]) < abs(extremes[-1][1]) else -1)
            points = [x for x, _ in extremes]
        return max(abs(error) for _, error in extremes)


# Their ends: a little short of the largest s^2, 0.04015, which costs nothing; tan^2(pi/8); the square of half a radius.
POLYNOMIALS = [
    Polynomial("kArtanh", artanh_rest, 8, mp.mpf("0.0401"), LARGEST_S**2, mp.mpf("3.4e-19")),
    Polynomial("kArctan", arctan_rest, 11, TANGENT_OF_EIGHTH**2, TANGENT_OF_EIGHTH**2, mp.mpf("2.8e-18")),
    Polynomial("kArcsine", arcsine_rest, 10, mp.mpf(1) / 4, mp.mpf(1) / 4, mp.mpf("7.3e-15")),
]

CONSTANTS = {
    "kLn2": mp.log(2),
    "kPi": mp.pi,
    "kHalfPi": mp.pi / 2,
    "kTwoPi": 2 * mp.pi,
    "kKernelTwoPi": 2 * mp.pi,
    "kRadian": mp.pi / 180,
    "kRadiansPerDegree": mp.pi / 180,
    "kTangentOfEighth": TANGENT_OF_EIGHTH,
    # 7.5 sqrt(2), as 15 / sqrt(2) comes out in doubles: one unit in the last place below the nearest.
    "kQuadrupoleFactor": 15.0 / math.sqrt(2.0),
}


def print_all():
    for p in POLYNOMIALS:
        coefficients = p.coefficients()
        rounded = [float(c) for c in coefficients]
        print(f"{p.name}: {p.function.__doc__}, at the Chebyshev points of 0 .. {mp.nstr(p.end, 17)}")
        print("  " + ", ".join(map(repr, rounded)))
        print(f"  largest argument           {mp.nstr(p.largest, 6)}")
        print(f"  largest error              {mp.nstr(p.error([mp.mpf(c) for c in rounded]), 4)}")
        print(f"  ... of exact coefficients  {mp.nstr(p.error(coefficients), 4)}")
        print(f"  ... of the best polynomial {mp.nstr(p.least_error(), 4)}")
    for name, value in CONSTANTS.items():
        print(f"{name:18} {float(value)!r}")
    print(f"largest error of the bits as a binary logarithm  {mp.nstr(ESTIMATE_ERROR, 6)}")
    print(f"ratio that is left  2^{mp.nstr(-LARGEST_EXPONENT, 5)} .. 2^{mp.nstr(LARGEST_EXPONENT, 5)}")


def definitions(name):
    """Every definition of a constant of this name in the sources: file and numbers."""
    pattern = re.compile(r"constexpr double " + name + r"(?:\[\])? = ([^;]*);")
    for path in sorted(SOURCES.rglob("*")):
        if path.suffix in (".h", ".cpp"):
            for text in pattern.findall(path.read_text(encoding="utf-8")):
                yield path, [float(number) for number in text.strip("{} \n").split(",")]


def check():
    failures = checked = 0
    expected = {name: [float(value)] for name, value in CONSTANTS.items()}
    for p in POLYNOMIALS:
        expected[p.name] = [float(c) for c in p.coefficients()]
        error = p.error([mp.mpf(c) for c in expected[p.name]])
        if error > p.stated_error or error < p.stated_error * 9 / 10:
            print(f"{p.name}: error {mp.nstr(error, 4)}, not {mp.nstr(p.stated_error, 4)}")
            failures += 1
    for name, values in expected.items():
        found = list(definitions(name))
        failures += not found
        if not found:
            print(f"{name}: not in the sources")
        for path, numbers in found:
            checked += 1
            if numbers != values:
                print(f"{path}: {name} is {numbers}, not {values}")
                failures += 1
    print(f"polynomials: {checked} definitions compared, {failures} failures")
    return failures == 0


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        sys.exit(0 if check() else 1)
    if sys.argv[1:]:
        sys.exit("Usage: scripts/polynomials.py [--check]")
    print_all()
