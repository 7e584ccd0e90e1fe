# SPDX-License-Identifier: MIT
"""Reads scans by the Python package, or by numpy alone. Prints the seconds that it took, without the
time of imports, and the sum of the heights.

heights.py NAME FILE: "surface", "numpy" and "hyperspy" make the heights in mm of a .sur file,
"hyperspy, second" after it was read once. "frame" reads the points of one frame of a recording that
was opened before the clock starts; "unchecked" opens it, too."""

import sys
import time

import numpy as np

FRAME = 20


def of_surface(path):
    import trelvane

    yield
    with trelvane.open(path) as recording:
        heights = recording[0].heights()
    yield lambda: heights


def by_numpy(path):
    """The fewest passes that numpy needs for the same 32-bit heights."""
    yield
    header = np.fromfile(path, np.uint8, 512)
    low, _, width, length = header[100:116].view("<i4")
    scale, offset = header[128:132].view("<f4")[0], header[474:478].view("<f4")[0]
    raw = np.fromfile(path, "<i2", offset=512).reshape(length, width)
    heights = raw * scale
    heights += offset
    heights[raw < low] = np.nan
    yield lambda: heights


def by_hyperspy(path):
    """Much of what it needs it imports when it reads its first file."""
    import hyperspy.api

    yield
    heights = hyperspy.api.load(path).data
    yield lambda: heights


def by_hyperspy_again(path):
    list(by_hyperspy(path))
    yield from by_hyperspy(path)


def of_frame(path):
    import trelvane

    with trelvane.open(path) as recording:
        yield
        yield recording[FRAME].heights


def of_frame_unchecked(path):
    import trelvane

    yield
    with trelvane.open(path, check=False) as recording:
        yield recording[FRAME].heights


WORK = {"surface": of_surface, "numpy": by_numpy, "hyperspy": by_hyperspy,
        "hyperspy, second": by_hyperspy_again, "frame": of_frame, "unchecked": of_frame_unchecked}

if __name__ == "__main__":
    work = WORK[sys.argv[1]](sys.argv[2])
    next(work)
    start = time.perf_counter()
    heights_of = next(work)
    print(time.perf_counter() - start, np.nansum(heights_of(), dtype=np.float64))
