"""What can go wrong, and how it is said."""

from __future__ import annotations

import os
from typing import Optional, Union

Path = Union[str, "os.PathLike[str]"]


class TidoraError(Exception):
    """Input that cannot be used; the message is for the user."""


class FileError(TidoraError):
    """A file that breaks a rule of its format.

    Parameters
    ----------
    path : path
        The file.
    rule : str
        The rule, and what was found instead.
    line : int, optional
        Line of a text file, counted from 1.
    """

    def __init__(self, path: Path, rule: str, line: Optional[int] = None) -> None:
        self.path = os.fspath(path)
        self.line = line
        self.rule = rule
        super().__init__(f"{self.path}:{line}: {rule}" if line is not None else f"{self.path}: {rule}")


class UsageError(Exception):
    """A command line that asks for something that does not exist or does not fit together."""


class TidoraWarning(UserWarning):
    """Something that was guessed, or that the user should know."""
