# SPDX-License-Identifier: MIT
"""Files of scans: their sources, their frames, and single scans by their place."""

from __future__ import annotations

import ctypes
import math
import operator
import os
import threading
from typing import Any, Iterator, NamedTuple, Optional, Sequence, Union, overload

from . import _library
from ._calls import Handle, MessageHandler, Messages, call, text_of
from ._errors import ArgumentError, ClosedError, MissingFileError, NoSuchScanError
from ._scan import KINDS, CloudGrid, Kind, Origin, Scan

Path = Union[str, "os.PathLike[str]"]
Frame = tuple[Union[Scan, list[Scan], None], ...]
"""A scan of each source, in their order; of an arrayed source a list, None where there is none."""


class Source(NamedTuple):
    """What sees the scans: a scanner, or one of several views of it."""

    name: str
    display_name: str
    kind: Kind
    """Of its scans."""
    arrayed: bool = False
    """Each frame holds any number of its scans, the items."""


# A recording's numbers for the kinds of its sources.
SOURCE_KINDS: dict[int, Kind] = {12: "profile", 13: "point profile", 14: "surface", 15: "cloud"}


def open(path: Path, *, check: bool = True, width: Optional[int] = None,
         height: Optional[int] = None, swap_xz: bool = False,
         remove: Optional[Sequence[float]] = None, zoom: Optional[float] = None,
         on_message: Optional[MessageHandler] = None) -> Recording:
    """Opens any file that Trelvane imports (.sur, .srf, .pro, .pcd, .rep, .rec, .ovrec), or a folder
    of .sur files. A file of one scan is a recording of one frame and one source.

    check: a recording is read and verified from beginning to end first. False opens it by its index
        alone, in a time that does not grow with its size: checksums are never verified then, and
        damage of a scan is told when that scan is read, or not at all where only numbers changed.
    width, height: points in a row and rows that a point cloud (.pcd) is put into.
    swap_xz: x and z of a .pcd change places.
    remove: x, y and z; a point of a .pcd with one of these coordinates is invalid.
    zoom: multiplies all coordinates of a .pcd.
    on_message: called with a kind, "info" or "warning", and a text, for what is told while scans
        are read; without it warnings become Python's, of the category Notice.
    """
    grid = CloudGrid(width, height, swap_xz, None if remove is None else to_three(remove), zoom)
    return Recording(path, check, grid, on_message)


class Recording:
    """Frames of scans from one or more sources; `open` makes it.

    recording[10, "Top"] is the scan of frame 10 from the source of that name (or display name, or
    number), recording[10, "Top", 2] its third where the source is arrayed, and recording[10] that
    of the first source. Slices, as recording[10:20] and recording[:, "Top"], are read scan by
    scan as they are used; so is the recording itself, as a sequence of its first source.
    `frames` goes through the scans of all sources.

    Several threads may use it; they take turns while they read.
    """

    def __init__(self, path: Path, check: bool, grid: CloudGrid,
                 on_message: Optional[MessageHandler]) -> None:
        self.path = os.path.abspath(os.fspath(path))
        self._grid = grid
        self._lock = threading.RLock()
        self._handle = Handle("file_close")
        self._messages = Messages(on_message)
        options = _library.OpenOptions(unchecked=not check, cloud=to_cloud_options(grid),
                                       on_message=self._messages.function)
        self._messages.call("open", encode_path(path), options, self._handle.pointer,
                            path=os.fspath(path), not_found=MissingFileError)
        info = _library.FileInfo()
        call("file_get_info", self._handle.pointer, info)
        self.kind = _library.FILE_KINDS[info.kind]
        """The extension of such files, or "folder"."""
        self.layout = _library.LAYOUTS[info.layout]
        """"classic" or "segmented", the kinds of recordings; None for other files."""
        self._frames = int(info.frames)
        self.sources = tuple(self._source(i) for i in range(info.sources))

    def _source(self, number: int) -> Source:
        info = _library.SourceInfo()
        call("file_get_source", self._handle.pointer, number, info)
        return Source(text_of(info.name), text_of(info.display_name),
                      SOURCE_KINDS[info.type], bool(info.arrayed))

    def close(self) -> None:
        """Closes the file at once. Scans that were read stay. Does nothing the second time."""
        with self._lock:
            self._handle.free()

    @property
    def closed(self) -> bool:
        return not self._handle.pointer

    def __enter__(self) -> Recording:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __len__(self) -> int:
        """Number of frames."""
        return self._frames

    def __iter__(self) -> Iterator[Scan]:
        return iter(self[:])

    @overload
    def __getitem__(self, key: Union[int, tuple[int, Union[int, str]],
                                     tuple[int, Union[int, str], int]]) -> Scan: ...
    @overload
    def __getitem__(self, key: Union[slice, tuple[slice, Union[int, str]],
                                     tuple[slice, Union[int, str], int]]) -> Scans: ...

    def __getitem__(self, key: Any) -> Union[Scan, Scans]:
        place = key if isinstance(key, tuple) else (key,)
        frame, source, item = place + (0,) * (3 - len(place))
        number = self._find(source)
        if isinstance(frame, slice):
            return Scans(self, range(self._frames)[frame], number, item)
        return self._read(self._place(frame), number, item)

    def count(self, frame: int, source: Union[int, str] = 0) -> int:
        """Scans that a frame has of a source: 1, or 0 where there is none; of an arrayed source
        the number of its items."""
        items = ctypes.c_uint64()
        with self._lock:
            call("file_count_items", self._open(), self._place(frame), self._find(source),
                 items, path=self.path)
        return items.value

    def frames(self) -> Iterator[Frame]:
        """The scans of all sources, frame by frame: for left, right in recording.frames()."""
        for place in range(self._frames):
            yield tuple(self._scans(place, number) for number in range(len(self.sources)))

    def _scans(self, frame: int, source: int) -> Union[Scan, list[Scan], None]:
        scans = [self._read(frame, source, item) for item in range(self.count(frame, source))]
        if self.sources[source].arrayed:
            return scans
        return scans[0] if scans else None

    def _place(self, frame: int) -> int:
        try:
            return range(self._frames)[frame]
        except IndexError:
            raise NoSuchScanError(f"there is no frame {frame}, of {self._frames}",
                                  path=self.path) from None

    def _find(self, source: Union[int, str]) -> int:
        if isinstance(source, str):
            for names in ([s.name for s in self.sources], [s.display_name for s in self.sources]):
                if source in names:
                    return names.index(source)
        elif -len(self.sources) <= source < len(self.sources):
            return operator.index(source) % len(self.sources)
        names = [s.display_name for s in self.sources]
        raise NoSuchScanError(f"there is no source {source!r}, only {names}", path=self.path)

    def _read(self, frame: int, source: int, item: int) -> Scan:
        if not 0 <= operator.index(item) < 1 << 64:
            raise NoSuchScanError(f"there is no item {item}", path=self.path)
        handle = Handle("scan_free")
        with self._lock:
            self._messages.call("file_read_scan", self._open(), frame, source,
                                operator.index(item), handle.pointer, path=self.path)
        name = self.sources[source].display_name
        return Scan._read(handle, Origin(self.path, frame, source, item, name, self._grid))

    def _open(self) -> ctypes.c_void_p:
        if self.closed:
            raise ClosedError("the recording was closed", path=self.path)
        return self._handle.pointer

    def __repr__(self) -> str:
        names = ", ".join(repr(source.display_name) for source in self.sources)
        state = "closed, " if self.closed else ""
        return (f"<trelvane.Recording {os.path.basename(self.path)!r}: {state}{self._frames} "
                f"frames, sources {names}>")


