"""How far something has got, on standard error."""

from __future__ import annotations

import sys
from contextlib import contextmanager
from typing import Callable, Iterator, Optional


@contextmanager
def progress(what: str, steps: int) -> Iterator[Callable[[str], None]]:
    """A progress bar while standard error is a terminal; a line for every tenth of the way when it is not."""
    from rich.console import Console
    from rich.progress import BarColumn, MofNCompleteColumn, Progress, TextColumn, TimeRemainingColumn

    console = Console(stderr=True)
    if console.is_terminal:
        with Progress(
            TextColumn("{task.description}"),
            BarColumn(),
            MofNCompleteColumn(),
            TimeRemainingColumn(),
            TextColumn("{task.fields[at]}"),
            console=console,
            transient=True,
        ) as bar:
            task = bar.add_task(what, total=steps, at="")
            yield lambda at: bar.update(task, advance=1, at=at)
        return
    done = 0

    def step(at: str) -> None:
        nonlocal done
        done += 1
        if steps >= 10 and done * 10 // steps > (done - 1) * 10 // steps:
            print(f"{what} {done} of {steps} ({at})", file=sys.stderr, flush=True)

    yield step


@contextmanager
def fraction_bar(what: str) -> Iterator[Optional[Callable[[float], None]]]:
    """What shows a fraction from 0 to 1 as a bar while standard error is a terminal; None when it is not."""
    from rich.console import Console
    from rich.progress import BarColumn, Progress, TaskProgressColumn, TextColumn, TimeRemainingColumn

    console = Console(stderr=True)
    if not console.is_terminal:
        yield None
        return
    columns = (TextColumn("{task.description}"), BarColumn(), TaskProgressColumn(), TimeRemainingColumn())
    with Progress(*columns, console=console, transient=True) as bar:
        task = bar.add_task(what, total=1.0)
        yield lambda fraction: bar.update(task, completed=fraction)
