"""What the names of the program's files say about what is in them."""

from __future__ import annotations

import os

from ..errors import Path

CONTENTS = {
    "Tdr": "initial wave height",
    "VRT": "vertical deformation of the sea floor",
    "HRZ": "uplift by the horizontal motion of the slope",
    "TPG": "topography, negative below sea level",
}
"""Tags with which the names of result files start."""


def field_attributes(path: Path) -> dict[str, str]:
    """Attributes of what a grid or list file holds, by the tag of its name."""
    base = os.path.basename(os.fspath(path))
    tag = base[:3] if base[3:4] == "_" and base[:3] in CONTENTS else ""
    attrs = {"units": "m", "long_name": CONTENTS.get(tag, "value of the grid"), "source_file": base}
    return {**attrs, "tag": tag} if tag else attrs
