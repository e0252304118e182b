"""Lines, tokens and numbers of the text formats.

The formats are defined by a bounded line buffer and by lenient conversions. What the program would read, this module
reads; a token that the program would silently take as 0 is refused instead, because it is never meant.
"""

from __future__ import annotations

import os
import re
from typing import Iterator, NamedTuple

import numpy as np

from .errors import FileError, Path

GRID_LINE = 8190
"""Characters that one read of a text grid delivers at most, line end included."""

DATA_LINE = 1022
"""The same for the configuration and the fault file."""

_NUMBER = re.compile(
    r"\s*[+-]?(?:0[xX](?:[0-9a-fA-F]+\.?[0-9a-fA-F]*|\.[0-9a-fA-F]+)(?:[pP][+-]?\d+)?"
    r"|(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?|inf(?:inity)?|nan)",
    re.IGNORECASE,
)
_INTEGER = re.compile(r"\s*[+-]?\d+")
_PLAIN = re.compile(r"[0-9eE+\-. \t\r\n]*\Z")


class Line(NamedTuple):
    """What one read delivers."""

    number: int
    """Line of the file, from 1. The parts of a line longer than the buffer share it."""
    text: str
    """With its line end, if the part has it."""

    @property
    def is_comment(self) -> bool:
        """``#`` in the first column."""
        return self.text.startswith("#")


def bounded_lines(path: Path, limit: int) -> Iterator[Line]:
    """Reads of at most `limit` characters, as the formats define lines.

    Parameters
    ----------
    path : path
        Text file.
    limit : int
        Largest number of characters of a read, line end included. What a longer line has left comes next, be it the
        line end alone.

    Yields
    ------
    Line
        A NUL character ends the text of a read.
    """
    try:
        file = open(path, "rb")
    except OSError as error:
        raise FileError(path, f"cannot be opened: {error.strerror}") from None
    with file:
        number = 1
        while True:
            try:
                raw = file.readline(limit)
            except OSError as error:
                raise FileError(path, f"cannot be read: {error.strerror}") from None
            if not raw:
                return
            yield Line(number, raw.split(b"\0", 1)[0].decode("latin-1"))
            if raw.endswith(b"\n"):
                number += 1


def tokens(text: str) -> list[str]:
    """Tokens of a data line: blanks and tabs separate, the line end does not.

    The line end stays attached to the last token; on an empty line, and behind a trailing blank, it is a token of its
    own, which the formats count as a value of 0.
    """
    return [token for token in re.split("[ \t]+", text) if token]


def is_line_end(token: str) -> bool:
    """True for the token that an empty line or a trailing blank leaves."""
    return token.strip("\r\n") == ""


def to_float(token: str) -> float:
    """The number with which a token starts; the line end alone is 0.

    Raises
    ------
    ValueError
        If the token starts with no number. The program would take 0.
    """
    if is_line_end(token):
        return 0.0
    match = _NUMBER.match(token)
    if not match:
        raise ValueError(token.strip())
    number = match.group().strip()
    return float.fromhex(number) if "x" in number.lower() else float(number)


def to_int(token: str) -> int:
    """The decimal integer with which a token starts.

    Raises
    ------
    ValueError
        If the token starts with no integer, or with one beyond 32 bits. The program would take another number.
    """
    match = _INTEGER.match(token)
    if not match or not -(2**31) <= int(match.group()) < 2**31:
        raise ValueError(token.strip())
    return int(match.group())


def line_values(text: str) -> np.ndarray:
    """All values of a line of a text grid, double precision.

    Raises
    ------
    ValueError
        If a token starts with no number.
    """
    # Nearly every line is plain numbers, one blank apart, which numpy converts much faster.
    if _PLAIN.match(text):
        words = text.split()
        if len(words) == len(tokens(text)):
            try:
                return np.array(words, dtype=np.float64)
            except ValueError:
                pass
    return np.array([to_float(token) for token in tokens(text)], dtype=np.float64)


def regular_size(path: Path) -> int:
    """Size of a regular file in bytes.

    Raises
    ------
    FileError
        If there is none.
    """
    try:
        status = os.stat(path)
    except OSError as error:
        raise FileError(path, f"cannot be opened: {error.strerror}") from None
    if not os.path.isfile(path):
        raise FileError(path, "is not a regular file")
    return status.st_size
