"""What the modules of formats have in common: what a writer may be told, and how it tells its progress."""

from __future__ import annotations

from dataclasses import dataclass
from datetime import datetime
from typing import Callable, ContextManager, Optional

import xarray as xr

from ..fields.shape import row_blocks, shape_of

Step = Callable[[str], None]
"""Is told of each step of the way."""

Progress = Callable[[str, int], ContextManager[Step]]
"""Gets what is done and the number of its steps."""


@dataclass(frozen=True)
class Writing:
    """What only some formats want to know; the registry says which takes what."""

    step: Optional[float] = None
    """s, between the times of a dtopo file."""
    epoch: Optional[datetime] = None
    """Time 0 of a NetCDF series."""
    history: str = "tidora"
    """What has made the file, in formats that say it."""


def no_progress(_: str) -> None:
    """For who does not want to know."""


def row_steps(field: xr.DataArray, options: Writing) -> int:
    """Steps of a writer that goes through blocks of rows."""
    return len(row_blocks(shape_of(field)))
