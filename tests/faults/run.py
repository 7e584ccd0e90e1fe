#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Lets everything that can fail under a conversion fail, one thing at a time: each allocation, each
call that opens, reads, writes, closes or renames a file, a disk that fills up, bad places.

Started by tests/faults/run with the folder that holds the programs. After each fault the run must
either give what it gives without one, or end with exit code 1 and one "[ERROR] " line, the last;
an output that stood there before must be as it was or whole, and no other file may be left.
"""

import argparse
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import zlib
from concurrent.futures import ThreadPoolExecutor
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"

# Memory that is not there is a status, also under the sanitizers. Outputs go to the disk first, so
# that this can fail as well.
ENVIRONMENT = {"ASAN_OPTIONS": "allocator_may_return_null=1", "TRELVANE_SYNC": "1"}

# What is tried with each call, as strace says it. A read that gives 0 bytes is an input that
# shrinks while it is read.
CALLS = {
    "openat": ["error=EACCES", "error=EMFILE"],
    "read": ["error=EIO", "retval=0"],
    "write": ["error=ENOSPC"],
    "writev": ["error=ENOSPC"],
    "close": ["error=EIO"],
    "lseek": ["error=EIO"],
    "newfstatat": ["error=EACCES"],
    "fsync": ["error=EIO"],
    "rename": ["error=EIO", "error=EPERM"],
    "getdents64": ["error=EIO"],
    "mmap": ["error=ENOMEM"],
}


@dataclass
class Conversion:
    name: str
    arguments: list[str]
    outputs: list[str]


CONVERSIONS = [
    Conversion("surface", ["-i", "part.sur", "-o", "new.rep"], ["new.rep"]),
    Conversion("profile", ["-i", "part.pro", "-o", "new.rep"], ["new.rep"]),
    Conversion("compact surface", ["-i", "part.srf", "-o", "new.rep"], ["new.rep"]),
    Conversion("cloud", ["-i", "part.pcd", "-w", "90", "-h", "60", "-o", "new.rep"], ["new.rep"]),
    Conversion("archive", ["-i", "part.pro", "-o", "new.ovrec"], ["new.ovrec"]),
    Conversion("directory", ["-i", "scans", "-o", "new.rep"], ["new.rep"]),
    Conversion("frames", ["-i", "scans.ovrec", "-a", "-o", "new.sur"],
               [f"new-Frame-{i:04d}_{side}.sur" for i in range(3) for side in ("Left", "Right")]),
    Conversion("frame as a cloud", ["-i", "small.ovrec", "-o", "new.pcd"], ["new.pcd"]),
    Conversion("frame as a compact surface", ["-i", "small.ovrec", "-o", "new.srf"], ["new.srf"]),
    Conversion("frame as a profile", ["-i", "profile.rep", "-o", "new.pro"], ["new.pro"]),
    Conversion("surface as text", ["-i", "small.ovrec", "-o", "new.csv"], ["new.csv"]),
    Conversion("profile as text", ["-i", "line.ovrec", "-o", "new.csv"], ["new.csv"]),
    Conversion("help", ["--help"], []),
]


@contextmanager
def scratch(inputs):
    """A folder of its own for one run, with the inputs linked into it."""
    with tempfile.TemporaryDirectory(prefix="trelvane-faults-") as name:
        for source in inputs.iterdir():
            (Path(name) / source.name).symlink_to(source)
        yield Path(name)


def run(command, folder, environment=None, prepare=None):
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE,
                          env={**os.environ, **ENVIRONMENT, **(environment or {})},
                          preexec_fn=prepare, timeout=120)
    return done.returncode, done.stdout.decode(errors="replace"), done.stderr.decode(errors="replace")


class Checker:
    """Runs one conversion under faults and compares it with its run without any."""

    def __init__(self, conversion, programs, inputs):
        self.conversion = conversion
        self.command = [programs / "Trelvane", *conversion.arguments]
        self.starved = [programs / "trelvane_starved", *conversion.arguments]
        self.inputs = inputs
        self.problems = []
        self.runs = 0
        with scratch(inputs) as folder:
            code, self.console, _ = run(self.command, folder)
            if code != 0:
                sys.exit(f"{conversion.name} fails without a fault:\n{self.console}")
            self.whole = {name: (folder / name).read_bytes() for name in conversion.outputs}

    def judge(self, code, console, errors, folder, earlier):
        """What is wrong with a run; nothing when it is all right."""
        if errors:
            return f"standard error: {errors[:300]}"
        if code == 0:
            if console != self.console:
                return f"exit code 0, but the console says: {console}"
        elif code == 1:
            lines = console.splitlines()
            if sum(line.startswith("[ERROR] ") for line in lines) != 1:
                return f"not one error line: {console}"
            if not lines[-1].startswith("[ERROR] ") or not console.endswith(".\n"):
                return f"the error line is not the last: {console}"
            if "Successfully exported" in console:
                return f"exported and failed: {console}"
        else:
            return f"exit code {code}: {console}"
        return self.judge_files(code, console, folder, earlier)

    def judge_files(self, code, console, folder, earlier):
        for name, content in self.whole.items():
            file = folder / name
            held = file.read_bytes() if file.is_file() else None
            allowed = [content] if code == 0 else [content, earlier.get(name)]
            if held not in allowed:
                return f"{name} is not what it shall be; the console says: {console}"
        known = {*self.whole, "log.txt"} | {source.name for source in self.inputs.iterdir()}
        others = {file.name for file in folder.iterdir()} - known
        return f"{others} is left; the console says: {console}" if others else None

    def attempt(self, what, command, environment=None, prepare=None, setup=None):
        earlier = {}
        with scratch(self.inputs) as folder:
            try:
                if setup:
                    setup(folder)
                elif zlib.crc32(what.encode()) % 2:  # every other run replaces its outputs
                    earlier = dict.fromkeys(self.whole, b"of yesterday")
                    for name, content in earlier.items():
                        (folder / name).write_bytes(content)
                problem = self.judge(*run(command, folder, environment, prepare), folder, earlier)
            except subprocess.TimeoutExpired:
                problem = "does not end"
        self.runs += 1
        if problem:
            self.problems.append(f"{self.conversion.name}, {what}: {problem}")

    def starve(self, pool):
        """Each allocation in turn."""
        with scratch(self.inputs) as folder:
            run(self.starved, folder, {"TRELVANE_STARVE_COUNT": "count.txt"})
            count = int((folder / "count.txt").read_text())
        list(pool.map(lambda number: self.attempt(f"allocation {number} of {count}", self.starved,
                                                  {"TRELVANE_STARVE": str(number)}),
                      range(1, count + 1)))

    def calls(self):
        """The system calls of a run after it has opened its log: (name, number among its kind)."""
        with scratch(self.inputs) as folder:
            trace = folder / "trace.txt"
            run(["strace", "-o", trace, "-e", "trace=" + ",".join(CALLS), *self.command], folder)
            lines = trace.read_text(errors="replace").splitlines()
        found, numbers, started = [], {}, False
        for line in lines:
            match = re.match(r"(\w+)\((\d+)?", line)
            if not match:
                continue
            name, descriptor = match.groups()
            numbers[name] = numbers.get(name, 0) + 1
            started = started or '"log.txt"' in line
            if started and descriptor not in ("1", "2"):  # the console is not a file of ours
                found.append((name, numbers[name]))
        return found

    def fail_calls(self, pool):
        jobs = [(name, number, fault) for name, number in self.calls() for fault in CALLS[name]]
        list(pool.map(lambda job: self.attempt(
            f"{job[0]} number {job[1]}, {job[2]}",
            ["strace", "-o", "/dev/null", "-e", "trace=none", "-e",
             f"inject={job[0]}:{job[2]}:when={job[1]}", *self.command]), jobs))

    def fill_disk(self, pool):
        """A disk that takes so many bytes of a file and no more."""
        largest = max((len(content) for content in self.whole.values()), default=0)
        sizes = {0, 1, 511, 512, 4095, 4096, 65535, 65536, largest - 1}
        sizes |= {largest * part // 16 for part in range(16)}

        def limit(size):
            def prepare():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
            return prepare
        list(pool.map(lambda size: self.attempt(f"a disk with {size} bytes left", self.command,
                                                prepare=limit(size)),
                      sorted(size for size in sizes if 0 <= size < largest)))

    def bad_places(self):
        if not self.conversion.outputs:
            return
        name = self.conversion.outputs[0]
        self.attempt("a full device", self.command,
                     setup=lambda folder: (folder / name).symlink_to("/dev/full"))
        self.attempt("an output that is a folder", self.command,
                     setup=lambda folder: (folder / name).mkdir())

        def lock(folder):
            (folder / "log.txt").touch()
            (folder / "log.txt").chmod(0o666)
            folder.chmod(0o555)

        def be_nobody():
            if os.getuid() == 0:
                os.setgid(65534)
                os.setuid(65534)
        self.attempt("a folder without permission", self.command, prepare=be_nobody, setup=lock)

        def lock_around_outputs(folder):
            for output in self.whole:
                (folder / output).write_bytes(b"of yesterday")
                (folder / output).chmod(0o666)
            lock(folder)
        self.attempt("outputs that may be written where no file may be created", self.command,
                     prepare=be_nobody, setup=lock_around_outputs)


def make_inputs(program, folder):
    """The examples, and recordings made of them."""
    shutil.copytree(EXAMPLES, folder, dirs_exist_ok=True)
    for arguments in (["-i", "scans", "-o", "scans.ovrec"], ["-i", "part.srf", "-o", "small.ovrec"],
                      ["-i", "part.pro", "-o", "line.ovrec"],
                      ["-i", "part.pro", "-o", "profile.rep"]):
        subprocess.run([program, *arguments], cwd=folder, check=True, stdout=subprocess.DEVNULL)
    (folder / "log.txt").unlink()
    for path in [folder, *folder.rglob("*")]:
        path.chmod(0o755 if path.is_dir() else 0o644)


def can_trace(program):
    """Whether strace works; programs that look for their own leaks end under it."""
    if shutil.which("strace") is None or b"__asan_init" in program.read_bytes():
        return False
    with tempfile.TemporaryDirectory() as folder:
        return run(["strace", "-o", "/dev/null", "-e", "trace=close", program, "--help"],
                   folder)[0] == 0


def main():
    parser = argparse.ArgumentParser(prog="tests/faults/run", description=__doc__.splitlines()[0])
    parser.add_argument("programs", type=Path, help=argparse.SUPPRESS)
    programs = parser.parse_args().programs.resolve()
    traced = can_trace(programs / "Trelvane")
    if not traced:
        print("skipped: faults of system calls (no strace, or a program that it cannot trace)")
    problems = []
    with tempfile.TemporaryDirectory(prefix="trelvane-inputs-") as name, \
            ThreadPoolExecutor(os.cpu_count()) as pool:
        inputs = Path(name)
        make_inputs(programs / "Trelvane", inputs)
        for conversion in CONVERSIONS:
            checker = Checker(conversion, programs, inputs)
            checker.starve(pool)
            if traced:
                checker.fail_calls(pool)
            checker.fill_disk(pool)
            checker.bad_places()
            print(f"{conversion.name}: {checker.runs} runs, {len(checker.problems)} problems")
            problems += checker.problems
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
