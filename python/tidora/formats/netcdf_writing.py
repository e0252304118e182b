"""Writing NetCDF by the CF conventions 1.8."""

from __future__ import annotations

import math
from datetime import datetime, timezone
from typing import Mapping, Optional

import netCDF4
import numpy as np
import xarray as xr

from ..errors import FileError, Path, TidoraError
from ..fields.kinds import axis_attributes, kind_of
from ..fields.reference import crs_of
from ..fields.shape import GridShape, row_blocks, shape_of
from ..files import replacing
from .contract import Step, Writing, no_progress

_CHUNK = 1 << 16
UNCLOSED: list[netCDF4.Dataset] = []
"""Files that could not be written to their end. The library crashes when it closes them again as the process ends."""


def steps(field: xr.DataArray, options: Writing) -> int:
    """Number of layers that `write` tells of."""
    return max(field.sizes.get("time", 0), 1)


def write(field: xr.DataArray, path: Path, options: Writing = Writing(), progress: Step = no_progress) -> GridShape:
    """Writes a field as NetCDF by the CF conventions 1.8, one block of rows at a time.

    Parameters
    ----------
    field : xarray.DataArray, (y, x) or (time, y, x)
    path : path
        Appears when it is complete.
    options : Writing
        ``epoch``, without which time is in seconds after the start of the rupture, and ``history``.
    progress : callable
        Is told of each layer.

    Raises
    ------
    TidoraError
        If two intervals of a series start at the same time.
    """
    return write_several({"z": field}, path, options, progress)


def write_several(
    fields: Mapping[str, xr.DataArray], path: Path, options: Writing = Writing(), progress: Step = no_progress
) -> GridShape:
    """Writes fields of the same nodes and times as variables of one file.

    Parameters
    ----------
    fields : mapping
        Names of the variables to fields, at least one; the last gives the file its title.
    path, options, progress :
        As `write`. Layers of all fields are told of. They are written in the order of their times.
    """
    fields = {name: _in_order_of_time(field) for name, field in fields.items()}
    main = list(fields.values())[-1]
    shape = shape_of(main)
    with replacing(path) as part:
        file = netCDF4.Dataset(part, "w", format="NETCDF4", clobber=True)
        try:
            _write_globals(file, main, options.history)
            _write_axes(file, main)
            if "time" in main.dims:
                _write_times(file, main, options.epoch)
            for name, field in fields.items():
                _write_values(file, name, field, shape, progress)
            file.close()
        except RuntimeError as error:
            UNCLOSED.append(file)
            raise FileError(path, f"cannot be written: {error}") from None
        except BaseException:
            file.close()
            raise
    return shape


def _in_order_of_time(field: xr.DataArray) -> xr.DataArray:
    if "time" not in field.dims:
        return field
    starts = np.asarray(field["time"].values, float)
    if np.any(np.diff(starts) < 0):
        field = field.isel(time=np.argsort(starts, kind="stable"))
    if np.unique(starts).size < starts.size:
        raise TidoraError(
            "two intervals start at the same time, which the time axis of CF does not allow; "
            "convert single snapshots, or the sum"
        )
    return field


def _write_values(file: netCDF4.Dataset, name: str, field: xr.DataArray, shape: GridShape, progress: Step) -> None:
    series = "time" in field.dims
    variable = _create_values(file, name, field, shape)
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


def _write_globals(file: netCDF4.Dataset, field: xr.DataArray, history: str) -> None:
    file.Conventions = "CF-1.8"
    file.title = str(field.attrs.get("long_name", "grid"))
    if field.attrs.get("source_file"):
        file.source = f"Tidora, {field.attrs['source_file']}"
    file.history = history
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


def _create_values(file: netCDF4.Dataset, name: str, field: xr.DataArray, shape: GridShape) -> netCDF4.Variable:
    crs = crs_of(field)
    rows = max(1, min(shape.ny, _CHUNK // shape.nx))
    chunks = (rows, min(shape.nx, _CHUNK))
    series = "time" in field.dims
    variable = file.createVariable(
        name,
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
        if "crs" not in file.variables:
            mapping = file.createVariable("crs", "i4", ())
            mapping.setncatts({key: value for key, value in crs.to_cf().items() if value not in ("", None)})
            # QGIS and GDAL look for the first of these, other programs for the second.
            mapping.setncatts({"spatial_ref": crs.to_wkt("WKT1_GDAL"), "crs_wkt": crs.to_wkt()})
        variable.grid_mapping = "crs"
    return variable
