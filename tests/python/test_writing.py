# SPDX-License-Identifier: MIT
"""Recordings written frame by frame."""

import os
from pathlib import Path
from typing import Any, Iterator

import numpy as np
import pytest
from conftest import EXAMPLES

import trelvane


def make(height: int) -> trelvane.Scan:
    return trelvane.Scan(np.full((2, 3), height, np.int16), scale=(1, 1, 1))


def test_sources_items_and_copies() -> None:
    frames: Any = [(make(1), [make(2), make(3)]), (make(4), []), (make(5), [make(6)])]
    trelvane.write("a.rep", iter(frames), sources=["Höhe", "Many"])
    for name in ["a.rep", "b.rep"]:
        with trelvane.open(name) as recording:
            assert [(source.display_name, source.arrayed) for source in recording.sources] == [
                ("Höhe", False), ("Many", True)]
            assert [recording.count(frame, "Many") for frame in range(3)] == [2, 0, 1]
            assert recording[0, "Many", 1].raw[0, 0] == 3
            with pytest.raises(trelvane.NoSuchScanError):
                recording[1, "Many"]
            trelvane.write("b.rep", recording)
    assert Path("a.rep").read_bytes() == Path("b.rep").read_bytes()
    trelvane.write("c.rep", trelvane.open(EXAMPLES / "recording.ovrec")[1:, "Right"])
    assert [(scan.frame, scan.source) for scan in trelvane.open("c.rep")] == [
        (0, "Right"), (1, "Right")]


def test_folders_tell_sources_of_one_name_apart() -> None:
    os.mkdir("scans")
    for height in (1, 2):
        trelvane.write(f"scans/{height}-Frame-0000_Top.sur", make(height))
    recording = trelvane.open("scans")
    assert [source.name for source in recording.sources] == ["Top", "Top"]
    assert [recording[0, source].raw[0, 0] for source in (0, 1)] == [1, 2]


def broken() -> Iterator[trelvane.Scan]:
    yield make(1)
    raise ZeroDivisionError


@pytest.mark.parametrize("frames, options, error", [
    (broken(), {}, ZeroDivisionError), ([], {}, trelvane.ArgumentError),
    ([make(1), (make(1), make(2))], {}, trelvane.ArgumentError),
    ([make(1), [None]], {}, trelvane.ArgumentError), ([[[]]], {}, trelvane.ArgumentError),
    ([make(1), [[make(1)]]], {}, trelvane.ArgumentError),
    ([[make(1)], [[]]], {}, trelvane.ArgumentError),
    ([[[make(1)]], [None]], {}, trelvane.ArgumentError),
    ([make(1)], {"sources": ["A", "B"]}, trelvane.ArgumentError),
    ([make(1), trelvane.Scan(np.zeros(3, np.int16), scale=(1, 1, 1))], {}, trelvane.Error),
    ([make(1)], {"sources": [trelvane.Source("A", "A", "cloud")]}, trelvane.Error),
])
def test_a_failure_leaves_the_earlier_file(frames: Any, options: Any,
                                           error: type[Exception]) -> None:
    before = sorted(os.listdir())
    Path("a.rep").write_bytes(b"earlier")
    with pytest.raises(error):
        trelvane.write("a.rep", frames, **options)
    assert Path("a.rep").read_bytes() == b"earlier"
    assert sorted(os.listdir()) == sorted([*before, "a.rep"])


@pytest.mark.parametrize("path, frames, error", [
    ("no/a.rep", [make(1)], OSError), ("no/a.sur", make(1), OSError),
    ("a.txt", make(1), ValueError), ("a.sur", [make(1)], ValueError),
    ("a.pro", make(1), ValueError), ("a\0.rep", make(1), ValueError),
])
def test_what_cannot_be_written(path: str, frames: Any, error: type[Exception]) -> None:
    with pytest.raises(error) as caught:
        trelvane.write(path, frames)
    assert isinstance(caught.value, trelvane.Error)


@pytest.mark.parametrize("name, options, error", [
    ("no.sur", {}, FileNotFoundError), ("part.sur", {"frame": -1}, trelvane.ArgumentError),
    ("part.sur", {"width": 3, "height": 3}, trelvane.ArgumentError),
    ("recording.ovrec", {"frame": 3}, trelvane.ArgumentError),
])
def test_what_cannot_be_converted(name: str, options: Any, error: type[Exception]) -> None:
    with pytest.raises(error):
        trelvane.convert(EXAMPLES / name, "a.srf", **options)
    assert os.listdir() == ["config"]