class Scans:
    """Scans of one source from some frames of a recording, each read when it is used."""

    def __init__(self, recording: Recording, frames: range, source: int, item: int) -> None:
        self._recording, self._frames = recording, frames
        self._source, self._item = source, item

    def __len__(self) -> int:
        return len(self._frames)

    @overload
    def __getitem__(self, key: int) -> Scan: ...
    @overload
    def __getitem__(self, key: slice) -> Scans: ...

    def __getitem__(self, key: Union[int, slice]) -> Union[Scan, Scans]:
        if isinstance(key, slice):
            return Scans(self._recording, self._frames[key], self._source, self._item)
        return self._recording[self._frames[key], self._source, self._item]

    def __iter__(self) -> Iterator[Scan]:
        for frame in self._frames:
            yield self._recording[frame, self._source, self._item]


def read_again(path: str, frame: int, source: int, item: int, _name: str, grid: CloudGrid) -> Scan:
    """A scan that was pickled by its place."""
    with Recording(path, False, grid, None) as recording:
        return recording[frame, source, item]


def encode_path(path: Path) -> bytes:
    """As the library takes it."""
    encoded = os.fsencode(path)
    if b"\0" in encoded:
        raise ArgumentError("a path holds no zero byte")
    return encoded


def to_number(value: int, name: str) -> int:
    """The value, if the library's 32 bits have room for it."""
    number = operator.index(value)
    if not 0 <= number < 1 << 32:
        raise ArgumentError(f"{name} cannot be {number}")
    return number


def to_three(values: Sequence[float]) -> tuple[float, float, float]:
    x, y, z = values
    return float(x), float(y), float(z)


def to_cloud_options(grid: CloudGrid) -> Any:
    """A pointer for the library; null when all is as in the file."""
    if grid == CloudGrid():
        return None
    zoom = 0.0 if grid.zoom is None else grid.zoom
    if grid.zoom is not None and not (zoom > 0 and math.isfinite(zoom)):
        raise ArgumentError(f"zoom cannot be {zoom}")
    options = _library.CloudOptions(
        width=to_number(grid.width or 0, "width"),
        height=to_number(grid.height or 0, "height"), swap_xz=grid.swap_xz,
        has_invalid_point=grid.remove is not None,
        invalid_point=(ctypes.c_double * 3)(*(grid.remove or (0, 0, 0))), zoom=zoom)
    return ctypes.pointer(options)
