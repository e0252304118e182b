"""Stochastic slip: moments, ruptures, places, and what is refused.

Tolerances of samples are 5 standard deviations of the estimator, derived where they stand; the seeds are fixed.
"""

import math

import numpy as np
import pytest
from conftest import ROOT

import tidora
from tidora.faults import random_numbers
from tidora.faults.slip_table import checked_slip_table

SIGMAS = 5.0
DATA = ROOT / "python" / "tests" / "data"


def plane(along, down, length=25e3, width=20e3, **changes):
    """A table of one plane, rows along strike first."""
    j, i = (each.ravel() for each in np.mgrid[0:down, 0:along])
    given = dict(x=i * length, y=-j * width, depth=5e3 + 4e3 * j, strike=0, dip=12, rake=90, length=length, width=width,
                 slip=0, coord="plane")  # fmt: skip
    return tidora.make_faults(**{**given, **changes})


def moments(table, faults, rigidity=40e9):
    found = checked_slip_table(table)
    each = rigidity * (faults["length"].values * faults["width"].values)[found.unit] * found.slip
    return np.array([each[a:b].sum() for a, b in zip(found.indptr, found.indptr[1:])])


def same(one, other):
    return all(np.array_equal(one[name].values, other[name].values) for name in one.variables)


def some(table, first, last):
    """The entries of some scenarios."""
    found = checked_slip_table(table)
    entries = slice(found.indptr[first], found.indptr[last])
    return np.stack([found.unit[entries], found.slip[entries], found.rake[entries]])


@pytest.fixture(scope="module")
def noaa():
    return tidora.read_faults(DATA / "sift_unit_sources.txt")


@pytest.mark.parametrize("spectrum", ["sncf2015", "vonkarman"])
@pytest.mark.parametrize("magnitude, rigidity", [(7.0, 40e9), (8.3, 30e9), (9.4, 75e9)])
def test_the_moment_is_that_of_the_magnitude_and_no_slip_is_negative(spectrum, magnitude, rigidity):
    random = np.random.default_rng(1)
    faults = plane(30, 9)
    for name in ("length", "width"):  # elements of different sizes
        faults[name] = faults[name] * random.uniform(0.7, 1.4, faults[name].shape)
    table = tidora.stochastic_slip(faults, magnitude, 200, seed=1, spectrum=spectrum, rigidity=rigidity)
    assert np.allclose(moments(table, faults, rigidity), 10 ** (1.5 * magnitude + 9.1), rtol=1e-12)
    assert table["slip"].values.min() >= 0 and np.isfinite(table["slip"].values).all()
    assert table["magnitude"].values.tolist() == [magnitude] * 200
    assert (table["clipped"].values > 0).any() == (spectrum == "sncf2015")


def test_a_rigidity_of_the_table_does_not_count_and_each_scenario_may_have_its_own_magnitude():
    faults = plane(30, 9)
    magnitude = np.linspace(7, 9, 50)
    plain = tidora.stochastic_slip(faults, magnitude, 50, seed=1)
    assert np.allclose(moments(plain, faults), 10 ** (1.5 * magnitude + 9.1), rtol=1e-12)
    faults["rigidity"] = ("element", np.full(270, 10e9))
    assert same(plain, tidora.stochastic_slip(faults, magnitude, 50, seed=1))


@pytest.mark.parametrize("spectrum", ["sncf2015", "vonkarman"])
@pytest.mark.parametrize("size", ["median", "drawn"])
def test_a_scenario_is_the_same_bit_by_bit_however_many_there_are(spectrum, size):
    faults, magnitude = plane(60, 15), np.round(np.linspace(7, 8.5, 400), 1)
    options = {"seed": 2**127 + 3, "spectrum": spectrum, "size": size}
    whole = tidora.stochastic_slip(faults, magnitude, 400, **options)
    for count in (1, 2, 7, 120):
        few = tidora.stochastic_slip(faults, magnitude[:count], count, **options)
        assert np.array_equal(some(few, 0, count), some(whole, 0, count))
        assert np.array_equal(few["clipped"].values, whole["clipped"].values[:count])
    changed = magnitude.copy()
    changed[::2] = 8.7  # what the others are makes no difference
    other = tidora.stochastic_slip(faults, changed, 400, **options)
    assert np.array_equal(some(whole, 77, 78), some(other, 77, 78))


def test_another_seed_gives_other_slip_and_numbers_stay_from_version_to_version():
    faults = plane(12, 5)
    one, other = (tidora.stochastic_slip(faults, 8.5, 3, seed=seed) for seed in (1, 2))
    assert not np.array_equal(some(one, 0, 3), some(other, 0, 3))
    # A snapshot of version 1.1.0: whoever has kept a seed wants the slip of it again.
    found = checked_slip_table(one)
    some_of = np.flatnonzero(found.slip > 0)[[0, 40, 80]]
    assert found.unit[some_of].tolist() == [7, 52, 32]
    expected = [0.21768508872077175, 0.24329284195844053, 7.383293788631865]
    assert found.slip[some_of] == pytest.approx(expected, rel=1e-9)  # logarithms and sines differ in their last bits


