"""Bars of a run on standard error."""

from __future__ import annotations

import sys
from contextlib import contextmanager
from typing import TYPE_CHECKING, Callable, Iterator, Optional

from .program import Display

if TYPE_CHECKING:
    from rich.progress import Progress, TaskID


@contextmanager
def bars(display: Display, kinds: int) -> Iterator[Callable[[], None]]:
    """What shows how far a run has got: bars on a terminal, a line for each region when it is none.

    Parameters
    ----------
    display : Display
        What is shown.
    kinds : int
        Series of a region: every interval is written once for each.
    """
    from rich.console import Console
    from rich.progress import BarColumn, Progress, TextColumn

    console = Console(stderr=True)
    region = ""
    with Progress(
        TextColumn("{task.description:<28}"),
        BarColumn(),
        TextColumn("{task.fields[reached]:>9}"),
        console=console,
        transient=True,
        disable=not console.is_terminal,
    ) as shown:
        regions, elements, intervals = (
            shown.add_task(name, total=None, reached="") for name in ("reading", "elements", "intervals")
        )

        def show() -> None:
            nonlocal region
            begun, count = display.regions_begun, len(display.region_names)
            _update(shown, regions, max(begun - 1, 0), count, f"{display.region}, {display.phase}".rstrip(", "))
            _update(shown, elements, display.element, display.element_count)
            _update(shown, intervals, len(display.files) // kinds, display.intervals * max(count, 1))
            if not console.is_terminal and display.region != region:
                region = display.region
                print(f"tdr: {region}", file=sys.stderr, flush=True)

        yield show


def _update(shown: "Progress", task: "TaskID", reached: int, total: int, name: Optional[str] = None) -> None:
    shown.update(task, completed=reached, total=total or None, reached=f"{reached}/{total}" if total else "")
    if name is not None:
        shown.update(task, description=name)
