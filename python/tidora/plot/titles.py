"""What stands above a map."""

from __future__ import annotations

import xarray as xr


def span_of(field: xr.DataArray) -> str:
    """What of a series a field is, for a title; empty for a grid."""
    if "intervals" in field.attrs:
        start, end = field.attrs["time_span"]
        return f"sum of {field.attrs['intervals']} intervals, {start:g} s to {end:g} s"
    if "time" in field.coords:
        start, length = float(field["time"]), float(field.coords.get("rise_time", 0.0))
        return f"added from {start:g} s to {start + length:g} s" if length else f"added at {start:g} s"
    return ""


def title_of(field: xr.DataArray) -> str:
    """Two lines: what it is, and which part of it."""
    second = ": ".join(filter(None, [field.attrs.get("source_file", ""), span_of(field)]))
    return f"{field.attrs.get('long_name', '')}\n{second}"
