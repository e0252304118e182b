"""Slip tables and their files: NetCDF, zarr, comma-separated values."""

from __future__ import annotations

import os
from pathlib import Path as FilePath

import xarray as xr

from .. import arguments
from ..errors import FileError, Path, TidoraError
from ..files import replacing
from ..version import VERSION
from . import slip_csv, slip_zarr
from .slip_rows import SlipTable, as_dataset, checked_slip_table, make_slip_table

__all__ = ["SlipTable", "checked_slip_table", "make_slip_table", "read_slip_table", "write_slip_table"]

_NETCDF = (b"CDF\x01", b"CDF\x02", b"CDF\x05", b"\x89HDF")
"""First bytes of NetCDF."""

_CHUNK = 1 << 17
"""Values: 1 MB of double precision."""


def read_slip_table(path: Path) -> xr.Dataset:
    """A slip table of a file, which is known by its content.

    Parameters
    ----------
    path : path
        NetCDF; a zarr store (a folder); or a text of comma-separated values with the headings ``scenario, unit, slip,
        rake``, in m and degrees, and ``magnitude`` if it is known, the same in all rows of a scenario. Columns and rows
        stand in any order, those of a scenario keep theirs. Units and scenarios count from 0; numbers of scenarios that
        no row has are scenarios without slip. Empty lines and those that start with ``#`` are skipped; an empty slip,
        rake or magnitude is not a number.

    Returns
    -------
    xarray.Dataset
        As of `make_slip_table`, in memory.

    Warns
    -----
    TidoraWarning
        If numbers of scenarios are left out.

    Raises
    ------
    FileError
        If the file cannot be read or is no slip table.
    """
    if os.path.isdir(arguments.path("path", path)):
        return _table_of(path, slip_zarr.read(path))
    try:
        with open(path, "rb") as file:
            head = file.read(4)
    except OSError as error:
        raise FileError(path, f"cannot be opened: {error.strerror}") from None
    if head in _NETCDF:
        return _table_of(path, _read_netcdf(path))
    table = slip_csv.read(path)
    history = f"tidora {VERSION}: read_slip_table {os.path.basename(os.fspath(path))}"
    return make_slip_table(
        table.indptr, table.unit, table.slip, table.rake, table.magnitude, attrs={"history": history}
    )


def write_slip_table(table: xr.Dataset, path: Path) -> None:
    """Writes a slip table; the ending says how.

    Parameters
    ----------
    table : xarray.Dataset
        Of `make_slip_table`, `read_slip_table` or `stochastic_slip`. What else it holds is written too, but not as
        comma-separated values.
    path : path
        ``.nc``, ``.zarr`` or ``.csv``. Appears when it is complete; a store that is there is replaced when it holds a
        slip table.

    Raises
    ------
    TidoraError
        If it is no slip table.
    FileError
        If the file cannot be written, or the ending is another one.
    """
    arrays = checked_slip_table(table)
    ending = FilePath(arguments.path("path", path)).suffix.lower()
    whole = _with_its_others(table, arrays)
    if ending == ".nc":
        with replacing(path) as part:
            _write_netcdf(path, part, whole)
    elif ending == ".zarr":
        slip_zarr.write(path, whole, _CHUNK)
    elif ending == ".csv":
        with replacing(path) as part, part.open("w", encoding="ascii", newline="\n") as file:
            slip_csv.write(path, arrays, file)
    else:
        raise FileError(path, "a slip table is written as .nc, .zarr or .csv")


def _table_of(path: Path, dataset: xr.Dataset) -> xr.Dataset:
    """A table that has been read; what is wrong with it is wrong with the file."""
    try:
        return _with_its_others(dataset, checked_slip_table(dataset))
    except TidoraError as error:
        raise FileError(path, f"is no slip table: {error}") from None


def _with_its_others(dataset: xr.Dataset, table: SlipTable) -> xr.Dataset:
    """The table as it shall be, and what else the dataset has beside it."""
    whole = as_dataset(table, {})
    others = {name: values for name, values in dataset.variables.items() if name not in whole.variables}
    for name, values in others.items():
        whole[name] = (values.dims, values.values, values.attrs)
    return whole.assign_attrs(dataset.attrs)


def _read_netcdf(path: Path) -> xr.Dataset:
    try:
        with xr.open_dataset(path, engine="netcdf4", decode_times=False, cache=False) as dataset:
            return dataset.load()
    except (OSError, ValueError, RuntimeError) as error:
        raise FileError(path, f"is no NetCDF file that can be read: {error}") from None


def _write_netcdf(path: Path, part: FilePath, dataset: xr.Dataset) -> None:
    try:
        dataset.to_netcdf(part, engine="netcdf4", encoding=_encoding(dataset))
    except RuntimeError as error:
        raise FileError(path, f"cannot be written: {error}") from None


def _encoding(dataset: xr.Dataset) -> dict[str, dict[str, object]]:
    packed = {"zlib": True, "complevel": 1, "shuffle": True, "_FillValue": None}
    return {
        str(name): {**packed, "chunksizes": (min(max(values.size, 1), _CHUNK),)} if values.ndim == 1 else {}
        for name, values in dataset.variables.items()
    }
