# SPDX-License-Identifier: MIT
"""The conversions that compare.py times: how their inputs are made, what they are measured against
and how their outputs are checked."""

import math
import os
import random
import shutil
import struct
import subprocess
import sys
from array import array
from dataclasses import dataclass, field
from mmap import ACCESS_READ, mmap
from pathlib import Path
from typing import Callable

BENCH = Path(__file__).resolve().parent
EXAMPLES = BENCH.parent / "examples"
sys.path.insert(0, str(EXAMPLES))
from sur_file import INVALID, write_sur  # noqa: E402

MIB = 1 << 20
SIDE = 4096  # points in a row, and rows
QUIET = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL}
MCAP_MAGIC = b"\x89MCAP0\r\n"


@dataclass
class Rival:
    """A program that a conversion is measured against, beside `cp`. Where the first word of the
    command is a name alone, it is one of the programs of this folder."""

    name: str
    command: list[str]
    output: str
    most_runs: int = 100  # a slow one runs less often
    environment: dict[str, str] = field(default_factory=dict)
    like: str = ""  # the file that holds the points of its output, too
    everywhere: bool = False  # others are measured in one place only


@dataclass
class Row:
    """A conversion, and how many times the time of others it may take. Names are relative to the
    row's folder; an output that ends with a slash is a folder of files."""

    work: str
    make: Callable[[Path, Path], None]  # makes the input in a folder, with the tool's help
    output: str
    arguments: list[str]  # of the tool
    check: Callable[[Path], None]  # raises when the output is not what the input must give
    copied: str  # what `cp -r` copies beside it
    most: dict[str, float]  # times the time of cp, or of a rival
    rivals: tuple[Rival, ...] = ()
    scan: int = 2 * SIDE**2  # bytes of the raw points and intensities of the largest scan
    most_above: tuple[tuple[str, float], ...] = ()  # milliseconds above the time of a rival
    program: str = "Trelvane"


def most_memory(scan):
    """Bytes at the peak: one scan of so many, and all else."""
    return 32 * MIB + 1.1 * scan


def make_wave():
    noise = random.Random(1)
    return array("h", (round(9000 * math.sin(i / 300) + 500 * noise.random())
                       for i in range(2 * SIDE)))


WAVE = make_wave()


