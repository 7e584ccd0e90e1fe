# SPDX-License-Identifier: MIT
"""Writes scans and recordings, and converts files."""

from __future__ import annotations

import ctypes
import os
import pathlib
from itertools import chain
from typing import Iterable, Optional, Sequence, Union

from . import _library
from ._calls import Handle, MessageHandler, Messages, call
from ._errors import ArgumentError, MissingFileError
from ._recording import (SOURCE_KINDS, Path, Recording, Source, encode_path, to_cloud_options,
                         to_number, to_three)
from ._scan import CloudGrid, Scan

RECORDINGS = (".rep", ".rec", ".ovrec")

Scans = Union[Scan, Sequence[Scan], None]
FrameLike = Union[Scan, Sequence[Scans]]
"""A scan, or one of each source in their order; of an arrayed source a list of them."""


def write(path: Path, frames: Union[Scan, Recording, Iterable[FrameLike]], *,
          sources: Optional[Sequence[Union[str, Source]]] = None,
          config: Optional[Path] = None) -> None:
    """Writes a scan (.sur, .srf, .pro, .pcd by the extension) or a recording (.rep, .ovrec).

    frames: a scan; or the frames of a recording, which are written as they come, so that a
        generator needs the memory of one frame. A recording gives the frames of all its sources.
    sources: names of the sources; those of the first frame's scans where they are not given.
    config: of an archive (.ovrec), the folder with config.json, jobs/config.json and
        jobs/live/_live.ovjob; "config" in the working directory where it is not given.

    The file is there whole, or as it was before.
    """
    is_recording = os.path.splitext(os.fspath(path))[1].lower() in RECORDINGS
    if isinstance(frames, Scan) and not is_recording:
        call("scan_save", frames._handle.pointer, encode_path(path), path=os.fspath(path))
        return
    if isinstance(frames, Recording):
        _write_recording(path, frames.frames(), frames.sources if sources is None else sources,
                         config)
    else:
        _write_recording(path, [frames] if isinstance(frames, Scan) else frames, sources, config)


def _write_recording(path: Path, frames: Iterable[FrameLike],
                     sources: Optional[Sequence[Union[str, Source]]],
                     config: Optional[Path]) -> None:
    parts = (_parts(frame) for frame in frames)
    first = next(parts, None)
    if first is None:
        raise ArgumentError("a recording has at least one frame", path=os.fspath(path))
    described = _describe(first, sources)
    infos = (_library.SourceInfo * len(described))(*map(_to_info, described))
    options = _library.WriterOptions(config=None if config is None else encode_path(config))
    handle = Handle("writer_free")
    told = os.fspath(path)
    call("writer_open", encode_path(path), infos, len(described), options, handle.pointer,
         path=told, not_found=MissingFileError)
    try:
        for frame in chain([first], parts):
            _add(handle, frame, described)
        call("writer_close", handle.pointer, path=told)
    finally:
        handle.free()


def _parts(frame: FrameLike) -> Sequence[Scans]:
    return [frame] if isinstance(frame, Scan) else frame


def _add(handle: Handle, frame: Sequence[Scans], sources: Sequence[Source]) -> None:
    if len(frame) != len(sources):
        raise ArgumentError(f"a frame has {len(frame)} scans, and there are {len(sources)} sources")
    call("writer_begin_frame", handle.pointer)
    for source, scans in zip(sources, frame):
        if isinstance(scans, Scan) and not source.arrayed:
            call("writer_add", handle.pointer, scans._handle.pointer)
        elif scans is not None and source.arrayed:
            items = [scans] if isinstance(scans, Scan) else scans
            pointers = [scan._handle.pointer.value for scan in items]
            call("writer_add_items", handle.pointer,
                 (ctypes.c_void_p * len(pointers))(*pointers), len(pointers))
        else:
            raise ArgumentError(f"a frame needs {'scans' if source.arrayed else 'one scan'} of "
                                f"{source.display_name!r}")


def _describe(frame: Sequence[Scans], sources: Optional[Sequence[Union[str, Source]]]
              ) -> list[Source]:
    """The sources of frames like this one."""
    if sources is not None and len(sources) != len(frame):
        raise ArgumentError(f"a frame has {len(frame)} scans, and there are {len(sources)} sources")
    return [_describe_one(scans, sources[i] if sources is not None else None, i)
            for i, scans in enumerate(frame)]


def _describe_one(scans: Scans, source: Union[str, Source, None], number: int) -> Source:
    if isinstance(source, Source):
        return source
    scan = scans if isinstance(scans, Scan) else scans[0] if scans else None
    if scan is None:
        raise ArgumentError(f"source {number} has no scan in the first frame: give it as a Source")
    name = source or scan.source or ("Top" if number == 0 else f"Top {number + 1}")
    return Source(name, name, scan.kind, not isinstance(scans, Scan))


def _to_info(source: Source) -> _library.SourceInfo:
    kind = next((number for number, kind in SOURCE_KINDS.items() if kind == source.kind), 0)
    return _library.SourceInfo(name=source.name.encode(), display_name=source.display_name.encode(),
                               type=kind, arrayed=source.arrayed)


def convert(source: Path, target: Optional[Path] = None, *, width: Optional[int] = None,
            height: Optional[int] = None, swap_xz: bool = False,
            remove: Optional[Sequence[float]] = None, zoom: Optional[float] = None,
            frame: int = 0, all_frames: bool = False, config: Optional[Path] = None,
            on_message: Optional[MessageHandler] = None) -> list[pathlib.Path]:
    """Converts a file or folder as one run of Trelvane does; tells which files were written.

    target: its extension tells what is made; without it an archive beside the source.
    width, height, swap_xz, remove, zoom: of a point cloud (.pcd); see `open`.
    frame, all_frames: of a recording; with several sources, or all frames, the names of the files
        tell which they are of.
    config: see `write`.
    on_message: see `open`.
    """
    grid = CloudGrid(width, height, swap_xz, None if remove is None else to_three(remove), zoom)
    messages = Messages(on_message)
    options = _library.ConvertOptions(
        cloud=to_cloud_options(grid), frame=to_number(frame, "frame"), all_frames=all_frames,
        config=None if config is None else encode_path(config), on_message=messages.function)
    messages.call("convert", encode_path(source), None if target is None else encode_path(target),
                  options, path=os.fspath(source), not_found=MissingFileError)
    return [pathlib.Path(file) for file in messages.files]
