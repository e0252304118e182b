"""Size of a rupture from its magnitude: published relations for earthquakes on the interface of subduction zones."""

from __future__ import annotations

import math
from typing import Any, NamedTuple

import numpy as np
import xarray as xr

from .. import arguments
from ..errors import Parameter, TidoraError
from ..version import VERSION

MAGNITUDES = (0.0, 11.0)
"""What a magnitude may be. Beyond the earthquakes from which a relation was made it goes straight on."""


class Line(NamedTuple):
    """log10 of a size in km or km2: a + b Mw."""

    a: float
    b: float
    sigma: float
    """Standard deviation of log10."""
    bend: tuple[float, float, float] = (math.inf, 0.0, 0.0)
    """Magnitude beyond which another line counts, with its a and b."""
    largest: float = math.inf
    """Of log10."""

    def median(self, magnitude: np.ndarray) -> np.ndarray:
        """km or km2: the median."""
        beyond, a, b = self.bend
        log10 = np.where(magnitude <= beyond, self.a + self.b * magnitude, a + b * magnitude)
        return np.asarray(10.0 ** np.minimum(log10, self.largest))


class Relation(NamedTuple):
    """Lines of one paper."""

    length: Line
    width: Line
    area: Line


RELATIONS = {
    # Strasser et al. (2010), interface events
    "strasser2010": Relation(
        length=Line(-2.477, 0.585, 0.180), width=Line(-0.882, 0.351, 0.173), area=Line(-3.476, 0.952, 0.304)
    ),
    # Allen and Hayes (2017), interface events: two lines for the area, a width that stops growing
    "allenhayes2017": Relation(
        length=Line(-2.90, 0.63, 0.182),
        width=Line(-1.91, 0.48, 0.137, largest=2.29),
        area=Line(-5.62, 1.22, 0.256, bend=(8.63, 2.23, 0.31)),
    ),
    # Thingbaijam et al. (2017), interface events
    "thingbaijam2017": Relation(
        length=Line(-2.412, 0.583, 0.107), width=Line(-0.880, 0.366, 0.099), area=Line(-3.292, 0.949, 0.150)
    ),
}
"""By their names."""


def scaling(relation: str, magnitude: Any) -> xr.Dataset:
    """Size of ruptures on the interface of a subduction zone.

    Parameters
    ----------
    relation : {'strasser2010', 'allenhayes2017', 'thingbaijam2017'}
    magnitude : array_like or xarray.DataArray
        Moment magnitude, from 0 to 11: a number, or one dimension; a DataArray keeps its dimensions.

    Returns
    -------
    xarray.Dataset
        ``length``, ``width`` (km) and ``area`` (km2), each the median of a relation of its own: the product of the
        first two is not the third. ``length_sigma``, ``width_sigma``, ``area_sigma``: standard deviations of log10.

    Raises
    ------
    TypeError, TidoraError
        If an argument is something else.
    """
    lines = RELATIONS[arguments.choice("relation", relation, tuple(RELATIONS))]
    given = magnitude if isinstance(magnitude, xr.DataArray) else None
    values = arguments.within("magnitude", arguments.numbers("magnitude", magnitude), *MAGNITUDES)
    if given is None and values.ndim > 1:
        raise TidoraError((Parameter("magnitude"), f" has one dimension at most, not {values.ndim}"))
    dims = ("magnitude",) * values.ndim if given is None else given.dims
    found = xr.Dataset(coords=None if given is None else given.coords)
    for name, line in lines._asdict().items():
        unit = "km2" if name == "area" else "km"
        attrs = {"units": unit, "long_name": f"median {name} of a rupture"}
        found[name] = xr.Variable(dims, line.median(values), attrs)
        said = f"standard deviation of log10 of the {name} in {unit}"
        found[f"{name}_sigma"] = xr.Variable((), line.sigma, {"units": "1", "long_name": said})
    if "magnitude" not in found.variables:
        long_name = {"units": "1", "long_name": "moment magnitude"}
        found = found.assign_coords(magnitude=xr.Variable(dims, values, long_name))
    return found.assign_attrs(Conventions="CF-1.8", history=f"tidora {VERSION}: scaling relation={relation}")