def boxes(table, along):
    """(scenario, 4): first column, first row, columns, rows of ruptures, which have to be full rectangles."""
    found = checked_slip_table(table)
    rows = []
    for a, b in zip(found.indptr, found.indptr[1:]):
        j, i = np.divmod(found.unit[a:b], along)
        box = (i.min(), j.min(), np.ptp(i) + 1, np.ptp(j) + 1)
        assert b - a == box[2] * box[3] == len(set(found.unit[a:b].tolist()))
        rows.append(box)
    return np.array(rows)


@pytest.mark.parametrize("relation", ["strasser2010", "allenhayes2017", "thingbaijam2017"])
@pytest.mark.parametrize("magnitude", [6.0, 7.9, 8.8, 9.5])
def test_a_rupture_has_the_size_of_its_relation_cut_to_the_plane(relation, magnitude):
    sizes = tidora.scaling(relation, magnitude)
    found = boxes(tidora.stochastic_slip(plane(30, 9), magnitude, 20, seed=4, scaling=relation), 30)
    expected = [min(max(round(float(sizes["length"]) / 25), 1), 30), min(max(round(float(sizes["width"]) / 20), 1), 9)]
    assert np.all(found[:, 2:] == expected)


def test_every_place_of_a_rupture_is_equally_likely():
    count = 8000
    found = boxes(tidora.stochastic_slip(plane(12, 7), 8.0, count, seed=5), 12)
    places = (12 - found[0, 2] + 1) * (7 - found[0, 3] + 1)
    counts = np.unique(found[:, :2], axis=0, return_counts=True)[1]
    # Pearson: chi^2 of P - 1 degrees of freedom has mean P - 1 and variance 2 (P - 1).
    chi2 = ((counts - count / places) ** 2).sum() / (count / places)
    assert counts.size == places == 28 and abs(chi2 - (places - 1)) < SIGMAS * math.sqrt(2 * (places - 1))


@pytest.mark.parametrize("name, sigma", [("length", 0.180), ("width", 0.173)])
def test_drawn_sizes_have_the_median_and_the_sigma_of_the_relation(name, sigma):
    # One row, or one column, of cells of 0.2 km, so long that nothing is cut; the other side of a cell is a rupture's.
    count = 1500
    cells = {"length": 100e3, "width": 100e3, name: 200.0}
    shape = (2000, 1) if name == "length" else (1, 2000)
    faults = plane(*shape, **cells, depth=10e3)
    table = tidora.stochastic_slip(faults, 7.5, count, seed=6, size="drawn", layout=shape)
    log10 = np.log10(np.diff(table["indptr"].values) * 0.2)
    median = np.log10(float(tidora.scaling("strasser2010", 7.5)[name]))
    # Standard errors of mean and standard deviation; whole cells of 0.2 km in sizes of tens of km change log10 by less
    # than 2e-3 even where all of them were rounded the same way.
    assert abs(log10.mean() - median) < SIGMAS * sigma / math.sqrt(count) + 2e-3
    assert abs(log10.std() - sigma) < SIGMAS * sigma / math.sqrt(2 * count) + 2e-3


