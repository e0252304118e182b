"""Kajiura's filter through Python: fields in, fields out. The kernel itself has its tests beside it."""

import numpy as np
import pytest
import xarray as xr

import tidora

DEPTH = 3000.0
PLANE = tidora.grid(0, 80e3, 0, 60e3, 500, coord="plane")
FLOOR = PLANE - DEPTH


def uplift(grid, seed=1):
    """Bumps in the middle third, of either sign."""
    random = np.random.default_rng(seed)
    x, y = np.meshgrid(np.linspace(-1.5, 1.5, grid.sizes["x"]), np.linspace(-1.5, 1.5, grid.sizes["y"]))
    values = np.where((np.abs(x) < 0.5) & (np.abs(y) < 0.5), random.standard_normal(x.shape), 0.0)
    return grid.copy(data=values.astype(np.float32))


def test_a_wave_of_the_floor_arrives_with_1_over_cosh_kd():
    wave = 2 * np.pi / 16e3
    field = PLANE.copy(data=np.broadcast_to(np.cos(wave * (PLANE["x"].values - 40e3)), PLANE.shape).astype(np.float32))
    inner = tidora.kajiura(field, FLOOR).values[60, 60:101]
    expected = np.cos(wave * (PLANE["x"].values[60:101] - 40e3)) / np.cosh(wave * DEPTH)
    print(f"kd = {wave * DEPTH:.2f}: off by up to {np.abs(inner - expected).max():.1e}")
    assert np.abs(inner - expected).max() < 2e-3


def test_a_uniform_uplift_stays_and_the_volume_of_a_bump_too():
    one = PLANE.copy(data=np.ones(PLANE.shape, np.float32))
    assert np.abs(tidora.kajiura(one, FLOOR).values[60, 80] - 1) < 1e-6
    field = uplift(PLANE)
    before, after = (
        float(values.astype(float).sum()) for values in (field.values, tidora.kajiura(field, FLOOR).values)
    )
    assert abs(after - before) < 1e-5 * np.abs(field.values).sum()
    assert not tidora.kajiura(PLANE, FLOOR).values.any()


def test_nodes_at_10_m_and_above_keep_their_value():
    field = uplift(PLANE)
    shelf = FLOOR.copy(data=np.where(np.arange(161) < 80, np.float32(-DEPTH), np.float32(-10)) + 0 * FLOOR.values)
    result = tidora.kajiura(field, shelf).values
    assert np.array_equal(result[:, 80:], field.values[:, 80:])
    assert not np.array_equal(result[40:80, 60:80], field.values[40:80, 60:80])


@pytest.mark.parametrize("kernel", ["converged", "program"])
def test_layers_are_filtered_one_by_one_and_the_bits_do_not_depend_on_threads(kernel):
    layers = [uplift(PLANE, seed) for seed in range(3)]
    seconds = xr.DataArray([0.0, 30.0, 60.0], dims="time", name="time")
    series = xr.concat(layers, seconds).assign_coords(rise_time=("time", [30.0, 30.0, 45.0]))
    whole = tidora.kajiura(series, FLOOR, kernel=kernel, threads=1)
    assert whole.dims == ("time", "y", "x") and whole["rise_time"].values.tolist() == [30, 30, 45]
    assert whole.attrs["time_content"] == "increment" and whole.name == "eta"
    for threads in (2, 3):
        assert np.array_equal(tidora.kajiura(series, FLOOR, kernel=kernel, threads=threads).values, whole.values)
    for number, layer in enumerate(layers):
        assert np.array_equal(tidora.kajiura(layer, FLOOR, kernel=kernel).values, whole.values[number])


def test_a_parent_is_taken_outside_of_the_own_grid_as_if_both_were_one():
    field = uplift(PLANE)
    whole = tidora.kajiura(field, FLOOR)
    cut = dict(x=slice(62, 100), y=slice(45, 75))
    alone = tidora.kajiura(field.isel(cut), FLOOR.isel(cut))
    nested = tidora.kajiura(field.isel(cut), FLOOR.isel(cut), parent=field)
    largest = np.abs(whole.values).max()
    assert np.abs(alone.values - whole.isel(cut).values).max() > 0.05 * largest
    assert np.abs(nested.values - whole.isel(cut).values).max() < 2e-6 * np.abs(field.values).max()


def test_on_degrees_a_parent_may_count_its_longitudes_otherwise():
    grid = tidora.grid(179, 181, 59, 60, 1 / 60)
    field, floor = uplift(grid), grid - 4000
    cut = dict(x=slice(50, 90), y=slice(20, 40))
    other = field.assign_coords(x=("x", field["x"].values - 360, field["x"].attrs))
    results = [tidora.kajiura(field.isel(cut), floor.isel(cut), parent=parent).values for parent in (field, other)]
    assert np.abs(results[0] - results[1]).max() < 1e-5 * np.abs(field.values).max()


def test_the_result_says_what_has_made_it_and_is_written_as_netcdf(tmp_path):
    faults = tidora.make_faults(40e3, 30e3, 1e4, 0, 20, 90, 2e4, 2e4, 2, coord="plane")
    result = tidora.kajiura(tidora.deform(faults, FLOOR)["uz"], FLOOR)
    history = result.attrs["history"].split("\n")
    assert len(history) == 2 and " deform frame=plane" in history[0] and " kajiura kernel=converged" in history[1]
    result.to_netcdf(tmp_path / "a.nc")
    with xr.open_dataarray(tmp_path / "a.nc") as back:
        assert back.identical(result)


def test_axes_that_decrease_are_turned_round_and_other_nodes_are_refused():
    field = uplift(PLANE)
    assert np.array_equal(tidora.kajiura(field[::-1], FLOOR[:, ::-1]).values, tidora.kajiura(field, FLOOR).values)
    with pytest.raises(tidora.TidoraError, match="uplift and topography lie on different nodes"):
        tidora.kajiura(field.isel(x=slice(1, None)), FLOOR.isel(x=slice(0, -1)))
