"""The lines of the README for those who work in Python and who run ensembles do what stands below them."""

import contextlib
import io
import re
import shutil
import subprocess

import pytest
from conftest import ROOT

import tidora

README = (ROOT / "README.md").read_text()
EXAMPLE = ROOT / "examples" / "chile1995"
PYTHON = re.compile(
    r"<!-- python in examples/chile1995 -->\n```python\n(.*?)```\n.*?<!-- printed by it -->\n```text\n(.*?)```",
    re.DOTALL,
)
SHELL = re.compile(r"<!-- run in examples/chile1995 -->\n```sh\ncd examples/chile1995\n(.*?)```", re.DOTALL)


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    """A copy of the example."""
    copy = tmp_path_factory.mktemp("readme") / "chile1995"
    shutil.copytree(EXAMPLE, copy)
    return copy


def printed(code):
    said = io.StringIO()
    with contextlib.redirect_stdout(said):
        exec(code, {})
    return said.getvalue()


def test_the_lines_of_python_print_what_is_shown(folder, monkeypatch):
    monkeypatch.chdir(folder)
    code, shown = PYTHON.findall(README)[0]
    with pytest.warns(tidora.TidoraWarning, match="90 rows"):  # of the model, which says so
        assert printed(code) == shown
    assert (folder / "chile.nc").is_file()


def test_the_commands_of_an_ensemble_run_and_its_store_holds_what_is_shown(folder, monkeypatch):
    monkeypatch.chdir(folder)
    commands = SHELL.findall(README)
    assert len(commands) == 1 and commands[0].count("python/tdr ") == 4
    script = commands[0].replace("../../python/tdr", str(ROOT / "python" / "tdr"))
    done = subprocess.run(["bash", "-euc", script], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert "1000 scenarios: 1000 done, 0 failed" in done.stdout and (folder / "number42.tt3").is_file()
    code, shown = PYTHON.findall(README)[1]
    assert printed(code) == shown
