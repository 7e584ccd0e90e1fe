# SPDX-License-Identifier: MIT
"""Recordings: places in them, lifetime, other processes and threads, damage."""

import contextlib
import gc
import multiprocessing
import os
import pickle
import shutil
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any, Callable, Optional

import numpy as np
import pytest
from conftest import EXAMPLES, each_scan

import trelvane

RECORDING = EXAMPLES / "recording.ovrec"


@pytest.fixture
def recording() -> trelvane.Recording:
    return trelvane.open(RECORDING)


def places(scans: Any) -> list[tuple[Optional[int], Optional[str]]]:
    return [(scan.frame, scan.source) for scan in scans]


def test_package_and_library_have_one_version() -> None:
    from trelvane._library import VERSION_NUMBER, library
    assert library.trelvane_version().decode() == trelvane.__version__
    assert library.trelvane_version_number() == VERSION_NUMBER


def test_places(recording: trelvane.Recording) -> None:
    assert (len(recording), recording.kind) == (3, "ovrec")
    assert [(s.display_name, s.kind, s.arrayed) for s in recording.sources] == [
        ("Left", "surface", False), ("Right", "surface", False)]
    name = recording.sources[1].name
    keys: Any = [(2, "Right"), (-1, "Right"), (2, name), (2, 1), (2, -1), (2, "Right", 0),
                 (np.int16(2), np.int8(1))]
    for key in keys:
        assert places([recording[key]]) == [(2, "Right")], key
    assert places(recording) == [(0, "Left"), (1, "Left"), (2, "Left")]
    assert places(recording[::-1, "Right"]) == [(2, "Right"), (1, "Right"), (0, "Right")]
    assert places(recording[1:][-1:]) == places([recording[1:][1]]) == [(2, "Left")]
    assert [places(frame) for frame in recording.frames()][1] == [(1, "Left"), (1, "Right")]
    assert len(recording[5:]) == 0 and recording.count(0, "Right") == 1


@pytest.mark.parametrize("key", [3, -4, (0, "Top"), (0, 2), (0, -3), (0, 0, 1), (0, 0, -1),
                                 (0, 0, 1 << 64)])
def test_places_that_are_not_there(recording: trelvane.Recording, key: Any) -> None:
    with pytest.raises(trelvane.NoSuchScanError):
        recording[key]
    with pytest.raises(IndexError):
        recording[1:][2]


def test_arrays_outlive_everything() -> None:
    files = os.listdir("/proc/self/fd")
    with trelvane.open(RECORDING) as recording:
        kept = recording[1, "Right"].raw
    expected = kept.copy()
    assert os.listdir("/proc/self/fd") == files
    gc.collect()
    np.testing.assert_array_equal(kept, expected)
    assert not kept.flags.writeable
    uses: list[Callable[[], object]] = [
        lambda: recording[0], lambda: recording.count(0), lambda: list(recording),
        lambda: next(recording.frames())]
    for use in uses:
        with pytest.raises(trelvane.ClosedError, match="closed"):
            use()
    recording.close()
    assert recording.closed and len(recording) == 3 and "closed" in repr(recording)


def test_scans_travel_by_their_place() -> None:
    shutil.copy(RECORDING, "a.ovrec")
    scan = trelvane.open("a.ovrec")[2, "Right"]
    packed = pickle.dumps(scan)
    assert len(packed) < 1000
    os.chdir("/")
    again = pickle.loads(packed)
    assert again.meta == scan.meta
    with multiprocessing.get_context("spawn").Pool(1) as pool:
        np.testing.assert_array_equal(pool.apply(trelvane.Scan.heights, (scan,)), scan.heights())
    os.remove(str(scan.path))
    with pytest.raises(FileNotFoundError):
        pickle.loads(packed)
    cloud = trelvane.open(EXAMPLES / "part.pcd", width=60, height=80, zoom=2)[0]
    np.testing.assert_array_equal(pickle.loads(pickle.dumps(cloud)).raw, cloud.raw)


