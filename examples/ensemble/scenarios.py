#!/usr/bin/env python3
"""Draws the scenarios: scenarios.py MODEL COUNT TABLE

Magnitudes follow the law of Gutenberg and Richter between two bounds. They are not random, but quantiles of it: with
few scenarios too the largest ones are neither missing nor too many.
"""

import sys

import numpy as np
import tidora

LEAST, MOST = 8.5, 9.0
B_VALUE = 1.0
"""Of the law: ten times fewer earthquakes for each unit of magnitude."""
SEED = 2011


def magnitudes(count: int) -> np.ndarray:
    """Quantiles of the law, truncated, in the middle of `count` equal shares of probability."""
    above = (np.arange(count) + 0.5) / count
    share = 1.0 - 10.0 ** (-B_VALUE * (MOST - LEAST))
    return np.asarray(LEAST - np.log10(1.0 - above * share) / B_VALUE)


def main() -> None:
    model, count, table = sys.argv[1], int(sys.argv[2]), sys.argv[3]
    sizes = magnitudes(count)
    slips = tidora.stochastic_slip(tidora.read_faults(model), sizes, count, seed=SEED)
    tidora.write_slip_table(slips, table)
    units = np.diff(slips["indptr"].values)
    print(
        f"{table}: {count} scenarios, Mw {sizes.min():.2f} to {sizes.max():.2f}, {units.min()} to {units.max()} units"
    )


if __name__ == "__main__":
    main()
