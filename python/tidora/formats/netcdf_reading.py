"""Reading NetCDF: the files of others too, whatever their axes are called and wherever they start."""

from __future__ import annotations

import os
from typing import Any, Optional

import numpy as np
import pyproj
import xarray as xr

from ..errors import FileError, Parameter, Path
from ..fields.kinds import GEOGRAPHIC, PLANE, axis_attributes, guess_kind
from ..fields.lazy import Key, lazily, span
from ..fields.making import as_field
from ..fields.shape import GridShape

_X_NAMES = ("x", "lon", "longitude", "easting", "col")
_Y_NAMES = ("y", "lat", "latitude", "northing", "row")
_VALUE_NAMES = ("z", "elevation", "topo", "bathymetry", "band1", "height", "altitude", "depth", "eta")


def open(path: Path, coord: Optional[str] = None, variable: Optional[str] = None) -> xr.DataArray:
    """Opens a field of a NetCDF file; nothing but its co-ordinates is read.

    Parameters
    ----------
    path : path
    coord : {'plane', 'geographic'}, optional
        Kind of co-ordinates, if their units do not say it.
    variable : str, optional
        Its name. Without it the only one that has rows and columns, or the one with a usual name (``elevation``).

    Returns
    -------
    xarray.DataArray
        Dims ``(y, x)`` or ``(time, y, x)``; both axes increasing.

    Raises
    ------
    FileError
        If there is no such variable, or several.
    """
    try:
        dataset = xr.open_dataset(path, engine="netcdf4", decode_times=False, cache=False)
    except (OSError, ValueError) as error:
        raise FileError(path, f"is no NetCDF file that can be read: {error}") from None
    values = _choose(path, dataset, variable)
    axes = {
        axis: _axis(dataset, values, names, attribute)
        for axis, names, attribute in (("x", _X_NAMES, "longitude"), ("y", _Y_NAMES, "latitude"))
    }
    for axis, dimension in axes.items():
        if dimension is None:
            raise FileError(path, f"variable {values.name} has no {axis} axis among {', '.join(map(str, values.dims))}")
        if dimension not in dataset.coords or dataset[dimension].dtype.kind not in "iuf":
            raise FileError(path, f"axis {dimension} of variable {values.name} has no co-ordinates")
    others = [dimension for dimension in values.dims if dimension not in axes.values()]
    values = values.isel(
        {dimension: 0 for dimension in others if values.sizes[dimension] == 1 and not _is_time(dataset, dimension)}
    )
    others = [dimension for dimension in values.dims if dimension not in axes.values()]
    if len(others) > 1:
        raise FileError(
            path, f"variable {values.name} has more dimensions than time, y and x: {', '.join(map(str, others))}"
        )
    return _normalised(path, dataset, values, axes, others, coord)


def _is_time(dataset: xr.Dataset, dimension: Any) -> bool:
    return dimension in dataset.coords and (
        dataset[dimension].attrs.get("axis") == "T" or str(dimension).lower() == "time"
    )


def _choose(path: Path, dataset: xr.Dataset, name: Optional[str]) -> xr.DataArray:
    fields = {
        str(key): value for key, value in dataset.data_vars.items() if value.ndim >= 2 and value.dtype.kind in "iuf"
    }
    if name is not None:
        if name not in fields:
            raise FileError(
                path, f"has no variable {name} of rows and columns; there are: {', '.join(fields) or 'none'}"
            )
        return fields[name]
    if len(fields) != 1:
        usual = [key for wanted in _VALUE_NAMES for key in fields if key.lower() == wanted]
        if not usual:
            raise FileError(
                path,
                (Parameter("variable"), f" chooses one of: {', '.join(fields)}")
                if fields
                else "has no variable of rows and columns",
            )
        return fields[usual[0]]
    return next(iter(fields.values()))


def _axis(dataset: xr.Dataset, variable: xr.DataArray, names: tuple[str, ...], standard: str) -> Optional[str]:
    letter = "X" if standard == "longitude" else "Y"
    for dimension in map(str, variable.dims):
        attrs = dataset[dimension].attrs if dimension in dataset.coords else {}
        if attrs.get("axis") == letter or attrs.get("standard_name") in (
            standard,
            f"projection_{letter.lower()}_coordinate",
        ):
            return dimension
    for dimension in map(str, variable.dims):
        if dimension.lower() in names:
            return dimension
    return None


