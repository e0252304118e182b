"""The table of the elements of a rupture, and the fault file that holds it."""

from __future__ import annotations

import os
import warnings

import numpy as np
import xarray as xr

from .. import text
from ..errors import FileError, Parameter, Path, TidoraWarning
from ..fields.kinds import GEOGRAPHIC, KINDS, PLANE

_LEAST = 10
"""Columns of an element that has no time of its own."""

_COLUMNS = (
    # name, column of the file, unit, meaning
    ("y", 0, "", "reference point: start of the upper edge, looking along strike the near upper corner"),
    ("x", 1, "", "reference point: start of the upper edge, looking along strike the near upper corner"),
    ("base_offset", 2, "m", "depth of the upper edge below sea level; counts when there are several elements"),
    ("depth", 3, "m", "depth of the upper edge below the sea floor; counts when there is one element"),
    ("strike", 4, "degree", "clockwise from grid north; of the element's UTM zone on geographic grids"),
    ("dip", 5, "degree", "downward to the right of the strike direction"),
    ("rake", 6, "degree", "direction of slip of the hanging wall: 0 left-lateral, 90 reverse"),
    ("length", 7, "m", "along strike"),
    ("width", 8, "m", "down dip"),
    ("slip", 9, "m", "slip"),
    ("lag_time", 11, "s", "when the element starts to slip"),
    ("duration", 12, "s", "how long it slips"),
)


def is_first_line(line: str) -> bool:
    """True for a line of at least ten columns."""
    return len(text.tokens(line)) >= _LEAST


def read_faults(path: Path, coord: str) -> xr.Dataset:
    """Elements of a fault file.

    Parameters
    ----------
    path : path
        Fault file.
    coord : {'plane', 'geographic'}
        Whether reference points are in metres or degrees; the file does not say it.

    Returns
    -------
    xarray.Dataset
        One float64 variable ``(element,)`` for each column, with attribute ``units``: ``x, y, base_offset, depth,
        strike, dip, rake, length, width, slip, lag_time, duration``; co-ordinate ``line`` has the lines of the file.

    Raises
    ------
    FileError
        If a line has fewer than ten columns, or a column that counts starts with no number.
    """
    if coord not in KINDS:
        raise ValueError(f"coord is one of {KINDS}, not {coord!r}")
    rows, lines = [], []
    for line in text.bounded_lines(path, text.DATA_LINE):
        if line.is_comment:
            continue
        words = text.tokens(line.text)
        if len(words) < _LEAST:
            what = "an empty line" if text.is_line_end(line.text) else f"{len(words)} columns"
            raise FileError(path, f"an element has at least ten columns, not {what}", line.number)
        rows.append([_number(path, line.number, words, column, name) for name, column, _, _ in _COLUMNS])
        lines.append(line.number)
    table = np.array(rows, dtype=np.float64).reshape(len(rows), len(_COLUMNS))
    units = {"x": "degrees_east", "y": "degrees_north"} if coord == GEOGRAPHIC else {"x": "m", "y": "m"}
    variables = {
        name: ("element", table[:, at], {"units": unit or units[name], "long_name": meaning})
        for at, (name, _, unit, meaning) in enumerate(_COLUMNS)
    }
    return xr.Dataset(
        variables,
        {"line": ("element", np.array(lines, dtype=int))},
        {"coord": coord, "source_file": os.path.basename(os.fspath(path))},
    )


def _number(path: Path, line: int, words: list[str], column: int, name: str) -> float:
    if column >= 10 and len(words) < 13:
        return 0.0
    try:
        return text.to_float(words[column])
    except ValueError as error:
        raise FileError(
            path, f"column {column + 1} ({name}) is a number, not '{error}' (the program would take 0)", line
        ) from None


def upper_depth(faults: xr.Dataset) -> tuple[np.ndarray, str]:
    """Depth of the upper edges in m, (element,), and the column that counts for the program.

    ``depth``, below the sea floor, with one element; ``base_offset``, below sea level, with several.
    """
    name = "depth" if faults.sizes["element"] == 1 else "base_offset"
    return np.asarray(faults[name].values), name


def lower_depth(faults: xr.Dataset) -> np.ndarray:
    """float64 (element,): depth of the lower edges in m, from the same level as `upper_depth`."""
    return upper_depth(faults)[0] + faults["width"].values * np.sin(np.radians(faults["dip"].values))


def guess_coord(path: Path) -> str:
    """Kind of co-ordinates of a fault file that does not say it; the guess is reported as a `TidoraWarning`.

    Parameters
    ----------
    path : path
        Degrees when every reference point could be a latitude and a longitude.

    Returns
    -------
    str
        `PLANE` or `GEOGRAPHIC`.

    Raises
    ------
    FileError
        As `read_faults`.
    """
    table = read_faults(path, PLANE)
    fits = bool(np.all(np.abs(table["y"].values) <= 90) and np.all(np.abs(table["x"].values) <= 360))
    kind = GEOGRAPHIC if fits else PLANE
    taken = f"{os.fspath(path)}: reference points taken as {'degrees' if fits else 'metres'} (say "
    warnings.warn(TidoraWarning((taken, Parameter("coord", kind), " to be sure)")), stacklevel=2)
    return kind
