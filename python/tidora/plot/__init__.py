"""``tdr plot``: maps, frames and sections."""

from .figures import draw_frames, draw_maps, draw_section

__all__ = ["draw_frames", "draw_maps", "draw_section"]
