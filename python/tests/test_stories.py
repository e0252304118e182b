"""The stories print and draw what they show, and their text has no number that nothing makes."""

import importlib.machinery
import importlib.util
import os
import warnings

import matplotlib.pyplot as plt
import pytest
from conftest import ROOT
from test_docs import alike

import tidora

STORIES = sorted(path for path in (ROOT / "docs" / "stories").glob("*.md") if path.name != "README.md")
_LOADER = importlib.machinery.SourceFileLoader("run_story", str(ROOT / "scripts" / "run-story"))
_SPEC = importlib.util.spec_from_loader("run_story", _LOADER)
story = importlib.util.module_from_spec(_SPEC)
_LOADER.exec_module(story)


@pytest.fixture
def folder(tmp_path, monkeypatch):
    """An empty folder in which "examples" leads to the examples."""
    (tmp_path / "examples").symlink_to(ROOT / "examples")
    monkeypatch.chdir(tmp_path)
    yield tmp_path
    plt.close("all")


@pytest.mark.parametrize("path", STORIES, ids=lambda path: path.stem)
def test_a_story_prints_and_draws_what_it_shows(path, folder):
    page = path.read_text()
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", tidora.TidoraWarning)  # the page prints the assumptions
        assert story.run(page) == page
    pictures = [name for name in os.listdir(path.parent) if name.startswith(path.stem) and name.endswith(".png")]
    assert pictures == [f"{path.stem}.png"] and f"]({path.stem}.png)" in page
    assert alike(plt.imread(folder / pictures[0]), plt.imread(path.parent / pictures[0]))


@pytest.mark.parametrize("path", STORIES, ids=lambda path: path.stem)
def test_every_number_of_a_story_is_computed_or_known(path):
    assert story.strange_numbers(path.read_text()) == []


def test_there_are_four_stories_and_the_page_of_contents_names_them():
    assert len(STORIES) >= 4
    contents = (ROOT / "docs" / "stories" / "README.md").read_text()
    assert all(f"]({path.name})" in contents for path in STORIES)


def test_another_output_and_a_number_of_the_text_are_seen(folder):
    page = "A number: %s.\n\n```python\nprint(1.5)\n```\n\n```text\n%s\n```\n"
    assert story.run(page % ("1.5", "1.5")) == page % ("1.5", "1.5") and not story.strange_numbers(
        page % ("1.5", "1.5")
    )
    assert story.run(page % ("1.5", "1.6")) == page % ("1.5", "1.5")
    assert story.strange_numbers(page % ("1.6", "1.5")) == ["1.6"]
    assert story.strange_numbers(page % ("1.6 <!-- known: 1.6 -->", "1.5")) == []
    with pytest.raises(story.Unlike, match="Nothing shows"):
        story.run("```python\nprint(1)\n```\n")
    with pytest.raises(story.Unlike, match="exit status 1"):
        story.run("```text\n$ tdr info nowhere\n```\n")
