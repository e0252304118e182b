"""CF NetCDF."""

from __future__ import annotations

import math
import os
from datetime import datetime, timezone
from typing import Any, Callable, Optional

import netCDF4
import numpy as np
import pyproj
import xarray as xr

from .. import __version__
from ..errors import FileError, Parameter, Path, TidoraError
from ..fields.kinds import GEOGRAPHIC, PLANE, axis_attributes, guess_kind, kind_of
from ..fields.lazy import Key, lazily, span
from ..fields.making import as_field
from ..fields.reference import crs_of
from ..fields.shape import GridShape, row_blocks, shape_of
from ..files import replacing

_X_NAMES = ("x", "lon", "longitude", "easting", "col")
_Y_NAMES = ("y", "lat", "latitude", "northing", "row")
_VALUE_NAMES = ("z", "elevation", "topo", "bathymetry", "band1", "height", "altitude", "depth")
_CHUNK = 1 << 16
UNCLOSED: list[netCDF4.Dataset] = []
"""Files that could not be written to their end. The library crashes when it closes them again as the process ends."""


def write_netcdf(
    field: xr.DataArray,
    path: Path,
    epoch: Optional[datetime] = None,
    progress: Callable[[str], None] = lambda _: None,
) -> GridShape:
    """Writes a field as NetCDF by the CF conventions 1.8, one block of rows at a time.

    Parameters
    ----------
    field : xarray.DataArray, (y, x) or (time, y, x)
    path : path
        Appears when it is complete.
    epoch : datetime, optional
        Time 0 of a series. Without it, time is in seconds after the start of the rupture.
    progress : callable
        Is told of each layer.
    """
    shape = shape_of(field)
    series = "time" in field.dims
    if series:
        starts = np.asarray(field["time"].values, float)
        if np.any(np.diff(starts) <= 0):
            raise TidoraError(
                "two intervals start at the same time, which the time axis of CF does not allow; "
                "convert single snapshots, or the sum"
            )
    with replacing(path) as part:
        file = netCDF4.Dataset(part, "w", format="NETCDF4", clobber=True)
        try:
            _write_globals(file, field)
            _write_axes(file, field)
            if series:
                _write_times(file, field, epoch)
            _write_values(file, field, shape, progress)
            file.close()
        except RuntimeError as error:
            UNCLOSED.append(file)
            raise FileError(path, f"cannot be written: {error}") from None
        except BaseException:
            file.close()
            raise
    return shape


def _write_values(
    file: netCDF4.Dataset, field: xr.DataArray, shape: GridShape, progress: Callable[[str], None]
) -> None:
    series = "time" in field.dims
    variable = _create_values(file, field, shape)
    layers = [field.isel(time=layer) for layer in range(field.sizes["time"])] if series else [field]
    lowest, highest = math.inf, -math.inf
    for number, layer in enumerate(layers):
        for rows in row_blocks(shape):
            block = np.asarray(layer.isel(y=rows).values, dtype=np.float32)
            variable[(number, rows) if series else rows] = block
            if not np.isnan(block).all():
                lowest, highest = min(lowest, float(np.nanmin(block))), max(highest, float(np.nanmax(block)))
        progress(f"{float(layer['time']):g} s" if series else "")
    if lowest <= highest:
        variable.actual_range = np.array([lowest, highest], np.float32)


def _write_globals(file: netCDF4.Dataset, field: xr.DataArray) -> None:
    file.Conventions = "CF-1.8"
    file.title = str(field.attrs.get("long_name", "grid"))
    if field.attrs.get("source_file"):
        file.source = f"Tidora, {field.attrs['source_file']}"
    file.history = f"tdr convert {__version__}"
    file.node_offset = np.int32(0)  # GMT: values belong to the nodes


def _write_axes(file: netCDF4.Dataset, field: xr.DataArray) -> None:
    kind = kind_of(field)
    for axis in ("y", "x"):
        nodes = np.asarray(field[axis].values, float)
        file.createDimension(axis, nodes.size)
        variable = file.createVariable(axis, "f8", (axis,))
        variable.setncatts(axis_attributes(kind, axis))
        variable.actual_range = np.array([nodes[0], nodes[-1]])
        variable[:] = nodes


def _write_times(file: netCDF4.Dataset, field: xr.DataArray, epoch: Optional[datetime]) -> None:
    file.createDimension("time", field.sizes["time"])
    time = file.createVariable("time", "f8", ("time",))
    time.setncatts({"long_name": "start of the rupture interval", "axis": "T", "units": "s"})
    if epoch is not None:
        at = epoch.astimezone(timezone.utc) if epoch.tzinfo else epoch
        time.setncatts(
            {"standard_name": "time", "calendar": "standard", "units": f"seconds since {at:%Y-%m-%d %H:%M:%S}"}
        )
    time[:] = np.asarray(field["time"].values, float)
    if "rise_time" in field.coords:
        rise = file.createVariable("rise_time", "f8", ("time",))
        rise.setncatts({"long_name": "length of the rupture interval", "units": "s"})
        rise[:] = np.asarray(field["rise_time"].values, float)


