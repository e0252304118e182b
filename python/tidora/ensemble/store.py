"""A zarr store that several processes make together, and go on with after any of them was killed.

The store is zarr version 2 in a folder: `xarray.open_zarr` reads it. Beside the files of zarr it holds

``.shards/N``
    what shard N has written, as a line of JSON: its chunks with their sizes and CRC-32, and what could not be computed;
    then the CRC-32 of this line. A shard without this record is not there, whatever chunks are.
``.partial/``
    files on their way. It goes when the last shard is there.

A file gets its name when it is complete, and is never written in place. Whoever computes a chunk computes the same
bytes, so that two processes at the same shard do no harm. The attributes of the group are written first, and by one
process only: they say what the store is, and whoever wants another one is refused.

Chunks are compressed by Blosc and then get a CRC-32, which is checked before anything is unpacked: zarr 2.13 reads some
truncated chunks as wrong values.
"""

from __future__ import annotations

import itertools
import json
import os
import shutil
import socket
import threading
import zlib
from typing import Any, Callable, Mapping, Optional

import numpy as np
import xarray as xr

from ..errors import FileError, Parameter, Path, TidoraError

ATTRIBUTES = ".zattrs"
"""Of the group: written first."""

METADATA = ".zmetadata"
"""Of all arrays at once: written last."""

IDENTITY = "tidora_identity"
"""Attribute, JSON: what the store was made from."""

KIND = "tidora_store"
"""Attribute: "units" or "run"."""

_PARTIAL = ".partial"
_SHARDS = ".shards"

_numbers = itertools.count()


def filters() -> list[Any]:
    """Of every array: compression, then the check."""
    from numcodecs import CRC32, Blosc

    return [Blosc(cname="lz4", clevel=5, shuffle=Blosc.SHUFFLE), CRC32()]


def encoded(values: np.ndarray) -> bytes:
    """A chunk as it lies in the store: all of it, in row-major order."""
    compress, check = filters()
    return bytes(check.encode(compress.encode(np.ascontiguousarray(values))))


def skeleton(dataset: xr.Dataset, chunks: Mapping[str, tuple[int, ...]]) -> dict[str, bytes]:
    """The files of a store in which values of dask arrays are still to come.

    Parameters
    ----------
    dataset : xarray.Dataset
        Variables with values are written; of those of dask only what they are.
    chunks : mapping
        Shape of the chunks of a variable; the others are one chunk.
    """
    import dask

    files: dict[str, Any] = {}
    dataset = dataset.copy()
    for name, variable in dataset.variables.items():
        shape = chunks.get(str(name), tuple(max(size, 1) for size in variable.shape))
        # What is to come has a value until then, and only that: `opened` knows by it which chunks have to be there.
        fill = np.nan if dask.is_dask_collection(variable) else None
        dataset[name].encoding = {"chunks": shape, "filters": filters(), "compressor": None, "_FillValue": fill}
    dataset.to_zarr(files, compute=False, consolidated=True)
    return {name: bytes(content) for name, content in files.items()}


class Stopped(Exception):
    """Somebody does not want the work any more."""


