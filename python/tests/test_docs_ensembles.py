"""What the page of ensembles shows is what the commands and the package do."""

import re
import shlex
import shutil

import pytest
import xarray as xr
from conftest import ROOT, tdr
from test_docs import SHOWN, as_shown

import tidora

PAGE = (ROOT / "docs" / "ensembles.md").read_text()
NOTES = "ignore::tidora.errors.TidoraWarning"
"""Of the model, which says that it has fewer rows than it states."""


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    """A copy of the example with the points of the page."""
    copy = tmp_path_factory.mktemp("docs") / "chile1995"
    shutil.copytree(ROOT / "examples" / "chile1995", copy)
    (copy / "points.csv").write_text(re.search(r"```text\n(x,y,name\n.*?)```", PAGE, re.DOTALL).group(1))
    return copy


@pytest.fixture(scope="module")
def printed(folder):
    """What the commands of the page print."""
    return [
        (command, shown, tdr(*shlex.split(command)[1:], cwd=folder).stdout) for command, shown in SHOWN.findall(PAGE)
    ]


@pytest.mark.filterwarnings(NOTES)
def test_every_command_prints_what_is_shown(printed):
    assert len(printed) == PAGE.count("$ tdr ") == 4
    for command, shown, actual in printed:
        assert as_shown(shown, actual), f"{command}\n{actual}"


@pytest.mark.filterwarnings(NOTES)
def test_the_lines_of_python_run_with_the_units_of_the_command(folder, printed, monkeypatch, capsys):
    monkeypatch.chdir(folder)
    assert len(printed) == 4
    before = {file: file.stat().st_mtime_ns for file in (folder / "units.zarr").rglob("*") if file.is_file()}
    names = {}
    exec(re.search(r"```python\n(.*?)```", PAGE, re.DOTALL).group(1), names)
    after = {file: file.stat().st_mtime_ns for file in (folder / "units.zarr").rglob("*") if file.is_file()}
    assert before == after
    some, sea, table = names["some"], names["sea"], names["table"]
    assert some.shape == (10, 85, 73) and sea.shape == (85, 73) and table["magnitude"].values[-1] == 8.2
    assert abs(float(some[3].max()) - float(names["run"]["highest"][3])) <= 1e-5 * float(some[3].max())
    assert abs(tidora.combine(names["units"], table, scenarios=17)[0] - sea).max() <= 1e-5 * abs(sea).max()
    assert len(names["above"]) == 2 and capsys.readouterr().out


@pytest.mark.parametrize("command", ["units", "ensemble make", "ensemble run", "ensemble status", "ensemble show"])
def test_every_option_is_on_the_page(command):
    options = set(re.findall(r"--[a-z-]+", tdr(*command.split(), "--help").stdout)) - {"--help", "--output"}
    assert not [option for option in options if f"`{option}" not in PAGE and f" {option} " not in PAGE]
    assert options or command == "ensemble status"


@pytest.mark.filterwarnings(NOTES)
def test_the_variables_and_attributes_of_the_stores_are_on_the_page(folder, printed):
    stores = PAGE.split("## Stores\n")[1].split("\n## ")[0]
    assert printed
    for name, unsaid in (
        ("units.zarr", {"x", "y", "mechanism"}),
        ("run.zarr", {"scenario", "indptr", "unit", "slip", "rake"}),
    ):
        with xr.open_zarr(folder / name) as opened:
            said = {*map(str, opened.variables), *map(str, opened.attrs)} - unsaid - {"Conventions", "title"}
        assert not [word for word in said if not re.search(rf"`{word}\b|\b{word}`|\({word}, ", stores)]
