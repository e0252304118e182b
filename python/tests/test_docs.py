"""What the documents show is what the command and the package do."""

import re
import shlex
import shutil

import matplotlib.pyplot as plt
import numpy as np
import pytest
from conftest import DATA, ROOT, tdr

import tidora

PAGE = ROOT / "docs" / "tdr.md"
CHILE = ROOT / "examples" / "chile1995"
SHOWN = re.compile(r"```text\n\$ (tdr (?:.|\\\n)*?)(?<!\\)\n(.*?)```", re.DOTALL)


def as_shown(shown, actual):
    """True when the lines are the same; a line [...] stands for any number of lines."""
    pattern = "".join(
        r"(?:.*\n)*?" if line == "[...]" else re.escape(line) + "\n" for line in shown.rstrip("\n").split("\n")
    )
    return re.fullmatch(pattern, re.sub(r" +$", "", actual, flags=re.MULTILINE)) is not None


@pytest.fixture(scope="module")
def folder(tohoku, tmp_path_factory):
    """A copy of the example after its run, for files that the commands write."""
    copy = tmp_path_factory.mktemp("docs")
    shutil.copytree(tohoku.parent / "data", copy / "data")
    shutil.copytree(tohoku, copy / "geo")
    return copy / "geo"


def test_every_command_of_the_page_prints_what_is_shown_there(folder):
    blocks = SHOWN.findall(PAGE.read_text())
    assert len(blocks) == PAGE.read_text().count("$ tdr ") >= 12
    for command, shown in blocks:
        result = tdr(*shlex.split(command.replace("\\\n", ""))[1:], cwd=folder)
        assert as_shown(shown, result.stdout), f"{command}\n{result.stdout}"


@pytest.fixture(scope="module")
def chile(tmp_path_factory):
    """A copy of the example that tdr makes."""
    copy = tmp_path_factory.mktemp("docs") / "chile1995"
    shutil.copytree(CHILE, copy)
    return copy


def test_every_command_of_the_source_example_prints_what_is_shown_there(chile):
    page = (CHILE / "README.md").read_text()
    blocks = SHOWN.findall(page)
    assert len(blocks) == page.count("$ tdr ") == 3
    for command, shown in blocks:
        result = tdr(*shlex.split(command.replace("\\\n", ""))[1:], cwd=chile)
        assert as_shown(shown, result.stdout), f"{command}\n{result.stdout}"
    drawn = plt.imread(chile / "chile.png")
    assert alike(drawn, plt.imread(ROOT / "docs" / "chile1995.png"))


def test_the_lines_of_python_on_the_page_of_the_engine_run_one_after_the_other(chile, monkeypatch, capsys):
    monkeypatch.chdir(chile)
    blocks = re.findall(r"```python\n(.*?)```", (ROOT / "docs" / "engine.md").read_text(), re.DOTALL)
    names = {}
    with pytest.warns(tidora.TidoraWarning, match="90 rows"):  # of the model, which says so
        for block in blocks:
            exec(block, names)
    assert len(blocks) == 6 and (chile / "chile.nc").is_file() and (chile / "unit.txt").is_file()
    assert {"uz", "slope", "eta"} <= set(names["sea"].data_vars) and names["moving"].sizes["time"] == 6
    assert names["repeated"]["uz"].any() and names["nested"].any() and names["gps"]["ue"].all()
    assert capsys.readouterr().out


def test_the_readme_shows_the_command_of_the_source_example():
    readme = (ROOT / "README.md").read_text()
    assert "](docs/chile1995.png)" in readme.split("## Read on")[0]
    options = "--region -74/-68/-27/-20 --spacing 1/60 --slope --kajiura -o chile.png"
    assert options in readme and options in (CHILE / "README.md").read_text()


def test_the_lines_of_python_on_the_page_run(folder, monkeypatch, capsys):
    monkeypatch.chdir(folder)
    exec(re.search(r"```python\n(.*?)```", PAGE.read_text(), re.DOTALL).group(1), {})
    printed = capsys.readouterr().out.split(maxsplit=1)
    assert printed[0].startswith("9.01") and printed[1] == "(110, 4, 2)\n"


def test_every_option_of_every_command_is_on_the_page():
    page = PAGE.read_text()
    for command in ("info", "plot", "convert", "run", "source"):
        section = page.split(f"## tdr {command}\n")[1].split("\n## ")[0]
        for option in set(re.findall(r"--[a-z-]+", tdr(command, "--help").stdout)) - {"--help", "--coord"}:
            assert option in section or option in page.split("## tdr info")[0] or (
                option == "--variable" and option in page), f"{command} {option}"  # fmt: skip


def test_the_picture_of_the_documents_is_the_one_that_is_drawn(tohoku, tmp_path):
    command = next(command for command, _ in SHOWN.findall(PAGE.read_text()) if command.endswith(" uplift.png"))
    tdr(*shlex.split(command.replace("\\\n", ""))[1:-1], tmp_path / "uplift.png", cwd=tohoku)
    assert alike(plt.imread(tmp_path / "uplift.png"), plt.imread(ROOT / "docs" / "tohoku2011.png"))


def alike(drawn, shown):
    """True for pictures of the same map. Fonts may differ from system to system, by some pixels: the mean difference
    of another map is above 0.1."""
    if abs(drawn.shape[0] - shown.shape[0]) > 20 or abs(drawn.shape[1] - shown.shape[1]) > 20:
        return False
    rows, columns = (min(sizes) for sizes in zip(drawn.shape[:2], shown.shape[:2]))
    return bool(np.abs(drawn[:rows, :columns, :3] - shown[:rows, :columns, :3]).mean() < 0.03)


def test_the_readme_shows_the_picture_and_quickstart_draws_it():
    readme = (ROOT / "README.md").read_text()
    assert "](docs/tohoku2011.png)" in readme.split("## ")[0]
    quickstart = (ROOT / "quickstart").read_text()
    assert "python/tdr plot" in quickstart and "--topo" in quickstart and "--fault" in quickstart


def test_what_is_shown_is_compared_line_by_line_and_an_elision_stands_for_any_lines():
    assert as_shown("a\nb\n", "a\nb\n") and as_shown("a\n[...]\nc\n", "a\nb\nb\nc\n") and as_shown("a\n", "a  \n")
    assert not as_shown("a\n", "a\nb\n") and not as_shown("a\n[...]\nc\n", "a\nb\n") and not as_shown("a.\n", "ab\n")


def test_the_version_is_that_of_the_program():
    assert (ROOT / "VERSION").read_text().strip() == tidora.__version__


def test_the_examples_of_the_data_are_those_of_the_page():
    for name in set(re.findall(r"\.\./data/([\w.]+)", PAGE.read_text())):
        assert (DATA / name).is_file()
