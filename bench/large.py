# SPDX-License-Identifier: MIT
"""Recordings far larger than the memory that programs may use: what can be done with them."""

import shutil
import sys
import tempfile
from pathlib import Path

from conversions import (MIB, SIDE, check_exit_code, link_scans, make_sur, most_memory, same,
                         wavy_row, write_scan)
from places import find_places
from processes import Failed, in_child, run

FRAMES = 256  # of 32 MiB each
ODD = 200  # this one is another than that 4 GiB before it
ADDRESS_SPACE = 256 * MIB
ROOM = 20 << 30  # scans, one recording and all frames of it


def make_scans(folder):
    make_sur(folder, None)
    write_scan(folder / "odd.sur", SIDE, [wavy_row(j + 1) for j in range(SIDE)])
    link_scans(folder, "scan.sur", FRAMES)
    odd = folder / f"scans/scan-Frame-{ODD:04d}_Top.sur"
    odd.unlink()
    odd.symlink_to(folder / "odd.sur")


def check_frame(folder):
    same(folder / "back.sur", folder / "odd.sur")


def check_frames(folder):
    names = sorted((folder / "frames").iterdir())
    if len(names) != FRAMES:
        raise ValueError(f"has {len(names)} files")
    for i, name in enumerate(names):
        same(name, folder / ("odd.sur" if i == ODD else "scan.sur"))
        name.unlink()


def steps(recording):
    """What is done, the command, its output and how that is checked."""
    return [
        ("one frame to .sur", ["Trelvane", "-i", recording, "-f", str(ODD), "-o", "back.sur"],
         "back.sur", check_frame),
        (f"{FRAMES} frames to .sur", ["Trelvane", "-i", recording, "-a", "-o", "frames/frame.sur"],
         "frames/", check_frames),
        ("report", ["trelvane-inspect", recording], "", check_exit_code),
        ("--check", ["trelvane-inspect", "--check", recording], "", check_exit_code),
    ]


def measure_step(programs, folder, command, output, check):
    """Seconds, peak memory and whether both the output and the memory are as they must be."""
    try:
        seconds, peak = run([programs / command[0], *command[1:]], output, folder,
                            address_space=ADDRESS_SPACE)
        in_child(check, folder)
    except Failed as failure:
        print(f"bench: {failure}", file=sys.stderr)
        return "| | | **failed** |", False
    good = peak <= most_memory(2 * SIDE**2)
    return (f"| {seconds:.1f} | {peak / MIB:.0f} | {'passed' if good else '**too much memory**'} |",
            good)


def measure_large(programs):
    """Prints a table; tells whether all passed."""
    place = find_places(ROOM).get("disk")
    if place is None:
        return False
    passed = True
    print(f"Address space {ADDRESS_SPACE / MIB:.0f} MiB, peak at most "
          f"{most_memory(2 * SIDE**2) / MIB:.0f} MiB.\n\n"
          "| recording | work | seconds | peak MiB | |\n|---|---|---:|---:|---|")
    with tempfile.TemporaryDirectory(prefix="trelvane-bench-", dir=place) as name:
        folder = Path(name)
        in_child(make_scans, folder)
        for recording in ("scans.rep", "scans.ovrec"):
            run([programs / "Trelvane", "-i", "scans", "-o", recording], recording, folder)
            gib = (folder / recording).stat().st_size / 1024**3
            for work, command, output, check in steps(recording):
                text, good = measure_step(programs, folder, command, output, check)
                passed = passed and good
                print(f"| {recording}, {gib:.2f} GiB | {work} {text}", flush=True)
            (folder / recording).unlink()
            shutil.rmtree(folder / "frames", ignore_errors=True)
    return passed
