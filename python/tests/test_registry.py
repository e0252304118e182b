"""The registry: one table, from which endings, help and messages come."""

import inspect
import sys
import types

import pytest
from conftest import binary_grid, smooth, tdr

from tidora.formats import binary_grid as model, registry
from tidora.formats.registry import FIELD, FORMATS, Format, PICTURE, recognise

FIELDS = [form for form in FORMATS if form.holds == FIELD]


def test_every_ending_stands_once_in_the_table():
    for endings in ([e for form in FORMATS for e in form.reads], [e for form in FORMATS for e in form.writes]):
        assert len(endings) == len(set(endings)) >= 7
        assert all(ending.startswith(".") and ending == ending.lower() for ending in endings)


def test_names_of_formats_and_modules_stand_once_in_the_table():
    for words in ([form.name for form in FORMATS], [form.module for form in FORMATS]):
        assert len(words) == len(set(words))


@pytest.mark.parametrize("form", FORMATS, ids=lambda form: form.name)
def test_a_module_has_the_functions_that_its_line_promises(form):
    module = form.load()
    if form.first_line:
        assert module.is_first_line("no such line\n") is False
    if form.holds != FIELD:
        return
    if form.reads or form.first_line or form.name == "binary grid":
        assert list(inspect.signature(module.open).parameters) == ["path", "coord", "variable"]
    if form.writes:
        assert list(inspect.signature(module.write).parameters)[1:] == ["path", "options", "progress"]
        assert list(inspect.signature(module.steps).parameters)[1:] == ["options"]


def test_the_help_lists_the_usual_ending_of_every_format():
    # As words: .nc is no part of another.
    said = tdr("convert", "--help").stdout.replace(",", " ").split()
    for form in FIELDS:
        for ending in (*form.reads[:1], *form.writes[:1]):
            assert ending in said
    pictures = tdr("plot", "--help").stdout.replace(",", " ").split()
    assert all(ending in pictures for form in FORMATS if form.holds == PICTURE for ending in form.writes)


def test_an_unknown_ending_is_answered_with_all_that_there_are(tmp_path):
    path = binary_grid(tmp_path / "a.bin", smooth(3, 4))
    said = tdr("convert", path, tmp_path / "a.xyz", status=2).stderr
    assert said.strip().endswith(", ".join(ending for form in FIELDS for ending in form.writes))
    said = tdr("plot", path, "-o", tmp_path / "a.xyz", status=2).stderr
    assert all(ending in said for form in FORMATS if form.holds == PICTURE for ending in form.writes)


@pytest.mark.parametrize("form", [form for form in FIELDS if form.writes], ids=lambda form: form.name)
def test_every_ending_is_written_in_its_format(tmp_path, form):
    path = binary_grid(tmp_path / "a.bin", smooth(3, 4), (0.0, 0.0), 100.0)
    for ending in form.writes:
        tdr("convert", path, tmp_path / f"b{ending}", "--coord", "plane", "--crs", "EPSG:32654")
        if form.name != "dtopo":  # which is not read
            assert recognise(tmp_path / f"b{ending}") == form


def test_a_new_format_is_a_module_and_a_line_of_the_table(tmp_path, monkeypatch):
    module = types.ModuleType("tidora.formats.twin")
    for name in ("open", "write", "steps"):
        setattr(module, name, getattr(model, name))
    monkeypatch.setitem(sys.modules, module.__name__, module)
    line = Format(".twin", "twin", help="a copy of the binary grid", reads=(".twin",), writes=(".twin",))
    monkeypatch.setattr(registry, "FORMATS", (*FORMATS, line))
    monkeypatch.setattr("tidora.commands.convert.FORMATS", registry.FORMATS)
    path = binary_grid(tmp_path / "a.bin", smooth(3, 4))
    tdr("convert", path, tmp_path / "a.twin", "--coord", "geographic")
    tdr("convert", tmp_path / "a.twin", tmp_path / "b.bin", "--coord", "geographic")
    assert (tmp_path / "a.twin").read_bytes() == (tmp_path / "b.bin").read_bytes() == path.read_bytes()
    assert ".twin (a copy of the binary grid)" in " ".join(tdr("convert", "--help").stdout.split())
    assert "nodes     4 x 3" in tdr("info", tmp_path / "a.twin", "--coord", "plane").stdout
