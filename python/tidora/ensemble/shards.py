"""Work in shards: each owns whole chunks of a store, and is told no more than the store and its number.

The same shards are done by threads of this process, by the workers of a Dask client, or by several batch jobs that take
a part each. A shard that is there is not done again.
"""

from __future__ import annotations

import asyncio
import concurrent.futures
import contextlib
import os
import sys
import threading
from dataclasses import dataclass
from functools import partial
from typing import Any, Callable, Generator, Iterator, Optional

from ..errors import TidoraError
from .store import Stopped, Store

_PULSE = 15.0
"""s between looks at the workers of a scheduler."""

_PATIENCE = 20
"""Looks without any worker."""

Tell = Callable[[float], Any]

Work = Callable[[Store, int], None]
"""Computes and writes a shard of a store. A function of a module, which travels by its name."""


@dataclass(frozen=True)
class Part:
    """Part `number` of `count`, from 1 on: every `count`-th shard."""

    number: int = 1
    count: int = 1

    def of(self, shards: int) -> list[int]:
        """The numbers of its shards."""
        return list(range(self.number - 1, shards, self.count))


WHOLE = Part()


def do_shard(work: Work, path: str, shard: int, stop: Optional[threading.Event] = None) -> Optional[str]:
    """Does a shard of a store.

    Returns
    -------
    str or None
        What went wrong, as text: it has to travel from another process.
    """
    from .blas import single_thread

    try:
        with single_thread():
            work(Store(path, stop), shard)
        return None
    except Stopped:
        return None
    except TidoraError as error:
        return str(error)
    except MemoryError:
        return f"{path}: not enough memory for shard {shard}"
    except OSError as error:
        return f"{error.filename or path}: {error.strerror or error}"


def do_shards(work: Work, store: Store, count: int, part: Part, progress: Optional[Tell]) -> None:
    """Does what is not there yet of the shards of a part.

    By the Dask client that is active, else by threads, as many as the process has cores.

    Parameters
    ----------
    work : callable
    store : Store
    count : int
        Shards of the store.
    part : Part
    progress : callable, optional
        Is told the fraction of the shards of the part that are there. What it raises ends the work.

    Raises
    ------
    TidoraError
        If a shard cannot be done. Those that are done stay.
    """
    numbers = part.of(count)
    missing = [number for number in numbers if not _is_done(store, number)]
    done = len(numbers) - len(missing)
    if progress is not None:
        progress(done / len(numbers) if numbers else 1.0)
    # Closed here, so that nothing goes on behind the back of whoever catches what is raised.
    with contextlib.closing(_ended(work, store.path, missing)) as ended:
        for problem in ended:
            if problem is not None:
                raise TidoraError(problem)
            done += 1
            if progress is not None:
                progress(done / len(numbers))
    store.sweep(count)


def _is_done(store: Store, shard: int) -> bool:
    """A shard that failed for a reason that may have gone is not done."""
    return store.is_whole(shard) and not (store.record(shard) or {}).get("again", False)


def _ended(work: Work, path: str, numbers: list[int]) -> Generator[Optional[str], None, None]:
    """The results of shards, as they end."""
    client = active_client()
    if client is not None and numbers:
        yield from _by_client(client, work, path, numbers)
        return
    workers = max(1, min(len(numbers), cores()))
    stop = threading.Event()
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        futures = [pool.submit(do_shard, work, path, number, stop) for number in numbers]
        try:
            for future in concurrent.futures.as_completed(futures):
                yield future.result()
        finally:
            stop.set()
            pool.shutdown(wait=True, cancel_futures=True)


def _by_client(client: Any, work: Work, path: str, numbers: list[int]) -> Iterator[Optional[str]]:
    from distributed import wait

    pending = set(client.map(partial(do_shard, work, path), numbers, pure=False, key="tidora-shard"))
    alone = 0
    try:
        while pending:
            try:
                done, pending = wait(pending, timeout=_PULSE, return_when="FIRST_COMPLETED")
            except asyncio.TimeoutError:
                alone = 0 if client.scheduler_info()["workers"] else alone + 1
                if alone > _PATIENCE:
                    yield f"{path}: all workers are gone, and none has come for {_PATIENCE * _PULSE:g} s"
                continue
            for future in done:
                yield _result(path, future)
    except (OSError, concurrent.futures.CancelledError) as error:
        yield f"{path}: the scheduler is gone: {error}"
    finally:
        with contextlib.suppress(OSError):  # of a scheduler that is gone there is nothing to take back
            client.cancel(list(pending))


def _result(path: str, future: Any) -> Optional[str]:
    """The result of a shard; what no shard says itself, such as that its workers died, becomes a text."""
    try:
        return future.result()
    except Exception as error:  # whatever a worker may raise: it may not even know this package
        said = (str(error).splitlines() or [""])[0]
        return f"{path}: a worker failed: {type(error).__name__}: {said}"


def active_client() -> Optional[Any]:
    """The Dask client that is active, if the caller has one."""
    if "distributed" not in sys.modules:  # nobody can have made one
        return None
    import distributed

    try:
        return distributed.get_client()
    except ValueError:
        return None


def cores() -> int:
    """Cores that the process may use."""
    return len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else os.cpu_count() or 1
