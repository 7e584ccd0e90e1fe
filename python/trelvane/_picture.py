# SPDX-License-Identifier: MIT
"""Small pictures of heights, as PNG files in memory."""

from __future__ import annotations

import struct
import zlib
from typing import Any

import numpy as np
from numpy.typing import NDArray

SIDE = 480  # pixels of the longer side
LINE_HEIGHT = 160
TAILS = (0.5, 99.5)  # percent: what lies beyond has the first or the last colour
NOTHING = (205, 205, 205)

# From the lowest to the highest, as in trelvane-inspect; the others lie between them.
COLORS = np.array([(39, 21, 99), (29, 58, 116), (16, 88, 129), (20, 117, 138), (42, 145, 145),
                   (75, 172, 146), (119, 198, 137), (176, 220, 112), (247, 234, 64)], float)

Pixels = NDArray[np.uint8]


def draw(heights: NDArray[np.float32], step: tuple[float, float]) -> bytes:
    """A map with row 0 at the bottom, its sides as long as the steps of x and y make them; of a
    single row a line."""
    if heights.size == 0:
        return encode(np.full((1, 1, 3), NOTHING, np.uint8))
    return encode(_line(heights[0]) if heights.shape[0] == 1 else _map(heights, step))


def encode(pixels: Pixels) -> bytes:
    """A PNG file of pixels [row, column, red green blue], row 0 at the top."""
    height, width, _ = pixels.shape
    rows = np.zeros((height, 1 + 3 * width), np.uint8)  # each begins with its filter: none
    rows[:, 1:] = pixels.reshape(height, -1)
    header = struct.pack(">2I5B", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", header)
            + _chunk(b"IDAT", zlib.compress(rows.tobytes())) + _chunk(b"IEND", b""))


def _chunk(name: bytes, data: bytes) -> bytes:
    return (struct.pack(">I", len(data)) + name + data
            + struct.pack(">I", zlib.crc32(name + data)))


def _share(heights: NDArray[Any]) -> NDArray[np.float64]:
    """Where the heights lie between the lowest, 0, and the highest, 1; NaN stays."""
    seen = heights[np.isfinite(heights)].astype(np.float64)
    low, high = np.percentile(seen, TAILS) if seen.size else (0.0, 0.0)
    span = high - low if high > low else 1.0
    return np.asarray(np.clip((heights.astype(np.float64) - low) / span, 0, 1))


def _map(heights: NDArray[np.float32], step: tuple[float, float]) -> Pixels:
    sides = np.array([heights.shape[0] * step[1], heights.shape[1] * step[0]])
    if not np.isfinite(sides).all() or sides.min() <= 0:
        sides = np.array(heights.shape, float)
    rows, columns = np.clip(np.rint(SIDE * sides / sides.max()), SIDE // 16, SIDE).astype(int)
    picked = heights[np.arange(rows)[::-1, np.newaxis] * heights.shape[0] // rows,
                     np.arange(columns) * heights.shape[1] // columns]
    share = _share(picked)
    seen = np.isfinite(share)
    place = share[seen] * (len(COLORS) - 1)
    pixels = np.full((rows, columns, 3), NOTHING, np.uint8)
    for channel in range(3):
        pixels[seen, channel] = np.interp(place, np.arange(len(COLORS)), COLORS[:, channel])
    return pixels


def _line(heights: NDArray[np.float32]) -> Pixels:
    """In each column of pixels from the lowest to the highest of its points, and on to the next
    column's."""
    share = _share(heights)
    pixels = np.full((LINE_HEIGHT, SIDE, 3), 255, np.uint8)
    level = np.arange(LINE_HEIGHT)[::-1]
    for column in range(SIDE):
        start = column * len(share) // SIDE
        points = share[start:max((column + 1) * len(share) // SIDE, start + 1) + 1]
        points = points[np.isfinite(points)]
        if points.size:
            low, high = np.rint(np.array([points.min(), points.max()]) * (LINE_HEIGHT - 5) + 2)
            pixels[(level >= low - 1) & (level <= high + 1), column] = COLORS[1]
    return pixels
