# SPDX-License-Identifier: MIT
"""Runs programs and measures them."""

import multiprocessing
import os
import resource
import shutil
import subprocess
import time


class Failed(Exception):
    """A program ended with another code than 0, or a check found something."""


def in_child(function, *arguments):
    """Calls the function in a process of its own: the peak memory that the system reports for a
    program is never less than what the process that started it once had."""
    child = multiprocessing.Process(target=function, args=arguments)
    child.start()
    child.join()
    if child.exitcode != 0:
        raise Failed(f"{function.__name__} gave up")


def clear(path, is_folder):
    """Makes room for an output: a folder is there, and empty."""
    if path.is_dir():
        shutil.rmtree(path)
    path.unlink(missing_ok=True)
    if is_folder:
        path.mkdir()


def run(command, output, folder, environment=None, address_space=None):
    """Runs the command, which makes `output`, within so many bytes of address space; gives its
    seconds and its peak memory in bytes."""
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (address_space, address_space))

    if output:
        clear(folder / output, output.endswith("/"))
    with open(folder / "console.txt", "wb") as console:
        start = time.perf_counter()
        child = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=console,
                                 stderr=subprocess.STDOUT,
                                 env={**os.environ, **(environment or {})},
                                 preexec_fn=limit if address_space else None)
        _, status, usage = os.wait4(child.pid, 0)
        seconds = time.perf_counter() - start
        child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        text = (folder / "console.txt").read_text(errors="replace")
        raise Failed(f"{' '.join(map(str, command))} ended with {child.returncode}\n{text}")
    return seconds, usage.ru_maxrss * 1024
