"""Pictures: png, pdf and svg by their endings. The same drawing gives the same bytes: no picture has a date."""

from __future__ import annotations

from contextlib import contextmanager
from typing import Callable, Iterator

from matplotlib.backends.backend_pdf import PdfPages
from matplotlib.figure import Figure

from ..errors import Path
from ..files import replacing

DOTS = 160
"""To the inch, of a png."""

_NO_DATE = {".svg": {"Date": None}, ".pdf": {"CreationDate": None}}


def write(figure: Figure, path: Path) -> None:
    """Writes a figure as a picture, which appears when it is complete.

    Parameters
    ----------
    figure : matplotlib.figure.Figure
    path : path
        Its ending says the format.
    """
    with replacing(path) as part:
        figure.savefig(part, dpi=DOTS, metadata=_NO_DATE.get(part.suffix.lower(), {}))


@contextmanager
def pages(path: Path) -> Iterator[Callable[[Figure], None]]:
    """What writes figures as the pages of one pdf, which appears when the last one is there."""
    with replacing(path) as part, PdfPages(part, metadata=_NO_DATE[".pdf"]) as file:
        yield file.savefig
