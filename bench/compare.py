#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Times whole conversions against `cp` of the scan file, bare loops and other programs.

Started by scripts/bench with the folder that holds the programs. Each conversion is checked once
before it is timed; then the programs take turns, so that a busy moment of the machine meets all.
"""

import argparse
import json
import math
import multiprocessing
import os
import platform
import random
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from array import array
from dataclasses import dataclass
from pathlib import Path
from typing import Callable

sys.dont_write_bytecode = True
EXAMPLES = Path(__file__).resolve().parents[1] / "examples"
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


@dataclass
class Row:
    """A conversion, and how many times the time of others it may take. Names are relative to the
    row's folder; an output that ends with a slash is a folder of files."""

    work: str
    make: Callable[[Path, Path], None]  # makes the input in a folder, with the tool's help
    input: str
    output: str
    arguments: list[str]  # of the tool
    check: Callable[[Path], None]  # raises when the output is not what the input must give
    copied: str  # what `cp -r` copies beside it
    most: dict[str, float]  # times the time of cp, or of a rival
    rivals: tuple[Rival, ...] = ()
    memory: tuple[float, float] = (2.5, 2.5)  # times input and output, at the peak

    def most_memory(self, folder):
        """Bytes at the peak, with 32 MiB for everything else."""
        sizes = size_of(folder / self.input), size_of(folder / self.output)
        return sum(times * size for times, size in zip(self.memory, sizes)) + 32 * MIB


def size_of(path):
    files = path.iterdir() if path.is_dir() else [path]
    return sum(file.stat().st_size for file in files)


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


def make_sur(folder, _tool):
    rows = [wavy_row(j) for j in range(SIDE)]
    write_sur(folder / "scan.sur", SIDE, rows, (0.01, 0.01, 0.001), (0.0, 0.0, 0.0))


def make_rep(folder, tool):
    make_sur(folder, tool)
    subprocess.run([tool, "-i", "scan.sur", "-o", "scan.rep"], cwd=folder, check=True, **QUIET)


def make_csv_input(folder, tool):
    make_sur(folder, tool)
    shutil.copytree(EXAMPLES / "config", folder / "config")
    subprocess.run([tool, "-i", "scan.sur", "-o", "scan.ovrec"], cwd=folder, check=True, **QUIET)
    with open(folder / "heights", "wb") as heights:
        for j in range(SIDE):
            wavy_row(j).tofile(heights)


def make_archive(folder, tool, scan, frames):
    """An archive of many frames that all hold the same scan."""
    (folder / "scans").mkdir()
    for frame in range(frames):
        (folder / f"scans/scan-Frame-{frame:04d}_Top.sur").symlink_to(folder / scan)
    shutil.copytree(EXAMPLES / "config", folder / "config")
    subprocess.run([tool, "-i", "scans", "-o", "scans.ovrec"], cwd=folder, check=True, **QUIET)


def make_large_archive(folder, tool):
    make_sur(folder, tool)
    make_archive(folder, tool, "scan.sur", 32)


def make_long_archive(folder, tool):
    rows = [row[:512] for row in map(wavy_row, range(512))]
    write_sur(folder / "small.sur", 512, rows, (0.01, 0.01, 0.001), (0.0, 0.0, 0.0))
    make_archive(folder, tool, "small.sur", 1000)
    (folder / "files").mkdir()
    for frame in range(1000):
        shutil.copy(folder / "small.sur", folder / f"files/scan-{frame}.sur")


def check_recording(folder):
    data = (folder / "scan.rep").read_bytes()
    if not (data.startswith(MCAP_MAGIC) and data.endswith(MCAP_MAGIC)):
        raise ValueError("is not a recording")
    if not 0 <= len(data) - size_of(folder / "scan.sur") < 64 * 1024:
        raise ValueError(f"has {len(data)} bytes")
    samples = array("h", (raw for j in range(SIDE) for raw in wavy_row(j)))
    if sys.byteorder == "big":
        samples.byteswap()
    if samples.tobytes() not in data:
        raise ValueError("does not hold the scan's heights")


