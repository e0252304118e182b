"""Magnitudes of scenarios."""

from __future__ import annotations

import numpy as np
import xarray as xr

from ..faults.moment import RIGIDITY
from ..faults.slip_table import SlipTable


def magnitudes(slips: SlipTable, elements: xr.Dataset) -> np.ndarray:
    """float64 (scenario,): as the table says it, else from slip and area of the units.

    With the rigidities of the units where they have them, else `RIGIDITY`. Not a number for a scenario without slip, or
    with entries that cannot be computed.
    """
    moment_of_unit = elements["length"].values * elements["width"].values
    moment_of_unit = moment_of_unit * (elements["rigidity"].values if "rigidity" in elements else RIGIDITY)
    there = (slips.unit >= 0) & (slips.unit < moment_of_unit.size)
    with np.errstate(over="ignore"):
        moments = np.where(there, moment_of_unit[np.where(there, slips.unit, 0)] * np.abs(slips.slip), np.nan)
    scenario = np.repeat(np.arange(slips.count), np.diff(slips.indptr))
    total = np.bincount(scenario, moments, minlength=slips.count)
    with np.errstate(divide="ignore", invalid="ignore"):
        computed = np.where(total > 0, (np.log10(total) - 9.1) / 1.5, np.nan)
    return np.where(np.isfinite(slips.magnitude), slips.magnitude, computed)
