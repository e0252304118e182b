"""The figures of a file, with the unit in every name."""

from __future__ import annotations

import math
from typing import Any, Optional

import xarray as xr

from ..errors import Path
from ..faults.models import read_faults
from ..fields.kinds import GEOGRAPHIC, kind_of
from ..fields.measure import Extreme, Measures, measure
from ..fields.series import total
from ..fields.shape import shape_of
from ..formats.registry import FAULTS, open_field, recognise
from .report_faults import Report, describe_faults


def describe(
    path: Path,
    coord: Optional[str] = None,
    variable: Optional[str] = None,
    topography: Optional[Path] = None,
    density: float = 1025.0,
    gravity: float = 9.8,
    rigidity: Optional[float] = None,
    reference: Optional[str] = None,
) -> Report:
    """Figures of a file, with the unit in every name.

    Parameters
    ----------
    path : path
        Grid, series, fault file or published model.
    coord, variable :
        As for `tidora.formats.registry.open_field`.
    topography : path, optional
        Volume and energy of the nodes below 0 only.
    density, gravity, rigidity : float
        kg/m3, m/s2, Pa; no rigidity: that of the file, or 40 GPa.
    reference : str, optional
        As for `read_faults`.

    Returns
    -------
    dict
        What ``tdr info --json`` prints.
    """
    if recognise(path).holds == FAULTS:
        return describe_faults(read_faults(path, coord, reference=reference), str(path), rigidity)
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


def without_nan(value: Any) -> Any:
    """The same report with null in place of what is no number: JSON has no NaN."""
    if isinstance(value, dict):
        return {key: without_nan(item) for key, item in value.items()}
    if isinstance(value, list):
        return [without_nan(item) for item in value]
    return None if isinstance(value, float) and not math.isfinite(value) else value