def same(one, other):
    if one.read_bytes() != other.read_bytes():
        raise ValueError(f"{one.name} is not {other.name}")


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


def python_with_numpy():
    """Debian's numpy is only there for Debian's interpreter."""
    for python in (sys.executable, "/usr/bin/python3"):
        found = subprocess.run([python, "-c", "import numpy"], stderr=subprocess.DEVNULL, **QUIET,
                               check=False) if os.path.exists(python) else None
        if found is not None and found.returncode == 0:
            return python
    print("bench: without numpy.savetxt, since python3-numpy is missing", file=sys.stderr)
    return None


def csv_rivals():
    bare = Rival("bare loop over ready cells", ["bare_cells", "heights", str(SIDE), "bare.csv"],
                 "bare.csv")
    python = python_with_numpy()
    if python is None:
        return (bare,)
    script = str(Path(__file__).resolve().parent / "savetxt.py")
    return bare, Rival("numpy.savetxt", [python, script, "heights", str(SIDE), "numpy.csv"],
                       "numpy.csv", most_runs=3)


def make_rows():
    return [
        Row(f".sur ({SIDE} x {SIDE}, 33 MB) to .rep", make_sur, "scan.sur", "scan.rep",
            ["-i", "scan.sur", "-o", "scan.rep"], check_recording, "scan.sur", {"cp": 3},
            (Rival("bare read and write", ["bare_copy", "scan.sur", "copy"], "copy"),)),
        Row(".rep to that .sur", make_rep, "scan.rep", "back.sur",
            ["-i", "scan.rep", "-o", "back.sur"], check_surface, "scan.sur", {"cp": 3}),
        Row("one frame of a 1 GiB .ovrec to .sur", make_large_archive, "scans.ovrec", "back.sur",
            ["-i", "scans.ovrec", "-f", "20", "-o", "back.sur"], check_surface, "scans.ovrec",
            {"cp": 3}),
        Row("1000 frames of 512 x 512 in an .ovrec to .sur files", make_long_archive,
            "scans.ovrec", "frames/", ["-i", "scans.ovrec", "-a", "-o", "frames/frame.sur"],
            check_frames, "files", {"cp": 4}),
        Row(f".ovrec ({SIDE} x {SIDE}) to .csv", make_csv_input, "scan.ovrec", "scan.csv",
            ["-i", "scan.ovrec", "-o", "scan.csv"], check_csv, "scan.ovrec",
            {"bare loop over ready cells": 1.5, "numpy.savetxt": 1 / 20}, csv_rivals(),
            memory=(3, 1.2)),
    ]


def in_child(function, *arguments):
    """Calls the function in a process of its own: the peak memory that the system reports for a
    program is never less than what the process that started it once had."""
    child = multiprocessing.Process(target=function, args=arguments)
    child.start()
    child.join()
    if child.exitcode != 0:
        sys.exit("bench: gave up")


def clear(path, is_folder):
    """Makes room for an output: a folder is there, and empty."""
    if path.is_dir():
        shutil.rmtree(path)
    path.unlink(missing_ok=True)
    if is_folder:
        path.mkdir()


def run(command, output, folder):
    """Runs the command, which makes `output`; gives its seconds and its peak memory in bytes."""
    clear(folder / output, output.endswith("/"))
    with open(folder / "console.txt", "wb") as console:
        start = time.perf_counter()
        child = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=console)
        _, status, usage = os.wait4(child.pid, 0)
        seconds = time.perf_counter() - start
        child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        text = (folder / "console.txt").read_text(errors="replace")
        sys.exit(f"bench: {command} ended with {child.returncode}\n{text}")
    return seconds, usage.ru_maxrss * 1024


def in_folder(command, programs):
    return [programs / command[0] if "/" not in command[0] else command[0], *command[1:]]


