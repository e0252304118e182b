"""``tdr run``: a run of the program with a progress display, and what came out."""

from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
import tempfile
from contextlib import contextmanager
from pathlib import Path as FilePath
from typing import IO, TYPE_CHECKING, Iterator, Optional

from .errors import Parameter, Path, TidoraError
from .faults.moment import RIGIDITY, seismic_moment
from .faults.table import read_faults
from .fields.kinds import GEOGRAPHIC
from .fields.measure import Extreme, measure
from .fields.series import total
from .formats.configuration import Configuration, read_configuration
from .formats.series_list import open_series
from .info import place, volume

if TYPE_CHECKING:
    from rich.progress import Progress, TaskID

_ELEMENT = re.compile(r"(\d+)/(\d+) Completed ")
_WRITTEN = re.compile(r">+ Write File : (.*)")


def find_program(stated: Optional[Path] = None) -> str:
    """The program: `stated`, the variable ``TIDORA_PROGRAM``, ``Tidora`` of the search path, or ``build/Tidora``.

    Raises
    ------
    TidoraError
        If there is none.
    """
    if stated is None:
        stated = os.environ.get("TIDORA_PROGRAM") or None
    if stated is not None:
        found = shutil.which(os.fspath(stated))
        if found is None:
            raise TidoraError(f"{os.fspath(stated)} is no program")
        return os.path.abspath(found)
    built = FilePath(__file__).resolve().parents[2] / "build" / "Tidora"
    found = shutil.which("Tidora") or (str(built) if os.access(built, os.X_OK) else None)
    if found is None:
        raise TidoraError(
            (f"the program Tidora is neither in the search path nor at {built}; ", Parameter("program"), " names it")
        )
    return found


class Display:
    """What a run has reached, told from its standard output line by line."""

    def __init__(self, region_names: list[str]) -> None:
        self.region_names = region_names
        self.regions_begun = 0
        self.element = 0
        self.element_count = 0
        self.intervals = 0
        self.phase = ""
        self.files: list[str] = []

    def take(self, line: str) -> bool:
        """Takes a line of the program. True when something has changed that is shown."""
        if line.startswith("order       :"):
            self.intervals += 1
        elif line.startswith(">>>>> Fault Deform : "):
            self.regions_begun += 1
            self.element = 0
            self.phase = "deformation"
        elif line.startswith(">>>>> Kajiura Filter Calc"):
            self.phase = "filter"
        elif element := _ELEMENT.match(line):
            self.element, self.element_count = int(element.group(1)), int(element.group(2))
        elif written := _WRITTEN.match(line):
            self.files.append(written.group(1))
            self.phase = "writing"
        else:
            return False
        return True

    @property
    def region(self) -> str:
        """Number and name of the region that is computed."""
        if not self.regions_begun:
            return "reading"
        name = self.region_names[self.regions_begun - 1] if self.regions_begun <= len(self.region_names) else ""
        count = f" of {len(self.region_names)}" if self.region_names else ""
        return f"region {self.regions_begun}{count} {name}".rstrip()


def run(config: Path, program: Optional[Path] = None, log: Optional[Path] = None, rigidity: float = RIGIDITY) -> int:
    """Runs the program in the current folder.

    Parameters
    ----------
    config : path
        Configuration file.
    program : path, optional
        See `find_program`.
    log : path, optional
        Gets what the program prints.
    rigidity : float
        Pa, for the magnitude of the summary.

    Returns
    -------
    int
        Exit status of the program, 128 and the number of the signal that ended it, or 1 when it ended well and its
        results cannot be read.
    """
    executable = find_program(program)
    try:
        configuration: Optional[Configuration] = read_configuration(config)
    except TidoraError:
        configuration = None  # the program says it better
    names = [region.name for region in configuration.regions] if configuration else []
    display = Display(names)
    with tempfile.TemporaryFile("w+", errors="replace") as errors, _log_file(log) as record:
        status = _watch([executable, os.fspath(config)], display, configuration, errors, record)
        errors.seek(0)
        sys.stderr.write(errors.read())
        sys.stderr.flush()
    if status != 0:
        ended = f"by signal {status - 128}" if status > 128 else f"with exit status {status}"
        print(f"tdr: {executable} ended {ended}, {display.region}", file=sys.stderr)
        return status
    if configuration is not None:
        print(summary(configuration, display, rigidity), end="")
    return 0


@contextmanager
def _log_file(log: Optional[Path]) -> Iterator[Optional[IO[str]]]:
    if log is None:
        yield None
    else:
        with open(log, "w", encoding="utf-8", errors="surrogateescape") as file:
            yield file