def _normalised(
    path: Path,
    dataset: xr.Dataset,
    variable: xr.DataArray,
    axes: dict[str, Any],
    others: list[Any],
    coord: Optional[str],
) -> xr.DataArray:
    x_name, y_name = axes["x"], axes["y"]
    for dimension in (x_name, y_name):
        steps = np.diff(np.asarray(dataset[dimension].values, float))
        if steps.size and not (np.all(steps > 0) or np.all(steps < 0)):
            raise FileError(path, f"the co-ordinates of axis {dimension} neither increase nor decrease")
    rename = {x_name: "x", y_name: "y", **{dimension: "time" for dimension in others}}
    x_unit = str(dataset[x_name].attrs.get("units", "")).lower()
    nodes = {
        name: np.sort(np.asarray(dataset[source].values, np.float64)) for name, source in (("x", x_name), ("y", y_name))
    }
    kind = _kind(path, x_unit, str(x_name), nodes, coord)
    if kind != GEOGRAPHIC and x_unit in ("km", "kilometer", "kilometers"):
        nodes = {name: 1000.0 * values for name, values in nodes.items()}
    coords: dict[str, Any] = {name: (name, values, axis_attributes(kind, name)) for name, values in nodes.items()}
    if others:
        coords.update(_times(dataset, variable, others[0]))
    dims = (*others, y_name, x_name)
    flipped = [dimension for dimension in (y_name, x_name) if nodes_decrease(dataset, dimension)]
    return as_field(
        tuple(rename[dimension] for dimension in dims),
        _lazy_values(variable, dims, flipped),
        _attributes(path, dataset, variable),
        coords,
    )


def _times(dataset: xr.Dataset, variable: xr.DataArray, dimension: Any) -> dict[str, Any]:
    """Co-ordinates of time; layers that have none are counted."""
    known = dimension in variable.coords
    at = np.asarray(variable[dimension].values, float) if known else np.arange(float(variable.sizes[dimension]))
    unit = str(dataset[dimension].attrs.get("units", "s")) if dimension in dataset.coords else "s"
    coords: dict[str, Any] = {"time": ("time", at, {"units": unit})}
    if "rise_time" in dataset and dataset["rise_time"].dims == (dimension,):
        coords["rise_time"] = ("time", np.asarray(dataset["rise_time"].values, float), {"units": "s"})
    return coords


def _attributes(path: Path, dataset: xr.Dataset, variable: xr.DataArray) -> dict[str, Any]:
    attrs: dict[str, Any] = {
        "units": str(variable.attrs.get("units", "m")),
        "source_file": os.path.basename(os.fspath(path)),
        "long_name": str(variable.attrs.get("long_name", variable.name)),
    }
    for own, key in (("grid_spacing", "grid_spacing"), ("tidora_tag", "tag"), ("time_content", "time_content")):
        if own in variable.attrs:
            value = variable.attrs[own]
            attrs[key] = float(value) if own == "grid_spacing" else str(value)
    crs = _crs(dataset, variable)
    if crs is not None:
        attrs["crs_wkt"] = crs.to_wkt()
    return attrs


def nodes_decrease(dataset: xr.Dataset, dimension: Any) -> bool:
    """True for an axis that runs from north to south, or from east to west."""
    nodes = dataset[dimension].values
    return bool(nodes.size > 1 and nodes[1] < nodes[0])


def _lazy_values(variable: xr.DataArray, dims: tuple[Any, ...], flipped: list[Any]) -> Any:
    """The values in the order `dims`, the axes `flipped` turned round, as float32."""
    sizes = [variable.sizes[dimension] for dimension in dims]

    def read(key: Key) -> np.ndarray:
        window, rest = {}, []
        for dimension, part, size in zip(dims, key, sizes):
            first, end, relative = span(part, size)
            if dimension in flipped:
                window[dimension] = slice(size - end, size - first)
            else:
                window[dimension] = slice(first, end)
            rest.append(relative)
        block = np.asarray(variable.isel(window).transpose(*dims).values, dtype=np.float32)
        for axis, dimension in enumerate(dims):
            if dimension in flipped:
                block = np.flip(block, axis)
        return block[tuple(rest)]

    return lazily(tuple(sizes), read)


def _kind(path: Path, unit: str, name: str, nodes: dict[str, np.ndarray], stated: Optional[str]) -> str:
    if unit.startswith("degree") or name.lower() in ("lon", "longitude"):
        return GEOGRAPHIC
    if unit in ("m", "metre", "metres", "meter", "meters", "km", "kilometer", "kilometers"):
        return PLANE
    if stated is not None:
        return stated
    x, y = nodes["x"], nodes["y"]
    spacing = (x[-1] - x[0]) / max(x.size - 1, 1)
    return guess_kind(GridShape(float(x[0]), float(y[0]), x.size, y.size, float(spacing)), os.fspath(path))


def _crs(dataset: xr.Dataset, variable: xr.DataArray) -> Optional[pyproj.CRS]:
    name = variable.attrs.get("grid_mapping") or variable.encoding.get("grid_mapping")
    if not name or name not in dataset.variables:
        return None
    attrs = dataset[name].attrs
    try:
        for key in ("crs_wkt", "spatial_ref"):
            if attrs.get(key):
                return pyproj.CRS.from_wkt(attrs[key])
        return pyproj.CRS.from_cf(attrs)
    except (pyproj.exceptions.CRSError, KeyError):
        return None
