# SPDX-License-Identifier: MIT
"""Scans made of arrays: what they give, and what is made of them."""

import pickle
import struct
import zlib
from pathlib import Path
from typing import Any

import numpy as np
import pytest
import trelvane

N = trelvane.INVALID
SCALE, OFFSET = (0.5, -0.25, 0.001), (10.0, 20.0, 1.0)
GRID = np.array([[1, N, 3], [-4, 5, 6]], np.int16)
POINTS = np.stack([GRID, GRID[::-1], GRID[:, ::-1]], axis=-1)
LIGHT = np.arange(6, dtype=np.uint8).reshape(2, 3)


def make(raw: Any = GRID, **others: Any) -> trelvane.Scan:
    options: dict[str, Any] = {"scale": SCALE, "offset": OFFSET, **others}
    return trelvane.Scan(raw, **options)


def pixels(png: bytes) -> Any:
    """Of a picture that was written without filters; checks the sums."""
    chunks, position = {}, 8
    while position < len(png):
        size, name = struct.unpack_from(">I4s", png, position)
        data = chunks[name] = png[position + 8:position + 8 + size]
        position += 12 + size
        assert zlib.crc32(name + data) == struct.unpack_from(">I", png, position - 4)[0]
    width, height, *rest = struct.unpack(">2I5B", chunks[b"IHDR"])
    assert rest == [8, 2, 0, 0, 0] and png[:8] == b"\x89PNG\r\n\x1a\n" and b"IEND" in chunks
    rows = np.frombuffer(zlib.decompress(chunks[b"IDAT"]), np.uint8).reshape(height, 1 + 3 * width)
    assert not rows[:, 0].any()
    return rows[:, 1:].reshape(height, width, 3)


@pytest.mark.parametrize("raw, kind, x, y, z, mask", [
    (GRID, "surface", [10, 10.5, 11], [20, 19.75], [[1.001, np.nan, 1.003], [.996, 1.005, 1.006]],
     [[1, 0, 1], [1, 1, 1]]),
    (GRID[1], "profile", [10, 10.5, 11], [0], [[.996, 1.005, 1.006]], [[1, 1, 1]]),
    (POINTS, "cloud", [[10.5, np.nan, 11.5], [8, np.nan, 13]],
     [[21, np.nan, 18.5], [19.75, np.nan, 19.25]],
     [[1.003, np.nan, 1.001], [1.006, np.nan, .996]], [[1, 0, 1], [1, 0, 1]]),
    (POINTS[:1, :, ::2], "point profile", [[10.5, np.nan, 11.5]], [0], [[1.003, np.nan, 1.001]],
     [[1, 0, 1]]),
], ids=lambda value: value if isinstance(value, str) else "")
def test_coordinates(raw: Any, kind: str, x: Any, y: Any, z: Any, mask: Any) -> None:
    scan = make(raw)
    assert scan.kind == kind
    np.testing.assert_array_equal(scan.raw.reshape(raw.shape), raw)
    np.testing.assert_array_equal(scan.mask, np.array(mask, bool))
    for found, expected in [(scan.x, x), (scan.y, y), (scan.heights(np.float64), z)]:
        np.testing.assert_allclose(found, expected, rtol=0, atol=1e-12)
    again = pickle.loads(pickle.dumps(scan))
    assert again.meta == scan.meta and again.box is not None
    np.testing.assert_array_equal(again.raw, scan.raw)
    array = scan.to_xarray(np.float64)
    np.testing.assert_array_equal(array, scan.heights(np.float64))
    for found, expected in [(array.x, scan.x), (array.y, scan.y)]:
        np.testing.assert_array_equal(found, np.broadcast_to(expected, found.shape))
    assert array.dims == (("y", "x") if kind in ("surface", "profile") else ("row", "column"))
    assert array.units == array.x.units == "mm"


@pytest.mark.parametrize("raw, others", [
    (GRID.astype(np.int32), {}), (GRID.astype(np.uint16), {}), (GRID, {"kind": "cloud"}),
    (GRID, {"kind": "plane"}), (POINTS, {"kind": "surface"}), (POINTS[..., :2], {}),
    (GRID, {"kind": "profile"}), (np.int16(1), {}), (np.zeros((1, 1, 3, 1), np.int16), {}),
    (GRID, {"intensity": LIGHT[:1]}), (GRID, {"intensity": LIGHT.astype(float)}),
    (GRID, {"scale": (1, 2)}), (GRID, {"offset": (1, 2, 3, 4)}), (GRID[:0], {}), (GRID[:, :0], {}),
])
def test_arrays_that_are_no_scan(raw: Any, others: Any) -> None:
    with pytest.raises(trelvane.ArgumentError):
        make(raw, **others)


def test_any_layout_of_memory() -> None:
    for raw in [np.asfortranarray(GRID), GRID.astype(">i2"), np.repeat(GRID, 2, axis=1)[:, ::2]]:
        np.testing.assert_array_equal(make(raw).raw, GRID)
    Path("none.srf").write_bytes(struct.pack("<3I6dB", 1, 0, 3, 1, 1, 1, 0, 0, 0, 0))
    empty = trelvane.open("none.srf")[0]
    assert empty.heights().shape == empty.raw.shape == empty.mask.shape == (3, 0)
    assert empty.box is None and pixels(empty._repr_png_()).shape == (1, 1, 3)


