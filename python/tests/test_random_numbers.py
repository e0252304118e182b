"""Random numbers by counters, and the fields that are made from them.

Tolerances of samples are 5 standard deviations of the estimator, which are derived where they stand; a right one fails
once in two million times, and the seeds are fixed.
"""

import math

import numpy as np
import pytest

from tidora.faults import random_numbers, spectra, von_karman

SIGMAS = 5.0


def normals(seed, count, size):
    return random_numbers.normal(random_numbers.uniform(seed, 1, np.arange(count), size))


def test_the_bits_are_those_of_philox():
    # Salmon et al. (2011): the known answer for counter and key 0. The counter is raised before it is used.
    bits = np.random.Philox(key=0, counter=[2**64 - 1] * 4).random_raw(4)
    expected = (0x16554D9ECA36314C, 0xDB20FE9D672D0FDC, 0xD7E772CEE186176B, 0x7E68B68AEC7BA23B)
    assert tuple(map(int, bits)) == expected
    first = random_numbers.uniform(0, 0, np.array([0]), 1)[0, 0]
    assert first == (int(np.random.Philox(key=0).random_raw()) >> 11) / 2**53


def test_a_scenario_draws_the_same_numbers_whatever_is_drawn_beside_it():
    one = random_numbers.uniform(2**100 + 7, 3, np.arange(50), 9)
    other = random_numbers.uniform(2**100 + 7, 3, np.array([49, 3, 17]), 4)
    assert np.array_equal(one[[49, 3, 17], :4], other)
    assert not np.any(one == random_numbers.uniform(7, 3, np.arange(50), 9))  # the upper half of a seed counts
    assert not np.any(one == random_numbers.uniform(2**100 + 7, 2, np.arange(50), 9))


