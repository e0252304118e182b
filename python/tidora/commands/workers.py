"""Who does the shards: processes of this machine, the workers of a Dask scheduler, or a part of them as a batch job."""

from __future__ import annotations

import argparse
import asyncio
import contextlib
import logging
import os
from typing import Any, Iterator

from ..ensemble.blas import CORE_TYPE, worker_environment
from ..ensemble.shards import WHOLE, Part, cores
from ..errors import TidoraError
from .options import whole

_PATIENCE = 300
"""s to wait for the first worker of a scheduler: those of a batch system start when there is room."""


CONNECT = 30
"""s to wait for an answer of a scheduler."""


def add_worker_options(parser: argparse.ArgumentParser) -> None:
    """Options that say who does the work."""
    who = parser.add_mutually_exclusive_group()
    who.add_argument(
        "--workers", type=whole, metavar="N", help="processes of this machine (as many as it gives this one cores)"
    )
    who.add_argument("--scheduler", metavar="S", help="address of a Dask scheduler, or its scheduler file")
    parser.add_argument(
        "--part", type=_part, default=WHOLE, metavar="I/N", help="only part I of N, for array jobs; I from 1 to N"
    )


def _part(word: str) -> Part:
    """``I/N``."""
    numbers = word.split("/")
    if len(numbers) == 2 and all(number.isascii() and number.isdigit() and len(number) < 10 for number in numbers):
        part = Part(*map(int, numbers))
        if 1 <= part.number <= part.count:
            return part
    raise argparse.ArgumentTypeError(f"{word} is not I/N with I from 1 to N")


@contextlib.contextmanager
def working(args: argparse.Namespace) -> Iterator[None]:
    """Workers, as long as it lasts: a Dask client is active, but for a part that has one core."""
    if _is_worker(args):
        yield
        return
    import distributed

    with contextlib.ExitStack() as stack:
        for name in (
            "distributed",
            "tornado",
            "asyncio",
        ):  # what they say of connections that end is none of the user's
            logging.getLogger(name).setLevel(logging.CRITICAL)
        if args.scheduler is not None:
            client = stack.enter_context(_client(args.scheduler))
        else:
            client = stack.enter_context(distributed.Client(stack.enter_context(_processes(args.workers or cores()))))
        try:
            client.wait_for_workers(1, timeout=_PATIENCE)
        except asyncio.TimeoutError:
            raise TidoraError(f"--scheduler has had no workers for {_PATIENCE} s") from None
        yield


def _is_worker(args: argparse.Namespace) -> bool:
    """True for a task of an array job that may do its part itself: another process would take seconds to start, and
    could do nothing better."""
    alone = args.part != WHOLE and args.workers is None and args.scheduler is None and cores() == 1
    return alone and CORE_TYPE not in worker_environment()


def _client(scheduler: str) -> Any:
    import distributed

    try:
        if os.path.exists(scheduler):
            return distributed.Client(scheduler_file=scheduler, timeout=CONNECT)
        return distributed.Client(scheduler, timeout=CONNECT)
    except (OSError, ValueError, TypeError, KeyError) as error:  # no connection; no address, or no scheduler file
        with contextlib.suppress(ValueError, OSError):
            distributed.default_client().close(timeout=1)  # what has no connection would be the active client still
        said = (str(error).splitlines() or [type(error).__name__])[0]
        raise TidoraError(f"--scheduler {scheduler} cannot be reached: {said}") from None


def _processes(count: int) -> Any:
    """A scheduler of our own with processes of one thread each."""
    import dask
    import distributed

    # What is in the environment already holds. The numbers of threads and the kernels of OpenBLAS are read when it is
    # loaded: before anything of ours runs.
    dask.config.set({"distributed.nanny.pre-spawn-environ": worker_environment()})
    return distributed.LocalCluster(
        n_workers=count,
        threads_per_worker=1,
        processes=True,
        dashboard_address=None,
        memory_limit=0,
        silence_logs=logging.CRITICAL,
    )