def _watch(
    command: list[str],
    display: Display,
    configuration: Optional[Configuration],
    errors: IO[str],
    record: Optional[IO[str]],
) -> int:
    from rich.console import Console
    from rich.progress import BarColumn, Progress, TextColumn

    console = Console(stderr=True)
    try:
        process = subprocess.Popen(
            command,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=errors,
            encoding="utf-8",
            errors="surrogateescape",
        )
    except OSError as error:
        raise TidoraError(f"{command[0]} cannot be started: {error.strerror}") from None
    assert process.stdout is not None
    kinds = 3 if configuration and configuration.slope_term else 2
    with Progress(
        TextColumn("{task.description:<28}"),
        BarColumn(),
        TextColumn("{task.fields[reached]:>9}"),
        console=console,
        transient=True,
        disable=not console.is_terminal,
    ) as bars:
        regions, elements, intervals = (
            bars.add_task(name, total=None, reached="") for name in ("reading", "elements", "intervals")
        )
        region = ""
        try:
            for line in process.stdout:
                if record is not None:
                    record.write(line)
                if not display.take(line.rstrip("\n")):
                    continue
                begun, count = display.regions_begun, len(display.region_names)
                _update(bars, regions, max(begun - 1, 0), count, f"{display.region}, {display.phase}".rstrip(", "))
                _update(bars, elements, display.element, display.element_count)
                # Every interval is written once for each of the series of a region.
                _update(bars, intervals, len(display.files) // kinds, display.intervals * max(count, 1))
                if not console.is_terminal and display.region != region:
                    region = display.region
                    print(f"tdr: {region}", file=sys.stderr, flush=True)
        except KeyboardInterrupt:
            pass  # the program has got the signal too
        finally:
            process.stdout.close()
            while True:
                try:
                    status = process.wait()
                    break
                except KeyboardInterrupt:
                    continue
    return 128 - status if status < 0 else status


def _update(bars: "Progress", task: "TaskID", reached: int, total: int, name: Optional[str] = None) -> None:
    bars.update(task, completed=reached, total=total or None, reached=f"{reached}/{total}" if total else "")
    if name is not None:
        bars.update(task, description=name)


def summary(configuration: Configuration, display: Display, rigidity: float = RIGIDITY) -> str:
    """The table at the end of a run: extremes and volume of the sum of every series, magnitude, files."""
    faults = read_faults(configuration.fault_file, configuration.fault_kind)
    size = seismic_moment(faults, rigidity)
    geographic = [region.kind == GEOGRAPHIC for region in configuration.regions]
    rows = [("series", "highest", "at", "lowest", "at", "volume")]
    tags = ("Tdr", "VRT", "HRZ") if configuration.slope_term else ("Tdr", "VRT")
    for region, in_degrees in zip(configuration.regions, geographic):
        for tag in tags:
            list_file = FilePath(configuration.output) / f"{tag}_{region.name}.txt"
            if list_file.is_file() and list_file.stat().st_size == 0:
                rows.append((list_file.stem, "no rupture interval", "", "", "", ""))
                continue
            figures = measure(total(open_series(list_file, region.kind)))
            rows.append(
                (
                    list_file.stem,
                    *_at(figures.highest, in_degrees),
                    *_at(figures.lowest, in_degrees),
                    volume(figures.volume),
                )
            )
    widths = [max(len(row[column]) for row in rows) for column in range(6)]
    lines = [
        "  ".join(
            f"{cell:<{width}}" if column in (0, 2, 4) else f"{cell:>{width}}"
            for column, (cell, width) in enumerate(zip(row, widths))
        ).rstrip()
        for row in rows
    ]
    unit = "degrees" if all(geographic) else "metres" if not any(geographic) else "degrees or metres"
    magnitude = f"Mw {size.magnitude:.2f}" if size.moment > 0 else "no slip"
    written = [*display.files]
    lines += [
        "",
        f"Sums over {display.intervals} rupture intervals; places in {unit}; volume: raised less lowered.",
        f"{magnitude} for a rigidity of {rigidity / 1e9:g} GPa, {faults.sizes['element']} elements.",
        f"{len(set(written))} grids and {len(tags) * len(configuration.regions)} lists in {configuration.output}.",
    ]
    return "\n".join(lines) + "\n"


def _at(extreme: Optional[Extreme], geographic: bool) -> tuple[str, str]:
    return ("none", "") if extreme is None else (f"{extreme.value:.2f} m", place(extreme.x, extreme.y, geographic))
