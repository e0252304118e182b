"""``tdr run``: a run of the program with a progress display, and a table of what came out."""

from __future__ import annotations

import argparse
import os
import subprocess
import sys
import tempfile
from contextlib import contextmanager
from typing import IO, Any, Iterator, Optional

from ..errors import Path, TidoraError
from ..faults.moment import RIGIDITY
from ..formats.configuration import Configuration, read_configuration
from .options import add_rigidity
from .program import Display, find_program
from .run_bars import bars
from .run_table import summary


def add(commands: Any) -> None:
    """Its options."""
    parser = commands.add_parser("run", help="runs the program with a progress display, then a table of what came out")
    parser.add_argument(
        "config", metavar="CONFIG", help="configuration file; paths in it start from the current folder"
    )
    parser.add_argument("--program", metavar="PATH", help="Tidora (TIDORA_PROGRAM, the search path, or build/Tidora)")
    parser.add_argument("--log", metavar="FILE", help="gets what the program prints")
    add_rigidity(parser, RIGIDITY, "magnitude")
    parser.set_defaults(command=run)


def run(args: argparse.Namespace) -> int:
    """Runs the program in the current folder.

    Returns
    -------
    int
        Exit status of the program, 128 and the number of the signal that ended it, or 1 when it ended well and its
        results cannot be read.
    """
    executable = find_program(args.program)
    try:
        configuration: Optional[Configuration] = read_configuration(args.config)
    except TidoraError:
        configuration = None  # the program says it better
    display = Display([region.name for region in configuration.regions] if configuration else [])
    kinds = 3 if configuration and configuration.slope_term else 2
    with tempfile.TemporaryFile("w+", errors="replace") as errors, _log_file(args.log) as record:
        process = _started([executable, os.fspath(args.config)], errors)
        status = _watched(process, display, kinds, record)
        errors.seek(0)
        sys.stderr.write(errors.read())
        sys.stderr.flush()
    if status != 0:
        ended = f"by signal {status - 128}" if status > 128 else f"with exit status {status}"
        print(f"tdr: {executable} ended {ended}, {display.region}", file=sys.stderr)
        return status
    if configuration is not None:
        print(summary(configuration, display, args.rigidity * 1e9), end="")
    return 0


@contextmanager
def _log_file(log: Optional[Path]) -> Iterator[Optional[IO[str]]]:
    if log is None:
        yield None
    else:
        with open(log, "w", encoding="utf-8", errors="surrogateescape") as file:
            yield file


def _started(command: list[str], errors: IO[str]) -> "subprocess.Popen[str]":
    try:
        return subprocess.Popen(
            command,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=errors,
            encoding="utf-8",
            errors="surrogateescape",
        )
    except OSError as error:
        raise TidoraError(f"{command[0]} cannot be started: {error.strerror}") from None


def _watched(process: "subprocess.Popen[str]", display: Display, kinds: int, record: Optional[IO[str]]) -> int:
    """Follows the program to its end; its exit status."""
    assert process.stdout is not None
    with bars(display, kinds) as show:
        try:
            for line in process.stdout:
                if record is not None:
                    record.write(line)
                if display.take(line.rstrip("\n")):
                    show()
        except KeyboardInterrupt:
            pass  # the program has got the signal too
        finally:
            process.stdout.close()
            status = _waited(process)
    return 128 - status if status < 0 else status


def _waited(process: "subprocess.Popen[str]") -> int:
    while True:
        try:
            return process.wait()
        except KeyboardInterrupt:
            continue
