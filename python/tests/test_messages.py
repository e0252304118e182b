"""Messages name parameters in Python, and options on the command line."""

import numpy as np
import pytest
import xarray as xr
from conftest import binary_grid, smooth, tdr

import tidora
from tidora.errors import FileError, Parameter, TidoraError, worded
from tidora.formats.registry import open_field


def test_a_parameter_in_a_message_is_called_by_its_name_in_python_and_as_the_reader_knows_it_elsewhere():
    message = ("two are missing; ", Parameter("fill", "VALUE"), " helps, or ", Parameter("region"))
    assert str(TidoraError(message)) == "two are missing; fill=VALUE helps, or region"
    assert worded(message, lambda parameter: parameter.name.upper()) == "two are missing; FILL helps, or REGION"
    assert worded("nothing {fill} to see") == "nothing {fill} to see"


def test_an_error_of_a_file_has_the_path_and_the_line_in_front_and_the_rule_by_itself():
    error = FileError("a{b}.txt", (Parameter("variable"), " chooses"), 7)
    assert (str(error), error.rule, error.line) == ("a{b}.txt:7: variable chooses", "variable chooses", 7)
    assert worded(error.message, lambda _: "--variable") == "a{b}.txt:7: --variable chooses"


def test_the_same_error_names_the_parameter_in_python_and_the_option_in_the_command(tmp_path):
    xr.Dataset({name: (("y", "x"), np.ones((2, 2))) for name in "ab"}).to_netcdf(tmp_path / "two.nc")
    with pytest.raises(tidora.FileError, match="two.nc: variable chooses one of: a, b"):
        open_field(tmp_path / "two.nc", "plane")
    assert tdr("info", tmp_path / "two.nc", status=1).stderr.endswith("two.nc: --variable chooses one of: a, b\n")


@pytest.mark.parametrize("org, dx, taken", [((138, 33), 1, "degrees (say --coord geographic"),
                                            ((3e5, 4e6), 100, "metres (say --coord plane")])  # fmt: skip
def test_a_guess_names_the_option_that_spares_it(tmp_path, org, dx, taken):
    path = binary_grid(tmp_path / "a.bin", smooth(3, 3), org, dx)
    assert tdr("info", path).stderr == f"tdr: note: {path}: co-ordinates taken as {taken} to be sure)\n"
