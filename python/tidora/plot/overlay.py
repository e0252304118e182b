"""What is drawn over the colours of a map."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Optional

import xarray as xr

from ..errors import TidoraError
from ..fields.kinds import kind_of


@dataclass(frozen=True)
class Overlay:
    """What is drawn over the colours of a map."""

    topography: Optional[xr.DataArray] = None
    """(y, x): its contour of 0 is the coast."""
    faults: Optional[xr.Dataset] = None
    """Elements: outlines, the upper edges thick."""
    frame: str = "utm"
    """Of the outlines, see `tidora.outlines`."""

    def check(self, field: xr.DataArray) -> None:
        """Refuses overlays in co-ordinates of another kind than the field."""
        kind = kind_of(field)
        for what, other in (
            ("topography", None if self.topography is None else kind_of(self.topography)),
            ("fault", None if self.faults is None else self.faults.attrs["coord"]),
        ):
            if other is not None and other != kind:
                raise TidoraError(f"the {what} has {other} co-ordinates, the field {kind} ones: they share no map")
