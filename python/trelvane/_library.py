# SPDX-License-Identifier: MIT
"""The C library libtrelvane: where it is found, its structs and its functions, as in trelvane.h."""

from __future__ import annotations

import ctypes
import os
import sys
from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_char_p, c_double, c_int, c_int32,
                    c_int64, c_size_t, c_uint32, c_uint64, c_void_p)
from pathlib import Path
from typing import Any

VERSION = "1.0.0.4"  # of this package, and of the header that it was written for
VERSION_NUMBER = 1000004

OK, ARGUMENT, MEMORY, NOT_FOUND, READ, CONTENT, WRITE, CLOSED = range(8)
INFO, WARNING, FILE = 1, 2, 3

FILE_KINDS = {1: "srf", 2: "sur", 3: "pro", 4: "pcd", 5: "rec", 6: "rep", 7: "ovrec", 8: "folder"}
LAYOUTS = {0: None, 1: "classic", 2: "segmented"}

MessageFunction = CFUNCTYPE(None, c_void_p, c_int, c_char_p)


class ErrorInfo(Structure):
    _fields_ = [("status", c_int32), ("code", c_int32), ("text", c_char * 512)]


class Sized(Structure):
    """A struct that begins with its own size, and may grow in later versions."""

    def __init__(self, **values: Any) -> None:
        super().__init__(size=ctypes.sizeof(self), **values)


class CloudOptions(Sized):
    _fields_ = [("size", c_size_t), ("width", c_uint32), ("height", c_uint32),
                ("swap_xz", c_int32), ("has_invalid_point", c_int32),
                ("invalid_point", c_double * 3), ("zoom", c_double)]


class OpenOptions(Sized):
    _fields_ = [("size", c_size_t), ("unchecked", c_int32), ("cloud", POINTER(CloudOptions)),
                ("on_message", MessageFunction), ("context", c_void_p)]


class FileInfo(Sized):
    _fields_ = [("size", c_size_t), ("kind", c_int32), ("layout", c_int32), ("frames", c_uint64),
                ("sources", c_uint64)]


class SourceInfo(Sized):
    _fields_ = [("size", c_size_t), ("name", c_char_p), ("display_name", c_char_p),
                ("type", c_int32), ("arrayed", c_int32)]


class StampInfo(Structure):
    _fields_ = [("frame", c_uint64), ("time", c_uint64), ("encoder", c_int64),
                ("z_encoder", c_int64), ("inputs", c_uint64), ("reserved", c_uint64 * 3)]


class ScanInfo(Sized):
    _fields_ = [("size", c_size_t), ("kind", c_int32), ("width", c_uint32), ("length", c_uint32),
                ("resampled", c_int32), ("has_box", c_int32), ("has_stamp", c_int32),
                ("scale", c_double * 3), ("offset", c_double * 3), ("box_center", c_double * 3),
                ("box_size", c_double * 3), ("stamp", StampInfo)]


class WriterOptions(Sized):
    _fields_ = [("size", c_size_t), ("config", c_char_p)]


class ConvertOptions(Sized):
    _fields_ = [("size", c_size_t), ("cloud", POINTER(CloudOptions)), ("frame", c_uint32),
                ("all_frames", c_int32), ("config", c_char_p), ("on_message", MessageFunction),
                ("context", c_void_p)]


_HANDLE, _HANDLE_RESULT = c_void_p, POINTER(c_void_p)
_NUMBER = c_uint64

# Parameters of the calls that return a status, without the error that is the last of each.
_CALLS: dict[str, list[Any]] = {
    "open": [c_char_p, POINTER(OpenOptions), _HANDLE_RESULT],
    "file_get_info": [_HANDLE, POINTER(FileInfo)],
    "file_get_source": [_HANDLE, _NUMBER, POINTER(SourceInfo)],
    "file_count_items": [_HANDLE, _NUMBER, _NUMBER, POINTER(c_uint64)],
    "file_read_scan": [_HANDLE, _NUMBER, _NUMBER, _NUMBER, _HANDLE_RESULT],
    "scan_create": [POINTER(ScanInfo), c_void_p, c_size_t, c_void_p, c_size_t, _HANDLE_RESULT],
    "scan_get_info": [_HANDLE, POINTER(ScanInfo)],
    "scan_heights_f32": [_HANDLE, c_void_p, c_size_t],
    "scan_heights_f64": [_HANDLE, c_void_p, c_size_t],
    "scan_find_box": [_HANDLE, POINTER(c_double), POINTER(c_double)],
    "scan_save": [_HANDLE, c_char_p],
    "writer_open": [c_char_p, POINTER(SourceInfo), c_size_t, POINTER(WriterOptions),
                    _HANDLE_RESULT],
    "writer_begin_frame": [_HANDLE],
    "writer_add": [_HANDLE, _HANDLE],
    "writer_add_items": [_HANDLE, POINTER(c_void_p), c_size_t],
    "writer_close": [_HANDLE],
    "convert": [c_char_p, c_char_p, POINTER(ConvertOptions)],
}


def _names() -> list[str]:
    """Where the library may be: where the environment says, beside this module, in the system."""
    name = {"win32": "trelvane.dll", "darwin": "libtrelvane.1.dylib"}.get(sys.platform,
                                                                         "libtrelvane.so.1")
    packaged = Path(__file__).with_name(name)
    named = os.environ.get("TRELVANE_LIBRARY")
    if named:
        return [named]
    return [str(packaged)] if packaged.exists() else [name]


def _load() -> ctypes.CDLL:
    # Calls through CDLL release the interpreter's lock.
    (name,) = _names()
    try:
        library = ctypes.CDLL(name)
    except OSError as error:
        raise ImportError(f"the library of Trelvane cannot be loaded: {error}") from error
    for call, parameters in _CALLS.items():
        function = getattr(library, "trelvane_" + call)
        function.argtypes = [*parameters, POINTER(ErrorInfo)]
        function.restype = c_int
    for call in ("file_close", "scan_free", "writer_free"):
        function = getattr(library, "trelvane_" + call)
        function.argtypes = [_HANDLE]
        function.restype = None
    for call in ("scan_points", "scan_intensities"):
        function = getattr(library, "trelvane_" + call)
        function.argtypes = [_HANDLE, POINTER(c_size_t)]
        function.restype = c_void_p
    library.trelvane_version.restype = c_char_p
    library.trelvane_version_number.restype = c_uint32
    _compare_versions(library)
    return library


def _compare_versions(library: ctypes.CDLL) -> None:
    """A later library has all that an earlier one had, until its major number changes."""
    number = library.trelvane_version_number()
    if number < VERSION_NUMBER or number // 1000000 != VERSION_NUMBER // 1000000:
        found = library.trelvane_version().decode()
        raise ImportError(f"trelvane {VERSION} cannot use version {found} of its library")


library = _load()
