"""Arrays that are read when they are indexed."""

from __future__ import annotations

from typing import Any, Callable

import numpy as np
from xarray.backends import BackendArray
from xarray.core import indexing

Key = tuple[Any, ...]


class ReadOnIndex(BackendArray):
    """A float32 array of which `read` delivers a part.

    Parameters
    ----------
    shape : tuple of int
        Shape of the whole.
    read : callable
        Gets a tuple of an integer or a slice for each dimension, and returns the part as a new array.
    """

    def __init__(self, shape: tuple[int, ...], read: Callable[[Key], np.ndarray]) -> None:
        self.shape = shape
        self.dtype = np.dtype(np.float32)
        self._read = read

    def __getitem__(self, key: indexing.ExplicitIndexer) -> np.ndarray:
        # Slices go to the reader as they are: some versions of xarray take other rows for steps below -1.
        if all(isinstance(part, (int, np.integer, slice)) for part in key.tuple):
            return self._read(key.tuple)
        return indexing.explicit_indexing_adapter(key, self.shape, indexing.IndexingSupport.BASIC, self._read)


def lazily(shape: tuple[int, ...], read: Callable[[Key], np.ndarray]) -> indexing.LazilyIndexedArray:
    """What xarray takes as the data of a variable: indexing composes, and nothing is read before it is used."""
    return indexing.LazilyIndexedArray(ReadOnIndex(shape, read))


def span(key: Any, size: int) -> tuple[int, int, Any]:
    """First and end index that a key of one dimension touches, and the same key relative to the first."""
    if isinstance(key, slice):
        indices = range(*key.indices(size))
        if not indices:
            return 0, 0, slice(0, 0)
        first, end = min(indices[0], indices[-1]), max(indices[0], indices[-1]) + 1
        stop = indices[-1] - first + (1 if indices.step > 0 else -1)
        return first, end, slice(indices[0] - first, None if stop < 0 else stop, indices.step)
    index = int(key) % size
    return index, index + 1, 0
