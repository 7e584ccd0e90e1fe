#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Ends runs at random moments and looks at what is there: an output must be what it was before or
whole, and only a run that was killed outright may leave a part of one, under a name of its own.

Started by tests/faults/run with the folder that holds the programs.
"""

import os
import random
import signal
import subprocess
import sys
import tempfile
import time
from array import array
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from run import make_inputs, scratch

SIGNALS = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL]
ROUNDS = 12  # for each signal and kind of output
SIDE = 700  # rows and columns of the scans: long enough a run to be met while it writes
EARLIER = b"of yesterday"


def make_large_inputs(program, folder):
    """A surface, and what the tool makes of it."""
    make_inputs(program, folder)
    sys.path.insert(0, str(folder))
    from sur_file import write_sur
    rows = [array("h", (i * j % 20000 for i in range(SIDE))) for j in range(SIDE)]
    write_sur(folder / "large.sur", SIDE, rows, (0.1, 0.1, 0.001), (0, 0, 0))
    for output in ("large.rep", "large.ovrec"):
        subprocess.run([program, "-i", "large.sur", "-o", output], cwd=folder, check=True,
                       stdout=subprocess.DEVNULL)
    subprocess.run([program, "-i", "large.rep", "-o", "large.pcd"], cwd=folder, check=True,
                   stdout=subprocess.DEVNULL)


def look(command, names, inputs, ended_by=None, after=0.0):
    """Runs in a folder with outputs of yesterday: exit code, seconds, outputs, other files."""
    with scratch(inputs) as folder:
        for name in names:
            (folder / name).write_bytes(EARLIER)
        start = time.monotonic()
        with subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL) as process:
            if ended_by:
                time.sleep(after)
                process.send_signal(ended_by)
            code = process.wait(60)
        seconds = time.monotonic() - start
        known = {*names, "log.txt"} | {source.name for source in inputs.iterdir()}
        others = {file.name for file in folder.iterdir()} - known
        return code, seconds, [(folder / name).read_bytes() for name in names], others


def kill(command, names, inputs):
    """All rounds of one command: how many ended early, how many left a part, what is wrong."""
    code, seconds, whole, others = look(command, names, inputs)
    problems = [] if code == 0 and not others else [f"without a signal: {code}, {others}"]
    early = parts = 0
    for ended_by in SIGNALS * ROUNDS:
        code, _, held, others = look(command, names, inputs, ended_by,
                                     random.uniform(0, 1.1 * seconds))
        early += code != 0
        parts += len(others)
        if code not in (0, -ended_by) or (code == 0 and held != whole):
            problems.append(f"{ended_by.name}: exit code {code}")
        if any(now not in (EARLIER, then) for now, then in zip(held, whole)):
            problems.append(f"{ended_by.name}: an output is neither the earlier one nor whole")
        allowed = ended_by == signal.SIGKILL and len(others) == 1
        if others and not (allowed and others.pop().endswith(".partial")):
            problems.append(f"{ended_by.name}: {others} is left")
    return early, parts, problems


def race(program, inputs):
    """Two runs that write one name at the same time."""
    problems = []
    commands = [[program, "-i", name, "-o", "new.rep"] for name in ("large.sur", "part.srf")]
    wholes = [look(command, ["new.rep"], inputs)[2][0] for command in commands]
    for _ in range(ROUNDS):
        with scratch(inputs) as folder:
            for process in [subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL)
                            for command in commands * 2]:
                process.wait(60)
            if (folder / "new.rep").read_bytes() not in wholes:
                problems.append("two runs at once made a mixture")
    return problems


def main():
    programs = Path(sys.argv[1]).resolve()
    tool, inspect = programs / "Trelvane", programs / "trelvane-inspect"
    problems = []
    with tempfile.TemporaryDirectory(prefix="trelvane-inputs-") as name, \
            ThreadPoolExecutor(os.cpu_count()) as pool:
        inputs = Path(name)
        make_large_inputs(tool, inputs)
        frames = [f"new-Frame-{i:04d}_{side}.sur" for i in range(3) for side in ("Left", "Right")]
        jobs = [([tool, "-i", source, "-o", output], [output]) for source, output in (
            ("large.sur", "new.rep"), ("large.sur", "new.ovrec"), ("large.pcd", "new.rep"),
            ("large.rep", "new.sur"), ("large.rep", "new.srf"), ("large.rep", "new.pcd"),
            ("large.ovrec", "new.csv"), ("profile.rep", "new.pro"), ("scans", "new.rep"))]
        jobs += [([tool, "-i", "scans.ovrec", "-a", "-o", "new.sur"], frames),
                 ([inspect, "large.sur", "--png", "new.png", "--html", "new.html"],
                  ["new.png", "new.html"])]
        for (command, names), (early, parts, found) in zip(
                jobs, pool.map(lambda job: kill(*job, inputs), jobs)):
            print(f"{' '.join(map(str, command[1:]))}: {ROUNDS * len(SIGNALS)} runs, {early} ended "
                  f"early, {parts} parts left, {len(found)} problems")
            problems += found
        problems += race(tool, inputs)
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
