#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Times whole conversions against `cp` of the scan file and against a bare read and write.

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
class Row:
    """One line of the table: a conversion, and how many times the time of `cp` it may take. Names
    are relative to the row's folder; an output that ends with a slash is a folder of files."""

    work: str
    make: Callable[[Path, Path], None]  # makes the input in a folder, with the tool's help
    input: str
    output: str
    arguments: list[str]  # of the tool
    check: Callable[[Path], None]  # raises when the output is not what the input must give
    copied: str  # what `cp -r` copies beside it
    most_cp: float
    bare_copy: bool = False  # also a bare read and write of the input

    def most_memory(self, folder):
        """Bytes at the peak: 2.5 x (input + output) + 32 MiB."""
        return 2.5 * (size_of(folder / self.input) + size_of(folder / self.output)) + 32 * MIB


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


def check_frames(folder):
    names = list((folder / "frames").iterdir())
    if len(names) != 1000:
        raise ValueError(f"has {len(names)} files")
    for name in names:
        same(name, folder / "small.sur")


ROWS = [
    Row(f".sur ({SIDE} x {SIDE}, 33 MB) to .rep", make_sur, "scan.sur", "scan.rep",
        ["-i", "scan.sur", "-o", "scan.rep"], check_recording, "scan.sur", most_cp=3,
        bare_copy=True),
    Row(".rep to that .sur", make_rep, "scan.rep", "back.sur",
        ["-i", "scan.rep", "-o", "back.sur"], check_surface, "scan.sur", most_cp=3),
    Row("one frame of a 1 GiB .ovrec to .sur", make_large_archive, "scans.ovrec", "back.sur",
        ["-i", "scans.ovrec", "-f", "20", "-o", "back.sur"], check_surface, "scans.ovrec",
        most_cp=3),
    Row("1000 frames of 512 x 512 in an .ovrec to .sur files", make_long_archive, "scans.ovrec",
        "frames/", ["-i", "scans.ovrec", "-a", "-o", "frames/frame.sur"], check_frames, "files",
        most_cp=4),
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


def measure(row, programs, folder, runs):
    tool = programs / "Trelvane"
    in_child(row.make, folder, tool)
    commands = {"Trelvane": ([tool, *row.arguments], row.output)}
    if row.bare_copy:
        bare = [programs / "bare_copy", row.input, "copy"]
        commands["bare read and write"] = (bare, "copy")
    commands["cp"] = (["cp", "-r", row.copied, "copy"], "copy")
    for command in commands.values():  # warms the caches
        run(*command, folder)
    in_child(row.check, folder)
    most_memory = row.most_memory(folder)

    samples = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            samples[name].append(run(*command, folder))

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
    } for name in commands]
    first = results[0]
    first["most_times_cp"] = row.most_cp
    first["most_peak_mib"] = most_memory / MIB
    first["met"] = first["times_cp"] <= row.most_cp and first["peak_mib"] <= first["most_peak_mib"]
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
            goal = "at most {most_times_cp:g} x cp and {most_peak_mib:.0f} MiB".format(**line)
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
    for row in ROWS:
        with tempfile.TemporaryDirectory(prefix="trelvane-bench-") as folder:
            results += measure(row, options.programs.resolve(), Path(folder), options.runs)
    facts = machine()
    print_table(facts, results, options.runs)
    if options.json:
        text = json.dumps({"machine": facts, "runs": options.runs, "results": results}, indent=2)
        options.json.write_text(text + "\n")


if __name__ == "__main__":
    main()
