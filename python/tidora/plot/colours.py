"""Every colour of the pictures."""

COLOURS = "RdBu_r"
"""Of a map: blue below 0, white at 0, red above; a colour map of matplotlib."""

COAST = "#3a3a32"
"""The line of the coast, and of the topography of a section."""

LAND = "#8d8a7c"
"""Above the coast, and below the sea floor of a section; see-through."""

WATER = "#9ecae1"
"""Between sea level and the sea floor of a section; see-through."""

FAULT = "#1f5f3a"
"""Outlines of elements."""

RAISED = "#d6604d"
"""Below the line of a section where it is above 0; see-through."""

LOWERED = "#4393c3"
"""Above the line of a section where it is below 0; see-through."""

REST = "0.5"
"""The line at 0 of a section."""

INK = "black"
"""Marks, scale bars and lines."""

PAPER = "white"
"""What marks and letters are set off with."""
