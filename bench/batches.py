# SPDX-License-Identifier: MIT
"""Many files: trelvane-batch against runs of Trelvane and against one of its own jobs."""

import shutil

from conversions import (MIB, SIDE, Rival, Row, check_exit_code, make_frames, make_large_archive,
                         make_point, same)

SMALL, LARGE, MANY = 2000, 8, 10_000  # files
JOBS = 2
ROOM = (100 - 32) * MIB / 1.1  # with it, 100 MiB at the peak


def make_small(folder, tool):
    make_frames(folder, SMALL)
    (folder / "Trelvane").symlink_to(tool)


def make_large(folder, tool):
    make_large_archive(folder, tool)
    (folder / "shift").mkdir()
    for i in range(LARGE):
        (folder / f"shift/{i}.ovrec").symlink_to(folder / "scans.ovrec")


def make_many(folder, tool):
    make_point(folder, tool)
    (folder / "points").mkdir()
    for i in range(MANY):
        shutil.copy(folder / "scan.sur", folder / f"points/{i}.sur")


def files_in(folder, count):
    names = list(folder.iterdir())
    if len(names) != count:
        raise ValueError(f"{folder.name} has {len(names)} files")
    return names


def check_small(folder):
    for name in files_in(folder / "batch/scans", SMALL):
        same(name, folder / "shell" / name.name.replace(".rep", ".sur.rep"))


def check_large(folder):
    for name in files_in(folder / "batch/shift", LARGE):
        same(name, folder / "scan.sur")


def check_many(folder):
    files_in(folder / "batch/points", MANY)


def make_batch_rows():
    def batch(kind, inputs, *options, out="batch"):
        return ["--to", kind, "--out", out, inputs, *options]

    each = f"ls scans | xargs -P {JOBS} -I % ./Trelvane -i scans/% -o shell/%.rep"
    frame = ["--frame", "20"]
    alone = Rival("one job", ["trelvane-batch",
                              *batch("sur", "shift", *frame, "--jobs", "1", out="alone")], "alone/",
                  everywhere=True)
    shell = Rival(f"xargs -P {JOBS} Trelvane", [shutil.which("sh"), "-c", each], "shell/", 3,
                  everywhere=True)
    jobs = ["--jobs", str(JOBS)]
    true = Rival("true", [shutil.which("true")], "", everywhere=True)
    program = {"program": "trelvane-batch"}
    return [
        Row(f"{SMALL} .sur (256 x 256) to .rep", make_small, "batch/", batch("rep", "scans", *jobs),
            check_small, "scans", {shell.name: 0.6}, (shell,), scan=JOBS * 2 * 256**2, **program),
        # Within 15 % of twice the rate.
        Row(f"a frame of each of {LARGE} .ovrec of 1 GiB to .sur", make_large, "batch/",
            batch("sur", "shift", *frame, *jobs), check_large, "scans.ovrec",
            {alone.name: 1 / (2 * 0.85)}, (alone,), scan=JOBS * 2 * SIDE**2, **program),
        Row(f"plan for {MANY} .sur", make_many, "", batch("rep", "points", "--dry-run"),
            check_exit_code, "points", {}, (true,), scan=ROOM, most_above=(("true", 1000),),
            **program),
        Row(f"{MANY} .sur (1 x 1) to .rep", make_many, "batch/",
            batch("rep", "points", *jobs, "--report", "report.jsonl"), check_many, "points", {},
            scan=ROOM, **program),
    ]
