# SPDX-License-Identifier: MIT
"""Reads and writes the scans of 3D scanners: surfaces, profiles, point clouds and recordings.

    >>> import trelvane
    >>> with trelvane.open("line.ovrec") as recording:      # doctest: +SKIP
    ...     heights = recording[10, "Top"].heights()        # float32, mm, NaN where nothing was seen

Files are .sur, .srf, .pro, .pcd, .rep, .rec, .ovrec, and folders of .sur.
"""

from ._calls import MessageHandler
from ._errors import (ArgumentError, ClosedError, ContentError, Error, FileError, MissingFileError,
                      NoSuchScanError, Notice, OutOfMemoryError)
from ._library import VERSION as __version__
from ._recording import Frame, Recording, Scans, Source, open
from ._scan import INVALID, XYZ, Box, Kind, Scan, Stamp
from ._writing import convert, write

__all__ = [
    "INVALID", "XYZ", "ArgumentError", "Box", "ClosedError", "ContentError", "Error", "FileError",
    "Frame", "Kind", "MessageHandler", "MissingFileError", "NoSuchScanError", "Notice",
    "OutOfMemoryError", "Recording", "Scan", "Scans", "Source", "Stamp", "convert", "open",
    "write", "__version__",
]