def _create_values(file: netCDF4.Dataset, field: xr.DataArray, shape: GridShape) -> netCDF4.Variable:
    crs = crs_of(field)
    rows = max(1, min(shape.ny, _CHUNK // shape.nx))
    chunks = (rows, min(shape.nx, _CHUNK))
    series = "time" in field.dims
    variable = file.createVariable(
        "z",
        "f4",
        field.dims,
        zlib=True,
        complevel=1,
        shuffle=True,
        fill_value=np.float32(np.nan),
        chunksizes=(1, *chunks) if series else chunks,
    )
    # One row of chunks at a time is enough: the library would keep 16 MB and more of them.
    variable.set_var_chunk_cache(size=2 * 4 * chunks[0] * chunks[1], nelems=7, preemption=1.0)
    variable.units = "m"
    variable.long_name = str(field.attrs.get("long_name", "value of the grid"))
    variable.grid_spacing = np.float32(shape.dx)
    if field.attrs.get("tag") == "TPG":
        variable.standard_name = "height_above_mean_sea_level"
    if field.attrs.get("tag"):
        variable.tidora_tag = field.attrs["tag"]
    if series:
        variable.time_content = "increment"
        variable.comment = "What each interval adds; the state at its end is the running sum over time."
        if "rise_time" in field.coords:
            variable.coordinates = "rise_time"
    elif "time" in field.coords:
        start = float(field["time"])
        variable.comment = (
            f"What the interval from {start:g} s to {start + float(field.coords.get('rise_time', 0)):g} s adds."
        )
    elif "time_span" in field.attrs:
        variable.comment = "Sum of {} intervals, {:g} s to {:g} s.".format(
            field.attrs["intervals"], *field.attrs["time_span"]
        )
    if crs is not None:
        mapping = file.createVariable("crs", "i4", ())
        mapping.setncatts({name: value for name, value in crs.to_cf().items() if value not in ("", None)})
        # QGIS and GDAL look for the first of these, other programs for the second.
        mapping.setncatts({"spatial_ref": crs.to_wkt("WKT1_GDAL"), "crs_wkt": crs.to_wkt()})
        variable.grid_mapping = "crs"
    return variable


def open_netcdf(path: Path, coord: Optional[str] = None, name: Optional[str] = None) -> xr.DataArray:
    """Opens a field of a NetCDF file; nothing but its co-ordinates is read.

    Parameters
    ----------
    path : path
    coord : {'plane', 'geographic'}, optional
        Kind of co-ordinates, if their units do not say it.
    name : str, optional
        Variable. Without it the only one that has rows and columns, or the one with a usual name (``elevation``).

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
    variable = _choose(path, dataset, name)
    axes = {
        axis: _axis(dataset, variable, names, attribute)
        for axis, names, attribute in (("x", _X_NAMES, "longitude"), ("y", _Y_NAMES, "latitude"))
    }
    for axis, dimension in axes.items():
        if dimension is None:
            raise FileError(
                path, f"variable {variable.name} has no {axis} axis among {', '.join(map(str, variable.dims))}"
            )
        if dimension not in dataset.coords or dataset[dimension].dtype.kind not in "iuf":
            raise FileError(path, f"axis {dimension} of variable {variable.name} has no co-ordinates")
    others = [dimension for dimension in variable.dims if dimension not in axes.values()]
    variable = variable.isel(
        {dimension: 0 for dimension in others if variable.sizes[dimension] == 1 and not _is_time(dataset, dimension)}
    )
    others = [dimension for dimension in variable.dims if dimension not in axes.values()]
    if len(others) > 1:
        raise FileError(
            path, f"variable {variable.name} has more dimensions than time, y and x: {', '.join(map(str, others))}"
        )
    return _normalised(path, dataset, variable, axes, others, coord)


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
        coords["time"] = (
            "time",
            np.asarray(variable[others[0]].values, float)
            if others[0] in variable.coords
            else np.arange(float(variable.sizes[others[0]])),
            {"units": str(dataset[others[0]].attrs.get("units", "s")) if others[0] in dataset.coords else "s"},
        )
        if "rise_time" in dataset and dataset["rise_time"].dims == (others[0],):
            coords["rise_time"] = ("time", np.asarray(dataset["rise_time"].values, float), {"units": "s"})
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
    dims = (*others, y_name, x_name)
    flipped = [dimension for dimension in (y_name, x_name) if nodes_decrease(dataset, dimension)]
    return as_field(
        tuple(rename[dimension] for dimension in dims), _lazy_values(variable, dims, flipped), attrs, coords
    )


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
