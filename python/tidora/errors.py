"""What can go wrong, and how it is said.

A message may name parameters of the library. They stand in it as `Parameter`, not as text: in Python a parameter is
called by its name, and on a command line by its option, which the library does not know.
"""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Callable, Optional, Union

Path = Union[str, "os.PathLike[str]"]


@dataclass(frozen=True)
class Parameter:
    """A parameter of the library in the middle of a message."""

    name: str
    value: str = ""
    """What it could be given."""

    def __str__(self) -> str:
        return f"{self.name}={self.value}" if self.value else self.name


Message = Union[str, tuple[Union[str, Parameter], ...]]
"""A text, or its parts in order."""


def parts_of(message: Message) -> tuple[Union[str, Parameter], ...]:
    """The parts of a message; a text is its only part."""
    return (message,) if isinstance(message, str) else message


def worded(message: Message, name: Callable[[Parameter], str] = str) -> str:
    """A message as one text.

    Parameters
    ----------
    message : str or tuple of str and Parameter
    name : callable
        What a parameter is called where the text is read.
    """
    return "".join(part if isinstance(part, str) else name(part) for part in parts_of(message))


class TidoraError(Exception):
    """Input that cannot be used.

    Parameters
    ----------
    message : str or tuple of str and Parameter
        For the user; kept as attribute ``message``.
    """

    def __init__(self, message: Message) -> None:
        self.message = message
        super().__init__(worded(message))


class FileError(TidoraError):
    """A file that breaks a rule of its format.

    Parameters
    ----------
    path : path
        The file.
    rule : str or tuple of str and Parameter
        The rule, and what was found instead.
    line : int, optional
        Line of a text file, counted from 1.
    """

    def __init__(self, path: Path, rule: Message, line: Optional[int] = None) -> None:
        self.path = os.fspath(path)
        self.line = line
        self.rule = worded(rule)
        super().__init__((f"{self.path}:{line}: " if line is not None else f"{self.path}: ", *parts_of(rule)))


class UsageError(TidoraError):
    """A request for something that does not exist, or whose parameters do not fit together."""


class TidoraWarning(UserWarning):
    """Something that was guessed, or that the user should know.

    Parameters
    ----------
    message : str or tuple of str and Parameter
        For the user; kept as attribute ``message``.
    """

    def __init__(self, message: Message) -> None:
        self.message = message
        super().__init__(worded(message))
