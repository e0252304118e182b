"""The library of matrix products that numpy has: which kernels it takes, and on how many threads.

OpenBLAS 0.3.21 knows no processor that is newer than itself, and may take one for an old one: its product is then some
four times slower. It chooses when it is loaded, so the right kernels are named in the environment of a process before
that starts. Bits of a product depend on the kernels and, with more than one thread, on how it is cut: workers take one.
"""

from __future__ import annotations

import os
import platform
import threading
from contextlib import contextmanager
from typing import Iterator

import threadpoolctl

CORE_TYPE = "OPENBLAS_CORETYPE"
"""The variable by which OpenBLAS is told its kernels."""

_SKYLAKE = {"avx512f", "avx512cd", "avx512bw", "avx512dq", "avx512vl"}
"""What the kernels SkylakeX take for granted."""

_HASWELL = {"avx2", "fma"}

_lock = threading.Lock()
_users = 0
_limits: list[threadpoolctl.threadpool_limits] = []


def worker_environment() -> dict[str, str]:
    """Variables with which a worker starts. What somebody has set himself stays.

    Blosc has no variable for it in numcodecs: `single_thread` sees to that.
    """
    wanted = {"OPENBLAS_NUM_THREADS": "1", "OMP_NUM_THREADS": "1", "BLOSC_NTHREADS": "1"}
    if CORE_TYPE not in os.environ:
        name = core_type(_processor_flags())
        if name:
            wanted[CORE_TYPE] = name
    return wanted


def core_type(flags: set[str]) -> str:
    """The kernels of OpenBLAS for a processor with these instruction sets; empty when it may choose itself."""
    if _SKYLAKE <= flags:
        return "SkylakeX"
    return "Haswell" if _HASWELL <= flags else ""


def _processor_flags() -> set[str]:
    if platform.machine() not in ("x86_64", "AMD64"):
        return set()
    try:
        with open("/proc/cpuinfo", encoding="ascii", errors="replace") as file:
            for line in file:
                if line.startswith("flags"):
                    return set(line.split(":", 1)[1].split())
    except OSError:
        pass
    return set()


@contextmanager
def single_thread() -> Iterator[None]:
    """One thread for products and for Blosc, as long as anybody in this process is within."""
    from numcodecs import blosc

    global _users
    with _lock:
        if _users == 0:
            _limits.append(threadpoolctl.threadpool_limits(1, "blas"))
            blosc.use_threads = False
        _users += 1
    try:
        yield
    finally:
        with _lock:
            _users -= 1
            if _users == 0:
                _limits.pop().restore_original_limits()
                blosc.use_threads = None
