"""Scaling relations: size of a rupture from its magnitude."""

import numpy as np
import pytest
import xarray as xr

import tidora

# a + b Mw at some magnitudes by hand, from the coefficients as published; log10 of km or km2, and sigma.
LINES = [
    # relation, variable, magnitude, log10 of the median, sigma
    ("strasser2010", "area", 9.0, -3.476 + 8.568, 0.304),
    ("strasser2010", "width", 9.0, -0.882 + 3.159, 0.173),
    ("strasser2010", "length", 9.0, -2.477 + 5.265, 0.180),
    ("allenhayes2017", "area", 8.0, -5.62 + 9.76, 0.256),
    ("allenhayes2017", "area", 8.63, -5.62 + 10.5286, 0.256),
    ("allenhayes2017", "area", 9.0, 2.23 + 2.79, 0.256),
    ("allenhayes2017", "width", 8.0, -1.91 + 3.84, 0.137),
    ("allenhayes2017", "width", 8.75, 2.29, 0.137),
    ("allenhayes2017", "width", 9.5, 2.29, 0.137),
    ("allenhayes2017", "length", 9.0, -2.90 + 5.67, 0.182),
    ("thingbaijam2017", "area", 8.0, -3.292 + 7.592, 0.150),
    ("thingbaijam2017", "width", 8.0, -0.880 + 2.928, 0.099),
    ("thingbaijam2017", "length", 8.0, -2.412 + 4.664, 0.107),
]


@pytest.mark.parametrize("relation, name, magnitude, log10, sigma", LINES)
def test_a_size_lies_on_the_line_of_its_relation(relation, name, magnitude, log10, sigma):
    found = tidora.scaling(relation, magnitude)
    assert np.log10(float(found[name])) == pytest.approx(log10, abs=1e-12)
    assert float(found[f"{name}_sigma"]) == sigma
    assert found[name].attrs["units"] == ("km2" if name == "area" else "km")


def test_strasser_at_magnitude_9_gives_the_published_figures():
    found = tidora.scaling("strasser2010", 9)
    assert (round(float(found["area"])), round(float(found["width"])), round(float(found["length"]))) == (
        123595, 189, 614)  # fmt: skip


def test_the_two_lines_of_an_area_nearly_meet():
    low, high = tidora.scaling("allenhayes2017", [8.63, np.nextafter(8.63, 9)])["area"].values
    assert low != high and abs(np.log10(high / low)) < 0.004  # 4.9086 and 4.9053 with two digits of coefficients


def test_sizes_have_the_dimensions_of_the_magnitude():
    assert tidora.scaling("strasser2010", 8.0)["length"].dims == ()
    found = tidora.scaling("strasser2010", [8.0, 8.5])
    assert found["length"].dims == ("magnitude",) and found["magnitude"].values.tolist() == [8.0, 8.5]
    given = xr.DataArray([[7.0, 8.0]], dims=("a", "b"), coords={"b": [1, 2]})
    found = tidora.scaling("strasser2010", given)
    assert found["area"].dims == ("a", "b") and found["area"].sel(b=2).values == pytest.approx(10 ** (-3.476 + 7.616))
    assert tidora.__version__ in found.attrs["history"]


BAD = [
    # relation, magnitude, error, what is said
    ("wells1994", 8, tidora.TidoraError, "relation is one of strasser2010"),
    (None, 8, TypeError, "relation is a word"),
    ("strasser2010", "8", TypeError, "magnitude is a number"),
    ("strasser2010", None, TypeError, "magnitude is a number"),
    ("strasser2010", np.nan, tidora.TidoraError, "magnitude has 1 values that are no finite numbers"),
    ("strasser2010", [8, 12], tidora.TidoraError, "magnitude is from 0 to 11, not 12"),
    ("strasser2010", -1, tidora.TidoraError, "magnitude is from 0 to 11, not -1"),
    ("strasser2010", [[8, 9]], tidora.TidoraError, "magnitude has one dimension at most"),
]


@pytest.mark.parametrize("relation, magnitude, error, said", BAD)
def test_what_is_no_relation_or_no_magnitude_is_refused_by_name(relation, magnitude, error, said):
    with pytest.raises(error, match=f"^{said}"):
        tidora.scaling(relation, magnitude)
