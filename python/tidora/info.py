"""``tdr info``: what is in a file, as text and as JSON."""

from __future__ import annotations

import math
from typing import Any, Optional

import numpy as np
import xarray as xr

from .errors import Path
from .faults.moment import RIGIDITY, distinct_places, element_potency, magnitude, seismic_moment
from .faults.outlines import outlines
from .faults.table import guess_coord, lower_depth, read_faults, upper_depth
from .fields.kinds import GEOGRAPHIC, kind_of
from .fields.measure import Extreme, Measures, measure
from .fields.series import total
from .fields.shape import shape_of
from .formats.registry import FAULTS, open_field, recognise

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


def to_text(report: Report, every_element: bool = False) -> str:
    """A report for people.

    Parameters
    ----------
    report : dict
        Of `describe`.
    every_element : bool
        All elements of a fault file; else a long file shows its first and last five.
    """
    lines = _fault_lines(report, every_element) if report["kind"] == "faults" else _field_lines(report)
    return "\n".join([report["file"], *(f"  {line}".rstrip() for line in lines)]) + "\n"


def place(x: float, y: float, geographic: bool) -> str:
    """A position: three decimals of a degree, or metres."""
    return f"{x:.3f}, {y:.3f}" if geographic else f"{x:.0f}, {y:.0f}"


def volume(cubic_metres: float) -> str:
    """A volume in km3, in m3 when it is small."""
    return f"{cubic_metres / 1e9:.4g} km3" if abs(cubic_metres) >= 1e6 else f"{cubic_metres:.4g} m3"


def _height(figures: Report, name: str, geographic: bool) -> str:
    extreme = figures[name]
    return (
        "none"
        if extreme is None
        else (f"{extreme['value_m']:.4g} m at {place(extreme['x'], extreme['y'], geographic)}")
    )


def _field_lines(report: Report) -> list[str]:
    geographic = report["coordinates"] == "degrees"
    unit = "degrees" if geographic else "m"
    x, y = report["x_range"], report["y_range"]
    series = report["kind"] == "series"
    lines = [
        f"{report['kind']:<10}{report['content']}",
        f"nodes     {report['columns']} x {report['rows']}, spacing {report['spacing']:.7g} {unit}",
        f"x         {x[0]:.10g} to {x[1]:.10g} {unit}",
        f"y         {y[0]:.10g} to {y[1]:.10g} {unit}",
    ]
    figures = report
    if series:
        figures = report["sum"]
        span = report["time_span_s"]
        lines += ["", f"{'start':>8} {'length':>8} {'highest':>10} {'lowest':>10} {'volume':>14}"]
        for part in report["intervals"]:
            length = "" if part["length_s"] is None else f"{part['length_s']:g} s"
            high, low = (f"{part[name]['value_m']:.4g} m" if part[name] else "none" for name in ("highest", "lowest"))
            lines.append(f"{part['start_s']:>6g} s {length:>8} {high:>10} {low:>10} {volume(part['volume_m3']):>14}")
        lines += ["", f"sum of {len(report['intervals'])} intervals, {span[0]:g} s to {span[1]:g} s"]
    where = f"{report['area']}, nodes below 0 of the topography" if report["wet_nodes_only"] else report["area"]
    lines += [
        f"highest   {_height(figures, 'highest', geographic)}",
        f"lowest    {_height(figures, 'lowest', geographic)}",
        f"volume    {volume(figures['volume_m3'])} (raised {volume(figures['raised_m3'])}, "
        f"lowered {volume(figures['lowered_m3'])}; {where})",
        f"energy    {figures['energy_J']:.4g} J as a sea surface "
        f"(density {report['density_kg_m3']:g} kg/m3, gravity {report['gravity_m_s2']:g} m/s2)",
    ]
    if figures["missing"]:
        lines.append(f"missing   {figures['missing']} nodes have no value and count nowhere")
    return lines


def _fault_lines(report: Report, every_element: bool) -> list[str]:
    geographic = report["coordinates"] == "degrees"
    count = report["element_count"]
    lines = [
        f"faults    {count} elements, {report['with_slip']} with slip, {report['rectangles']} different rectangles"
    ]
    if not count:
        return lines
    unit = "degrees" if geographic else "m"
    x, y, upper, lower, slip = (
        report[name] for name in ("x_range", "y_range", "upper_depth_range_m", "lower_depth_range_m", "slip_range_m")
    )
    lines += [
        f"x         {place(x[0], x[1], geographic).replace(',', ' to')} {unit}",
        f"y         {place(y[0], y[1], geographic).replace(',', ' to')} {unit}",
        f"edges     upper {_kilometres(upper)} km, lower {_kilometres(lower)} km, below {report['depth_from']}",
        f"slip      {slip[0]:g} to {slip[1]:g} m",
        f"rupture   {report['rupture_s'][0]:g} s to {report['rupture_s'][1]:g} s, {report['duration_s']:g} s in all",
        f"area      {report['area_m2'] / 1e6:.6g} km2 (a rectangle that slips several times counts once)",
        f"potency   {report['potency_m3']:.4g} m3",
        f"moment    {report['moment_Nm']:.4g} N m for a rigidity of {report['rigidity_Pa'] / 1e9:g} GPa",
        f"Mw        {report['magnitude']:.2f}",
        "",
        f"{'line':>4} {'x':>10} {'y':>10} {'strike':>6} {'dip':>5} {'rake':>6} {'length':>8} {'width':>8} "
        f"{'upper':>6} {'lower':>6} {'slip':>6} {'time':>9} {'area':>9} {'potency':>9} {'moment':>9} {'Mw':>5}",
        f"{'':>4} {unit:>10} {unit:>10} {'deg':>6} {'deg':>5} {'deg':>6} {'km':>8} {'km':>8} "
        f"{'km':>6} {'km':>6} {'m':>6} {'s':>9} {'km2':>9} {'m3':>9} {'N m':>9}",
    ]
    rows = [_element_line(element, geographic) for element in report["elements"]]
    if not every_element and count > 12:
        rows[5:-5] = [f" ... {count - 10} more: --all"]
    return lines + rows


def _kilometres(values: list[float]) -> str:
    return f"{values[0] / 1e3:.4g} to {values[1] / 1e3:.4g}"


def _element_line(element: Report, geographic: bool) -> str:
    digits = 3 if geographic else 0
    span = f"{element['lag_time']:g}-{element['lag_time'] + element['duration']:g}"
    size = f"{element['magnitude']:.2f}" if math.isfinite(element["magnitude"]) else "-"
    return (
        f"{element['line']:>4} {element['x']:>10.{digits}f} {element['y']:>10.{digits}f} {element['strike']:>6.4g} "
        f"{element['dip']:>5.3g} {element['rake']:>6.4g} {element['length'] / 1e3:>8.5g} "
        f"{element['width'] / 1e3:>8.5g} {element['upper_depth_m'] / 1e3:>6.4g} {element['lower_depth_m'] / 1e3:>6.4g} "
        f"{element['slip']:>6.4g} {span:>9} {element['area_m2'] / 1e6:>9.5g} {element['potency_m3']:>9.3g} "
        f"{element['moment_Nm']:>9.3g} {size:>5}"
    )
