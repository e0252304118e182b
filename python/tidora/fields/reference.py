"""Reference systems of fields."""

from __future__ import annotations

from typing import Any, Callable, Optional

import numpy as np
import pyproj
import xarray as xr

from ..errors import TidoraError
from .kinds import GEOGRAPHIC, PLANE, kind_of

GEOGRAPHIC_CRS = "EPSG:4326"
"""Taken for degrees when nothing else is said; GRS80, which the program uses, differs from it by less than 0.1 mm."""


def to_crs(definition: Any) -> pyproj.CRS:
    """A reference system from a code (``EPSG:32654``), a PROJ string or WKT."""
    try:
        return pyproj.CRS.from_user_input(definition)
    except pyproj.exceptions.CRSError:
        raise TidoraError(f"no reference system is called '{definition}'; a code looks like EPSG:32654") from None


def kind_of_crs(crs: pyproj.CRS) -> str:
    """`PLANE` or `GEOGRAPHIC`.

    Raises
    ------
    TidoraError
        If it is neither degrees nor metres.
    """
    if len(crs.axis_info) != 2:
        raise TidoraError(f"{crs.name} has {len(crs.axis_info)} axes, a grid has two")
    if crs.is_geographic:
        return GEOGRAPHIC
    if crs.is_projected and all(axis.unit_conversion_factor == 1.0 for axis in crs.axis_info[:2]):
        return PLANE
    raise TidoraError(f"{crs.name} is neither in degrees nor in metres")


def crs_of(field: xr.DataArray) -> Optional[pyproj.CRS]:
    """Reference system of a field: its own, `GEOGRAPHIC_CRS` for degrees, None for a plane without one."""
    if field.attrs.get("crs_wkt"):
        return to_crs(field.attrs["crs_wkt"])
    return to_crs(GEOGRAPHIC_CRS) if kind_of(field) == GEOGRAPHIC else None


def with_crs(field: xr.DataArray, crs: pyproj.CRS) -> xr.DataArray:
    """The same field, said to be in `crs`.

    Raises
    ------
    TidoraError
        If one is in degrees and the other in metres.
    """
    if kind_of_crs(crs) != kind_of(field):
        raise TidoraError(f"the field has {kind_of(field)} co-ordinates, {crs.name} is {kind_of_crs(crs)}")
    return field.assign_attrs(crs_wkt=crs.to_wkt())


def transformation(
    source: pyproj.CRS, target: pyproj.CRS
) -> Callable[[np.ndarray, np.ndarray], tuple[np.ndarray, np.ndarray]]:
    """What takes x and y, or longitude and latitude, of one reference system to those of another."""
    transformer = pyproj.Transformer.from_crs(source, target, always_xy=True)

    def transform(x: np.ndarray, y: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
        a, b = transformer.transform(x, y)
        return np.asarray(a), np.asarray(b)

    return transform
