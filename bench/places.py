# SPDX-License-Identifier: MIT
"""Folders to measure in: one on a disk and one in memory."""

import os
import shutil
import sys
import tempfile
from pathlib import Path

ROOM = 4 << 30  # bytes that the largest row takes


def is_tmpfs(folder):
    """Of two mounts over the folder the one below counts, and of two in one place the last."""
    try:
        lines = Path("/proc/self/mounts").read_text().splitlines()
    except OSError:
        return False
    path = Path(folder).resolve()
    mounts = [line.split()[1:3] for line in lines]
    over = [(len(Path(mount).parts), i, kind) for i, (mount, kind) in enumerate(mounts)
            if path.is_relative_to(mount)]
    return max(over)[2] == "tmpfs" if over else False


def find_places(room=ROOM):
    """The kind of each place that is there, the disk first, and its folder."""
    folders = [folder for folder in (tempfile.gettempdir(), "/var/tmp", "/dev/shm")
               if os.access(folder, os.W_OK) and shutil.disk_usage(folder).free >= room]
    places = {"disk": [folder for folder in folders if not is_tmpfs(folder)],
              "tmpfs": [folder for folder in folders if is_tmpfs(folder)]}
    for kind, found in places.items():
        if not found:
            print(f"bench: without {kind}, since none with {room >> 30} GiB was found",
                  file=sys.stderr)
    return {kind: found[0] for kind, found in places.items() if found}
