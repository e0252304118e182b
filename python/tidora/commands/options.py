"""Options that several commands have, and the words of the command line in place of those of the library."""

from __future__ import annotations

import argparse
import math
from fractions import Fraction
from typing import Sequence

from ..errors import Message, Parameter, worded
from ..faults.table import REFERENCES
from ..fields.kinds import KINDS

OPTIONS = {
    "at": "--at",
    "coord": "--coord",
    "count": "--count",
    "crs": "--crs",
    "depth": "--depth",
    "epoch": "--epoch",
    "faults": "MODEL",
    "fill": "--fill",
    "frame": "--frame",
    "kajiura": "--kajiura",
    "magnitude": "--magnitude",
    "number": "NUMBER",
    "reference": "--reference",
    "region": "--region",
    "rigidity": "--rigidity",
    "scaling": "--scaling",
    "seed": "--seed",
    "size": "--size",
    "slope": "--slope",
    "source": "IN",
    "spacing": "--spacing",
    "spectrum": "--spectrum",
    "start": "--snapshot",
    "step": "--dt",
    "store": "STORE",
    "table": "TABLE",
    "target": "OUT",
    "threads": "--threads",
    "times": "--times",
    "tolerance": "--tolerance",
    "topography": "TOPOGRAPHY",
    "units": "UNITS",
    "variable": "--variable",
    "whole_sum": "--sum",
    "window": "--window",
}
"""What the parameters that messages of the library name are called on the command line. What only Python gives keeps
its name."""

_LINES = ("--region", "--section")
"""Options whose value may start with a minus and be no single number."""


def in_options(message: Message) -> str:
    """A message of the library for somebody at the command line: its parameters under the names of their options."""

    def option(parameter: Parameter) -> str:
        return f"{OPTIONS.get(parameter.name, parameter.name)} {parameter.value}".rstrip()

    return worded(message, option)


def listed(words: Sequence[str], last: str) -> str:
    """Words in a row, `last` before the last of them."""
    return f" {last} ".join([", ".join(words[:-1]), words[-1]] if len(words) > 1 else words)


def joined(arguments: Sequence[str]) -> list[str]:
    """The arguments with the values of some options attached by ``=``: -75/-70/-40/-30 is no option."""
    words: list[str] = []
    for word in arguments:
        if words and words[-1] in _LINES:
            words[-1] += f"={word}"
        else:
            words.append(word)
    return words


def positive(word: str) -> float:
    """A number above 0."""
    value = float(word)
    if not 0 < value < float("inf"):
        raise argparse.ArgumentTypeError(f"{word} is not above 0")
    return value


positive.__name__ = "_positive"  # stands in what argparse says of a word that is no number, which stays


def not_negative(word: str) -> float:
    """A number from 0 on."""
    value = float(word)
    if not 0 <= value < math.inf:
        raise argparse.ArgumentTypeError(f"{word} is not 0 or above")
    return value


def whole(word: str) -> int:
    """A whole number from 1 on."""
    value = int(word)
    if value < 1:
        raise argparse.ArgumentTypeError(f"{word} is not 1 or above")
    return value


def not_negative_whole(word: str) -> int:
    """A whole number from 0 on."""
    value = int(word)
    if value < 0:
        raise argparse.ArgumentTypeError(f"{word} is not 0 or above")
    return value


# They stand in what argparse says of a word that is no number.
not_negative.__name__, whole.__name__, not_negative_whole.__name__ = "_not_negative", "_count", "_seed"


def four_numbers(word: str, other: str, own: str, form: str) -> tuple[float, ...]:
    """Four numbers separated by `own`, or by `other`; `form` says what they are."""
    values = tuple(float(part) for part in word.replace(other, own).split(own))
    if len(values) != 4 or not all(math.isfinite(value) for value in values):
        raise argparse.ArgumentTypeError(f"{word} is not {form}")
    return values


def region(word: str) -> tuple[float, ...]:
    """West/east/south/north."""
    values = four_numbers(word, ",", "/", "west/east/south/north")
    if values[0] >= values[1] or values[2] >= values[3]:
        raise argparse.ArgumentTypeError(f"{word}: west is below east, south below north")
    return values


def spacing(word: str) -> Fraction:
    """A number above 0, or a fraction."""
    try:
        value = Fraction(word)
    except (ValueError, ZeroDivisionError):
        raise argparse.ArgumentTypeError(f"{word} is neither a number nor a fraction such as 1/12") from None
    if value <= 0:
        raise argparse.ArgumentTypeError(f"{word} is not above 0")
    return value


# They stand in what argparse says of a word that cannot be read.
region.__name__, spacing.__name__ = "_region", "_spacing"


def add_input_options(parser: argparse.ArgumentParser) -> None:
    """How the files that are read are to be understood."""
    parser.add_argument(
        "--coord",
        choices=KINDS,
        help="co-ordinates of grids and fault files that do not say it: "
        "plane is metres, geographic is degrees (guessed with a warning)",
    )
    parser.add_argument(
        "--variable", metavar="NAME", help="variable of a NetCDF file (the only one with rows and columns)"
    )


def add_reference(parser: argparse.ArgumentParser) -> None:
    """The point of an element that a published model gives."""
    parser.add_argument(
        "--reference",
        choices=REFERENCES,
        help="point of a subfault that a published model gives, if it is not the one that is known of its format",
    )


def add_rigidity(parser: argparse.ArgumentParser, pascal: float, what: str) -> None:
    """The rigidity in GPa."""
    parser.add_argument(
        "--rigidity", type=positive, default=pascal / 1e9, metavar="GPA", help=f"for the {what}, in GPa (%(default)g)"
    )
