"""Where the library is, and how it is called."""

from __future__ import annotations

import ctypes
import os
import threading
from pathlib import Path as FilePath
from typing import Any, Callable, Mapping, Optional

from ..errors import Parameter, TidoraError
from ..version import VERSION
from . import structures as c

_NAME = "libtidora.so"
_SONAME = "libtidora.so.1"
"""Of the library of a system that installs it apart from the package."""

_POLL = 0.1
"""s between two looks at how far the library has got."""

_lock = threading.Lock()
_loaded: dict[str, ctypes.CDLL] = {}
"""By what TIDORA_LIBRARY says: to look for the file takes longer than many a call."""


def library_path() -> str:
    """The library that computes.

    Returns
    -------
    str
        What ``$TIDORA_LIBRARY`` names, else what was installed with the package, else ``build/libtidora.so`` of the
        source folder, else what the system has under its soname.

    Raises
    ------
    TidoraError
        If it is not there.
    """
    named = os.environ.get("TIDORA_LIBRARY")
    if named:
        if not os.path.isfile(named):
            raise TidoraError(f"{named}, which TIDORA_LIBRARY names, is not there")
        return os.path.abspath(named)
    package = FilePath(__file__).resolve().parents[1]
    places = [package / "_lib" / _NAME, package.parents[1] / "build" / _NAME]
    for place in places:
        if place.is_file():
            return str(place)
    installed = _of_the_system()
    if installed is None:
        raise TidoraError(
            f"the library is neither at {places[0]} nor at {places[1]}, and the system has no {_SONAME}: build the "
            "project, or name it by TIDORA_LIBRARY"
        )
    return installed


class _Holder(ctypes.Structure):
    """Dl_info of <dlfcn.h>: the file that an address belongs to."""

    _fields_ = [
        ("file", ctypes.c_char_p),
        ("base", ctypes.c_void_p),
        ("symbol", ctypes.c_char_p),
        ("address", ctypes.c_void_p),
    ]


def _of_the_system() -> Optional[str]:
    """Where the loader finds the soname. Only the loader knows its folders, so it is asked."""
    try:
        found = ctypes.CDLL(_SONAME)
        holder = _Holder()
        address = ctypes.cast(found.tidora_version, ctypes.c_void_p)
        known = ctypes.CDLL(None).dladdr(address, ctypes.byref(holder))
    except (OSError, AttributeError):
        return None
    return os.path.abspath(os.fsdecode(holder.file)) if known else None


def library() -> ctypes.CDLL:
    """The library, loaded when it is first used.

    Raises
    ------
    TidoraError
        If it is not there, is no library of this project, or one of another version than the package.
    """
    named = os.environ.get("TIDORA_LIBRARY", "")
    with _lock:
        if named not in _loaded:
            _loaded[named] = _load(library_path())
        return _loaded[named]


def _load(path: str) -> ctypes.CDLL:
    try:
        loaded = ctypes.CDLL(path)
        for name, (result, parameters) in c.FUNCTIONS.items():
            function = getattr(loaded, name)
            function.restype, function.argtypes = result, parameters
    except (OSError, AttributeError) as error:
        raise TidoraError(f"{path} cannot be used as the library: {error}") from None
    version = loaded.tidora_version().decode()
    if version != VERSION:
        raise TidoraError(f"{path} is version {version}, the package {VERSION}: build both from one source")
    return loaded


def check(status: int, error: c.Error, names: Mapping[str, str]) -> None:
    """Raises what a status says.

    Parameters
    ----------
    status : int
        Of a function of the library.
    error : structures.Error
        What it has written.
    names : mapping
        What arguments of the C function are called in Python; the longest beginning of a name counts.
    """
    if status == c.OK:
        return
    message, argument = (text.decode("utf-8", "replace") for text in (error.message, error.argument))
    if status == c.NO_MEMORY:
        raise MemoryError(message)
    if status == c.INVALID:
        known = [name for name in names if argument.startswith(name)]
        if known:
            longest = max(known, key=len)
            part = argument[len(longest) :].lstrip(".")  # a column of the table, an axis
            raise TidoraError((Parameter(names[longest]), ": ", f"{part} {message}".lstrip()))
    raise TidoraError(": ".join(filter(None, (library().tidora_status_text(status).decode(), argument, message))))


class _Work:
    """A call of the library in a thread of its own.

    A callback that is entered by way of ctypes cannot raise: a KeyboardInterrupt that waits is raised before the first
    line of it, and is lost. So the callback notes the fraction and hands over a flag, and the thread that has called
    Python waits, tells the progress and takes the interruptions. The thread keeps the arrays alive as long as the
    library writes to them, whatever happens outside.
    """

    def __init__(self, function: Callable[[Any], int]) -> None:
        self.status = c.FAILED
        self.failure: Optional[BaseException] = None
        self.fraction = 0.0
        self.is_stopped = False
        self.done = threading.Event()
        self._function = function
        self._callback = c.Progress(self._told)
        self.thread = threading.Thread(target=self._run, name="tidora", daemon=True)

    def _told(self, fraction: float, _: Any) -> int:
        self.fraction = fraction
        return int(self.is_stopped)

    def _run(self) -> None:
        try:
            if not self.is_stopped:
                self.status = self._function(self._callback)
        except BaseException as failure:
            self.failure = failure
        finally:
            self.done.set()
            # Else the callback, which is bound to this object, would keep it until the next collection of circles.
            del self._callback, self._function


def run(function: Callable[[Any], int], progress: Optional[Callable[[float], Any]]) -> int:
    """Calls the library; other threads of Python go on, and Ctrl-C stops it.

    Parameters
    ----------
    function : callable
        Gets the callback for the options, calls the library, and returns its status.
    progress : callable, optional
        Gets a fraction from 0 to 1, in the thread that calls this. What it raises stops the work and is raised here.

    Returns
    -------
    int
        Status.
    """
    work = _Work(function)
    told = -1.0
    try:
        work.thread.start()
        while not work.done.wait(_POLL):
            if progress is not None and work.fraction > told:
                told = work.fraction
                progress(told)
    except BaseException:
        work.is_stopped = True
        if work.thread.is_alive():
            work.thread.join()
        raise
    work.thread.join()
    if work.failure is not None:
        raise work.failure
    if progress is not None and work.status == c.OK:
        progress(1.0)
    return work.status


def part_of(progress: Optional[Callable[[float], Any]], first: float, last: float) -> Optional[Callable[[float], Any]]:
    """The progress of a part of the work, which goes from `first` to `last` of the whole."""
    if progress is None:
        return None
    tell = progress
    return lambda fraction: tell(first + (last - first) * fraction)
