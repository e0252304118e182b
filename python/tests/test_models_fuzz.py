"""Readers of published models against files that nobody would write: a table or a FileError, never anything else.

The examples are the same in every run. TIDORA_FUZZ_TIMES=20 tries twenty times as many, other ones each time.
"""

import os
import re

import numpy as np
import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from modelfiles import FILES, SMALL, apart, path_of, point_of, read

import tidora

SEEDS = {
    **{form: text.encode() for form, text in SMALL.items()},
    "chile1995.fsp": (FILES / "chile1995_neic.fsp").read_bytes()[:6000],
    "srcmod.fsp": (FILES / "chile2010_srcmod.fsp").read_bytes()[:6000],
    "chile1995.param": (FILES / "chile1995_neic.param").read_bytes()[:4000],
    "insar2022.param": (FILES / "insar2022_neic.param").read_bytes()[:4000],
    "ucsb.param": path_of("tohoku2011_ucsb.param").read_bytes()[:4000],
    "units": (FILES / "sift_unit_sources.txt").read_bytes()[:3000],
}

WORDS = st.sampled_from(
    [b"999", b"-99", b"nan", b"inf", b"1e999", b"-0", b"1_0", b"0x10", b"1D3", b"", b" ", b"\t", b"\r", b"\n",
     b"\0", b"%", b"#", b",", b"{", b"}", b"[", b"]", b'"', b"=", b"1e308", b"-1e308", b"90", b"-90", b"180", b"360",
     b"99999999999999999999", b"\xff", "é".encode(), b"km", b"SEGMENT", b"null", b"true"]
)  # fmt: skip

CHANGES = st.lists(
    st.tuples(st.sampled_from(["cut", "insert", "replace", "drop", "double"]), st.floats(0, 1), WORDS),
    min_size=1,
    max_size=6,
)


def changed(content, changes):
    """A file after some changes: words, lines and ends."""
    for what, where, word in changes:
        at = int(where * len(content))
        numbers = list(re.finditer(rb"[-+.\dEe]+", content))
        lines = content.splitlines(keepends=True)
        if what == "cut":
            content = content[:at]
        elif what == "insert":
            content = content[:at] + word + content[at:]
        elif what == "replace" and numbers:
            number = numbers[min(int(where * len(numbers)), len(numbers) - 1)]
            content = content[: number.start()] + word + content[number.end() :]
        elif lines:
            line = min(int(where * len(lines)), len(lines) - 1)
            content = b"".join(lines[:line] + lines[line + 1 :] if what == "drop" else lines[: line + 1] + lines[line:])
    return content


def check(path, content):
    """Holds that a file is a sound table, or refused as a file."""
    path.write_bytes(content)
    try:
        table, _ = read(path, coord=None)
    except tidora.FileError as error:
        assert error.path == str(path) and error.rule
        return
    if table.attrs["format"] != "fault file":  # which has rules of its own
        for name in ("x", "y", "depth", "strike", "dip", "rake", "length", "width", "slip", "lag_time", "duration"):
            assert np.isfinite(table[name].values).all(), name
        assert table.sizes["element"] > 0
        assert (table["depth"].values >= 0).all() and (np.abs(table["y"].values) <= 90).all()
        assert (table["length"].values > 0).all() and (table["width"].values > 0).all()
        assert (table["duration"].values >= 0).all() and (np.abs(table["dip"].values) <= 90).all()
        if "rigidity" in table:
            assert np.isfinite(table["rigidity"].values).all()


TIMES = int(os.environ.get("TIDORA_FUZZ_TIMES", "0"))
"""So many times the examples, other ones in every run; 0 for the same examples in every run."""


def examples(count):
    """Settings for so many examples, and TIMES."""
    quiet = [HealthCheck.function_scoped_fixture, HealthCheck.too_slow]
    return settings(
        max_examples=count * max(TIMES, 1),
        derandomize=not TIMES,
        deadline=None,
        suppress_health_check=quiet,
        database=None,
    )


@pytest.mark.parametrize("seed", SEEDS)
@examples(150)
@given(changes=CHANGES)
def test_a_changed_file_is_a_sound_table_or_is_refused(seed, changes, tmp_path):
    check(tmp_path / "model", changed(SEEDS[seed], changes))


@examples(300)
@given(content=st.binary(max_size=2000))
def test_bytes_are_refused(content, tmp_path):
    check(tmp_path / "model", content)


NUMBERS = st.floats(allow_nan=True, allow_infinity=True)


@examples(200)
@given(values=st.lists(NUMBERS | st.sampled_from([999.0, -99.0, 0.0, 90.0, -90.0, 180.0]), min_size=9, max_size=9))
def test_any_numbers_in_a_row_are_a_sound_table_or_refused(values, tmp_path):
    head = SMALL["csv"].splitlines()[0]
    check(tmp_path / "model", f"{head}\n{','.join(map(repr, values))}\n".encode())


@examples(200)
@given(
    lon=st.floats(-180, 360), lat=st.floats(-85, 85), depth=st.floats(0, 700), strike=st.floats(0, 360),
    dip=st.floats(0, 90), size=st.floats(0.1, 100), reference=st.sampled_from(["top centre", "centroid", "noaa"]),
)  # fmt: skip
def test_a_sound_row_keeps_its_reference_point(lon, lat, depth, strike, dip, size, reference, tmp_path):
    row = [lon, lat, depth, strike, dip, 90, 1, size, size]
    (tmp_path / "model").write_text(f"{SMALL['csv'].splitlines()[0]}\n{','.join(map(repr, row))}\n")
    table, _ = read(tmp_path / "model", reference=reference)
    down = {"top centre": 0.0, "centroid": 0.5, "noaa": 1.0}[reference]
    found = point_of(table, 0.5, down)
    assert apart((found[0], found[1], 0.0), (lon, lat, 0.0)) < 1e-3
    given_depth = depth * 1e3 - (0.5 * size * 1e3 * np.sin(np.radians(dip)) if reference == "centroid" else 0.0)
    assert table["depth"].values[0] == pytest.approx(max(given_depth, 0.0), abs=1e-6)
