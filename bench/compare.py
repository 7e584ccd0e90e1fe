#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Times whole conversions against `cp` of the scan file, bare loops and other programs.

Started by scripts/bench with the folder that holds the programs. Each conversion is checked once
before it is timed; then the programs take turns, so that a busy moment of the machine meets all.
"""

import argparse
import json
import os
import platform
import shutil
import statistics
import sys
import tempfile
from dataclasses import replace
from pathlib import Path

sys.dont_write_bytecode = True
from batches import make_batch_rows  # noqa: E402
from conversions import GROWTHS, MIB, Rival, check_like, make_rows, most_memory  # noqa: E402
from large import measure_large  # noqa: E402
from places import find_places  # noqa: E402
from processes import Failed, in_child, run  # noqa: E402
from python_rows import measure_python, print_python  # noqa: E402

MOST_GROWTH = 1.15


def in_folder(command, programs):
    return [programs / command[0] if "/" not in command[0] else command[0], *command[1:]]


def measure(row, programs, folder, runs):
    tool = programs / "Trelvane"
    in_child(row.make, folder, tool)
    entries = [Rival(row.program, [row.program, *row.arguments], row.output), *row.rivals,
               Rival("cp", [shutil.which("cp"), "-r", row.copied, "copy"], "copy")]
    for entry in entries:
        run(in_folder(entry.command, programs), entry.output, folder, entry.environment)
    in_child(row.check, folder)
    for entry in entries:
        if entry.like:
            in_child(check_like, entry, folder)

    samples = {entry.name: [] for entry in entries}
    for i in range(runs):
        for entry in entries:
            if i < entry.most_runs:
                command = in_folder(entry.command, programs)
                # The first finds memory as another program left it, or a virtual machine's host
                # that has taken it back, which can cost more than the work.
                run(command, entry.output, folder, entry.environment)
                samples[entry.name].append(run(command, entry.output, folder, entry.environment))

    seconds = {name: [s for s, _ in taken] for name, taken in samples.items()}
    median = {name: statistics.median(taken) for name, taken in seconds.items()}
    results = [{
        "work": row.work,
        "program": name,
        "median_ms": 1e3 * median[name],
        "least_ms": 1e3 * min(seconds[name]),
        "most_ms": 1e3 * max(seconds[name]),
        "times_cp": median[name] / median["cp"],
        "least_times_cp": min(seconds[name]) / min(seconds["cp"]),
        "peak_mib": max(peak for _, peak in samples[name]) / MIB,
    } for name in samples]
    first = results[0]
    first["most_peak_mib"] = most_memory(row.scan) / MIB
    first["goals"] = {name: {"most_times": most, "times": median[row.program] / median[name]}
                      for name, most in row.most.items() if name in median}
    first["above"] = {name: {"most_ms": most, "ms": 1e3 * (median[row.program] - median[name])}
                      for name, most in row.most_above}
    first["met"] = (first["peak_mib"] <= first["most_peak_mib"]
                    and all(g["times"] <= g["most_times"] for g in first["goals"].values())
                    and all(a["ms"] <= a["most_ms"] for a in first["above"].values()))
    return results


def measure_growth(growth, programs, folder, runs, start_up):
    """From the least times, which a busy machine spoils least, without that of the start-up. All
    sizes take turns."""
    inputs = []
    for size, (points, scan) in growth.sizes.items():
        place = folder / str(size)
        place.mkdir()
        in_child(growth.make, place, size)
        inputs.append((place, points, scan, []))
    command = [programs / "Trelvane", *growth.arguments]
    for i in range(runs + 1):
        for place, _, _, samples in inputs:
            sample = run(command, growth.output, place)
            if i > 0:  # the first warms the caches
                samples.append(sample)
            (place / growth.output).unlink()
    results = []
    for _, points, scan, samples in inputs:
        seconds = [s for s, _ in samples]
        results.append({
            "work": growth.work,
            "points": points,
            "median_ms": 1e3 * statistics.median(seconds),
            "least_ms": 1e3 * min(seconds),
            "most_ms": 1e3 * max(seconds),
            "ns_a_point": 1e9 * (min(seconds) - start_up) / points,
            "peak_mib": max(peak for _, peak in samples) / MIB,
            "most_peak_mib": most_memory(scan) / MIB,
        })
    for line in results:
        line["times_the_smallest"] = line["ns_a_point"] / results[0]["ns_a_point"]
        line["met"] = (0 < line["times_the_smallest"] <= MOST_GROWTH
                       and line["peak_mib"] <= line["most_peak_mib"])
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
    print("| work | program | median ms | least to most ms | x cp | least x cp "
          "| peak MiB | to reach | |")
    print("|---|---|---:|---:|---:|---:|---:|---|---|")
    for line in results:
        goal, met = "", ""
        if "met" in line:
            goals = [f"{goal['most_times']:g} x {name}" + ("" if name == "cp" else
                                                          f" (is {goal['times']:.3g})")
                     for name, goal in line["goals"].items()]
            goals += [f"{above['most_ms']} ms above {name} (is {above['ms']:.1f})"
                      for name, above in line["above"].items()]
            memory = f"{line['most_peak_mib']:.0f} MiB"
            goal = "at most " + " and ".join([*filter(None, [", ".join(goals)]), memory])
            met = "met" if line["met"] else "**not met**"
        print("| {work} | {program} | {median_ms:.1f} | {least_ms:.1f} to {most_ms:.1f} "
              "| {times_cp:.2f} | {least_times_cp:.2f} | {peak_mib:.0f} |".format(**line)
              + f" {goal} | {met} |")


def print_growth(results):
    print("\n| work | million points | median ms | least to most ms | ns a point | x the smallest "
          "| peak MiB | at most MiB | |")
    print("|---|---:|---:|---:|---:|---:|---:|---:|---|")
    for line in results:
        print("| {work} | {0:.0f} | {median_ms:.1f} | {least_ms:.1f} to {most_ms:.1f} "
              "| {ns_a_point:.2f} | {times_the_smallest:.2f} | {peak_mib:.0f} "
              "| {most_peak_mib:.0f} | {1} |".format(
                  line["points"] / 1e6, "met" if line["met"] else "**not met**", **line))


def in_new_folder(parent, function, *arguments):
    with tempfile.TemporaryDirectory(prefix="trelvane-bench-", dir=parent) as folder:
        return function(*arguments[:2], Path(folder), *arguments[2:])


def measure_place(kind, parent, rows, all_rivals, programs, runs):
    """All rows and growths in one place, with rivals that are measured everywhere, or all."""
    results, growths = [], []
    for row in rows:
        rivals = tuple(rival for rival in row.rivals if all_rivals or rival.everywhere)
        row = replace(row, work=f"{row.work}, {kind}", rivals=rivals)
        results += in_new_folder(parent, measure, row, programs, runs)
    start_up = results[0]["least_ms"] / 1e3
    for growth in GROWTHS:
        growth = replace(growth, work=f"{growth.work}, {kind}")
        growths += in_new_folder(parent, measure_growth, growth, programs, runs, start_up)
    return results, growths


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__.splitlines()[0])
    parser.add_argument("programs", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--runs", type=int, default=15, help="runs of each program (15)")
    parser.add_argument("--json", type=Path, help="also writes the results to this file")
    parser.add_argument("--large", action="store_true",
                        help="only tries recordings of 8 GiB in little memory; takes minutes")
    options = parser.parse_args()

    programs = options.programs.resolve()
    results, growths, python = [], [], []
    try:
        if options.large:
            sys.exit(0 if measure_large(programs) else 1)
        rows = [*make_rows(), *make_batch_rows()]
        for kind, parent in find_places().items():
            measured, grown = measure_place(kind, parent, rows, not results, programs, options.runs)
            results += measured
            growths += grown
            python += in_new_folder(parent, measure_python, kind, programs, options.runs)
    except Failed as failure:
        sys.exit(f"bench: {failure}")
    facts = machine()
    print_table(facts, results, options.runs)
    print_growth(growths)
    print_python(python)
    if options.json:
        text = json.dumps({"machine": facts, "runs": options.runs, "results": results,
                           "growth": growths, "python": python}, indent=2)
        options.json.write_text(text + "\n")


if __name__ == "__main__":
    main()
