"""The command ``tdr``."""

from __future__ import annotations

import argparse
import json
import math
import os
import sys
import warnings
from contextlib import contextmanager
from datetime import datetime, timezone
from fractions import Fraction
from typing import Any, Callable, Iterator, Optional, Sequence

from . import __version__
from .errors import Message, Parameter, TidoraError, TidoraWarning, UsageError, worded
from .faults.moment import RIGIDITY
from .fields.kinds import KINDS
from .fields.measure import DENSITY, GRAVITY

Command = Callable[[argparse.Namespace], int]

OPTIONS = {
    "coord": "--coord",
    "crs": "--crs",
    "epoch": "--epoch",
    "fill": "--fill",
    "program": "--program",
    "region": "--region",
    "source": "IN",
    "spacing": "--spacing",
    "start": "--snapshot",
    "step": "--dt",
    "target": "OUT",
    "variable": "--variable",
    "whole_sum": "--sum",
}
"""What the parameters that messages of the library name are called on the command line."""


def in_options(message: Message) -> str:
    """A message of the library for somebody at the command line: its parameters under the names of their options."""

    def option(parameter: Parameter) -> str:
        return f"{OPTIONS[parameter.name]} {parameter.value}".rstrip()

    return worded(message, option)


def _positive(word: str) -> float:
    value = float(word)
    if not 0 < value < float("inf"):
        raise argparse.ArgumentTypeError(f"{word} is not above 0")
    return value


def _add_input_options(parser: argparse.ArgumentParser) -> None:
    parser.add_argument(
        "--coord",
        choices=KINDS,
        help="co-ordinates of grids and fault files that do not say it: "
        "plane is metres, geographic is degrees (guessed with a warning)",
    )
    parser.add_argument(
        "--variable", metavar="NAME", help="variable of a NetCDF file (the only one with rows and columns)"
    )


def _add_info(commands: Any) -> None:
    parser = commands.add_parser("info", help="geometry, extremes, volume, energy; moment and depths of a fault")
    parser.add_argument("files", nargs="+", metavar="FILE", help="grid, list of a series, or fault file")
    _add_input_options(parser)
    parser.add_argument("--topo", metavar="GRID", help="volume and energy of the nodes where this grid is below 0")
    parser.add_argument(
        "--rigidity", type=_positive, default=RIGIDITY / 1e9, metavar="GPA", help="for the moment, in GPa (%(default)g)"
    )
    parser.add_argument("--density", type=_positive, default=DENSITY, metavar="RHO", help="kg/m3 (%(default)g)")
    parser.add_argument("--gravity", type=_positive, default=GRAVITY, metavar="G", help="m/s2 (%(default)g)")
    parser.add_argument("--all", action="store_true", help="every element of a fault file")
    parser.add_argument("--json", action="store_true", help="a JSON list, one entry per file, every element")
    parser.set_defaults(command=_info)


def _info(args: argparse.Namespace) -> int:
    from .info import describe, to_text, without_nan

    reports = [
        describe(path, args.coord, args.variable, args.topo, args.density, args.gravity, args.rigidity * 1e9)
        for path in args.files
    ]
    if args.json:
        print(json.dumps(without_nan(reports), indent=2, allow_nan=False))
    else:
        print("\n".join(to_text(report, args.all) for report in reports), end="")
    return 0


def _add_plot(commands: Any) -> None:
    parser = commands.add_parser("plot", help="map of a grid, of a snapshot or of the sum of a series; section; frames")
    parser.add_argument("files", nargs="+", metavar="FILE", help="grids or lists of series; several stand side by side")
    parser.add_argument("-o", "--output", required=True, metavar="PICTURE", help="ends in .png, .pdf or .svg")
    _add_input_options(parser)
    parser.add_argument("--topo", metavar="GRID", help="draws the coast, and the floor below a section")
    parser.add_argument("--fault", metavar="FILE", help="draws the outlines of the elements, upper edges thick")
    what = parser.add_mutually_exclusive_group()
    what.add_argument(
        "--snapshot",
        type=float,
        metavar="START",
        help="of a series, what the interval that starts at START seconds adds (the sum of all)",
    )
    what.add_argument(
        "--frames",
        action="store_true",
        help="of a series, every interval and the sum up to it: " "numbered pictures, or the pages of a pdf",
    )
    parser.add_argument("--section", type=_section, metavar="X0,Y0,X1,Y1", help="a profile along this line")
    parser.add_argument(
        "--limit",
        type=_positive,
        metavar="M",
        help="the colours end at plus and minus M metres " "(the largest amount)",
    )
    parser.set_defaults(command=_plot)


