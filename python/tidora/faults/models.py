"""The one table of the formats of published models, and `read_faults`, which knows all of them.

A new format is a module beside this one with ``is_model(head)`` and ``read(reading, reference)``, and a line here.
"""

from __future__ import annotations

from types import ModuleType
from typing import Optional

import xarray as xr

from .. import arguments, text
from ..errors import FileError, Parameter, Path, TidoraError
from ..fields.kinds import GEOGRAPHIC, KINDS
from . import fsp, geojson, noaa_units, param, rupt, unit_csv
from .model_text import HEAD, OTHER_ENCODINGS, Reading, decoded
from .table import REFERENCES, read_fault_file

MODELS: tuple[ModuleType, ...] = (fsp, param, geojson, noaa_units, rupt, unit_csv)
"""A file belongs to the first that takes it."""


def recognised(path: Path) -> Optional[ModuleType]:
    """The module of the format of a published model, by the first lines of a file; None if it is none."""
    text.regular_size(path)
    try:
        with open(path, "rb") as file:
            head = file.read(HEAD)
    except OSError as error:
        raise FileError(path, f"cannot be opened: {error.strerror}") from None
    # What is no plain text is recognised all the same, so that its reader can say what is wrong with it.
    words = head.decode("utf-16", "replace") if head[:2] in OTHER_ENCODINGS else decoded(head)
    words = words.replace("\r\n", "\n")
    return next((module for module in MODELS if module.is_model(words)), None)


def is_content(path: Path) -> bool:
    """True for a published model."""
    return recognised(path) is not None


def read_faults(path: Path, coord: Optional[str] = None, *, reference: Optional[str] = None) -> xr.Dataset:
    """Elements of a fault file or of a published rupture model, which is recognised by its content.

    Parameters
    ----------
    path : path
        Fault file; NEIC or SRCMOD ``.fsp``; NEIC or UCSB ``.param``; NEIC ``FFM.geojson``; CSV with units in its
        headers; table of NOAA's unit sources; ``.rupt`` table.
    coord : {'plane', 'geographic'}, optional
        Whether the reference points of a fault file are in metres or degrees, which it does not say: without this it is
        guessed, with a `TidoraWarning`. Models are in degrees.
    reference : {'top start', 'top centre', 'centroid', 'bottom start', 'bottom centre', 'noaa'}, optional
        The point of an element that the rows of a model give, if it is not the one that is known of the format; see
        `make_faults`. Fault files give the "top start", outlines in GeoJSON all corners: nothing else can be said.

    Returns
    -------
    xarray.Dataset
        One float64 variable ``(element,)`` for each column, with attribute ``units``: ``x, y, base_offset, depth,
        strike, dip, rake, length, width, slip, lag_time, duration``; ``rigidity`` (Pa) where the file has moments or
        rigidities; ``plane``, ``along``, ``down`` where its layout is known; co-ordinate ``line`` has the lines of the
        file. Attributes ``coord``, ``source_file``, ``format``, ``reference`` (what the rows give; the table has the
        start of the upper edge), ``assumptions`` (texts), and ``stated_magnitude`` and ``stated_moment`` (N m) where
        the file states them.

    Warns
    -----
    TidoraWarning
        Of everything that was assumed, and of what contradicts itself in the file.

    Raises
    ------
    FileError
        If the file breaks a rule of its format.
    TidoraError
        If `coord` or `reference` does not fit the file.
    """
    arguments.path("path", path)
    if coord is not None:
        arguments.choice("coord", coord, KINDS)
    if reference is not None:
        arguments.choice("reference", reference, REFERENCES)
    module = recognised(path)
    if module is None:
        return read_fault_file(path, coord, reference=reference)
    if coord not in (None, GEOGRAPHIC):
        raise TidoraError((Parameter("coord"), f" is {GEOGRAPHIC} in a published model, not {coord}"))
    table: xr.Dataset = module.read(Reading(path), reference)
    return table