def measure(row, programs, folder, runs):
    tool = programs / "Trelvane"
    in_child(row.make, folder, tool)
    entries = [Rival("Trelvane", ["Trelvane", *row.arguments], row.output), *row.rivals,
               Rival("cp", [shutil.which("cp"), "-r", row.copied, "copy"], "copy")]
    for entry in entries:  # warms the caches
        run(in_folder(entry.command, programs), entry.output, folder)
    in_child(row.check, folder)
    most_memory = row.most_memory(folder)

    samples = {entry.name: [] for entry in entries}
    for i in range(runs):
        for entry in entries:
            if i < entry.most_runs:
                sample = run(in_folder(entry.command, programs), entry.output, folder)
                samples[entry.name].append(sample)

    seconds = {name: [s for s, _ in taken] for name, taken in samples.items()}
    median = {name: statistics.median(taken) for name, taken in seconds.items()}
    results = [{
        "work": row.work,
        "program": name,
        "median_ms": 1e3 * median[name],
        "least_ms": 1e3 * min(seconds[name]),
        "most_ms": 1e3 * max(seconds[name]),
        "times_cp": median[name] / median["cp"],
        "peak_mib": max(peak for _, peak in samples[name]) / MIB,
    } for name in samples]
    first = results[0]
    first["most_peak_mib"] = most_memory / MIB
    first["goals"] = {name: {"most_times": most, "times": median["Trelvane"] / median[name]}
                      for name, most in row.most.items() if name in median}
    first["met"] = (first["peak_mib"] <= first["most_peak_mib"]
                    and all(g["times"] <= g["most_times"] for g in first["goals"].values()))
    return results


def first_line(path, prefix=""):
    try:
        lines = Path(path).read_text().splitlines()
    except OSError:
        return "unknown"
    return next((line[len(prefix):].strip(" \t:") for line in lines if line.startswith(prefix)),
                "unknown")


def machine():
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
    return {
        "processor": first_line("/proc/cpuinfo", "model name"),
        "cores": os.cpu_count(),
        "memory_gib": round(memory / 1024**3),
        "kernel": platform.release(),
        "large_pages": first_line("/sys/kernel/mm/transparent_hugepage/enabled"),
    }


def print_table(machine_facts, results, runs):
    print("Machine: {processor}, {cores} cores, {memory_gib} GiB; kernel {kernel}, "
          "transparent large pages: {large_pages}. ".format(**machine_facts)
          + f"Median of {runs} runs.\n")
    print("| work | program | median ms | least to most ms | x cp | peak MiB | to reach | |")
    print("|---|---|---:|---:|---:|---:|---|---|")
    for line in results:
        goal, met = "", ""
        if "met" in line:
            goals = [f"{goal['most_times']:g} x {name}" + ("" if name == "cp" else
                                                          f" (is {goal['times']:.3g})")
                     for name, goal in line["goals"].items()]
            goal = "at most " + ", ".join(goals) + f" and {line['most_peak_mib']:.0f} MiB"
            met = "met" if line["met"] else "**not met**"
        print("| {work} | {program} | {median_ms:.1f} | {least_ms:.1f} to {most_ms:.1f} "
              "| {times_cp:.2f} | {peak_mib:.0f} |".format(**line) + f" {goal} | {met} |")


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__.splitlines()[0])
    parser.add_argument("programs", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--runs", type=int, default=15, help="runs of each program (15)")
    parser.add_argument("--json", type=Path, help="also writes the results to this file")
    options = parser.parse_args()

    results = []
    for row in make_rows():
        with tempfile.TemporaryDirectory(prefix="trelvane-bench-") as folder:
            results += measure(row, options.programs.resolve(), Path(folder), options.runs)
    facts = machine()
    print_table(facts, results, options.runs)
    if options.json:
        text = json.dumps({"machine": facts, "runs": options.runs, "results": results}, indent=2)
        options.json.write_text(text + "\n")


if __name__ == "__main__":
    main()
