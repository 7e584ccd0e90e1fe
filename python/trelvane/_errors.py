# SPDX-License-Identifier: MIT
"""What goes wrong, as exceptions."""

from __future__ import annotations

import errno
from typing import Any, Optional


class Error(Exception):
    """Base of all errors of this package.

    `code` is the number that Trelvane gives to the error in its log, 0 where it has none; `path`
    the file that was worked on, or None.
    """

    def __init__(self, text: str = "", code: int = 0, path: Optional[str] = None) -> None:
        super().__init__(text)
        self.code = code
        self.path = path

    def __str__(self) -> str:
        return str(self.args[0])

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (self.args[0], self.code, self.path)


class ArgumentError(Error, ValueError):
    """A value that cannot be."""


class ClosedError(Error, ValueError):
    """A recording that was closed before."""


class ContentError(Error, ValueError):
    """A file is damaged, or not what it must be."""


class FileError(Error, OSError):
    """A file cannot be opened, read or written."""


class MissingFileError(FileError, FileNotFoundError):
    """There is no such file or folder."""

    def __init__(self, text: str = "", code: int = 0, path: Optional[str] = None) -> None:
        super().__init__(text, code, path)
        self.errno, self.filename = errno.ENOENT, path


class NoSuchScanError(Error, IndexError, KeyError):
    """A recording has no such frame, source or item."""


class OutOfMemoryError(Error, MemoryError):
    """There is not enough memory."""


class Notice(UserWarning):
    """A warning of Trelvane about an input that it takes differently than it stands there."""
