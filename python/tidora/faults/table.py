"""The table of the elements of a rupture, and the fault file that holds it."""

from __future__ import annotations

import itertools
import os
import warnings
from typing import Mapping, Optional

import numpy as np
import xarray as xr

from .. import arguments, text
from ..errors import FileError, Parameter, Path, TidoraError, TidoraWarning
from ..fields.kinds import GEOGRAPHIC, KINDS, PLANE
from ..files import replacing

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

NAMES = tuple(name for name, _, _, _ in _COLUMNS)
"""Variables of a table."""

TOP_START = "top start"
"""The reference point of a table: where the upper edge begins, looking along strike."""

REFERENCES = (TOP_START, "top centre", "centroid", "bottom start", "bottom centre", "noaa")
"""Points of an element that may be given instead; noaa: the place of the bottom centre, the depth of the upper edge."""

_UNUSED = itertools.repeat(0)
"""The eleventh column."""


def is_first_line(line: str) -> bool:
    """True for a line of at least ten columns."""
    return len(text.tokens(line)) >= _LEAST


def read_fault_file(path: Path, coord: Optional[str] = None, *, reference: Optional[str] = None) -> xr.Dataset:
    """Elements of a fault file.

    Parameters
    ----------
    path : path
        Fault file.
    coord : {'plane', 'geographic'}, optional
        Whether reference points are in metres or degrees; the file does not say it: without this it is guessed, with a
        `TidoraWarning`.
    reference : str, optional
        The point of an element that the file gives. Fault files give the "top start", and nothing else can be said.

    Returns
    -------
    xarray.Dataset
        One float64 variable ``(element,)`` for each column, with attribute ``units``: ``x, y, base_offset, depth,
        strike, dip, rake, length, width, slip, lag_time, duration``; co-ordinate ``line`` has the lines of the file.

    Raises
    ------
    FileError
        If a line has fewer than ten columns, or a column that counts starts with no number.
    TidoraError
        If `coord` or `reference` is something else.
    """
    arguments.path("path", path)
    if coord is not None:
        arguments.choice("coord", coord, KINDS)
    if reference is not None and arguments.choice("reference", reference, REFERENCES) != TOP_START:
        raise TidoraError((Parameter("reference"), f" is {TOP_START} in a fault file, not {reference}"))
    rows, lines = _rows_of(path)
    if coord is None:
        coord = _guessed(path, rows)
    table = make_table(dict(zip(NAMES, rows.T)), coord, {"source_file": os.path.basename(os.fspath(path))})
    table.attrs.update(format="fault file", reference=TOP_START, assumptions=[])
    return table.assign_coords(line=("element", lines))


def _rows_of(path: Path) -> tuple[np.ndarray, np.ndarray]:
    """float64 (element, column) and the lines on which they stand."""
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
    return np.array(rows, dtype=np.float64).reshape(len(rows), len(_COLUMNS)), np.array(lines, dtype=int)


def make_table(values: Mapping[str, np.ndarray], coord: str, attrs: Mapping[str, str]) -> xr.Dataset:
    """A table of elements.

    Parameters
    ----------
    values : mapping
        float64 (element,) for each of `NAMES`.
    coord : str
        `PLANE` or `GEOGRAPHIC`.
    attrs : mapping
        Of the table, beside ``coord``.
    """
    units = {"x": "degrees_east", "y": "degrees_north"} if coord == GEOGRAPHIC else {"x": "m", "y": "m"}
    variables = {
        name: ("element", values[name], {"units": unit or units[name], "long_name": meaning})
        for name, _, unit, meaning in _COLUMNS
    }
    return xr.Dataset(variables, attrs={"coord": coord, **attrs})


def checked_columns(faults: xr.Dataset, name: str = "faults") -> dict[str, np.ndarray]:
    """float64 (element,) for each of `NAMES`, of a table that somebody has made or changed.

    Raises
    ------
    TypeError, TidoraError
        If it is no table of elements, or has values that are no finite numbers.
    """
    if not isinstance(faults, xr.Dataset):
        raise TypeError(f"{name} is a table of elements (xarray.Dataset), not {arguments.kind(faults)}")
    if faults.attrs.get("coord") not in KINDS:
        said = f" has no attribute coord that says one of {', '.join(KINDS)}"
        raise TidoraError((Parameter(name), said))
    columns = {}
    for column in NAMES:
        if column not in faults.variables or faults[column].dims != ("element",):
            raise TidoraError((Parameter(name), f" has no variable {column} over element"))
        values = faults[column].values
        if values.dtype.kind not in "iuf":
            raise TidoraError((Parameter(name), f": variable {column} holds no numbers"))
        columns[column] = values.astype(np.float64)
        wrong = np.flatnonzero(~np.isfinite(columns[column]))
        if wrong.size:
            said = f": {column} of element {wrong[0]} is {values[wrong[0]]}, no finite number ({wrong.size} such)"
            raise TidoraError((Parameter(name), said))
    return columns


def write_faults(faults: xr.Dataset, path: Path) -> None:
    """Writes a table of elements as a fault file of the program, with every digit.

    Parameters
    ----------
    faults : xarray.Dataset
        Of `read_faults` or `make_faults`. The file does not say whether it is in metres or degrees.
    path : path
        Appears when it is complete. Lines of thirteen columns, the eleventh of which the program ignores.

    Raises
    ------
    TidoraError
        If it is no table of elements, or has values that are no finite numbers.
    FileError
        If the file cannot be written.
    """
    columns = checked_columns(faults)
    of_file = {column: columns[name] for name, column, _, _ in _COLUMNS}
    with replacing(arguments.path("path", path)) as part, part.open("w", encoding="ascii", newline="\n") as file:
        file.write("# y x base_offset depth strike dip rake length width slip - lag_time duration\n")
        for row in zip(*(of_file[column].tolist() if column in of_file else _UNUSED for column in range(13))):
            file.write(" ".join(map(repr, row)) + "\n")


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
    return _guessed(path, _rows_of(path)[0])


def _guessed(path: Path, rows: np.ndarray) -> str:
    x, y = rows[:, NAMES.index("x")], rows[:, NAMES.index("y")]
    fits = bool(np.all(np.abs(y) <= 90) and np.all(np.abs(x) <= 360))
    kind = GEOGRAPHIC if fits else PLANE
    taken = f"{os.fspath(path)}: reference points taken as {'degrees' if fits else 'metres'} (say "
    warnings.warn(TidoraWarning((taken, Parameter("coord", kind), " to be sure)")), stacklevel=3)
    return kind