def test_planes_are_drawn_by_their_area_and_keep_to_themselves():
    faults = plane(10, 7)
    faults["plane"] = ("element", np.repeat([4.0, -1.0], [50, 20]))
    faults["along"] = ("element", np.arange(70.0) % 10)
    faults["down"] = ("element", np.arange(70.0) // 10)
    faults["length"][50:] *= 3.0
    table = checked_slip_table(tidora.stochastic_slip(faults, 7.8, 4000, seed=8))
    first = table.unit[table.indptr[:-1]] >= 50
    # 20 elements of three times the size against 50: 60 / 110, binomial.
    assert abs(first.mean() - 60 / 110) < SIGMAS * math.sqrt(60 / 110 * 50 / 110 / 4000)
    for a, b, other in zip(table.indptr, table.indptr[1:], first):
        assert np.all((table.unit[a:b] >= 50) == other)


def test_the_layout_comes_from_runs_of_equal_depth_or_is_said():
    faults = plane(12, 5)
    table = tidora.stochastic_slip(faults, 8.5, 20, seed=1)
    assert same(table, tidora.stochastic_slip(faults, 8.5, 20, seed=1, layout=(12, 5)))
    flat = plane(12, 5, depth=9e3)
    assert same(table, tidora.stochastic_slip(flat, 8.5, 20, seed=1, layout=np.array([12, 5])))
    assert not same(table, tidora.stochastic_slip(flat, 8.5, 20, seed=1))  # one row of sixty
    with pytest.raises(tidora.TidoraError, match="layout .* has to be given"):
        tidora.stochastic_slip(faults.isel(element=slice(0, 57)), 8.5, 20, seed=1)


def test_the_rake_is_that_of_the_unit():
    faults = plane(12, 5, rake=np.arange(60.0) + 60)
    table = checked_slip_table(tidora.stochastic_slip(faults, 8.5, 5, seed=1))
    assert np.array_equal(table.rake, table.unit + 60.0)


def test_noaa_zones_have_gaps_which_get_no_slip(noaa):
    with pytest.warns(tidora.TidoraWarning, match=r"\d+ of 300 ruptures lie on planes of less than a quarter"):
        table = tidora.stochastic_slip(noaa, 9.2, 300, seed=3)
    assert np.allclose(moments(table, noaa), 10 ** (1.5 * 9.2 + 9.1), rtol=1e-12)
    found = checked_slip_table(table)
    full = np.diff(found.indptr).max()
    gaps = 0
    for a, b in zip(found.indptr, found.indptr[1:]):
        own = noaa.isel(element=found.unit[a:b])
        assert np.unique(own["plane"].values).size == 1 and len({name[:2] for name in own["name"].values}) == 1
        gaps += b - a < full
    assert full == 8 * 4 and gaps > 50  # 804 km and 222 km in units of 100 km and 50 km


def test_published_models_bring_their_layout():
    with pytest.warns(tidora.TidoraWarning):
        faults = tidora.read_faults(DATA / "chile1995_neic.fsp")
    table = tidora.stochastic_slip(faults, 8.0, 50, seed=1)
    assert np.allclose(moments(table, faults), 10 ** (1.5 * 8.0 + 9.1), rtol=1e-12)


def test_a_rupture_of_which_nothing_but_clipped_slip_is_there_is_drawn_again(monkeypatch):
    # Two elements far apart: of the three cells of a rupture one is there, and now and then its slip is negative.
    faults = plane(6, 1, width=40e3).isel(element=[0, 5])
    for name, values in (("plane", [0, 0]), ("along", [0, 5]), ("down", [0, 0])):
        faults[name] = ("element", np.array(values, float))
    purposes, uniform = set(), random_numbers.uniform

    def recorded(seed, purpose, numbers, size):
        purposes.add(purpose)
        return uniform(seed, purpose, numbers, size)

    monkeypatch.setattr(random_numbers, "uniform", recorded)
    table = tidora.stochastic_slip(faults, 7.5, 3000, seed=1)
    assert np.allclose(moments(table, faults), 10 ** (1.5 * 7.5 + 9.1), rtol=1e-12)
    assert np.diff(table["indptr"].values).tolist() == [1] * 3000 and purposes >= {0, 1, 2}


BAD = [
    # why, what is given instead, error, what is said
    ("no table", {"faults": None}, TypeError, "faults is a table of elements"),
    ("no elements", {"faults": plane(12, 5).isel(element=slice(0, 0))}, tidora.TidoraError, "faults has no elements"),
    (
        "no area",
        {"faults": plane(12, 5, width=[0.0] + [1e4] * 59)},
        tidora.TidoraError,
        "faults: element 0 has no area",
    ),
    ("magnitude of text", {"magnitude": "8"}, TypeError, "magnitude is a number"),
    ("magnitude beyond", {"magnitude": 12}, tidora.TidoraError, "magnitude is from 0 to 11"),
    ("magnitude not a number", {"magnitude": math.nan}, tidora.TidoraError, "magnitude has 1 values"),
    (
        "two magnitudes of three",
        {"magnitude": [8, 9]},
        tidora.TidoraError,
        "magnitude is a number or one for each of 3",
    ),
    ("half a scenario", {"count": 1.5}, TypeError, "count is a whole number"),
    ("no scenario", {"count": 0}, tidora.TidoraError, "count is from 1"),
    ("seed below 0", {"seed": -1}, tidora.TidoraError, r"seed is from 0 to below 2\^128, not -1"),
    ("seed too large", {"seed": 2**128}, tidora.TidoraError, r"seed is from 0 to below 2\^128"),
    ("seed of text", {"seed": "7"}, TypeError, "seed is a whole number, not a str"),
    ("no seed", {"seed": None}, TypeError, "seed is a whole number, not None"),
    ("true seed", {"seed": True}, TypeError, "seed is a whole number"),
    ("relation", {"scaling": "wells"}, tidora.TidoraError, "scaling is one of strasser2010"),
    ("spectrum", {"spectrum": "white"}, tidora.TidoraError, "spectrum is one of sncf2015, vonkarman"),
    ("size", {"size": "large"}, tidora.TidoraError, "size is one of median, drawn"),
    ("rigidity", {"rigidity": 0}, tidora.TidoraError, "rigidity is above 0"),
    ("layout of another size", {"layout": (10, 5)}, tidora.TidoraError, "layout has 10 x 5 elements, the table 60"),
    ("layout of one number", {"layout": 60}, TypeError, "layout is two whole numbers"),
    ("layout of halves", {"layout": (1.5, 40)}, TypeError, "layout is a whole number"),
    ("hurst of another spectrum", {"hurst": 0.5}, tidora.TidoraError, "hurst is for spectrum=vonkarman"),
    (
        "lengths of another spectrum",
        {"correlation": (1, 1)},
        tidora.TidoraError,
        "correlation is for spectrum=vonkarman",
    ),
    ("hurst", {"spectrum": "vonkarman", "hurst": 2}, tidora.TidoraError, "hurst is from 0.05 to 1, not 2"),
    (
        "one length",
        {"spectrum": "vonkarman", "correlation": 1e3},
        tidora.TidoraError,
        "correlation is two lengths in m",
    ),
    (
        "length 0",
        {"spectrum": "vonkarman", "correlation": (0, 1)},
        tidora.TidoraError,
        "correlation is two lengths in m",
    ),
    ("variation", {"spectrum": "vonkarman", "variation": 0}, tidora.TidoraError, "variation is from 0.01 to 3, not 0"),
]


@pytest.mark.parametrize("why, changes, error, said", BAD, ids=[row[0] for row in BAD])
def test_a_wrong_argument_is_refused_by_name(why, changes, error, said):
    given = {"faults": plane(12, 5), "magnitude": 8.0, "count": 3, "seed": 1, **changes}
    with pytest.raises(error, match=f"^{said}"):
        tidora.stochastic_slip(**given)


LAYOUTS = [
    ("two in one cell", {"along": [0, 1, 1, 2]}, "layout puts the elements 1 and 2 into the same cell"),
    ("far apart", {"along": [0, 1, 2, 10**6]}, "layout puts 4 elements into 1000001 x 1 cells of a plane"),
    ("half a column", {"along": [0, 1, 2, 3.5]}, "faults: along has whole numbers"),
    ("not a number", {"plane": [0, 0, 0, math.nan]}, "faults: plane has whole numbers"),
]


@pytest.mark.parametrize("why, changes, said", LAYOUTS, ids=[row[0] for row in LAYOUTS])
def test_a_layout_of_the_table_that_cannot_be_is_refused(why, changes, said):
    faults = plane(4, 1)
    for name, values in {"plane": [0] * 4, "along": range(4), "down": [0] * 4, **changes}.items():
        faults[name] = ("element", np.array(list(values), float))
    with pytest.raises(tidora.TidoraError, match=said):
        tidora.stochastic_slip(faults, 8.0, 3, seed=1)


def test_von_karman_takes_parameters_and_refuses_a_rupture_that_is_too_fine():
    faults = plane(12, 5)
    default = tidora.stochastic_slip(faults, 8.6, 50, seed=1, spectrum="vonkarman")
    lengths = (1e3 * 10 ** (8.6 / 2 - 2.5), 1e3 * 10 ** (8.6 / 3 - 1.5))
    said = {"spectrum": "vonkarman", "hurst": 0.75, "correlation": lengths, "variation": 0.75}
    close = tidora.stochastic_slip(faults, 8.6, 50, seed=1, **said)
    assert np.allclose(default["slip"].values, close["slip"].values, rtol=1e-9)
    assert "hurst=0.75" in close.attrs["history"] and "seed=1 " in close.attrs["history"]
    smooth = tidora.stochastic_slip(faults, 8.6, 50, seed=1, spectrum="vonkarman", correlation=(1e10, 1e10))
    flat = checked_slip_table(smooth)
    assert np.allclose(flat.slip, flat.slip[0], rtol=0.02)  # one number for all cells, which the moment sets
    fine = plane(100, 50, length=8e3, width=4e3)
    with pytest.raises(tidora.TidoraError, match="spectrum=vonkarman takes ruptures of up to 4096 elements"):
        tidora.stochastic_slip(fine, 9.5, 1, seed=1, spectrum="vonkarman")


def test_a_table_of_stochastic_slip_is_written_and_read(tmp_path):
    table = tidora.stochastic_slip(plane(12, 5), 8.6, 5, seed=1)
    for ending in (".nc", ".zarr"):
        tidora.write_slip_table(table, tmp_path / f"t{ending}")
        back = tidora.read_slip_table(tmp_path / f"t{ending}")
        assert same(table, back) and back.attrs["history"] == table.attrs["history"]
