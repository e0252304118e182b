"""The command ``tdr``."""

from __future__ import annotations

import argparse
import os
import sys
import warnings
from typing import Any, Callable, Optional, Sequence

from ..engine.binding import library, library_path
from ..errors import TidoraError, TidoraWarning, UsageError
from ..version import VERSION
from . import convert, ensemble, info, plot, run, source, units
from .options import in_options, joined


class _Version(argparse.Action):
    """Says the version of the package and of its library. Only then is the library looked for."""

    def __init__(self, **known: Any) -> None:
        super().__init__(nargs=0, **known)

    def __call__(self, parser: argparse.ArgumentParser, *_: Any) -> None:
        try:
            found = f"{library().tidora_version().decode()}, {library_path()}"
        except TidoraError as error:
            found = f"not usable: {in_options(error.message)}"
        print(f"tdr {VERSION}\nlibrary {found}")
        parser.exit()


def build_parser() -> argparse.ArgumentParser:
    """The command line of ``tdr``."""
    parser = argparse.ArgumentParser(
        prog="tdr",
        description="Make the initial sea surface of a tsunami; look at, measure, convert what Tidora reads, writes.",
    )
    parser.add_argument("--version", action=_Version, help="says which package and which library this is, and exits")
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    for module in (info, plot, convert, run, source, units, ensemble):
        module.add(commands)
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


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Runs ``tdr`` with `arguments`, those of the process when None.

    Returns
    -------
    int
        0 after success, 1 after bad input, 2 after a wrong command line; ``tdr run`` gives the status of the program.
    """
    parser = build_parser()
    try:
        args = parser.parse_args(joined(sys.argv[1:] if arguments is None else arguments))
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
