"""Slip tables as zarr stores: folders with one file for each piece of a variable."""

from __future__ import annotations

import os
import shutil
from pathlib import Path as FilePath
from typing import Any

import xarray as xr

from ..errors import FileError, Path


def read(path: Path) -> xr.Dataset:
    """The dataset of a store, in memory.

    Raises
    ------
    FileError
        If there is none, or pieces of it are missing or damaged.
    """
    import zarr

    if not (FilePath(path) / ".zgroup").is_file():
        raise FileError(path, "is a folder, but no zarr store")
    try:
        # A piece that is missing would be read as the fill value, without a word.
        for name, values in zarr.open_group(os.fspath(path), mode="r").arrays():
            if values.nchunks_initialized < values.nchunks and name in ("indptr", "unit", "slip", "rake"):
                missing = values.nchunks - values.nchunks_initialized
                raise FileError(path, f"is not complete: {missing} of {values.nchunks} pieces of {name} are missing")
        consolidated = (FilePath(path) / ".zmetadata").is_file()
        with xr.open_dataset(path, engine="zarr", consolidated=consolidated, decode_times=False) as dataset:
            return dataset.load()
    except (OSError, ValueError, KeyError, RuntimeError) as error:
        raise FileError(path, f"is no zarr store that can be read: {error}") from None


def write(path: Path, dataset: xr.Dataset, chunk: int) -> None:
    """Writes a store, which appears when it is complete, in pieces of `chunk` values.

    Raises
    ------
    FileError
        If it cannot be written, or something else is there.
    """
    target = FilePath(os.path.realpath(path))
    if target.exists() and not _is_slip_table(target):
        raise FileError(path, "is there and is no slip table: it is not replaced")
    part, old = (target.with_name(f".{target.stem}-{os.getpid()}.{word}.zarr") for word in ("part", "old"))
    try:
        dataset.to_zarr(part, mode="w", consolidated=True, encoding=_encoding(dataset, chunk))
        # A folder that is not empty cannot be renamed over: the old one steps aside.
        if target.exists():
            os.rename(target, old)
        os.rename(part, target)
    except OSError as error:
        raise FileError(path, f"cannot be written: {error.strerror or error}") from None
    finally:
        if old.exists() and not target.exists():
            os.rename(old, target)
        for left in (part, old):
            shutil.rmtree(left, ignore_errors=True)


def _is_slip_table(folder: FilePath) -> bool:
    return (folder / ".zgroup").is_file() and (folder / "indptr" / ".zarray").is_file()


def _encoding(dataset: xr.Dataset, chunk: int) -> dict[Any, dict[str, Any]]:
    """Pieces with a checksum: without one some damaged pieces are read as if nothing were wrong."""
    import numcodecs

    return {
        name: {"chunks": (min(max(values.size, 1), chunk),), "filters": [numcodecs.CRC32()]}
        for name, values in dataset.variables.items()
        if values.ndim == 1 and values.dtype.kind in "iuf"
    }
