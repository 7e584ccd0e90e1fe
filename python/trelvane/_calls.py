# SPDX-License-Identifier: MIT
"""Calls of the library: their errors, their messages, and the handles that they give."""

from __future__ import annotations

import ctypes
import warnings
from typing import Any, Callable, Optional

from . import _library
from ._errors import (ArgumentError, ClosedError, ContentError, Error, FileError, NoSuchScanError,
                      Notice, OutOfMemoryError)
from ._library import library

MessageHandler = Callable[[str, str], object]
"""Takes a message: its kind, "info" or "warning", and its text."""

_ERRORS: dict[int, type[Error]] = {
    _library.ARGUMENT: ArgumentError,
    _library.MEMORY: OutOfMemoryError,
    _library.NOT_FOUND: NoSuchScanError,
    _library.READ: FileError,
    _library.CONTENT: ContentError,
    _library.WRITE: FileError,
    _library.CLOSED: ClosedError,
}


def text_of(text: Optional[bytes]) -> str:
    """Text of the library; what is no UTF-8 in a file stays visible."""
    return (text or b"").decode(errors="backslashreplace")


def call(name: str, *arguments: Any, path: Optional[str] = None,
         not_found: type[Error] = NoSuchScanError) -> None:
    """Calls trelvane_<name>, and raises what went wrong."""
    error = _library.ErrorInfo()
    status = getattr(library, "trelvane_" + name)(*arguments, ctypes.byref(error))
    if status != _library.OK:
        kind = not_found if status == _library.NOT_FOUND else _ERRORS.get(status, Error)
        raise kind(text_of(error.text), error.code, path)


class Messages:
    """Gives the library's messages to a function, or as Python's warnings, and files to a list.

    An exception in it cannot pass through the library: it is kept until the call is over.
    """

    def __init__(self, handler: Optional[MessageHandler]) -> None:
        self.files: list[str] = []
        self.function = _library.MessageFunction(self._take)
        self._handler = handler
        self._raised: Optional[BaseException] = None

    def _take(self, _context: Optional[int], kind: int, text: bytes) -> None:
        try:
            if kind == _library.FILE:
                self.files.append(text.decode(errors="surrogateescape"))
            elif self._handler is not None:
                self._handler("info" if kind == _library.INFO else "warning", text_of(text))
            elif kind == _library.WARNING:
                warnings.warn(text_of(text), Notice, stacklevel=4)
        except BaseException as error:  # noqa: B902
            self._raised = self._raised or error

    def call(self, name: str, *arguments: Any, path: Optional[str] = None,
             not_found: type[Error] = NoSuchScanError) -> None:
        """As the function `call`, with the messages of that call."""
        try:
            call(name, *arguments, path=path, not_found=not_found)
        finally:
            raised, self._raised = self._raised, None
            if raised is not None:
                raise raised


class Handle:
    """A handle of the library, freed once: by `free`, or with the last object that needs it."""

    def __init__(self, free: str) -> None:
        self.pointer = ctypes.c_void_p()
        self._free = getattr(library, "trelvane_" + free)

    def free(self) -> None:
        pointer, self.pointer = self.pointer, ctypes.c_void_p()
        if pointer:
            self._free(pointer)

    def __del__(self) -> None:
        self.free()