def _section(word: str) -> tuple[float, ...]:
    values = tuple(float(part) for part in word.replace("/", ",").split(","))
    if len(values) != 4 or not all(math.isfinite(value) for value in values):
        raise argparse.ArgumentTypeError(f"{word} is not x0,y0,x1,y1")
    return values


def _plot(args: argparse.Namespace) -> int:
    from .faults.table import read_faults
    from .fields.kinds import kind_of
    from .fields.series import snapshot, total
    from .formats.registry import open_field
    from .formats.registry import picture_path
    from .plot.figures import draw_maps
    from .plot.frames import draw_frames
    from .plot.overlay import Overlay
    from .plot.section import draw_section

    picture_path(args.output)
    if (args.frames or args.section) and len(args.files) > 1:
        raise UsageError("--frames and --section take one file")
    if args.frames and args.section:
        raise UsageError("--frames and --section exclude each other")
    opened = [open_field(path, args.coord, args.variable) for path in args.files]
    kind = kind_of(opened[0])
    overlay = Overlay(
        open_field(args.topo, kind) if args.topo else None, read_faults(args.fault, kind) if args.fault else None
    )
    if args.frames:
        if "time" not in opened[0].dims:
            raise TidoraError("--frames needs a series, this is one grid")
        with _progress("Drawing", opened[0].sizes.get("time", 1)) as step:
            pictures = draw_frames(opened[0], args.output, overlay, args.limit, step)
    else:
        fields = [
            field
            if "time" not in field.dims
            else total(field)
            if args.snapshot is None
            else snapshot(field, args.snapshot)
            for field in opened
        ]
        if args.section:
            pictures = [draw_section(fields[0], args.output, args.section, overlay, args.limit)]
        else:
            pictures = [draw_maps(fields, args.output, overlay, args.limit)]
    for picture in pictures:
        print(picture)
    return 0


def _add_convert(commands: Any) -> None:
    parser = commands.add_parser(
        "convert",
        help="to and from NetCDF, GeoClaw dtopo, ESRI ASCII, GeoTIFF and the grids of the program",
        description="The ending of OUT says the format: .nc (CF NetCDF, a whole series or one grid), .tt3 (GeoClaw "
        "dtopo of type 3), .asc (ESRI ASCII), .tif (GeoTIFF), .bin and .txt (grids of Tidora). Of a series, formats of "
        "one grid get the sum.",
    )
    parser.add_argument("source", metavar="IN", help="grid, list of a series, .nc, .tif or .asc")
    parser.add_argument("target", metavar="OUT")
    _add_input_options(parser)
    what = parser.add_mutually_exclusive_group()
    what.add_argument(
        "--snapshot", type=float, metavar="START", help="of a series, the interval that starts at START s"
    )
    what.add_argument("--sum", action="store_true", help="of a series, the sum of all intervals")
    parser.add_argument(
        "--region",
        type=_region,
        metavar="W/E/S/N",
        help="first and last nodes; with --crs of a plane "
        "either metres, or degrees: then the plane rectangle around them",
    )
    parser.add_argument("--spacing", type=_spacing, metavar="D", help="of the result, 0.1 or 1/12")
    parser.add_argument(
        "--crs",
        metavar="CODE",
        help="of the result, EPSG:32654 say; a plane grid of the program, which " "has none, is said to be in it",
    )
    parser.add_argument("--from-crs", metavar="CODE", help="of IN, if it has none or a wrong one")
    parser.add_argument(
        "--resampling",
        choices=("auto", "bilinear", "mean"),
        default="auto",
        help="auto: the mean over the new cell when that is at least twice as wide, else bilinear",
    )
    parser.add_argument("--fill", type=float, metavar="VALUE", help="in place of missing values")
    parser.add_argument("--dt", type=_positive, metavar="S", help="time step of a dtopo file")
    parser.add_argument(
        "--epoch", type=_epoch, metavar="TIME", help="time 0 of a NetCDF series, 2011-03-11T05:46:18 UTC say"
    )
    parser.set_defaults(command=_convert)


def _region(word: str) -> tuple[float, ...]:
    values = tuple(float(part) for part in word.replace(",", "/").split("/"))
    if len(values) != 4 or not all(math.isfinite(value) for value in values):
        raise argparse.ArgumentTypeError(f"{word} is not west/east/south/north")
    if values[0] >= values[1] or values[2] >= values[3]:
        raise argparse.ArgumentTypeError(f"{word}: west is below east, south below north")
    return values


def _spacing(word: str) -> Fraction:
    try:
        value = Fraction(word)
    except (ValueError, ZeroDivisionError):
        raise argparse.ArgumentTypeError(f"{word} is neither a number nor a fraction such as 1/12") from None
    if value <= 0:
        raise argparse.ArgumentTypeError(f"{word} is not above 0")
    return value


