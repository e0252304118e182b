"""Published models through the engine, against the surface displacement that the agency has computed."""

import subprocess

import numpy as np
import pytest
from conftest import binary_grid, tdr
from modelfiles import FILES, read

import tidora


def library_there():
    """True when the library of the engine is found."""
    try:
        tidora.library_path()
    except tidora.TidoraError:
        return False
    return True


needs_library = pytest.mark.skipif(
    not library_there(), reason="libtidora.so is not there: build it, or name it with TIDORA_LIBRARY"
)

BARS = [
    # model, rows as, largest root mean square difference over the root mean square of east, north, up; its source
    ("chile1995", "fsp", None, (None, None, 0.10)),
    ("chile1995", "param", "centroid", (None, None, 0.01)),
    ("insar2022", "fsp", None, (None, None, None)),
    ("insar2022", "param", "centroid", (None, None, None)),
]


def differences(model, ending, reference):
    """Root mean square difference over root mean square, of east, north, up."""
    lon, lat, _, east, north, up = np.loadtxt(FILES / f"{model}_neic.disp", comments="#").T
    table, _ = read(f"{model}_neic.{ending}", reference=reference)
    result = tidora.deform(table, tidora.points(lon, lat), components=("z", "e", "n"))
    ratios = []
    for name, published in (("ue", east), ("un", north), ("uz", up)):
        off = result[name].values - published
        ratios.append(float(np.sqrt(np.mean(off**2)) / np.sqrt(np.mean(published**2))))
    return ratios


@needs_library
@pytest.mark.parametrize("model, ending, reference, bars", BARS)
def test_displacement_agrees_with_that_of_the_agency_when_the_library_is_built(model, ending, reference, bars):
    ratios = differences(model, ending, reference)
    shown = ", ".join(f"{name} {100 * ratio:.2f} %" for name, ratio in zip(("ue", "un", "uz"), ratios))
    print(f"{model} .{ending} {reference or 'as said'}: {shown}")
    for ratio, bar in zip(ratios, bars):
        assert bar is None or ratio < bar


@needs_library
def test_a_source_is_made_from_a_model_in_one_command_when_the_library_is_built(tmp_path):
    binary_grid(tmp_path / "t.bin", np.full((40, 40), -4000.0), (-73.0, -26.0), np.float32(0.1))
    for name in ("chile1995_neic.fsp", "chile1995_neic.param", "chile1995_neic.geojson"):
        shown = tdr("source", FILES / name, "t.bin", "--coord", "geographic", "-o", "s.nc", cwd=tmp_path)
        assert "Mw 8.16 (rigidities of the model)" in shown.stdout


@needs_library
def test_the_program_on_the_converted_model_agrees_with_the_engine_when_the_library_is_built(tmp_path, program):
    binary_grid(tmp_path / "topo.bin", np.full((49, 37), -4000.0), (-72.5, -26.0), np.float32(1 / 12))
    tdr("convert", FILES / "chile1995_neic.param", tmp_path / "faults.txt", "--window", "40")
    values = ["t", "out", "0", "0", "0", "1", "faults.txt", "-1", "0", "1", "1", "1", "a", "0", "1", "topo.bin"]
    (tmp_path / "conf.txt").write_text("".join(f"# caption\n{value}\n" for value in values))
    subprocess.run([str(program), "conf.txt"], cwd=tmp_path, check=True, capture_output=True)
    ran = tidora.open_series(tmp_path / "out" / "VRT_a.txt", "geographic")
    table = tidora.read_faults(tmp_path / "faults.txt", "geographic")
    topography = tidora.open_grid(tmp_path / "topo.bin", "geographic")
    made = tidora.deform(table, topography, frame="utm", depth="program", times="intervals")["uz"].sortby("time")
    assert made.sizes["time"] == ran.sizes["time"] > 1
    assert float(np.abs(ran.values).max()) > 0.1
    assert np.array_equal(made.values.view(np.int32), ran.values.view(np.int32))
