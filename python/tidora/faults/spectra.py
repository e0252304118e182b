"""Random fields of slip with a given amplitude spectrum: SNCF of Davies et al. (2015).

The discrete Fourier transform of the slip on the cells of the rupture, over its value at wavenumber 0, has the
amplitude

    A(kx, ky) = (1 + ((kx / kcx)^2 + (ky / kcy)^2)^2)^(-1/2)

kx along strike and ky down dip, in cycles per km; phases are random and independent. The corner wavenumbers follow

    log10 kcx = 2.03 - 0.54 Mw, standard deviation 0.22,    log10 kcy = 1.18 - 0.41 Mw, standard deviation 0.19,

with a correlation of 0.68 between the residuals.
"""

from __future__ import annotations

import math

import numpy as np

CORNER_ALONG = (2.03, -0.54, 0.22)
CORNER_DOWN = (1.18, -0.41, 0.19)
CORRELATION = 0.68


def corner_wavenumbers(magnitude: np.ndarray, normal: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """kcx and kcy in cycles per km, (scenario,).

    Parameters
    ----------
    magnitude : (scenario,)
    normal : (scenario, 2)
        Standard normal numbers.
    """
    down = CORRELATION * normal[:, 0] + math.sqrt(1.0 - CORRELATION**2) * normal[:, 1]
    found = []
    for (a, b, sigma), residual in ((CORNER_ALONG, normal[:, 0]), (CORNER_DOWN, down)):
        found.append(10.0 ** (a + b * magnitude + sigma * residual))
    return found[0], found[1]


def amplitude(kx: np.ndarray, ky: np.ndarray, kcx: np.ndarray, kcy: np.ndarray) -> np.ndarray:
    """A of wavenumbers and corner wavenumbers, 1 at wavenumber 0; arrays are broadcast."""
    square = (kx / kcx) ** 2 + (ky / kcy) ** 2
    return np.asarray(1.0 / np.sqrt(1.0 + square * square))


def sncf(normal: np.ndarray, spacing: tuple[float, float], corners: tuple[np.ndarray, np.ndarray]) -> np.ndarray:
    """float64 (scenario, down, along): fields of mean 1, before anything is clipped.

    Parameters
    ----------
    normal : (scenario, down, along)
        Standard normal numbers, whose phases are taken.
    spacing : (float, float)
        km along strike and down dip.
    corners : kcx, kcy
        (scenario,), cycles per km.
    """
    _, down, along = normal.shape
    kx, ky = np.fft.rfftfreq(along, spacing[0])[None, None, :], np.fft.fftfreq(down, spacing[1])[None, :, None]
    wanted = amplitude(kx, ky, *(corner[:, None, None] for corner in corners))
    noise = np.fft.rfft2(normal)
    size = np.sqrt(noise.real**2 + noise.imag**2)
    # A noise of size 0 has no phase; any will do.
    phases = np.where(size > 0.0, noise / np.where(size > 0.0, size, 1.0), 1.0)
    phases[:, 0, 0] = 1.0
    return np.asarray(np.fft.irfft2(phases * wanted * (down * along), s=(down, along)))