def _epoch(word: str) -> datetime:
    time = datetime.fromisoformat(word.replace(" UTC", "").replace("Z", "+00:00"))
    return time if time.tzinfo else time.replace(tzinfo=timezone.utc)


def _convert(args: argparse.Namespace) -> int:
    from .fields.placing import Placing
    from .formats.contract import Writing
    from .formats.conversion import Layer, Request, Source, convert

    request = Request(
        Source(args.source, args.coord, args.variable),
        args.target,
        Layer(args.snapshot, args.sum),
        Placing(args.region, args.spacing, args.crs, args.from_crs, args.resampling),
        args.fill,
        Writing(args.dt, args.epoch, f"tdr convert {__version__}"),
    )
    print("\n".join(map(in_options, convert(request, _progress))))
    return 0


def _add_run(commands: Any) -> None:
    parser = commands.add_parser("run", help="runs the program with a progress display, then a table of what came out")
    parser.add_argument(
        "config", metavar="CONFIG", help="configuration file; paths in it start from the current folder"
    )
    parser.add_argument("--program", metavar="PATH", help="Tidora (TIDORA_PROGRAM, the search path, or build/Tidora)")
    parser.add_argument("--log", metavar="FILE", help="gets what the program prints")
    parser.add_argument(
        "--rigidity",
        type=_positive,
        default=RIGIDITY / 1e9,
        metavar="GPA",
        help="for the magnitude, in GPa (%(default)g)",
    )
    parser.set_defaults(command=_run)


def _run(args: argparse.Namespace) -> int:
    from .runner import run

    return run(args.config, args.program, args.log, args.rigidity * 1e9)


@contextmanager
def _progress(what: str, steps: int) -> Iterator[Callable[[str], None]]:
    """A progress bar on standard error while it is a terminal; a line for every tenth of the way when it is not."""
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


def build_parser() -> argparse.ArgumentParser:
    """The command line of ``tdr``."""
    parser = argparse.ArgumentParser(
        prog="tdr", description="Look at, measure and convert what Tidora reads and writes."
    )
    parser.add_argument("--version", action="version", version=f"tdr {__version__}")
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    _add_info(commands)
    _add_plot(commands)
    _add_convert(commands)
    _add_run(commands)
    return parser


def _shown_once() -> Callable[..., None]:
    """Takes the place of warnings.showwarning: says each note once, and nothing that libraries tell programmers."""
    said: set[str] = set()

    def show(message: Any, *_: Any, **__: Any) -> None:
        if not isinstance(message, TidoraWarning):
            return
        text = in_options(message.message)
        if text not in said:
            said.add(text)
            print(f"tdr: note: {text}", file=sys.stderr)

    return show


def _joined(arguments: Sequence[str]) -> list[str]:
    """The arguments with the values of some options attached by ``=``: -75/-70/-40/-30 is no option."""
    words: list[str] = []
    for word in arguments:
        if words and words[-1] in ("--region", "--section"):
            words[-1] += f"={word}"
        else:
            words.append(word)
    return words


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Runs ``tdr`` with `arguments`, those of the process when None.

    Returns
    -------
    int
        0 after success, 1 after bad input, 2 after a wrong command line; ``tdr run`` gives the status of the program.
    """
    parser = build_parser()
    try:
        args = parser.parse_args(_joined(sys.argv[1:] if arguments is None else arguments))
    except SystemExit as end:  # argparse has said what is wrong
        return int(end.code or 0)
    with warnings.catch_warnings():
        warnings.simplefilter("always", TidoraWarning)
        warnings.showwarning = _shown_once()
        try:
            status = args.command(args)
            sys.stdout.flush()
            return int(status)
        except TidoraError as error:
            print(f"tdr: {in_options(error.message)}", file=sys.stderr)
            return 2 if isinstance(error, UsageError) else 1
        except BrokenPipeError:
            os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
            return 1
        except OSError as error:
            print(f"tdr: {error.filename or ''}: {error.strerror or error}", file=sys.stderr)
            return 1
        except MemoryError:
            print("tdr: not enough memory", file=sys.stderr)
            return 1
        except KeyboardInterrupt:
            return 130


def command() -> None:
    """``tdr`` as a process: ends it with the status of `main`."""
    status = main()
    netcdf = sys.modules.get("tidora.formats.netcdf_writing")
    if netcdf is not None and netcdf.UNCLOSED:
        # A disk that is full leaves a file that the HDF5 library cannot close, and crashes on at the end of Python.
        sys.stdout.flush()
        sys.stderr.flush()
        os._exit(status)
    sys.exit(status)