class Store:
    """The folder of a store.

    Parameters
    ----------
    path : path
    stop : threading.Event, optional
        Is set when the work is not wanted any more.
    """

    def __init__(self, path: Path, stop: Optional[threading.Event] = None) -> None:
        self.path = os.path.abspath(os.fspath(path))
        self._stop = stop

    def proceed(self) -> None:
        """Is called now and then by whoever works on the store.

        Raises
        ------
        Stopped
            If the work is not wanted any more.
        """
        if self._stop is not None and self._stop.is_set():
            raise Stopped

    def create(self, files: Mapping[str, bytes], replaced: tuple[str, ...] = ()) -> None:
        """Makes the store, or finds it made by somebody who wanted the same.

        Parameters
        ----------
        files : mapping
            Of `skeleton`.
        replaced : tuple of str
            Names of arrays whose chunks are written anew by shards: those that are there are left alone, since a shard
            may be at them just now.

        Raises
        ------
        FileError
            If the folder holds something else, or the same of something else.
        """
        self._check_place()
        if not self._place(ATTRIBUTES, files[ATTRIBUTES]):
            self._compare(json.loads(files[ATTRIBUTES]))
        self._clean()
        for key in sorted(set(files) - {METADATA}) + [METADATA]:
            # Looked at however complete the store seems: a damaged slip table would spoil what is still to come.
            name, _, chunk = key.rpartition("/")
            is_replaced = name in replaced and not chunk.startswith(".")
            if not self._place(key, files[key]) and not is_replaced and self.get(key) != files[key]:
                self.put(key, files[key])

    def _check_place(self) -> None:
        try:
            entries = set(os.listdir(self.path))
        except FileNotFoundError:
            return
        except NotADirectoryError:
            raise FileError(self.path, "is a file, and no store") from None
        if entries - {_PARTIAL} and ATTRIBUTES not in entries:
            raise FileError(self.path, "is a folder with something else in it, and no store")

    def _compare(self, wanted: Mapping[str, Any]) -> None:
        there = self.attributes()
        if there.get(KIND) != wanted[KIND]:
            raise FileError(self.path, f"is no store of {'units' if wanted[KIND] == 'units' else 'a run'}")
        own, other = json.loads(wanted[IDENTITY]), json.loads(there.get(IDENTITY, "{}"))
        different = [key for key in own if own[key] != other.get(key)]
        if different:
            said = ", ".join(_difference(key, other.get(key), own[key]) for key in different)
            raise TidoraError(
                (Parameter("store"), f" {self.path} was made otherwise ({said}): take another name, or remove it")
            )

    def attributes(self) -> dict[str, Any]:
        """Of the group.

        Raises
        ------
        FileError
            If it is no store.
        """
        content = self.get(ATTRIBUTES)
        try:
            found = json.loads(content or b"")
            if isinstance(found, dict) and KIND in found and isinstance(json.loads(found[IDENTITY]), dict):
                return found
        except (ValueError, KeyError, TypeError):
            pass
        rule = "is no store of units or of a run" if os.path.exists(self.path) else "is not there"
        raise FileError(self.path, rule)

    def opened(self) -> xr.Dataset:
        """The store as a dataset; values are read when they are used.

        Raises
        ------
        FileError
            If it is no store, or not begun to its end.
        """
        self.attributes()
        if self.get(METADATA) is None:
            raise FileError(self.path, "is not complete: nobody has finished beginning it")
        try:
            dataset = xr.open_zarr(self.path, consolidated=True)
            self._check_given(dataset)
            return dataset
        except FileError:
            raise
        except Exception as error:  # zarr, its codecs and xarray raise whatever a damaged file makes them stumble over
            raise FileError(self.path, f"cannot be opened: {_first_line(error)}") from None

    def _check_given(self, dataset: xr.Dataset) -> None:
        """What the store began with has to be there: zarr would read a missing chunk as no matter what."""
        for name, variable in dataset.variables.items():
            if "_FillValue" in variable.encoding:
                continue
            counts = [-(-size // of) for size, of in zip(variable.shape, variable.encoding["chunks"])]
            for number in np.ndindex(*counts):
                key = f"{name}/" + ".".join(map(str, number))
                if not os.path.exists(os.path.join(self.path, key)):
                    raise FileError(os.path.join(self.path, key), "is not there")

    def get(self, key: str) -> Optional[bytes]:
        """A file of the store; None when it is not there."""
        try:
            with open(os.path.join(self.path, key), "rb") as file:
                return file.read()
        except (FileNotFoundError, NotADirectoryError):
            return None
        except OSError as error:
            raise FileError(os.path.join(self.path, key), f"cannot be read: {error.strerror}") from None

    def chunk(self, key: str, dtype: str, shape: tuple[int, ...]) -> np.ndarray:
        """The values of a chunk.

        Raises
        ------
        FileError
            If it is not there, or damaged.
        """
        content = self.get(key)
        place = os.path.join(os.path.basename(self.path), key)
        if content is None:
            raise FileError(place, "is not there")
        compress, check = filters()
        try:
            values = np.frombuffer(compress.decode(check.decode(content)), dtype)
            return values.reshape(shape)
        except (RuntimeError, ValueError, TypeError, IndexError):
            raise FileError(place, "is damaged") from None

    def put(self, key: str, content: bytes) -> list[int]:
        """Writes a file, which has its name when it is complete.

        Returns
        -------
        list of int
            Its size and CRC-32.

        Raises
        ------
        FileError
            If it cannot be written.
        """
        self._write(key, content, os.replace)
        return _sum(content)

    def _place(self, key: str, content: bytes) -> bool:
        """Writes a file that is not there yet; False when it is."""
        if os.path.exists(os.path.join(self.path, key)):
            return False
        try:
            self._write(key, content, os.link)
            return True
        except FileExistsError:
            return False

    def _write(self, key: str, content: bytes, name: Callable[[str, str], None]) -> None:
        """Writes a file aside, and names it when it is on the disk.

        It is on the disk, not on its way there: what the next start finds has to be whole also when the power failed.
        """
        folder, target = os.path.join(self.path, _PARTIAL), os.path.join(self.path, key)
        part = os.path.join(folder, f"{socket.gethostname()}.{os.getpid()}.{next(_numbers)}")
        for last in (False, False, True):
            try:
                os.makedirs(folder, exist_ok=True)
                os.makedirs(os.path.dirname(target), exist_ok=True)
                with open(part, "wb") as file:
                    file.write(content)
                    file.flush()
                    os.fsync(file.fileno())
                name(part, target)
                return
            except FileExistsError:
                raise
            except FileNotFoundError:  # somebody else has finished the store meanwhile, and has cleared up
                if last:
                    raise FileError(target, "cannot be written: it is removed again and again") from None
            except OSError as error:
                raise FileError(target, f"cannot be written: {error.strerror}") from None
            finally:
                _remove(part)

    def _clean(self) -> None:
        """Removes what processes of this machine have left that are no more."""
        folder = os.path.join(self.path, _PARTIAL)
        host = socket.gethostname() + "."
        for entry in os.listdir(folder) if os.path.isdir(folder) else ():
            process = entry[len(host) :].split(".")[0]
            if entry.startswith(host) and process.isdigit() and not _lives(int(process)):
                _remove(os.path.join(folder, entry))

    def note(self, shard: int, chunks: Mapping[str, list[int]], found: Mapping[str, Any]) -> None:
        """Notes that a shard is there.

        Parameters
        ----------
        shard : int
        chunks : mapping
            All that it has written, and what `put` has said of it.
        found : mapping
            What else is to be known of it.
        """
        content = json.dumps({"chunks": chunks, **found}, sort_keys=True).encode()
        self.put(f"{_SHARDS}/{shard}", content + b"\n%d\n" % zlib.crc32(content))

    def record(self, shard: int) -> Optional[dict[str, Any]]:
        """What a shard has noted; None when it is not there, or its note is damaged."""
        content, _, check = (self.get(f"{_SHARDS}/{shard}") or b"").partition(b"\n")
        if check != b"%d\n" % zlib.crc32(content):
            return None
        found: dict[str, Any] = json.loads(content)
        return found

    def is_whole(self, shard: int) -> bool:
        """True when a shard is there, and its chunks are as they were written."""
        found = self.record(shard)
        if found is None:
            return False
        for key, noted in found["chunks"].items():
            content = self.get(key)
            if content is None or noted != _sum(content):
                return False
        return True

    def sweep(self, shards: int) -> None:
        """Removes what is left of files on their way, when all shards are there."""
        if all(os.path.exists(os.path.join(self.path, _SHARDS, str(shard))) for shard in range(shards)):
            shutil.rmtree(os.path.join(self.path, _PARTIAL), ignore_errors=True)


def values_of(dataset: xr.Dataset, name: str, part: slice = slice(None)) -> np.ndarray:
    """The values of a variable of a store that was opened, or part of them along its first dimension.

    Raises
    ------
    FileError
        If they are damaged.
    """
    try:
        # Here, whatever client is active: a client that has lost its workers would never answer.
        return np.asarray(dataset[name][part].compute(scheduler="synchronous").values)
    except Exception as error:  # as when a store is opened
        path = os.path.join(str(dataset.encoding["source"]), name)
        raise FileError(path, f"cannot be read: {_first_line(error)}") from None


def _sum(content: bytes) -> list[int]:
    return [len(content), zlib.crc32(content)]


def _difference(key: str, there: Any, wanted: Any) -> str:
    plain = all(
        isinstance(value, (str, int, float, bool, type(None))) and len(str(value)) < 24 for value in (there, wanted)
    )
    return f"{key} {there} there, {wanted} here" if plain else f"another {key}"


def _lives(process: int) -> bool:
    try:
        os.kill(process, 0)
    except ProcessLookupError:
        return False
    except (OSError, OverflowError):
        pass
    return True


def _first_line(error: BaseException) -> str:
    return (str(error).splitlines() or [type(error).__name__])[0]


def _remove(path: str) -> None:
    try:
        os.unlink(path)
    except OSError:
        pass
