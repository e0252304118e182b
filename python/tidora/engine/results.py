"""What is returned: attributes, history, encoding."""

from __future__ import annotations

from typing import Any, Mapping

import numpy as np
import xarray as xr

from ..version import VERSION

MEANINGS = {
    "uz": "vertical displacement of the sea floor",
    "ue": "eastward displacement of the sea floor",
    "un": "northward displacement of the sea floor",
    "slope": "uplift by the horizontal motion of a sloping sea floor",
    "eta": "initial height of the sea surface",
}
"""Variables of results, all in m."""


def said(what: str, **options: Any) -> str:
    """A line of a history: the version, what was done, and how."""
    return " ".join([f"tidora {VERSION}: {what}", *(f"{name}={value}" for name, value in options.items())])


def variable(dims: tuple[str, ...], values: np.ndarray, name: str, attrs: Mapping[str, Any]) -> xr.Variable:
    """A variable of a result.

    Parameters
    ----------
    dims : tuple of str
        With "time" in front when it is what each layer adds.
    values : numpy.ndarray, float32
    name : str
        One of `MEANINGS`.
    attrs : mapping
        Of its nodes.
    """
    own: dict[str, Any] = {"units": "m", "long_name": MEANINGS[name], **attrs}
    if "time" in dims:
        own["time_content"] = "increment"
    return xr.Variable(dims, values, own)


def finished(dataset: xr.Dataset) -> xr.Dataset:
    """The same, so that NetCDF has no fill value of co-ordinates, which CF does not allow."""
    for name in dataset.coords:
        dataset[name].encoding["_FillValue"] = None
    return dataset