def test_uniform_and_normal_numbers_have_the_moments_and_the_independence_of_their_kind():
    count = 200_000
    flat = random_numbers.uniform(5, 0, np.arange(count // 100), 100).ravel()
    assert flat.min() >= 0.0 and flat.max() < 1.0
    # Of uniform numbers: variance 1/12 of the mean's terms; of their squares 1/5 - 1/9.
    assert abs(flat.mean() - 0.5) < SIGMAS * math.sqrt(1 / 12 / count)
    assert abs((flat**2).mean() - 1 / 3) < SIGMAS * math.sqrt((1 / 5 - 1 / 9) / count)
    z = random_numbers.normal(flat.reshape(-1, 100))
    # Moments of a normal number: variances of z, z^2, z^3, z^4 are 1, 2, 15, 96.
    for power, mean, variance in ((1, 0, 1), (2, 1, 2), (3, 0, 15), (4, 3, 96)):
        assert abs((z**power).mean() - mean) < SIGMAS * math.sqrt(variance / count)
    # Products of neighbours, within a pair and beyond, and of neighbouring scenarios: variance 1.
    for product in (z[:, 0::2] * z[:, 1::2], z[:, 1:-1:2] * z[:, 2::2], z[1:] * z[:-1]):
        assert abs(product.mean()) < SIGMAS / math.sqrt(product.size)


def test_corner_wavenumbers_have_their_medians_sigmas_and_correlation():
    count, magnitude = 20_000, 8.6
    kcx, kcy = spectra.corner_wavenumbers(np.full(count, magnitude), normals(11, count, 2))
    x, y = np.log10(kcx) - (2.03 - 0.54 * magnitude), np.log10(kcy) - (1.18 - 0.41 * magnitude)
    for residual, sigma in ((x, 0.22), (y, 0.19)):
        # Standard errors of a mean and a standard deviation: sigma / sqrt(N), sigma / sqrt(2 N).
        assert abs(residual.mean()) < SIGMAS * sigma / math.sqrt(count)
        assert abs(residual.std() - sigma) < SIGMAS * sigma / math.sqrt(2 * count)
    # Of a correlation: (1 - rho^2) / sqrt(N).
    assert abs(np.corrcoef(x, y)[0, 1] - 0.68) < SIGMAS * (1 - 0.68**2) / math.sqrt(count)


def wanted_amplitude(down, along, spacing, kcx, kcy):
    """By the formula, mode after mode."""
    found = np.empty((down, along))
    for j in range(down):
        for i in range(along):
            kx = min(i, along - i) / (along * spacing[0])
            ky = min(j, down - j) / (down * spacing[1])
            found[j, i] = (1 + ((kx / kcx) ** 2 + (ky / kcy) ** 2) ** 2) ** -0.5
    return found


@pytest.mark.parametrize("down, along", [(1, 1), (1, 8), (5, 1), (4, 6), (5, 7), (8, 12)])
def test_the_spectrum_of_every_sncf_field_has_exactly_its_amplitude(down, along):
    kcx, kcy = np.array([0.002, 0.01, 0.05]), np.array([0.03, 0.005, 0.02])
    fields = spectra.sncf(normals(1, 3, 2 * down * along)[:, ::2].reshape(3, down, along), (20.0, 12.5), (kcx, kcy))
    for field, x, y in zip(fields, kcx, kcy):
        modes = np.abs(np.fft.fft2(field)) / (down * along)
        assert np.allclose(modes, wanted_amplitude(down, along, (20.0, 12.5), x, y), rtol=1e-12, atol=1e-14)
        assert field.mean() == pytest.approx(1.0, abs=1e-12)


def sncf_sample(count, down=6, along=9):
    corners = np.full(count, 0.006), np.full(count, 0.012)
    return spectra.sncf(normals(2, count, down * along).reshape(count, down, along), (20.0, 12.0), corners)


def test_the_phases_of_an_sncf_field_are_uniform_and_independent():
    count = 4000
    modes = np.fft.fft2(sncf_sample(count))[:, :3, 1:5]  # none of them is the conjugate of another
    phases = (modes / np.abs(modes)).reshape(count, -1)
    # Parts of a sum of unit vectors of random direction: variance N / 2. The same for differences of phases.
    bound = SIGMAS / math.sqrt(2 * count)
    for power in (1, 2):
        mean = (phases**power).mean(axis=0)
        assert max(np.abs(mean.real).max(), np.abs(mean.imag).max()) < bound
    differences = np.conj(phases).T @ phases / count
    others = differences[~np.eye(phases.shape[1], dtype=bool)]
    assert max(np.abs(others.real).max(), np.abs(others.imag).max()) < bound


def test_the_covariance_of_sncf_fields_is_the_sum_over_their_modes():
    count, down, along = 20_000, 6, 9
    deviation = sncf_sample(count) - 1.0
    power = wanted_amplitude(down, along, (20.0, 12.0), 0.006, 0.012) ** 2
    power[0, 0] = 0.0
    covariance = np.fft.ifft2(power).real * power.size
    for j, i in ((0, 0), (0, 1), (1, 0), (2, 3), (3, 4)):
        sample = (deviation[:, 1, 2] * deviation[:, (1 + j) % down, (2 + i) % along]).mean()
        # Variance of the product of two Gaussian numbers: C(0)^2 + C^2; a sum of waves of fixed amplitude has less.
        error = math.sqrt((covariance[0, 0] ** 2 + covariance[j, i] ** 2) / count)
        assert abs(sample - covariance[j, i]) < SIGMAS * error


def test_the_von_karman_correlation_is_that_of_the_bessel_function():
    r = np.array([0.0, 1e-6, 0.01, 0.3, 1.0, 4.0, 20.0, 800.0])
    # K_(1/2)(r) = sqrt(pi / 2 r) exp(-r): the correlation is the exponential.
    assert np.allclose(von_karman.correlation(r, 0.5), np.exp(-r), rtol=1e-13, atol=1e-15)
    for hurst in (0.25, 0.75):
        for at, distance in enumerate(r[:5]):
            if distance:
                assert von_karman.correlation(r, hurst)[at] == pytest.approx(by_series(distance, hurst), rel=1e-12)


def by_series(r, hurst):
    """The same by K = pi / 2 (I_-H - I_H) / sin(H pi), with the power series of I."""

    def bessel(order):
        return sum((r / 2) ** (2 * m + order) / (math.factorial(m) * math.gamma(m + order + 1)) for m in range(40))

    k = math.pi / 2 * (bessel(-hurst) - bessel(hurst)) / math.sin(hurst * math.pi)
    return r**hurst * k / (2 ** (hurst - 1) * math.gamma(hurst))


def lags_of(down, along, distance):
    i, j = np.divmod(np.arange(down * along), along)
    return np.hypot((j[:, None] - j) * distance[0], (i[:, None] - i) * distance[1])


@pytest.mark.parametrize("down, along", [(1, 1), (3, 5), (9, 15)])
def test_the_factor_gives_the_covariance_of_the_logarithm_between_all_cells(down, along):
    lower = von_karman.factor((down, along), (0.15, 0.4), 0.75, 0.75)
    slip = 0.75**2 * von_karman.correlation(lags_of(down, along, (0.15, 0.4)), 0.75)
    assert np.allclose(lower @ lower.T, np.log(1 + slip), rtol=0, atol=1e-13)
    assert np.array_equal(lower, np.tril(lower))


def test_lognormal_slip_has_the_mean_the_variation_and_the_correlation_that_were_asked_for():
    count, down, along = 20_000, 3, 5
    lower = von_karman.factor((down, along), (0.3, 0.5), 0.75, 0.5)
    slip = von_karman.lognormal(normals(4, count, 16)[:, :15], lower)
    wanted = 0.25 * von_karman.correlation(lags_of(down, along, (0.3, 0.5)), 0.75)
    c = np.log1p(wanted)
    s2 = c[0, 0]
    # The logarithm is Gaussian: mean -s^2 / 2, covariance c, with the standard errors of Gaussian samples.
    log = np.log(slip) + s2 / 2
    assert np.all(np.abs(log.mean(axis=0)) < SIGMAS * math.sqrt(s2 / count))
    assert np.all(np.abs(log.T @ log / count - c) < SIGMAS * np.sqrt((s2**2 + c**2) / count))
    # The slip itself: E[x y] = exp(c), E[x^2 y^2] = exp(2 s^2 + 4 c), from which the variance of a product follows.
    error = np.sqrt((np.exp(2 * s2 + 4 * c) - np.exp(2 * c)) / count)
    assert np.all(np.abs(slip.T @ slip / count - (1 + wanted)) < SIGMAS * error)
    assert np.all(np.abs(slip.mean(axis=0) - 1) < SIGMAS * 0.5 / math.sqrt(count))
