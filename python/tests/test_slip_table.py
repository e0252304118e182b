"""The slip table: what makes one, and what does not."""

import numpy as np
import pytest
import xarray as xr

import tidora
from tidora.faults.slip_table import checked_slip_table

INDPTR, UNIT, SLIP, RAKE = [0, 2, 2, 3], [4, 0, 7], [1.5, 0.25, 3.0], [90.0, 80.0, 100.0]


def table(**changes):
    given = {"indptr": INDPTR, "unit": UNIT, "slip": SLIP, "rake": RAKE, **changes}
    return tidora.make_slip_table(**given)


def test_a_table_has_the_published_variables_types_and_units():
    made = table(magnitude=[8.0, np.nan, 8.5])
    found = {name: (values.dims, str(values.dtype), values.attrs["units"]) for name, values in made.variables.items()}
    assert found == {
        "indptr": (("scenario_edge",), "int64", "1"),
        "unit": (("entry",), "int64", "1"),
        "slip": (("entry",), "float64", "m"),
        "rake": (("entry",), "float64", "degree"),
        "magnitude": (("scenario",), "float64", "1"),
    }
    assert all(values.attrs["long_name"] for values in made.variables.values())
    assert made.attrs["Conventions"] == "CF-1.8" and tidora.__version__ in made.attrs["history"]


def test_one_rake_stands_for_all_entries_and_a_magnitude_that_is_not_given_is_not_known():
    made = checked_slip_table(table(rake=90))
    assert made.rake.tolist() == [90.0] * 3 and np.isnan(made.magnitude).all() and made.count == 3
    assert all(getattr(made, name).flags.c_contiguous for name in ("indptr", "unit", "slip", "rake", "magnitude"))


def test_a_table_may_have_no_scenario_at_all():
    assert checked_slip_table(tidora.make_slip_table([0], [], [], [])).count == 0


def test_units_that_are_not_there_and_slips_that_are_no_numbers_do_not_spoil_a_table():
    made = checked_slip_table(table(unit=[-3, 10**12, 0], slip=[np.nan, np.inf, 1.0], rake=[np.nan, 0, 0]))
    assert made.unit.tolist() == [-3, 10**12, 0] and np.isnan(made.slip[0])


WRONG = [
    # why, what is given instead, error, what it says
    ("no arrays", {"unit": "abc"}, tidora.TidoraError, "unit is an array of numbers"),
    ("rows of different lengths", {"slip": [[1, 2], [3]]}, TypeError, "slip is an array of numbers"),
    ("two dimensions", {"unit": [[4, 0, 7]]}, tidora.TidoraError, "unit has one dimension, not 2"),
    ("half a unit", {"unit": [4, 0.5, 7]}, tidora.TidoraError, "unit has whole numbers, not 0.5"),
    ("a unit that is no number", {"unit": [4, np.nan, 7]}, tidora.TidoraError, "unit has whole numbers, not nan"),
    ("beyond 64 bits", {"unit": np.array([4, 2**63, 7], np.uint64)}, tidora.TidoraError, "unit has whole numbers"),
    ("no edge at all", {"indptr": []}, tidora.TidoraError, "indptr begins with 0"),
    ("does not begin with 0", {"indptr": [1, 2, 3]}, tidora.TidoraError, "indptr begins with 0"),
    ("goes back", {"indptr": [0, 2, 1, 3]}, tidora.TidoraError, "indptr decreases behind scenario 1"),
    ("ends too early", {"indptr": [0, 2]}, tidora.TidoraError, "indptr ends with the number of entries, 3, not with 2"),
    ("ends too late", {"indptr": [0, 4]}, tidora.TidoraError, "indptr ends with the number of entries, 3, not with 4"),
    ("a slip too few", {"slip": [1, 2]}, tidora.TidoraError, "slip has 2 values, not 3"),
    ("a rake too many", {"rake": [1, 2, 3, 4]}, tidora.TidoraError, "rake has 4 values, not 3"),
    ("a magnitude too few", {"magnitude": [8, 9]}, tidora.TidoraError, "magnitude has 2 values, not 3"),
]


@pytest.mark.parametrize("why, changes, error, said", WRONG, ids=[row[0] for row in WRONG])
def test_arrays_that_make_no_table_are_refused_by_name(why, changes, error, said):
    with pytest.raises(error, match=f"^{said}"):
        table(**changes)


CHANGED = [
    # why, what is done to a good table, what is said
    ("no slip", lambda made: made.drop_vars("slip"), "table has no variable slip"),
    ("along another dimension", lambda made: made.rename(entry="row"), r"table: unit is over entry, not over \(row\)"),
    ("in centimetres", lambda made: made.assign(slip=made["slip"].assign_attrs(units="cm")), "slip is in m, not in"),
    ("text for units", lambda made: made.assign(unit=("entry", list("abc"))), "table: unit is an array of numbers"),
    ("halves", lambda made: made.assign(unit=made["unit"] + 0.5), "table: unit has whole numbers, not 4.5"),
    ("indptr moved", lambda made: made.assign(indptr=made["indptr"] + 1), "table: indptr begins with 0"),
]


@pytest.mark.parametrize("why, change, said", CHANGED, ids=[row[0] for row in CHANGED])
def test_a_table_that_was_changed_is_refused_with_the_rule_that_it_breaks(why, change, said):
    with pytest.raises(tidora.TidoraError, match=said):
        checked_slip_table(change(table()))


def test_something_else_is_no_table():
    for other in (None, 7, {"indptr": INDPTR}, table()["slip"]):
        with pytest.raises(TypeError, match="table is a slip table"):
            checked_slip_table(other)


def test_what_others_make_counts_when_only_types_and_the_name_of_the_edges_differ():
    other = xr.Dataset(
        {
            "indptr": ("edges", np.array(INDPTR, np.int32)),
            "unit": ("entry", np.array(UNIT, np.float32)),
            "slip": ("entry", np.array(SLIP, np.float32)),
            "rake": ("entry", np.array(RAKE, np.int16)),
        }
    )
    made = checked_slip_table(other)
    assert made.unit.tolist() == UNIT and made.slip.tolist() == SLIP and made.indptr.tolist() == INDPTR
    assert {str(values.dtype) for values in (made.slip, made.rake, made.magnitude)} == {"float64"}
