"""The figures of a rupture, with the unit in every name."""

from __future__ import annotations

from typing import Any, Optional

import numpy as np
import xarray as xr

from ..faults.moment import RIGIDITY, distinct_places, element_potency, magnitude, seismic_moment
from ..faults.outlines import outlines
from ..faults.table import lower_depth, upper_depth
from ..fields.kinds import GEOGRAPHIC

Report = dict[str, Any]

_COLUMNS = ("x", "y", "strike", "dip", "rake", "length", "width", "slip", "lag_time", "duration")


def describe_faults(faults: xr.Dataset, name: str, rigidity: Optional[float] = None) -> Report:
    """Figures of a table of `read_faults`.

    Parameters
    ----------
    faults : xarray.Dataset
    name : str
        Of the file.
    rigidity : float, optional
        Pa; without it that of the table, or 40 GPa.
    """
    size = seismic_moment(faults, rigidity)
    upper, column = upper_depth(faults)
    start, end = faults["lag_time"].values, (faults["lag_time"] + faults["duration"]).values
    corners = outlines(faults, "utm" if _of_program(faults) else "globe")
    count = faults.sizes["element"]
    potency = element_potency(faults)
    source, pascal = _rigidity(faults, rigidity)
    mean = _mean(size.moment, size.potency, pascal, rigidity)
    return {
        "file": name,
        "kind": "faults",
        "format": faults.attrs["format"],
        "reference": faults.attrs["reference"],
        "assumptions": list(faults.attrs["assumptions"]),
        "stated_magnitude": faults.attrs.get("stated_magnitude"),
        "stated_moment": faults.attrs.get("stated_moment"),
        "coordinates": "degrees" if faults.attrs["coord"] == GEOGRAPHIC else "metres",
        "elements": _elements(faults, upper, potency, pascal),
        "element_count": count,
        "with_slip": int(np.count_nonzero(potency)),
        "rectangles": distinct_places(faults),
        "rigidity_Pa": mean,
        "rigidity_source": source,
        "area_m2": size.area,
        "potency_m3": size.potency,
        "moment_Nm": size.moment,
        "magnitude": size.magnitude,
        "slip_range_m": _range(faults["slip"].values),
        "rupture_s": [float(start.min()), float(end.max())] if count else None,
        "duration_s": float(end.max() - start.min()) if count else None,
        "x_range": _range(corners[..., 0]),
        "y_range": _range(corners[..., 1]),
        "depth_from": "the sea floor" if column == "depth" and _of_program(faults) else "sea level",
        "upper_depth_range_m": _range(upper),
        "lower_depth_range_m": _range(lower_depth(faults)),
    }


def _of_program(faults: xr.Dataset) -> bool:
    """True for a fault file, whose depths may count from the sea floor; models give them below sea level."""
    return bool(faults.attrs["format"] == "fault file")


def _rigidity(faults: xr.Dataset, said: Optional[float]) -> tuple[str, list[float]]:
    """Where the rigidity is from, and that of each element in Pa."""
    count = faults.sizes["element"]
    if said is None and "rigidity" in faults:
        return "file", faults["rigidity"].values.tolist()
    return ("assumed" if said is None else "given"), [RIGIDITY if said is None else said] * count


def _mean(moment: float, potency: float, rigidity: list[float], said: Optional[float]) -> float:
    """Pa: exactly what was said, or the mean by slip and area."""
    if said is not None or not rigidity or len(set(rigidity)) == 1:
        return said if said is not None else rigidity[0] if rigidity else RIGIDITY
    return moment / potency if potency > 0 else float(np.mean(rigidity))


def _elements(faults: xr.Dataset, upper: np.ndarray, potency: np.ndarray, rigidity: list[float]) -> list[Report]:
    columns = {
        "line": faults["line"].values.tolist(),
        **{name: faults[name].values.tolist() for name in _COLUMNS},
        "upper_depth_m": upper.tolist(),
        "lower_depth_m": lower_depth(faults).tolist(),
        "area_m2": (faults["length"] * faults["width"]).values.tolist(),
        "potency_m3": potency.tolist(),
        "moment_Nm": [pascal * volume for pascal, volume in zip(rigidity, potency.tolist())],
    }
    columns["magnitude"] = [magnitude(moment) for moment in columns["moment_Nm"]]
    return [dict(zip(columns, row)) for row in zip(*columns.values())]


def _range(values: np.ndarray) -> Optional[list[float]]:
    return [float(values.min()), float(values.max())] if values.size else None