def test_out_is_the_callers() -> None:
    scan = make()
    out = np.empty((2, 3), np.float32)
    assert scan.heights(out=out) is out
    np.testing.assert_array_equal(out, scan.heights())
    assert scan.heights(out=np.empty((2, 3))).dtype == scan.heights("f8").dtype == np.float64
    locked = out.copy()
    locked.flags.writeable = False
    bad: list[Any] = [np.empty((3, 2), np.float32), np.empty(6, np.float32), locked,
                      [[0.0] * 3] * 2, np.empty((2, 3), np.float16), np.empty((2, 3), ">f4"),
                      out.T.copy().T, np.empty((2, 6), np.float32)[:, ::2], np.empty((2, 3), int)]
    wrong: list[Any] = [(np.float16, None), (">f4", None), (int, None), (np.float64, out)]
    for dtype, array in [*((None, array) for array in bad), *wrong]:
        with pytest.raises((trelvane.ArgumentError, AttributeError)):
            scan.heights(dtype, out=array)


def test_picture_has_y_upwards_and_nothing_grey() -> None:
    from trelvane._picture import COLORS, NOTHING
    picture = pixels(make(np.array([[0, N], [0, 1000], [0, 1000]], np.int16),
                          scale=(2, 1, 1))._repr_png_())
    assert picture.shape == (360, 480, 3)
    assert picture[0, 0].tolist() == COLORS[0].tolist()
    assert picture[0, -1].tolist() == COLORS[-1].tolist()
    assert picture[-1, -1].tolist() == list(NOTHING)
    drawn = pixels(make(np.repeat(np.array([1, N, 9], np.int16), 160))._repr_png_()) != 255
    for column, rows in [(0, [156, 157, 158]), (159, [156, 157, 158]), (160, []), (320, [1, 2, 3])]:
        assert np.flatnonzero(drawn.any(axis=2)[:, column]).tolist() == rows, column
    step = pixels(make(np.array([1, 9], np.int16))._repr_png_()) != 255
    assert step.any(axis=2).sum(axis=0).tolist() == [158] * 240 + [3] * 240
    assert (pixels(make(np.full((2, 2), N, np.int16))._repr_png_()) == NOTHING).all()


def test_heights_become_raw() -> None:
    z = np.array([[-0.5, np.nan, 0.12345], [np.inf, 1.5, 0]])
    for resolution, error in [(0.001, 0.0005), (None, 2 / 65530)]:
        scan = trelvane.Scan.from_heights(z, step=(0.1, 0.2), origin=(1, 2), resolution=resolution)
        found = scan.heights(np.float64)
        np.testing.assert_allclose(found, np.where(np.isinf(z), np.nan, z), rtol=0, atol=error)
        assert (scan.x[1], scan.y[1]) == (1.1, 2.2)
        trelvane.write("a.sur", scan)
        np.testing.assert_allclose(trelvane.open("a.sur")[0].heights(), found, atol=1e-6)
    with pytest.raises(trelvane.ArgumentError, match="16 bits"):
        trelvane.Scan.from_heights(z, step=(1, 1), resolution=1e-6)
    assert np.isnan(trelvane.Scan.from_heights([[np.nan]], step=(1, 1)).heights()).all()
    assert trelvane.Scan.from_heights([[5.0]], step=(1, 1)).heights() == [[5.0]]


@pytest.mark.parametrize("name, raw, light", [
    ("a.sur", GRID, False), ("a.srf", GRID, True), ("a.pcd", POINTS, True),
    ("a.pro", GRID[1], False), ("a.rep", GRID, True), ("a.rep", POINTS, True),
    ("a.rep", GRID[1], True), ("a.rec", POINTS[:1, :, ::2], True), ("a.ovrec", GRID, False),
])
def test_round_trip(name: str, raw: Any, light: bool) -> None:
    scan = make(raw, scale=(0.5, 0.25, 0.125) if name != "a.pro" else (0.5, 1, 0.125),
                offset=(1, 2, 3) if name != "a.pro" else (1, 0, 3),
                intensity=LIGHT.reshape(2, 3)[:make(raw).shape[0]] if light else None,
                stamp=trelvane.Stamp(7, 8, -9, -10, 11, (12, 13, 14)))
    trelvane.write(name, scan)
    recording = trelvane.open(name)
    again = recording[0]
    assert (again.kind, recording.kind) == (scan.kind, name[2:])
    np.testing.assert_array_equal(again.mask, scan.mask)
    np.testing.assert_allclose(again.heights(), scan.heights(), atol=1e-4)
    if name == "a.pcd":  # its coordinates are folded anew
        np.testing.assert_allclose(again.x, scan.x, atol=1e-4)
    else:
        np.testing.assert_array_equal(again.raw, scan.raw)
        assert (again.scale, again.offset) == (scan.scale, scan.offset)
    if light:
        np.testing.assert_array_equal(np.asarray(again.intensity), np.asarray(scan.intensity))
    if Path(name).suffix in (".rep", ".rec", ".ovrec"):
        assert again.stamp == scan.stamp and again.box == scan.box
