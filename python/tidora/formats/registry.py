"""The one table of the formats, and what is found in it: what a file is, which endings there are.

A new format is a module beside this one (see the package) and a line in `FORMATS`.
"""

from __future__ import annotations

import os
from dataclasses import dataclass
from importlib import import_module
from pathlib import Path as FilePath
from types import ModuleType
from typing import Optional

import xarray as xr

from .. import text
from ..errors import FileError, Parameter, Path, UsageError
from .binary_grid import is_binary_name

FIELD, FAULTS, PICTURE = "field", "faults", "picture"
"""What a format holds."""


@dataclass(frozen=True)
class Format:
    """A line of the table."""

    module: str
    """Where its functions are; loaded when they are used, because the libraries of some take long to load."""
    name: str
    """What its files are called."""
    title: str = ""
    """The same among the formats of others; `name` when empty."""
    help: str = ""
    """What is said of its ending; `title` when empty. Formats of one text stand together."""
    reads: tuple[str, ...] = ()
    """Endings by which it is told, the usual one first."""
    writes: tuple[str, ...] = ()
    """Endings for which it is written, the usual one first."""
    first_line: str = ""
    """For texts that are told by their first line which is no comment: what that line holds."""
    by_content: bool = False
    """Told by what stands in the file, comments too, before any other text."""
    holds: str = FIELD
    series: bool = False
    """Takes a whole series, and not only a grid."""
    increments: bool = False
    """Takes only a series of which it is known that its layers are what each interval adds."""
    several: bool = False
    """Takes several fields of the same nodes."""
    system: bool = False
    """Says in which reference system it is."""
    takes: tuple[str, ...] = ()
    """Fields of `Writing` that are for this format."""

    def load(self) -> ModuleType:
        """The module with its functions."""
        return import_module(self.module, __package__)


# Help and messages keep this order; a first line that would suit two texts goes to the one that stands first.
# fmt: off
FORMATS: tuple[Format, ...] = (
    Format(".netcdf", "NetCDF", help="CF NetCDF, a whole series or one grid", reads=(".nc", ".grd", ".nc4"),
           writes=(".nc",), series=True, several=True, system=True, takes=("epoch",)),
    Format(".dtopo", "dtopo", "GeoClaw dtopo", "GeoClaw dtopo of type 3", writes=(".tt3", ".dtopo", ".dtt3"),
           series=True, increments=True, takes=("step",)),
    Format(".esri_ascii", "ESRI ASCII", reads=(".asc", ".agr"), writes=(".asc",)),
    Format(".geotiff", "GeoTIFF", reads=(".tif", ".tiff"), writes=(".tif", ".tiff"), system=True),
    Format(".binary_grid", "binary grid", "the grids of the program", "grids of Tidora", writes=(".bin",)),
    Format(".series_list", "list of a series", first_line="a list (start, length, path)", series=True),
    Format("..faults.models", "published rupture model", by_content=True, holds=FAULTS),
    Format("..faults.table", "fault file", first_line="a fault file (ten columns)", holds=FAULTS),
    Format(".text_grid", "text grid", "the grids of the program", "grids of Tidora", writes=(".txt",),
           first_line="a grid (columns and rows)"),
    Format(".picture", "picture", writes=(".png", ".pdf", ".svg"), holds=PICTURE),
)
# fmt: on


def ending(path: Path) -> str:
    """Ending of a name in lower case, with its dot."""
    return os.path.splitext(os.fspath(path))[1].lower()


def named(name: str) -> Format:
    """The format of a name."""
    return next(form for form in FORMATS if form.name == name)


def endings_written(holds: str = FIELD) -> tuple[str, ...]:
    """Every ending for which something is written."""
    return tuple(written for form in FORMATS if form.holds == holds for written in form.writes)


def recognise(path: Path) -> Format:
    """What a file is.

    The formats of other programs go by their endings, a binary grid by its name, a published model by its content; any
    other text goes by the first line that is no comment.

    Raises
    ------
    FileError
        If it is of no format that is read.
    """
    text.regular_size(path)
    for form in FORMATS:
        if ending(path) in form.reads:
            return form
    if is_binary_name(path):
        return named("binary grid")
    for form in FORMATS:
        if form.by_content and form.load().is_content(path):
            return form
    told = [form for form in FORMATS if form.first_line]
    for line in text.bounded_lines(path, text.GRID_LINE):
        if line.is_comment:
            continue
        for form in told:
            if form.load().is_first_line(line.text):
                return form
        simplest_first = sorted(told, key=lambda form: (form.holds != FIELD, form.series))
        raise FileError(path, "is neither " + ", nor ".join(form.first_line for form in simplest_first), line.number)
    raise FileError(path, "is empty, or holds comments only")


def open_field(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """Opens a grid or a series of any format.

    Parameters
    ----------
    path : path
        Grid, list file, NetCDF, GeoTIFF or ESRI ASCII.
    coord : {'plane', 'geographic'}, optional
        Kind of co-ordinates, where the file does not say it.
    variable : str, optional
        Variable of a NetCDF file.

    Returns
    -------
    xarray.DataArray
        Dims ``(y, x)`` or ``(time, y, x)``, both axes increasing.

    Raises
    ------
    FileError
        If it is none, or breaks a rule of its format.
    """
    form = recognise(path)
    if form.holds != FIELD:
        raise FileError(path, f"is a {form.name}; a grid or a series is needed here")
    field: xr.DataArray = form.load().open(path, coord, variable)
    return field


def picture_path(path: Path) -> FilePath:
    """The path of a picture.

    Raises
    ------
    UsageError
        If pictures of its ending are not drawn.
    """
    picture, known = FilePath(path), endings_written(PICTURE)
    if picture.suffix.lower() not in known:
        raise UsageError(f"a picture ends in {', '.join(known)}, not '{picture.suffix}'")
    return picture


def format_of_target(path: Path) -> Format:
    """The format in which a field is written under a name.

    Raises
    ------
    UsageError
        If the ending belongs to none, or the program would take a grid of this name for one of the other kind.
    """
    found = ending(path)
    form = next((form for form in FORMATS if form.holds == FIELD and found in form.writes), None)
    if form is None:
        known = f" says the format; '{found}' is none of {', '.join(endings_written())}"
        raise UsageError(("the ending of ", Parameter("target"), known))
    if form == named("binary grid") and not is_binary_name(path):
        raise UsageError("a grid that is called .bin and nothing else is read as text by the program")
    if form == named("text grid") and is_binary_name(path):
        raise UsageError("with .bin anywhere in its path the program reads a grid as binary; use another name")
    return form
