"""Result files that appear under their name only when they are complete."""

from __future__ import annotations

import os
from contextlib import contextmanager
from pathlib import Path as FilePath
from typing import Iterator

from .errors import FileError, Path


@contextmanager
def replacing(path: Path) -> Iterator[FilePath]:
    """A name beside `path` to write to. It is renamed to `path` at the end, and removed when something goes wrong.

    The name keeps the ending of `path`, for writers that go by it. What is there and is no regular file, a device say,
    is written in place.
    """
    target = FilePath(os.path.realpath(path))
    if target.exists() and not target.is_file():
        if target.is_dir():
            raise FileError(path, "is a folder")
        yield target
        return
    part = target.with_name(f".{target.stem}-{os.getpid()}.part{target.suffix}")
    try:
        yield part
        if target.exists():
            os.chmod(part, target.stat().st_mode & 0o7777)
        os.replace(part, target)
    except OSError as error:
        if error.strerror is None:
            raise
        raise FileError(path, f"cannot be written: {error.strerror}") from None
    finally:
        try:
            part.unlink()
        except OSError:
            pass
