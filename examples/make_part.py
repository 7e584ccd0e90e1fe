#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes part.sur beside this file: a small machined part on a table, as a laser scanner sees it.

With --check it only tells, by its exit code, whether part.sur is what it would make.
"""

import math
import random
import sys
import tempfile
from array import array
from pathlib import Path

from sur_file import INVALID, write_sur

WIDTH, LENGTH = 320, 240  # points in a row, rows
STEP = 0.05  # mm between points: the scan covers 16 x 12 mm
Z_STEP = 0.001  # mm for each raw height
TOP = 4.0  # mm from the table to the top of the plate
CAMERA_SLOPE = math.tan(math.radians(62))  # the camera looks from the right, this steeply


def inside_rectangle(x, y, centre, size, radius):
    """How far (x, y) is inside a rectangle with rounded corners; negative outside."""
    dx = abs(x - centre[0]) - size[0] / 2 + radius
    dy = abs(y - centre[1]) - size[1] / 2 + radius
    return radius - math.hypot(max(dx, 0), max(dy, 0)) - min(max(dx, dy), 0)


def height(x, y):
    """The part's height in mm at (x, y), both in mm from its centre; None in the bore."""
    edge = inside_rectangle(x, y, (0, 0), (14.6, 10.6), 1.2)
    if edge < 0:
        return 0.0  # the table
    z = TOP - max(0.4 - edge, 0)  # the plate, with a chamfer all round

    # A pocket with three steps.
    for depth, size in ((0.7, (6.0, 6.4)), (0.7, (4.4, 4.8)), (0.9, (2.6, 3.0))):
        if inside_rectangle(x, y, (-3.6, -1.0), size, 0.7) > 0:
            z -= depth

    # A boss with a chamfer; the bore through it has a countersink.
    r = math.hypot(x - 3.4, y + 1.9)
    if r < 0.8:
        return None
    if r < 2.2:
        z = TOP + 1.3 - max(r - 1.9, 0) - max(1.2 - r, 0)

    # A round bar that lies on the plate, its ends cut square.
    if abs(x - 2.2) < 3.9 and abs(y - 3.3) < 1.0:
        z = TOP + math.sqrt(1.0 - (y - 3.3) ** 2)

    # A row of blind holes with the cone that a drill leaves.
    for hole in range(3):
        r = math.hypot(x + 6.0 - 1.5 * hole, y - 3.6)
        if r < 0.45:
            z = TOP - 1.0 - 0.6 * (0.45 - r)
    return z


def scan():
    """The rows of raw heights, with the scanner's noise and its blind spots."""
    noise = random.Random(1)
    rows = []
    for j in range(LENGTH):
        y = (j - (LENGTH - 1) / 2) * STEP
        row = array("h", [INVALID]) * WIDTH
        # From right to left, so that the rays to the camera are known when a point is reached:
        # what lies below the line of sight over the points to the right is not seen.
        sight = -math.inf
        for i in reversed(range(WIDTH)):
            x = (i - (WIDTH - 1) / 2) * STEP
            z = height(x, y)
            sight -= CAMERA_SLOPE * STEP
            if z is None or z < sight:
                continue
            sight = z
            marks = 0.002 * math.sin(2 * math.pi * (x + 0.3 * y) / 0.4)  # left by the cutter
            rough = 0.004 * (noise.random() + noise.random() + noise.random() - 1.5)
            row[i] = round((z + marks + rough) / Z_STEP)
        rows.append(row)
    return rows


def make(path):
    centre = (-(WIDTH - 1) / 2 * STEP, -(LENGTH - 1) / 2 * STEP, 0.0)
    write_sur(path, WIDTH, scan(), (STEP, STEP, Z_STEP), centre)


def main():
    part = Path(__file__).with_name("part.sur")
    if sys.argv[1:] == []:
        make(part)
        return 0
    if sys.argv[1:] != ["--check"]:
        print("usage: make_part.py [--check]", file=sys.stderr)
        return 2
    with tempfile.TemporaryDirectory() as folder:
        fresh = Path(folder, "part.sur")
        make(fresh)
        if fresh.read_bytes() == part.read_bytes():
            return 0
    print(f"{part} is not what {Path(__file__).name} makes", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
