"""Runs to compare: the cases of the command-line tests and the examples.

Of a case only what is there before the run is read; tests/cli/README.md describes the form.
"""

import os
import re
import struct
from dataclasses import dataclass, field
from pathlib import Path
from typing import Dict, List, Tuple

_FIXED_PIECES = {"blank": " ", "tab": "\t", "return": "\r", "brace": "{"}
_NO_LINE_END = "{no-newline}\n"


@dataclass
class Run:
    """One call of the program: what lies there before it, where it starts, its arguments."""

    name: str
    arguments: List[str]
    files: Dict[str, bytes] = field(default_factory=dict)
    directories: List[str] = field(default_factory=list)
    folder: str = "."


def _piece(match: "re.Match[str]") -> str:
    piece = match.group(1)
    if piece in _FIXED_PIECES:
        return _FIXED_PIECES[piece]
    repeat = re.fullmatch(r"repeat (\d+) (.*)", piece, re.DOTALL)
    if repeat:
        return repeat.group(2) * int(repeat.group(1))
    raise ValueError("an input holds the placeholder {%s}" % piece)


def _expand(text: str) -> str:
    return re.sub(r"\{([^}]*)\}", _piece, text)


def _text(body: str) -> bytes:
    if body.endswith(_NO_LINE_END):
        body = body[: -len(_NO_LINE_END)]
    return _expand(body).encode("latin-1")


def _pairs_as_lines(body: str) -> str:
    return "".join(line.replace(" = ", "\n", 1) for line in body.splitlines(keepends=True))


def _number(word: str) -> float:
    return float.fromhex(word) if "x" in word.lower() else float(word)


def _values(body: str) -> bytes:
    packed = b""
    for line in body.splitlines():
        words = line.split()
        if not words or line.startswith("#"):
            continue
        form = {"i32": "<i", "f32": "<f", "f64": "<d"}[words[0]]
        for word in words[1:]:
            value, _, count = word.partition("*")
            number = _number(value)
            packed += struct.pack(form, int(number) if form == "<i" else number) * int(count or "1")
    return packed


def _sections(text: str) -> List[Tuple[str, str, str]]:
    found = []
    for part in re.split(r"^--- ", text, flags=re.MULTILINE)[1:]:
        heading, _, body = part.partition("\n")
        kind, _, name = heading.partition(" ")
        found.append((kind, _expand(name), body))
    return found


def read_case(path: Path) -> Run:
    """The run of one case of the command-line tests."""
    run = Run("cases/" + path.stem, [])
    for kind, name, body in _sections(path.read_bytes().decode("latin-1")):
        if kind == "args":
            run.arguments = _text(body).decode("latin-1").split("\n")[:-1]
        elif kind == "file":
            run.files[name] = _text(body)
        elif kind == "pairs":
            run.files[name] = _text(_pairs_as_lines(body))
        elif kind == "binary":
            run.files[name] = _values(body)
        elif kind == "directory":
            run.directories.append(name)
    return run


def read_cases(folder: Path) -> List[Run]:
    """All cases of a folder, in order of their names."""
    return [read_case(path) for path in sorted(folder.glob("*.case"))]


def read_examples(folder: Path) -> List[Run]:
    """One run for every configuration below a folder; what an earlier run left in an output folder stays away."""
    files = {}
    for path in sorted(folder.rglob("*")):
        if path.is_file() and "out" not in path.relative_to(folder).parts:
            files[path.relative_to(folder).as_posix()] = path.read_bytes()
    runs = []
    for name in files:
        if os.path.basename(name).startswith("TdrConf") and name.endswith(".txt"):
            top = name.split("/")[0] + "/"
            there = {path: content for path, content in files.items() if path.startswith(top)}
            runs.append(
                Run("examples/" + name[:-4], [os.path.basename(name)], there, folder=os.path.dirname(name) or ".")
            )
    return runs