def test_threads_share_a_recording(recording: trelvane.Recording) -> None:
    shared = recording[0]
    expected = [scan.heights() for scan in recording]
    with ThreadPoolExecutor(8) as threads:
        found = threads.map(lambda i: (recording[i % 3].heights(), shared.heights()), range(60))
        for i, heights in enumerate(found):
            np.testing.assert_array_equal(heights, (expected[i % 3], expected[0]))


def flip(data: bytes, place: int) -> bytes:
    return data[:place] + bytes([data[place] ^ 0x81]) + data[place + 1:]


@pytest.mark.parametrize("name, left, error", [
    ("recording.ovrec", 0.5, ValueError), ("recording.ovrec", None, trelvane.MissingFileError),
    ("part.sur", 0.5, ValueError), ("part.srf", 0, ValueError), ("part.pcd", 0.01, ValueError),
    ("part.pro", None, FileNotFoundError),
])
def test_damage(name: str, left: Optional[float], error: type[Exception]) -> None:
    if left is not None:
        whole = (EXAMPLES / name).read_bytes()
        Path(name).write_bytes(whole[:int(left * len(whole))])
    with pytest.raises(error) as caught:
        trelvane.open(name)[0]
    assert isinstance(caught.value, (trelvane.ContentError, trelvane.MissingFileError))
    assert len(str(caught.value)) > 10 and str(caught.value.path).endswith(name)
    again = pickle.loads(pickle.dumps(caught.value))
    assert (str(again), again.code) == (str(caught.value), caught.value.code)


@each_scan
def test_any_damage_is_an_error_of_the_package(file: Path) -> None:
    if file.is_dir():
        file = file / "scan-Frame-0000_Left.sur"
    whole = file.read_bytes()
    for place in np.linspace(0, len(whole) - 1, 25, dtype=int):
        changed = flip(whole, place)
        for damaged, check in [(whole[:place], True), (changed, True), (changed, False)]:
            Path(file.name).write_bytes(damaged)
            with contextlib.suppress(trelvane.Error):
                for scan in trelvane.open(file.name, check=check, on_message=lambda *_: None):
                    assert scan.heights().shape == scan.mask.shape


def test_what_cannot_be_opened() -> None:
    os.mkdir("empty")
    for path in ["empty", "a.txt", "a\0.sur", ""]:
        with pytest.raises(trelvane.Error):
            trelvane.open(path)[0]
    for options in [{"zoom": 0}, {"width": -1}, {"width": 1 << 32}, {"remove": (1, 2)}]:
        with pytest.raises(ValueError):
            trelvane.open(EXAMPLES / "part.pcd", **options)  # type: ignore


def test_without_the_check_damage_is_told_late_or_never() -> None:
    Path("a.ovrec").write_bytes(flip(RECORDING.read_bytes(), RECORDING.stat().st_size // 2))
    with pytest.raises(trelvane.ContentError):
        trelvane.open("a.ovrec")
    (scan, *others), whole = trelvane.open("a.ovrec", check=False), trelvane.open(RECORDING)[0]
    assert len(others) == 2 and scan.raw.tobytes() == whole.raw.tobytes()


def test_messages() -> None:
    def fail(kind: str, text: str) -> None:
        raise KeyboardInterrupt(text)

    with pytest.warns(trelvane.Notice, match=r"size is \[70, 60\]"):
        trelvane.open(EXAMPLES / "part.pcd", width=70, height=60)[0]
    with pytest.raises(KeyboardInterrupt, match=r"size is \[70, 60\]"):
        trelvane.open(EXAMPLES / "part.pcd", width=70, height=60, on_message=fail)[0]
    with pytest.raises(KeyboardInterrupt):
        trelvane.convert(EXAMPLES / "part.pcd", "a.rep", width=70, height=60, on_message=fail)
