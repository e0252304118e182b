"""Places to compute at: grids and points."""

import numpy as np
import pytest
from conftest import binary_grid, smooth

import tidora
from tidora.engine.nodes import grid_of, nodes_of
from tidora.fields.shape import shape_of


def test_nodes_of_a_grid_are_formed_in_double_precision_and_the_last_one_is_not_beyond_the_end():
    grid = tidora.grid(138, 143.04, 33, 38, 1 / 12)
    assert grid["x"].values.tolist() == [138 + i * (1 / 12) for i in range(61)] and grid.sizes["y"] == 61
    assert grid.dims == ("y", "x") and grid.dtype == np.float32 and not grid.values.any()
    # Within a thousandth of a spacing the end is a node: 0.3 / 0.1 is below 3.
    assert tidora.grid(0, 0.3, 0, 0.2999999, 0.1).shape == (4, 4)
    assert tidora.grid(0, 0.2998, 0, 0, 0.1).shape == (1, 3)
    assert tidora.grid(170, 190, -90, 90, 10, coord="geographic")["x"].values.tolist() == [170, 180, 190]


def test_a_grid_has_the_attributes_of_one_that_is_read(tmp_path):
    read = tidora.open_grid(binary_grid(tmp_path / "a.bin", smooth(3, 4), (10.0, 20.0), 0.5), "geographic")
    grid = tidora.grid(10, 11.5, 20, 21, 0.5)
    assert grid["x"].equals(read["x"]) and grid["y"].equals(read["y"])
    assert grid["x"].attrs == read["x"].attrs and grid["y"].attrs == read["y"].attrs
    assert shape_of(grid) == shape_of(read) and grid.attrs["grid_spacing"] == 0.5 and grid.attrs["units"] == "m"
    assert "grid_spacing" not in tidora.grid(0, 1, 0, 1, 0.1).attrs  # no number of single precision
    assert tidora.grid(0, 1e3, 0, 1e3, 500, coord="plane")["x"].attrs["units"] == "m"


def test_zeros_of_a_grid_are_no_topography_and_a_field_or_a_computed_one_is(tmp_path):
    grid = tidora.grid(10, 11, 20, 21, 0.5)
    assert nodes_of(grid, "where").floor is None
    assert nodes_of(grid - 4000, "where").floor is not None
    assert nodes_of(grid.isel(x=slice(1, 3)), "where").floor is None
    field = tidora.open_grid(binary_grid(tmp_path / "a.bin", smooth(3, 4)), "geographic")
    assert nodes_of(field, "where").floor is not None
    assert nodes_of(tidora.points(1, 2), "where").floor is None
    assert nodes_of(tidora.points(1, 2, -3), "where").topography().tolist() == [-3]


def test_points_are_broadcast_and_keep_double_precision():
    points = tidora.points([[1], [2]], [1 / 3, 2, 3], -1000)
    assert points["x"].values.tolist() == [1, 1, 1, 2, 2, 2] and points["y"].values[0] == 1 / 3
    assert points["topography"].dtype == np.float32 and points.attrs["coord"] == "geographic"
    assert points["x"].attrs["units"] == "degrees_east"
    assert tidora.points(1, 2, coord="plane")["x"].attrs["units"] == "m"
    assert tidora.points([], []).sizes["point"] == 0


def test_axes_that_decrease_are_turned_round():
    field = tidora.grid(0, 3, 10, 12, 1) + np.arange(12, dtype=np.float32).reshape(3, 4)
    turned = nodes_of(field[::-1, ::-1], "where")
    assert turned.x.tolist() == [0, 1, 2, 3] and turned.y.tolist() == [10, 11, 12]
    assert np.array_equal(turned.topography(), field.values)
    assert np.array_equal(nodes_of(field.transpose("x", "y"), "where").topography(), field.values)


def test_an_axis_of_single_precision_may_end_beyond_the_pole_by_a_metre():
    field = tidora.grid(0, 1, 88, 90, 1).assign_coords(y=[88.0, 89.0, 90.000004])
    field["y"].attrs["units"] = "degrees_north"
    assert nodes_of(field, "where").y.tolist() == [88, 89, 90]


def test_equal_spacing_is_checked_within_a_thousandth():
    field = tidora.grid(0, 4, 0, 4, 1, coord="plane")
    assert grid_of(field, "f").spacing() == 1
    near = field.assign_coords(x=("x", [0, 1.0009, 2, 3, 4], field["x"].attrs))
    assert grid_of(near, "f").spacing() == 1
    for axis, values in (("x", [0, 1, 2.002, 3, 4]), ("y", [0, 2, 4, 6, 8])):
        uneven = field.assign_coords({axis: (axis, np.array(values, float), field[axis].attrs)})
        with pytest.raises(tidora.TidoraError, match="f needs nodes of equal spacing"):
            grid_of(uneven, "f").spacing()
    with pytest.raises(tidora.TidoraError, match="one node"):
        grid_of(tidora.grid(0, 0, 0, 0, 1), "f").spacing()
