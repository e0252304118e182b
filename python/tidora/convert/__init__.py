"""``tdr convert``: grids and series in the formats of other programs, and back."""

from .dispatch import Request, convert

__all__ = ["Request", "convert"]
