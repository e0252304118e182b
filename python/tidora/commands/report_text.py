"""The figures of a file as text."""

from __future__ import annotations

import math

from .report_faults import Report


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
    lines += _model_lines(report)
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
        _moment_line(report),
        f"Mw        {report['magnitude']:.2f}{_stated(report)}",
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


def _model_lines(report: Report) -> list[str]:
    """What a published model has said of itself, and what had to be assumed."""
    if report["format"] == "fault file":
        return []
    assumed = [f"assumed   {text}" for text in report["assumptions"]]
    return [f"model     {report['format']}, place of a subfault: {report['reference']}", *assumed]


def _moment_line(report: Report) -> str:
    gigapascal = report["rigidity_Pa"] / 1e9
    of_file = report["rigidity_source"] == "file"
    how = (
        f"the rigidities of the file, {gigapascal:.4g} GPa on average"
        if of_file
        else f"a rigidity of {gigapascal:g} GPa"
    )
    unsaid = report["rigidity_source"] == "assumed" and report["format"] != "fault file"
    return f"moment    {report['moment_Nm']:.4g} N m for {how}{' (assumed: the file has none)' if unsaid else ''}"


def _stated(report: Report) -> str:
    stated = []
    if report["stated_magnitude"] is not None:
        stated.append(f"Mw {report['stated_magnitude']:.4g}")
    if report["stated_moment"] is not None:
        stated.append(f"{report['stated_moment']:.4g} N m")
    return f" (the file states {' and '.join(stated)})" if stated else ""


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
