"""Stochastic slip: scenarios of a magnitude on the elements of a table."""

from __future__ import annotations

from typing import Any, Optional

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..version import VERSION
from . import random_numbers, von_karman
from .moment import RIGIDITY
from .planes import Plane, planes_of
from .ruptures import HEADER, MEDIAN, SIZES, ruptures
from .scaling import MAGNITUDES, RELATIONS
from .slip_fields import FOR_HEADER, SNCF, SPECTRA, VON_KARMAN, Fields, slip_of
from .slip_table import make_slip_table
from .table import checked_columns


def stochastic_slip(
    faults: xr.Dataset,
    magnitude: Any,
    count: int,
    *,
    seed: int,
    scaling: str = "strasser2010",
    spectrum: str = SNCF,
    rigidity: float = RIGIDITY,
    layout: Any = None,
    size: str = MEDIAN,
    hurst: Optional[float] = None,
    correlation: Any = None,
    variation: Optional[float] = None,
) -> xr.Dataset:
    """Random slip of some magnitude on the elements of a table.

    A rupture is a rectangle of cells of one plane, which is drawn by area. Its size follows from the magnitude, is cut
    to the plane, and lies at any place of it with equal probability. The slip has the moment of the magnitude,
    10^(1.5 Mw + 9.1) N m, and the rakes of the table.

    Parameters
    ----------
    faults : xarray.Dataset
        Table of elements; their numbers are those of the units. Their places in their planes are the variables
        ``plane``, ``along`` and ``down``, or follow from runs of equal depth, rows along strike first.
    magnitude : float or array_like, (count,)
        Moment magnitude, of all scenarios or of each.
    count : int
        Of scenarios.
    seed : int
        From 0 to below 2^128. What a scenario draws depends on the seed and its number alone.
    scaling : {'strasser2010', 'allenhayes2017', 'thingbaijam2017'}
        Relation for length and width.
    spectrum : {'sncf2015', 'vonkarman'}
        Amplitude of the spectrum of Davies et al. (2015) with corner wavenumbers drawn for each scenario, negative slip
        set to 0; or a von Karman correlation with lognormal slip.
    rigidity : float
        Pa; counts also where the table has one of its own.
    layout : (int, int), optional
        Elements along strike and down dip of the only plane, rows along strike first, then down dip.
    size : {'median', 'drawn'}
        The median of the relation, or length and width drawn with its standard deviations, each by itself.
    hurst : float, optional
        Hurst number of a von Karman correlation, 0.75 when None.
    correlation : (float, float), optional
        Correlation lengths along strike and down dip in m; when None log10 of them in km is Mw / 2 - 2.5 and
        Mw / 3 - 1.5.
    variation : float, optional
        Standard deviation over mean of lognormal slip, 0.75 when None.

    Returns
    -------
    xarray.Dataset
        Slip table, with all units of a rupture, also those of slip 0. ``clipped`` over ``scenario``: the moment of the
        negative slip that was set to 0, as part of the moment that was left; restored to the moment of the magnitude.

    Raises
    ------
    TypeError, TidoraError
        If an argument is something else, or the layout is not known.
    """
    arguments.choice("scaling", scaling, tuple(RELATIONS))
    arguments.choice("spectrum", spectrum, SPECTRA)
    arguments.choice("size", size, SIZES)
    fields = Fields(
        seed=random_numbers.seed_of(seed),
        spectrum=spectrum,
        hurst=_of_von_karman("hurst", spectrum, hurst, von_karman.HURST, (0.05, 1.0)),
        lengths=_lengths(spectrum, correlation),
        variation=_of_von_karman("variation", spectrum, variation, von_karman.VARIATION, (0.01, 3.0)),
    )
    magnitudes = _magnitudes(magnitude, arguments.count("count", count))
    stiff = arguments.number("rigidity", rigidity)
    if stiff <= 0:
        raise TidoraError((Parameter("rigidity"), f" is above 0, not {stiff:g}"))
    columns = checked_columns(faults)
    planes = planes_of(faults, columns, layout)
    weight = stiff * columns["length"] * columns["width"]
    table = _drawn(planes, magnitudes, (scaling, size), weight, columns["rake"], fields)
    said = f"seed={fields.seed} scaling={scaling} spectrum={spectrum} rigidity={stiff:g} size={size}"
    if layout is not None:
        said += f" layout={layout[0]}x{layout[1]}"
    if spectrum == VON_KARMAN:
        lengths = "of the magnitude" if fields.lengths is None else "{:g}/{:g}".format(*fields.lengths)
        said += f" hurst={fields.hurst:g} variation={fields.variation:g} correlation={lengths}"
    return table.assign_attrs(history=f"tidora {VERSION}: stochastic_slip count={magnitudes.size} {said}")


def _magnitudes(magnitude: Any, count: int) -> np.ndarray:
    values = arguments.within("magnitude", arguments.numbers("magnitude", magnitude), *MAGNITUDES)
    if values.ndim and values.shape != (count,):
        said = f" is a number or one for each of {count} scenarios, not of shape {values.shape}"
        raise TidoraError((Parameter("magnitude"), said))
    return np.array(np.broadcast_to(values, (count,)))


def _of_von_karman(name: str, spectrum: str, value: Any, default: float, limits: tuple[float, float]) -> float:
    if value is None:
        return default
    if spectrum != VON_KARMAN:
        raise TidoraError((Parameter(name), " is for ", Parameter("spectrum", VON_KARMAN)))
    return float(arguments.within(name, np.array(arguments.number(name, value)), *limits))


def _lengths(spectrum: str, value: Any) -> Optional[tuple[float, float]]:
    if value is None:
        return None
    if spectrum != VON_KARMAN:
        raise TidoraError((Parameter("correlation"), " is for ", Parameter("spectrum", VON_KARMAN)))
    values = arguments.numbers("correlation", value)
    if values.shape != (2,) or not np.all(values > 0):
        said = " is two lengths in m above 0, along strike and down dip"
        raise TidoraError((Parameter("correlation"), said))
    return float(values[0]), float(values[1])


def _drawn(
    planes: list[Plane],
    magnitude: np.ndarray,
    sizes: tuple[str, str],
    weight: np.ndarray,
    rake: np.ndarray,
    fields: Fields,
) -> xr.Dataset:
    """The table; `sizes` is the relation and how it is used, `weight` the moment of an element for a slip of 1 m."""
    header = random_numbers.uniform(fields.seed, FOR_HEADER, np.arange(magnitude.size), HEADER)
    groups = list(ruptures(planes, magnitude, header, *sizes))
    entries = np.zeros(magnitude.size, np.int64)
    for group in groups:
        entries[group.number] = np.count_nonzero(group.element >= 0, axis=1)
    indptr = np.concatenate([[0], np.cumsum(entries)])
    unit, slip = np.empty(indptr[-1], np.int64), np.empty(indptr[-1])
    clipped = np.empty(magnitude.size)
    for group in groups:
        there = group.element >= 0
        to = indptr[group.number][:, None] + np.cumsum(there, axis=1) - 1
        found, clipped[group.number] = slip_of(group, magnitude, header, weight, fields)
        unit[to[there]], slip[to[there]] = group.element[there], found[there]
    table = make_slip_table(indptr, unit, slip, rake[unit], magnitude)
    said = "moment of the negative slip that was set to 0, as part of the moment that was left"
    table["clipped"] = ("scenario", clipped, {"units": "1", "long_name": said})
    return table
