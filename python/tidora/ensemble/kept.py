"""Chunks that have been read and are wanted again: the shards of a run read the same responses."""

from __future__ import annotations

import os
from threading import Lock
from typing import Optional

import numpy as np

from .store import Store

LIMIT = 1 << 27
"""Bytes that are kept in a process."""


class KeptChunks:
    """The first chunks that are read of one store, as long as their files stay what they are.

    Readers go through a store in the same order again and again. Of one that is larger than the limit the first chunks
    therefore stay: the last ones would each be dropped just before they are wanted.

    Parameters
    ----------
    limit : int
        Bytes.
    """

    def __init__(self, limit: int) -> None:
        self._limit = limit
        self._folder = ""
        self._kept: dict[str, tuple[tuple[int, ...], np.ndarray]] = {}
        self._lock = Lock()

    def chunk(self, store: Store, key: str, dtype: str, shape: tuple[int, ...]) -> np.ndarray:
        """The values of a chunk, read-only, as `Store.chunk` gives them; raises what it does."""
        file = os.path.join(os.path.abspath(store.path), key)
        state = _state(file)  # before it is read: what is written meanwhile is read again
        with self._lock:
            before, values = self._kept.get(file, (None, None))
        if values is not None and before == state and (values.dtype.str, values.shape) == (dtype, shape):
            return values
        values = store.chunk(key, dtype, shape)
        if state is not None:
            self._keep(os.path.abspath(store.path), file, state, values)
        return values

    @property
    def size(self) -> int:
        """Bytes that are kept."""
        return sum(values.nbytes for _, values in self._kept.values())

    def _keep(self, folder: str, file: str, state: tuple[int, ...], values: np.ndarray) -> None:
        with self._lock:
            if folder != self._folder:
                self._folder, self._kept = folder, {}
            self._kept.pop(file, None)
            if self.size + values.nbytes <= self._limit:
                self._kept[file] = (state, values)


def _state(file: str) -> Optional[tuple[int, ...]]:
    """Which file it is, and of when; None without one."""
    try:
        found = os.stat(file)
    except OSError:
        return None
    return (found.st_dev, found.st_ino, found.st_size, found.st_mtime_ns, found.st_ctime_ns)
