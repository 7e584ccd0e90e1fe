# SPDX-License-Identifier: MIT
"""Times the Python package: each sample is the work of a fresh process, after its imports."""

import math
import os
import statistics
import subprocess
from dataclasses import dataclass, field

from conversions import BENCH, QUIET, SIDE, make_large_archive, missing
from processes import Failed, in_child

PYTHON = "/usr/bin/python3"  # Debian's numpy is only there for Debian's interpreter
SURFACE = f"every height of a .sur ({SIDE} x {SIDE})"
FRAME = "one frame of a 1 GiB .rep,"


@dataclass
class PythonRow:
    work: str
    name: str  # in heights.py
    file: str
    program: str = "trelvane"
    most: dict[str, float] = field(default_factory=dict)  # times the time of others
    most_ms: float = math.inf


def make_rows():
    rows = [PythonRow(SURFACE, "surface", "scan.sur", most={"numpy": 1.3}),
            PythonRow(SURFACE, "numpy", "scan.sur", "numpy.fromfile")]
    if subprocess.run([PYTHON, "-c", "import hyperspy"], stderr=subprocess.DEVNULL, check=False,
                      **QUIET).returncode == 0:
        rows[0].most["hyperspy"] = 0.1
        rows += [PythonRow(SURFACE, "hyperspy", "scan.sur", "hyperspy, first file"),
                 PythonRow(SURFACE, "hyperspy, second", "scan.sur", "hyperspy, second file")]
    else:
        missing("hyperspy", "python3-hyperspy")
    return [*rows, PythonRow(f"{FRAME} after the check", "frame", "scans.rep", most_ms=30),
            PythonRow(f"{FRAME} without the check", "unchecked", "scans.rep", most_ms=30)]


def make_recording(folder, tool):
    make_large_archive(folder, tool)
    subprocess.run([tool, "-i", "scans", "-o", "scans.rep"], cwd=folder, check=True, **QUIET)


def sample(name, file, folder, programs):
    """Seconds, and the sum of the heights."""
    environment = {**os.environ, "PYTHONPATH": str(BENCH.parent / "python"),
                   "TRELVANE_LIBRARY": str(programs / "library/libtrelvane.so.1")}
    child = subprocess.run([PYTHON, BENCH / "heights.py", name, file], cwd=folder, text=True,
                           env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                           check=False)
    if child.returncode != 0:
        raise Failed(f"heights.py {name} ended with {child.returncode}\n{child.stderr}")
    return [float(word) for word in child.stdout.split()]


def measure_python(kind, programs, folder, runs):
    in_child(make_recording, folder, programs / "Trelvane")
    rows = make_rows()
    seconds = {row.name: [] for row in rows}
    sums = {}
    for i in range(runs + 1):
        for row in rows:
            taken, sums[row.name] = sample(row.name, row.file, folder, programs)
            if i > 0:  # the first warms the caches
                seconds[row.name].append(taken)
    if max(sums.values()) - min(sums.values()) > 1e-4 * abs(sums["numpy"]):
        raise Failed(f"the heights differ: their sums are {sums}")
    median = {name: statistics.median(taken) for name, taken in seconds.items()}
    results = []
    for row in rows:
        line = {"work": f"{row.work}, {kind}", "program": row.program,
                "median_ms": 1e3 * median[row.name], "least_ms": 1e3 * min(seconds[row.name]),
                "most_ms": 1e3 * max(seconds[row.name]),
                "times_numpy": median[row.name] / median["numpy"]}
        goals = [f"{most:g} x {name} (is {median[row.name] / median[name]:.3g})"
                 for name, most in row.most.items()]
        goals += [f"{row.most_ms:g} ms"] * math.isfinite(row.most_ms)
        if goals:
            line["goal"] = "at most " + ", ".join(goals)
            line["met"] = line["median_ms"] <= row.most_ms and all(
                median[row.name] <= most * median[name] for name, most in row.most.items())
        results.append(line)
    return results


def print_python(results):
    print("\nPython, without imports:\n\n"
          "| work | program | median ms | least to most ms | x numpy | to reach | |\n"
          "|---|---|---:|---:|---:|---|---|")
    for line in results:
        met = "" if "met" not in line else "met" if line["met"] else "**not met**"
        print("| {work} | {program} | {median_ms:.1f} | {least_ms:.1f} to {most_ms:.1f} "
              "| {times_numpy:.2f} |".format(**line) + f" {line.get('goal', '')} | {met} |")
