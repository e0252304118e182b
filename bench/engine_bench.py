#!/usr/bin/env python3
"""Times the engine through Python, in turns within one process, and prints ratios beside their bars.

    cmake --preset bench && cmake --build --preset bench
    TIDORA_LIBRARY=build-bench/libtidora.so PYTHONPATH=python bench/engine_bench.py build-bench/bench/tidora_bench

Medians, least and most of some turns, by processor time where one thread works and by wall time where two do. The bare
kernel, which Python cannot reach, is timed by the benchmark program in the same turns.
"""

import statistics
import subprocess
import sys
import time
from typing import Callable, List

import numpy as np
import tidora

TURNS = 7
SIDE = 1000
ELEMENTS = 10


def faults(count: int, scale: float, coord: str):
    """Elements on a line off Japan, on degrees or, times `scale`, in metres."""
    steps = np.arange(count)
    return tidora.make_faults(
        scale * (142.0 + 0.03 * steps),
        scale * (36.5 + 0.06 * steps),
        12000.0,
        200.0,
        13.0,
        85.0,
        50e3,
        25e3,
        3.0,
        coord=coord,
    )


def nodes(scale: float, coord: str):
    """SIDE x SIDE nodes, a minute of arc apart."""
    end = (SIDE - 1) / 60.0
    return tidora.grid(
        scale * 135.0, scale * (135.0 + end), scale * 30.0, scale * (30.0 + end), scale / 60.0, coord=coord
    )


def seconds(work: Callable[[], object], clock: Callable[[], float]) -> float:
    start = clock()
    work()
    return clock() - start


def compare(name: str, slow: Callable[[], float], fast: Callable[[], float], bar: str) -> None:
    """Prints slow over fast."""
    slow(), fast()
    ratios: List[float] = sorted(slow() / fast() for _ in range(TURNS))
    print(f"{name:62} {statistics.median(ratios):8.2f} {ratios[0]:8.2f} {ratios[-1]:8.2f}   {bar}", flush=True)


def _bare(empty, values: np.ndarray):
    made = empty.copy(data=values.astype(np.float32))
    made.attrs = {name: value for name, value in made.attrs.items() if name != "topography"}
    return made


def main() -> None:
    kernel = sys.argv[1]
    print(tidora.library_path())
    print(f"{'work':62} {'ratio':>8} {'least':>8} {'most':>8}   bar")
    globe, plane = faults(ELEMENTS, 1.0, "geographic"), faults(ELEMENTS, 1e5, "plane")
    degrees, metres = nodes(1.0, "geographic"), nodes(1e5, "plane")

    def cost(elements, where, threads: int = 1, clock: Callable[[], float] = time.process_time) -> float:
        return seconds(lambda: tidora.deform(elements, where, threads=threads), clock)

    def bare() -> float:
        """Processor seconds of the bare kernel for as many points."""
        out = subprocess.run([kernel, "bare kernel"], stdout=subprocess.PIPE, check=True, text=True).stdout
        return float(out) * 1e-9 * SIDE * SIDE * ELEMENTS

    compare("globe over plane", lambda: cost(globe, degrees), lambda: cost(plane, metres), "at most 1.35")
    compare("globe over the bare kernel", lambda: cost(globe, degrees), bare, "at most 1.6")
    many = faults(50, 1.0, "geographic")
    wall = time.perf_counter
    compare(
        "two threads over one, 50 elements",
        lambda: cost(many, degrees, 1, wall),
        lambda: cost(many, degrees, 2, wall),
        "at least 1.85, or 0.95 of two bare kernels side by side",
    )
    steps = np.linspace(0.0, 1.0, 260)
    along, across = np.meshgrid(steps, steps)
    floor = _plane_field(-100.0 - 6900.0 * (0.5 + 0.5 * np.sin(9.0 * along + 4.0 * across)))
    uplift = _plane_field(3.0 * np.sin(20.0 * along) * np.cos(17.0 * across))

    def filtering(name: str) -> float:
        return seconds(lambda: tidora.kajiura(uplift, floor, kernel=name, threads=1), time.process_time)

    compare(
        "converged filter over the program's, 260 x 260, 1 km",
        lambda: filtering("converged"),
        lambda: filtering("program"),
        "at most 0.6",
    )


def _plane_field(values: np.ndarray):
    """Values on nodes 1 km apart."""
    end = 1000.0 * (values.shape[0] - 1)
    return _bare(tidora.grid(0.0, end, 0.0, end, 1000.0, coord="plane"), values)


if __name__ == "__main__":
    main()
