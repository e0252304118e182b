"""Missing values, which are NaN in a field."""

from __future__ import annotations

import numpy as np
import xarray as xr

from ..errors import Parameter, TidoraError
from .lazy import Key, lazily
from .making import as_field


def filled(field: xr.DataArray, value: float) -> xr.DataArray:
    """The field with `value` in place of missing ones, put there when it is read."""

    def read(key: Key) -> np.ndarray:
        part = np.asarray(field[key].values, dtype=np.float32)
        return np.where(np.isnan(part), np.float32(value), part)

    return as_field(field.dims, lazily(field.shape, read), field.attrs, field.coords)


def complete_rows(field: xr.DataArray, rows: slice) -> np.ndarray:
    """float32 (rows, nx): a block of rows, without missing values."""
    block = np.ascontiguousarray(field.isel(y=rows).values, dtype=np.float32)
    missing = int(np.count_nonzero(np.isnan(block)))
    if missing:
        raise TidoraError(
            (
                f"{missing} values are missing in rows {rows.start} to {rows.stop - 1}; the format has no "
                "mark for them: ",
                Parameter("fill", "VALUE"),
                " puts a number there",
            )
        )
    return block
