#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the example data beside this file: a small machined part on a table, as a laser scanner
sees it (part.sur), as a line of it (part.pro), as a small surface with intensities (part.srf) and as
a point cloud (part.pcd); the part on its way under two scanners (scans/); a scanner's configuration
(config/).

With --check it only tells, by its exit code, whether the data is what it would make.
"""

import io
import json
import math
import random
import struct
import sys
import tarfile
import tempfile
from array import array
from pathlib import Path

from sur_file import INVALID, PROFILE, write_sur

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


def scan(width, length, step, centre=(0.0, 0.0)):
    """The rows of raw heights around a point of the part, with the scanner's noise and its blind
    spots."""
    noise = random.Random(1)
    rows = []
    for j in range(length):
        y = (j - (length - 1) / 2) * step + centre[1]
        row = array("h", [INVALID]) * width
        # From right to left, so that the rays to the camera are known when a point is reached:
        # what lies below the line of sight over the points to the right is not seen.
        sight = -math.inf
        for i in reversed(range(width)):
            x = (i - (width - 1) / 2) * step + centre[0]
            z = height(x, y)
            sight -= CAMERA_SLOPE * step
            if z is None or z < sight:
                continue
            sight = z
            marks = 0.002 * math.sin(2 * math.pi * (x + 0.3 * y) / 0.4)  # left by the cutter
            rough = 0.004 * (noise.random() + noise.random() + noise.random() - 1.5)
            row[i] = round((z + marks + rough) / Z_STEP)
        rows.append(row)
    return rows


def write_scan(path, width, length, step, centre=(0.0, 0.0)):
    """The scan as a file, in coordinates of the scanner: its middle is at 0, 0."""
    rows = scan(width, length, step, centre)
    corner = (-(width - 1) / 2 * step, -(length - 1) / 2 * step, 0.0)
    write_sur(path, width, rows, (step, step, Z_STEP), corner)


def write_profile(path):
    """The line along y = 0, through the pocket and past the bore."""
    width, step = 640, 0.025
    write_sur(path, width, scan(width, 1, step), (step, 1.0, Z_STEP),
              (-(width - 1) / 2 * step, 0.0, 0.0), PROFILE)


def brightness(rows, j, i):
    """From 0 to 255; darker on a slope, 0 where nothing was seen."""
    raw, beside = rows[j][i], rows[j][max(i - 1, 0)]
    if INVALID in (raw, beside):
        return 0
    return max(40, 220 - abs(raw - beside) // 2)


def write_srf(path):
    """A coarse scan with intensities."""
    width, length, step = 80, 60, 0.2
    rows = scan(width, length, step)
    with open(path, "wb") as file:
        file.write(struct.pack("<3I6d", 1, width, length, step, step, Z_STEP,
                               -(width - 1) / 2 * step, -(length - 1) / 2 * step, 0.0))
        for row in rows:
            file.write(struct.pack(f"<{width}h", *row))
        file.write(b"\x01")
        file.write(bytes(brightness(rows, j, i) for j in range(length) for i in range(width)))


def write_pcd(path):
    """The part as a depth camera above it sees it: organised, NaN where nothing came back."""
    width, length, step, camera = 80, 60, 0.2, 60.0  # the camera is 60 mm above the table
    rows = scan(width, length, step)
    header = ("# .PCD v0.7 - Point Cloud Data file format\nVERSION 0.7\nFIELDS x y z intensity\n"
              "SIZE 4 4 4 4\nTYPE F F F F\nCOUNT 1 1 1 1\n"
              f"WIDTH {width}\nHEIGHT {length}\nVIEWPOINT 0 0 0 1 0 0 0\n"
              f"POINTS {width * length}\nDATA binary\n")
    with open(path, "wb") as file:
        file.write(header.encode())
        for j, row in enumerate(rows):
            for i, raw in enumerate(row):
                point = (math.nan,) * 3
                if raw != INVALID:
                    z = raw * Z_STEP
                    nearer = (camera - z) / camera  # rays spread from the camera
                    point = ((i - (width - 1) / 2) * step * nearer,
                             (j - (length - 1) / 2) * step * nearer, z)
                file.write(struct.pack("<4f", *point, brightness(rows, j, i) / 255))


def make_scans(folder):
    """Three frames of two scanners that look at the left and the right half of the part, while it
    moves by 1 mm from frame to frame."""
    folder.mkdir()
    for frame in range(3):
        for side, x in (("Left", -4.0), ("Right", 4.0)):
            path = folder / f"scan-Frame-{frame:04d}_{side}.sur"
            write_scan(path, 80, 60, 0.1, (x, frame - 1.0))


SCANNER = {
    "parameters": {
        "scanMode": 2,
        "trigger": {"source": 1, "frameRate": 10.0, "delay": 0.0, "schedulingUnits": 0},
    },
    "orv:sensor": [{
        "serialNumber": "100001",
        "model": "R4-example",
        "version": "1.0.0",
        "parameters": {
            "exposureMode": 0,
            "multipleExposures": [120.0],
            "activeArea": {
                "x": -8.0, "y": -6.0, "z": -1.0, "width": 16.0, "length": 12.0, "height": 8.0,
                "transformMatrix": [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1],
            },
        },
    }],
}


def document(value):
    return (json.dumps(value, indent=2) + "\n").encode()


def make_config(folder):
    """What an archive takes along: two documents, and the job, which is a tar archive itself."""
    (folder / "jobs/live").mkdir(parents=True)
    (folder / "config.json").write_bytes(document({"name": "Trelvane example"}))
    (folder / "jobs/config.json").write_bytes(document({"live": "_live"}))
    content = document({"orv:scanner": {"scanner-0": SCANNER}})
    with tarfile.open(folder / "jobs/live/_live.ovjob", "w", format=tarfile.USTAR_FORMAT) as job:
        member = tarfile.TarInfo("scan/r4xxx/config.json")  # time 0, owner 0, mode 644
        member.size = len(content)
        job.addfile(member, io.BytesIO(content))


def make(folder):
    write_scan(folder / "part.sur", 320, 240, 0.05)
    write_profile(folder / "part.pro")
    write_srf(folder / "part.srf")
    write_pcd(folder / "part.pcd")
    make_scans(folder / "scans")
    make_config(folder / "config")


def files(folder):
    return {path.relative_to(folder): path for path in sorted(folder.rglob("*")) if path.is_file()}


def main():
    here = Path(__file__).resolve().parent
    if sys.argv[1:] not in ([], ["--check"]):
        print("usage: make_examples.py [--check]", file=sys.stderr)
        return 2
    with tempfile.TemporaryDirectory() as name:
        fresh = Path(name)
        make(fresh)
        for path, source in files(fresh).items():
            if sys.argv[1:] == []:
                (here / path).parent.mkdir(parents=True, exist_ok=True)
                (here / path).write_bytes(source.read_bytes())
            elif not (here / path).is_file() or (here / path).read_bytes() != source.read_bytes():
                print(f"{path} is not what {Path(__file__).name} makes", file=sys.stderr)
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
