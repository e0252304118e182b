"""matplotlib without a display, and the letters and lines that all pictures share."""

import matplotlib

matplotlib.use("Agg")

import matplotlib.pyplot as plt  # noqa: E402

__all__ = ["STYLE", "plt"]

STYLE = {
    "font.size": 10,
    "axes.titlesize": 10.5,
    "axes.titlelocation": "left",
    "svg.hashsalt": "tidora",
    "pdf.fonttype": 42,
    "axes.linewidth": 0.8,
}
