"""Lines, rows and numbers of published rupture models, and what a reader has to say about a file."""

from __future__ import annotations

import os
import warnings
from array import array
from typing import Iterator, NamedTuple, NoReturn, Optional, Sequence

import numpy as np

from ..errors import FileError, Path, TidoraWarning

LINE = 8190
"""Characters of a line at most. No published table comes near it; a file without line ends must not fill the memory."""

HEAD = 65536
"""Bytes by which a file is recognised."""

OTHER_ENCODINGS = {b"\xff\xfe": "UTF-16", b"\xfe\xff": "UTF-16"}
"""First bytes of texts in two bytes a character, which are refused."""


class Line(NamedTuple):
    """A line without its end."""

    number: int
    """From 1."""
    text: str


class Reading:
    """A file that is being read, and what had to be assumed on the way."""

    def __init__(self, path: Path) -> None:
        self.path = path
        self.assumptions: list[str] = []

    def assume(self, said: str, line: Optional[int] = None) -> None:
        """Keeps an assumption or a contradiction for the table, and reports it as a `TidoraWarning`."""
        self.assumptions.append(said if line is None else f"line {line}: {said}")
        place = os.fspath(self.path) if line is None else f"{os.fspath(self.path)}:{line}"
        warnings.warn(TidoraWarning(f"{place}: {said}"), stacklevel=5)

    def fail(self, rule: str, line: Optional[int] = None) -> NoReturn:
        """The file breaks a rule."""
        raise FileError(self.path, rule, line)

    def lines(self) -> Iterator[Line]:
        """The lines of the file: UTF-8, or Latin-1 where that does not fit; ends of any system."""
        for number, raw in enumerate(self._raw_lines(), 1):
            yield Line(number, decoded(raw))

    def _raw_lines(self) -> Iterator[bytes]:
        try:
            with open(self.path, "rb") as file:
                number = 0
                while raw := file.readline(LINE + 2):
                    number += 1
                    if number == 1 and raw[:2] in OTHER_ENCODINGS:
                        self.fail(f"is {OTHER_ENCODINGS[raw[:2]]}; a model is plain text or UTF-8", 1)
                    if len(raw) > LINE + 1:
                        self.fail(f"a line has at most {LINE} characters", number)
                    if b"\0" in raw:
                        self.fail("is no text: it has a byte of value 0", number)
                    yield raw
        except OSError as error:
            raise FileError(self.path, f"cannot be read: {error.strerror}") from None


def decoded(raw: bytes) -> str:
    """A line or a file as text, without the mark of UTF-8 and without ends of lines behind it."""
    raw = raw.removeprefix(b"\xef\xbb\xbf").rstrip(b"\r\n")
    try:
        return raw.decode("utf-8")
    except UnicodeDecodeError:
        return raw.decode("latin-1")


def to_number(word: str) -> float:
    """A finite decimal number; the exponent may be marked by D, as Fortran does it.

    Raises
    ------
    ValueError
        If the whole word is no such number.
    """
    if "_" in word:
        raise ValueError(word)
    value = float(word.replace("D", "E").replace("d", "e"))
    if not np.isfinite(value):
        raise ValueError(word)
    return value


class Rows:
    """Rows of numbers, eight bytes a number.

    Parameters
    ----------
    reading : Reading
    names : sequence of str
        Of the columns that every row has.
    """

    def __init__(self, reading: Reading, names: Sequence[str]) -> None:
        self.names = tuple(names)
        self._reading = reading
        self._values = array("d")
        self._lines = array("q")

    def __len__(self) -> int:
        return len(self._lines)

    def add(self, line: int, words: Sequence[str]) -> None:
        """Adds a row."""
        if len(words) != len(self.names):
            self._reading.fail(
                f"a row has the {len(self.names)} columns {' '.join(self.names)}, not {len(words)}", line
            )
        self._lines.append(line)
        try:
            if "_" in "".join(words):
                raise ValueError  # Python takes 1_0 for 10
            self._values.extend([float(word) for word in words])
        except ValueError:
            self._values.extend(self._slowly(line, words))

    def _slowly(self, line: int, words: Sequence[str]) -> list[float]:
        values = []
        for name, word in zip(self.names, words):
            try:
                values.append(to_number(word.strip()))
            except ValueError:
                self._reading.fail(f"column {name} is a number, not '{word.strip()[:40]}'", line)
        return values

    @property
    def lines(self) -> np.ndarray:
        """int64 (row,): lines of the file."""
        return np.array(self._lines, dtype=np.int64)

    def columns(self) -> dict[str, np.ndarray]:
        """float64 (row,) by name; all of them finite."""
        table = np.array(self._values, dtype=np.float64).reshape(len(self), len(self.names))
        wrong = np.argwhere(~np.isfinite(table))
        if wrong.size:
            row, column = wrong[0]
            self._reading.fail(
                f"column {self.names[column]} is a finite number, not {table[row, column]}", self._lines[row]
            )
        return {name: table[:, at].copy() for at, name in enumerate(self.names)}