def wavy_row(j):
    """The raw heights of row j: the wave, shifted from row to row, with a round hole."""
    shift = 37 * j % SIDE
    row = WAVE[shift:shift + SIDE]
    half = math.isqrt(max(500**2 - (j - SIDE // 2) ** 2, 0))
    row[SIDE // 2 - half:SIDE // 2 + half] = array("h", [INVALID]) * (2 * half)
    return row


def write_scan(path, width, rows):
    write_sur(path, width, rows, (0.01, 0.01, 0.001), (0.0, 0.0, 0.0))


def heights(side=SIDE):
    """The bytes of a scan of side x side heights."""
    samples = array("h", (raw for j in range(side) for raw in wavy_row(j)[:side]))
    if sys.byteorder == "big":
        samples.byteswap()
    return samples.tobytes()


def tell_starts(file, *starts):
    """Tells the bare program where points stand in the file."""
    Path(f"{file}.starts").write_text(" ".join(map(str, starts)))


def find_starts(file, points):
    """The same, of each scan with these points."""
    starts = []
    with open(file, "rb") as opened, mmap(opened.fileno(), 0, access=ACCESS_READ) as data:
        start = data.find(points)
        while start >= 0:
            starts.append(start)
            start = data.find(points, start + len(points))
    if not starts:
        raise ValueError(f"{file.name} does not hold the scan's heights")
    tell_starts(file, *starts)


def make_sur(folder, _tool):
    write_scan(folder / "scan.sur", SIDE, [wavy_row(j) for j in range(SIDE)])
    tell_starts(folder / "scan.sur", 512)


def make_point(folder, _tool):
    write_scan(folder / "scan.sur", 1, [array("h", [7])])


def make_large_sur(folder, side):
    """The wave again and again, with the header's numbers of lines and points set afterwards."""
    block = 256  # lines
    row = (wavy_row(0) * (side // SIDE + 1))[:side]
    write_scan(folder / "scan.sur", side, [row] * block)
    with open(folder / "scan.sur", "r+b") as file:
        samples = file.read()[512:]
        for _ in range(side // block - 1):
            file.write(samples)
        file.seek(112)
        file.write(struct.pack("<2i", side, side * side))


def make_long_sur(folder, _tool):
    """The wave along 16384 points, with a spike of one point."""
    rows = [wavy_row(0) * 4 for _ in range(2048)]
    rows[700][9000] = 30_000
    write_scan(folder / "scan.sur", 4 * SIDE, rows)


def make_frames(folder, frames):
    write_scan(folder / "small.sur", 256, [wavy_row(j)[:256] for j in range(256)])
    (folder / "scans").mkdir()
    for frame in range(frames):
        shutil.copy(folder / "small.sur", folder / f"scans/scan-Frame-{frame:04d}_Top.sur")


def make_rep(folder, tool):
    make_sur(folder, tool)
    subprocess.run([tool, "-i", "scan.sur", "-o", "scan.rep"], cwd=folder, check=True, **QUIET)
    find_starts(folder / "scan.rep", heights())


def make_srf(folder, tool):
    make_rep(folder, tool)
    subprocess.run([tool, "-i", "scan.rep", "-o", "scan.srf"], cwd=folder, check=True, **QUIET)
    tell_starts(folder / "scan.srf", 60)


def cloud_row(j):
    """x, y and z of the points of row j as 32-bit floats, NaN in the hole."""
    row = array("f", bytes(12 * SIDE))
    row[0::3] = array("f", (0.01 * i for i in range(SIDE)))
    row[1::3] = array("f", [0.01 * j]) * SIDE
    row[2::3] = array("f", (math.nan if raw == INVALID else 0.001 * raw for raw in wavy_row(j)))
    return row


def make_pcd(folder, _tool):
    with open(folder / "scan.pcd", "wb") as file:
        file.write(b"VERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\n"
                   + f"WIDTH {SIDE}\nHEIGHT {SIDE}\nVIEWPOINT 0 0 0 1 0 0 0\n".encode()
                   + f"POINTS {SIDE * SIDE}\nDATA binary\n".encode())
        tell_starts(folder / "scan.pcd", file.tell())
        for j in range(SIDE):
            cloud_row(j).tofile(file)


def make_csv_input(folder, tool):
    make_sur(folder, tool)
    shutil.copytree(EXAMPLES / "config", folder / "config")
    subprocess.run([tool, "-i", "scan.sur", "-o", "scan.ovrec"], cwd=folder, check=True, **QUIET)
    (folder / "heights").write_bytes(heights())


def link_scans(folder, scan, frames):
    """A folder of many frames that all are the same scan, and what an archive of them needs."""
    (folder / "scans").mkdir()
    for frame in range(frames):
        (folder / f"scans/scan-Frame-{frame:04d}_Top.sur").symlink_to(folder / scan)
    shutil.copytree(EXAMPLES / "config", folder / "config")


def make_archive(folder, tool, scan, side, frames):
    link_scans(folder, scan, frames)
    subprocess.run([tool, "-i", "scans", "-o", "scans.ovrec"], cwd=folder, check=True, **QUIET)
    find_starts(folder / "scans.ovrec", heights(side))


def make_large_archive(folder, tool):
    make_sur(folder, tool)
    make_archive(folder, tool, "scan.sur", SIDE, 32)


def make_long_archive(folder, tool):
    write_scan(folder / "small.sur", 512, [wavy_row(j)[:512] for j in range(512)])
    make_archive(folder, tool, "small.sur", 512, 1000)
    (folder / "files").mkdir()
    for frame in range(1000):
        shutil.copy(folder / "small.sur", folder / f"files/scan-{frame}.sur")


def check_recording(folder):
    data = (folder / "scan.rep").read_bytes()
    if not (data.startswith(MCAP_MAGIC) and data.endswith(MCAP_MAGIC)):
        raise ValueError("is not a recording")
    points = heights()
    if not 0 <= len(data) - len(points) < 64 * 1024:
        raise ValueError(f"has {len(data)} bytes")
    if points not in data:
        raise ValueError("does not hold the scan's heights")


def same(one, other):
    if one.read_bytes() != other.read_bytes():
        raise ValueError(f"{one.name} is not {other.name}")


def check_srf(folder):
    same(folder / "back.srf", folder / "scan.srf")
    if (folder / "back.srf").read_bytes()[60:] != heights() + b"\0":
        raise ValueError("does not hold the scan's heights")


def check_cloud(folder):
    """x from 0 to 40.95 stands on the raw values from -32767 to 32767."""
    data = (folder / "scan.rep").read_bytes()
    row = cloud_row(0)
    lowest, highest = row[0], row[-3]
    offset, scale = array("f", [highest + lowest])[0] * 0.5, (highest - lowest) * 0.5 / 32767
    raws = [(x - offset) / scale for x in row[0::3]]
    expected = array("h", (int(raw + math.copysign(0.5, raw)) for raw in raws))
    first = data.find(struct.pack("<2h", expected[0], -32767))  # y is lowest in row 0
    found = array("h", data[first:first + 6 * SIDE])[0::3]
    if first < 0 or found != expected:
        raise ValueError("does not hold the quantised points")


def check_points(folder):
    points = (folder / "back.pcd").read_bytes()[-12 * SIDE * SIDE:]
    for j in (0, 1, SIDE // 2, SIDE - 1):
        found = array("f", points[12 * SIDE * j:12 * SIDE * (j + 1)])
        for raw, x, z, wanted in zip(wavy_row(j), found[0::3], found[2::3], cloud_row(j)[0::3]):
            valid = abs(x - wanted) < 1e-5 and abs(z - 0.001 * raw) < 1e-5
            if not (math.isnan(x) and math.isnan(z) if raw == INVALID else valid):
                raise ValueError(f"row {j} is wrong")


def check_surface(folder):
    same(folder / "back.sur", folder / "scan.sur")


def check_csv(folder):
    """The heights are the same cells in the tool's file, in the bare loop's and in the wave."""
    cells = {raw: f"{raw * 0.001:.6g}".encode() for raw in range(-32767, 32768)}
    cells[INVALID] = b""
    lines = (folder / "scan.csv").read_bytes().split(b"\r\n")
    if lines[-2:] != [b"End", b""]:
        raise ValueError("has no end")
    with open(folder / "bare.csv", "rb") as bare:
        for j, line in enumerate(lines[-2 - SIDE:-2]):
            y, _, row = line.partition(b",")
            if y != f"{j * 0.01:.6g}".encode() or row != b",".join(map(cells.get, wavy_row(j))):
                raise ValueError(f"row {j} is wrong")
            if bare.readline() != row + b"\r\n":
                raise ValueError(f"row {j} of the bare loop is another")


def check_frames(folder):
    names = list((folder / "frames").iterdir())
    if len(names) != 1000:
        raise ValueError(f"has {len(names)} files")
    for name in names:
        same(name, folder / "small.sur")


def check_like(rival, folder):
    """Points stand behind a header of 512 bytes."""
    output = folder / rival.output
    whole = (folder / rival.like).read_bytes()
    for file in output.iterdir() if output.is_dir() else [output]:
        points = file.read_bytes()[512:]
        if len(points) < 512 or points not in whole:
            raise ValueError(f"{file.name} does not hold points of {rival.like}")


def missing(rival, package):
    print(f"bench: without {rival}, since {package} is missing", file=sys.stderr)
    return ()


def numpy_rival(name, script, arguments, output):
    """Debian's numpy is only there for Debian's interpreter."""
    for python in (sys.executable, "/usr/bin/python3"):
        found = subprocess.run([python, "-c", "import numpy"], stderr=subprocess.DEVNULL, **QUIET,
                               check=False) if os.path.exists(python) else None
        if found is not None and found.returncode == 0:
            return (Rival(name, [python, str(BENCH / script), *arguments, output], output, 3),)
    return missing(name, "python3-numpy")


def bare_rival(work, source, side, *outputs, output=None, like=""):
    """Does the work on the source, and nothing else."""
    return Rival("bare", ["bare", work, source, f"{source}.starts", str(side), *outputs],
                 output or "".join(outputs), like=like, everywhere=True)


def gwyddion_rival():
    """Needs a display, though it shows nothing."""
    program = shutil.which("gwyddion")
    if program is None or "DISPLAY" not in os.environ:
        return missing("gwyddion", "gwyddion, xvfb or xauth")
    return (Rival("gwyddion to .gwy", [program, "--convert-to-gwy=scan.gwy", "scan.sur"],
                  "scan.gwy", 3),)


def pcl_rival():
    program = shutil.which("pcl_convert_pcd_ascii_binary")
    if program is None:
        return missing("pcl_convert_pcd_ascii_binary", "pcl-tools")
    return (Rival("pcl_convert_pcd_ascii_binary", [program, "scan.pcd", "pcl.pcd", "1"], "pcl.pcd",
                  3),)


def check_point(folder):
    data = (folder / "scan.rep").read_bytes()
    if not (data.startswith(MCAP_MAGIC) and data.endswith(MCAP_MAGIC)):
        raise ValueError("is not a recording")


def check_picture(folder):
    data = (folder / "scan.png").read_bytes()
    if not data.startswith(b"\x89PNG") or struct.unpack(">I", data[16:20]) != (1000,):
        raise ValueError("is no picture of 1000 pixels in width")


def check_page(folder):
    page = (folder / "scan.html").read_bytes()
    if page.count(b'id="array') < 3 or b'"reduced":true' not in page:
        raise ValueError("is no page of a reduced scan")


def check_exit_code(_folder):
    """A report has no file; a run that fails ends the measurement."""


def make_rows():
    true = Rival("true", [shutil.which("true")], "", everywhere=True)
    bare_cells = Rival("bare loop over ready cells",
                       ["bare_cells", "heights", str(SIDE), "bare.csv"], "bare.csv",
                       everywhere=True)
    near = {"bare": 1.3, "cp": 2}
    return [
        Row("1 x 1 .sur to .rep", make_point, "scan.rep", ["-i", "scan.sur", "-o", "scan.rep"],
            check_point, "scan.sur", {}, (true,), scan=2, most_above=(("true", 4),)),
        Row(f".sur ({SIDE} x {SIDE}, 33 MB) to .rep", make_sur, "scan.rep",
            ["-i", "scan.sur", "-o", "scan.rep"], check_recording, "scan.sur", near,
            (bare_rival("record", "scan.sur", SIDE, "bare", like="scan.sur"),
             Rival("Trelvane, TRELVANE_SYNC=1", ["Trelvane", "-i", "scan.sur", "-o", "sync.rep"],
                   "sync.rep", environment={"TRELVANE_SYNC": "1"}),
             *numpy_rival("numpy to .npy", "save.py", ["scan.sur", str(SIDE)], "scan.npy"),
             *gwyddion_rival())),
        Row(".rep to that .sur", make_rep, "back.sur", ["-i", "scan.rep", "-o", "back.sur"],
            check_surface, "scan.sur", near,
            (bare_rival("surface", "scan.rep", SIDE, "bare", like="scan.sur"),)),
        Row(f".srf ({SIDE} x {SIDE}, 33 MB) to .rep", make_srf, "scan.rep",
            ["-i", "scan.srf", "-o", "scan.rep"], check_recording, "scan.srf", near,
            (bare_rival("record", "scan.srf", SIDE, "bare", like="scan.srf"),)),
        Row(".rep to that .srf", make_srf, "back.srf", ["-i", "scan.rep", "-o", "back.srf"],
            check_srf, "scan.srf", near,
            (bare_rival("frames", "scan.rep", SIDE, "bare", like="scan.srf"),)),
        Row(f".pcd ({SIDE} x {SIDE}, 201 MB) to .rep", make_pcd, "scan.rep",
            ["-i", "scan.pcd", "-o", "scan.rep"], check_cloud, "scan.pcd",
            {"bare": 1.3, "cp": 2.5},
            (bare_rival("quantize", "scan.pcd", SIDE, "bare", like="scan.rep"), *pcl_rival()),
            scan=6 * SIDE**2),
        Row(f".rep ({SIDE} x {SIDE} heights) to .pcd (201 MB)", make_rep, "back.pcd",
            ["-i", "scan.rep", "-o", "back.pcd"], check_points, "back.pcd",
            {"bare": 1.3, "cp": 1.7},
            (bare_rival("cloud", "scan.rep", SIDE, "bare", like="back.pcd"),)),
        Row("one frame of a 1 GiB .ovrec to .sur", make_large_archive, "back.sur",
            ["-i", "scans.ovrec", "-f", "20", "-o", "back.sur"], check_surface, "scans.ovrec",
            {"cp": 0.8},
            (bare_rival("frames", "scans.ovrec", SIDE, "bare", like="scans.ovrec"),)),
        Row("1000 frames of 512 x 512 in an .ovrec to .sur files", make_long_archive, "frames/",
            ["-i", "scans.ovrec", "-a", "-o", "frames/frame.sur"], check_frames, "files",
            {"cp": 1.5},
            (bare_rival("frames", "scans.ovrec", 512, *(f"bare/{i}" for i in range(1000)),
                        output="bare/", like="scans.ovrec"),), scan=2 * 512**2),
        Row(f".ovrec ({SIDE} x {SIDE}) to .csv", make_csv_input, "scan.csv",
            ["-i", "scan.ovrec", "-o", "scan.csv"], check_csv, "scan.ovrec",
            {"bare loop over ready cells": 1.2, "numpy.savetxt": 1 / 40},
            (bare_cells, *numpy_rival("numpy.savetxt", "savetxt.py", ["heights", str(SIDE)],
                                      "numpy.csv"))),
        Row("report of a 1 GiB .ovrec", make_large_archive, "", ["scans.ovrec"],
            check_exit_code, "scans.ovrec", {"cp": 0.6},
            (bare_rival("report", "scans.ovrec", SIDE),), program="trelvane-inspect"),
        Row(f".sur ({SIDE} x {SIDE}) to .png", make_sur, "scan.png",
            ["--png", "scan.png", "scan.sur"], check_picture, "scan.sur", {}, (true,),
            most_above=(("true", 1000),), program="trelvane-inspect"),
        Row(f"figures of a .sur ({SIDE} x {SIDE})", make_sur, "", ["--figures", "scan.sur"],
            check_exit_code, "scan.sur", {}, (true,), most_above=(("true", 300),),
            program="trelvane-inspect"),
        Row("page of a .sur (16384 x 2048)", make_long_sur, "scan.html",
            ["--html", "scan.html", "scan.sur"], check_page, "scan.sur", {}, (true,),
            scan=2 * 16384 * 2048, most_above=(("true", 1000),), program="trelvane-inspect"),
    ]


@dataclass
class Growth:
    """A conversion of inputs that grow: the time for a point stays."""

    work: str
    make: Callable[[Path, int], None]
    sizes: dict[int, tuple[int, int]]  # what is made: all points, and bytes of a scan
    arguments: list[str]
    output: str


GROWTHS = [
    Growth(".sur to .rep", make_large_sur,
           {side: (side**2, 2 * side**2) for side in (1024, 2048, 4096, 8192, 16384)},
           ["-i", "scan.sur", "-o", "scan.rep"], "scan.rep"),
    Growth("folder of 256 x 256 .sur to .rep", make_frames,
           {frames: (frames << 16, 2 << 16) for frames in (250, 500, 1000, 2000)},
           ["-i", "scans", "-o", "scans.rep"], "scans.rep"),
]
