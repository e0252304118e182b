"""Fields put on the nodes that somebody asks for: a region, a spacing, another reference system."""

from __future__ import annotations

from dataclasses import dataclass
from fractions import Fraction
from typing import Optional

import numpy as np
import pyproj
import xarray as xr

from ..errors import Parameter, TidoraError, UsageError
from .cropping import cropped
from .kinds import GEOGRAPHIC, kind_of
from .reference import crs_of, kind_of_crs, to_crs, transformation, with_crs
from .resample import ToSource, resampled
from .shape import GridShape, Region
from .target import target_shape

RESAMPLINGS = ("auto", "bilinear", "mean")
"""auto: the mean over the new cell when that is at least twice as wide as the old one, else bilinear."""

_DEGREE = 111_195.0
"""m, of a degree of latitude on the mean sphere; only to choose between bilinear values and a mean."""


@dataclass(frozen=True)
class Placing:
    """Where the nodes of a result shall lie; those of the source when nothing is said."""

    region: Optional[Region] = None
    """West, east, south, north: first and last nodes. Degrees become the plane rectangle around them."""
    spacing: Optional[Fraction] = None
    """In the units of the result."""
    crs: Optional[str] = None
    """Reference system of the result; a plane without one is said to be in it."""
    source_crs: Optional[str] = None
    """Of the source, when it has none or a wrong one."""
    resampling: str = "auto"
    """One of `RESAMPLINGS`."""


@dataclass(frozen=True)
class _Target:
    """The grid on which a field is put."""

    shape: GridShape
    kind: str
    crs: Optional[pyproj.CRS]
    to_source: Optional[ToSource]
    """None when the co-ordinates are those of the source."""


def placed(field: xr.DataArray, placing: Placing) -> tuple[xr.DataArray, list[str]]:
    """The field on the nodes that are asked for; its values are computed when they are read.

    Parameters
    ----------
    field : xarray.DataArray, (y, x) or (time, y, x)
        A field in time keeps its nodes, or some of them.
    placing : Placing

    Returns
    -------
    field : xarray.DataArray
    notes : list of str
        What was done, for the user.

    Raises
    ------
    UsageError
        If what is asked for does not fit together.
    TidoraError
        If the source does not reach to all of the nodes, or a reference system is of no use.
    """
    if placing.source_crs is not None:
        field = with_crs(field, to_crs(placing.source_crs))
    own = crs_of(field)
    wanted = to_crs(placing.crs) if placing.crs is not None else own
    if own is None and wanted is not None:
        field, own = with_crs(field, wanted), wanted  # a plane grid of the program
    same = own is None or wanted is None or _same_system(field, own, wanted, placing)
    if same and placing.spacing is None:
        field = field if wanted is None else with_crs(field, wanted)
        if placing.region is None:
            return field, []
        field, note = cropped(field, placing.region)
        return field, [note]
    if "time" in field.dims:
        whole = "a whole series cannot be put on other nodes; "
        raise TidoraError((whole, Parameter("start"), " or ", Parameter("whole_sum"), " chooses one layer"))
    if placing.spacing is None:
        raise UsageError(("another reference system needs ", Parameter("spacing"), ", in the units of the new one"))
    kind = kind_of(field) if wanted is None else kind_of_crs(wanted)
    shape = target_shape(field, kind, float(placing.spacing), placing.region, None if same else wanted)
    to_source = None if same or own is None or wanted is None else transformation(wanted, own)
    field, note = _put(field, _Target(shape, kind, wanted, to_source), placing.resampling)
    return field, [note]


def _same_system(field: xr.DataArray, own: pyproj.CRS, wanted: pyproj.CRS, placing: Placing) -> bool:
    if wanted.equals(own, ignore_axis_order=True):
        return True
    # Degrees of which nobody has said the system are taken for those of any.
    unsaid = placing.source_crs is None and "crs_wkt" not in field.attrs
    return bool(wanted.is_geographic and own.is_geographic and unsaid)


def _put(field: xr.DataArray, target: _Target, resampling: str) -> tuple[xr.DataArray, str]:
    ratio = target.shape.dx / _source_spacing(field, target.kind)
    # A spacing in single precision may make a ratio of 2 a little less.
    samples = max(1, round(ratio)) if resampling == "mean" or (resampling == "auto" and ratio >= 1.999) else 1
    _check_covered(field, target)
    result = resampled(field, target.shape, target.kind, target.to_source, samples)
    note = (
        f"resampled: {'bilinear' if samples == 1 else f'mean of {samples} x {samples} bilinear values'}, "
        f"the spacing is {ratio:.3g} times that of the source"
    )
    return result if target.crs is None else with_crs(result, target.crs), note


def _source_spacing(field: xr.DataArray, kind: str) -> float:
    """Spacing of the source in the units of the target."""
    steps = [float(field[axis][-1] - field[axis][0]) / (field.sizes[axis] - 1) for axis in ("x", "y")]
    own_kind = kind_of(field)
    if own_kind == kind:
        return max(steps)
    return max(steps) * _DEGREE if own_kind == GEOGRAPHIC else max(steps) / _DEGREE


def _check_covered(field: xr.DataArray, target: _Target) -> None:
    """Refuses a target whose edge nodes lie outside of the source."""
    x, y = target.shape.x, target.shape.y
    edge_x = np.concatenate([x, x, np.full(y.size, x[0]), np.full(y.size, x[-1])])
    edge_y = np.concatenate([np.full(x.size, y[0]), np.full(x.size, y[-1]), y, y])
    source_x, source_y = (edge_x, edge_y) if target.to_source is None else target.to_source(edge_x, edge_y)
    own_x, own_y = np.asarray(field["x"].values, float), np.asarray(field["y"].values, float)
    near_x, near_y = 1e-4 * (own_x[1] - own_x[0]), 1e-4 * (own_y[1] - own_y[0])
    if kind_of(field) == GEOGRAPHIC:
        source_x = source_x - 360.0 * np.floor((source_x - own_x[0] + near_x) / 360.0)
        if own_x[-1] + 1.5 * (own_x[1] - own_x[0]) > own_x[0] + 360.0:
            source_x = np.clip(source_x, own_x[0], own_x[-1])  # around the earth
    outside = ~(
        (source_x >= own_x[0] - near_x)
        & (source_x <= own_x[-1] + near_x)
        & (source_y >= own_y[0] - near_y)
        & (source_y <= own_y[-1] + near_y)
    )
    if outside.any():
        at = int(np.flatnonzero(outside)[0])
        raise TidoraError(
            f"the region reaches out of the source: node {edge_x[at]:.10g}, {edge_y[at]:.10g} lies at "
            f"{source_x[at]:.6g}, {source_y[at]:.6g}, the source spans {own_x[0]:.6g} to {own_x[-1]:.6g}, "
            f"{own_y[0]:.6g} to {own_y[-1]:.6g}"
        )
