"""The figures of a file, with the unit in every name."""

from __future__ import annotations

import math
from typing import Any, Optional

import numpy as np
import xarray as xr

from ..errors import Path
from ..faults.moment import RIGIDITY, distinct_places, element_potency, magnitude, seismic_moment
from ..faults.outlines import outlines
from ..faults.table import guess_coord, lower_depth, read_faults, upper_depth
from ..fields.kinds import GEOGRAPHIC, kind_of
from ..fields.measure import Extreme, Measures, measure
from ..fields.series import total
from ..fields.shape import shape_of
from ..formats.registry import FAULTS, open_field, recognise

Report = dict[str, Any]


def describe(
    path: Path,
    coord: Optional[str] = None,
    variable: Optional[str] = None,
    topography: Optional[Path] = None,
    density: float = 1025.0,
    gravity: float = 9.8,
    rigidity: float = RIGIDITY,
) -> Report:
    """Figures of a file, with the unit in every name.

    Parameters
    ----------
    path : path
        Grid, series or fault file.
    coord, variable :
        As for `tidora.formats.registry.open_field`.
    topography : path, optional
        Volume and energy of the nodes below 0 only.
    density, gravity, rigidity : float
        kg/m3, m/s2, Pa.

    Returns
    -------
    dict
        What ``tdr info --json`` prints.
    """
    if recognise(path).holds == FAULTS:
        return _describe_faults(path, coord, rigidity)
    field = open_field(path, coord, variable)
    land = open_field(topography, kind_of(field)) if topography is not None else None
    return describe_field(field, str(path), land, density, gravity)


def describe_field(
    field: xr.DataArray,
    name: str,
    land: Optional[xr.DataArray] = None,
    density: float = 1025.0,
    gravity: float = 9.8,
) -> Report:
    """Figures of an open grid or series; see `describe`."""
    shape = shape_of(field)
    geographic = kind_of(field) == GEOGRAPHIC
    report: Report = {
        "file": name,
        "kind": "series" if "time" in field.dims else "grid",
        "content": field.attrs.get("long_name", ""),
        "coordinates": "degrees" if geographic else "metres",
        "columns": shape.nx,
        "rows": shape.ny,
        "spacing": shape.dx,
        "x_range": [float(field["x"][0]), float(field["x"][-1])],
        "y_range": [float(field["y"][0]), float(field["y"][-1])],
        "area": "cells on the GRS80 ellipsoid" if geographic else "cells of a plane",
        "wet_nodes_only": land is not None,
        "density_kg_m3": density,
        "gravity_m_s2": gravity,
    }
    if "time" in field.dims:
        report["intervals"] = [
            {
                "start_s": float(field["time"][layer]),
                "length_s": float(field["rise_time"][layer]) if "rise_time" in field.coords else None,
                **_figures(measure(field.isel(time=layer), land, density, gravity)),
            }
            for layer in range(field.sizes["time"])
        ]
        for interval in report["intervals"]:
            del interval["energy_J"]  # what an interval adds has no energy of its own
        field = total(field)
        report["time_span_s"] = list(field.attrs["time_span"])
        report["sum"] = _figures(measure(field, land, density, gravity))
    else:
        report.update(_figures(measure(field, land, density, gravity)))
    return report


def _place(extreme: Optional[Extreme]) -> Optional[dict[str, float]]:
    return None if extreme is None else {"value_m": extreme.value, "x": extreme.x, "y": extreme.y}


def _figures(measures: Measures) -> Report:
    return {
        "highest": _place(measures.highest),
        "lowest": _place(measures.lowest),
        "volume_m3": measures.volume,
        "raised_m3": measures.raised,
        "lowered_m3": measures.lowered,
        "energy_J": measures.energy,
        "missing": measures.missing,
    }


def _describe_faults(path: Path, coord: Optional[str], rigidity: float) -> Report:
    faults = read_faults(path, coord or guess_coord(path))
    size = seismic_moment(faults, rigidity)
    upper, column = upper_depth(faults)
    lower = lower_depth(faults)
    potency = element_potency(faults)
    start, end = faults["lag_time"].values, (faults["lag_time"] + faults["duration"]).values
    corners = outlines(faults)
    count = faults.sizes["element"]
    elements = [
        {
            "line": int(faults["line"][at]),
            **{
                name: float(faults[name][at])
                for name in ("x", "y", "strike", "dip", "rake", "length", "width", "slip", "lag_time", "duration")
            },
            "upper_depth_m": float(upper[at]),
            "lower_depth_m": float(lower[at]),
            "area_m2": float(faults["length"][at] * faults["width"][at]),
            "potency_m3": float(potency[at]),
            "moment_Nm": float(rigidity * potency[at]),
            "magnitude": magnitude(float(rigidity * potency[at])),
        }
        for at in range(count)
    ]
    return {
        "file": str(path),
        "kind": "faults",
        "coordinates": "degrees" if faults.attrs["coord"] == GEOGRAPHIC else "metres",
        "elements": elements,
        "element_count": count,
        "with_slip": int(np.count_nonzero(potency)),
        "rectangles": distinct_places(faults),
        "rigidity_Pa": rigidity,
        "area_m2": size.area,
        "potency_m3": size.potency,
        "moment_Nm": size.moment,
        "magnitude": size.magnitude,
        "slip_range_m": _range(faults["slip"].values),
        "rupture_s": [float(start.min()), float(end.max())] if count else None,
        "duration_s": float(end.max() - start.min()) if count else None,
        "x_range": _range(corners[..., 0]),
        "y_range": _range(corners[..., 1]),
        "depth_from": "the sea floor" if column == "depth" else "sea level",
        "upper_depth_range_m": _range(upper),
        "lower_depth_range_m": _range(lower),
    }


def _range(values: np.ndarray) -> Optional[list[float]]:
    return [float(values.min()), float(values.max())] if values.size else None


def without_nan(value: Any) -> Any:
    """The same report with null in place of what is no number: JSON has no NaN."""
    if isinstance(value, dict):
        return {key: without_nan(item) for key, item in value.items()}
    if isinstance(value, list):
        return [without_nan(item) for item in value]
    return None if isinstance(value, float) and not math.isfinite(value) else value
