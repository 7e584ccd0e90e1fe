#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes a wheel of the Python package with the library inside, and prints its name.

  wheel.py VERSION LIBRARY FOLDER

Every entry has the time of SOURCE_DATE_EPOCH, so that the same input gives the same file.
"""

import base64
import hashlib
import os
import platform
import subprocess
import sys
import sysconfig
import time
import zipfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
# Debian's packages of the libraries that are linked into the one in the wheel.
INSIDE = ("libarchive-dev", "libdeflate-dev", "liblz4-dev", "libzstd-dev", "zlib1g-dev",
          "libstdc++-12-dev")


def platform_tag():
    """The system that the library runs on, and on Linux the C library that it needs."""
    system, version = platform.libc_ver()
    if sys.platform == "linux" and system == "glibc":
        major, minor = version.split(".")[:2]
        return f"manylinux_{major}_{minor}_{platform.machine()}"
    return sysconfig.get_platform().replace("-", "_").replace(".", "_")


def modules():
    """What git tracks of the package; of a source tree without git, all of it."""
    folder = PROJECT / "python/trelvane"
    try:
        tracked = subprocess.run(["git", "ls-files"], cwd=folder, capture_output=True, text=True,
                                 check=False).stdout.split()
    except FileNotFoundError:
        tracked = []
    return [folder / name for name in tracked] or sorted(
        file for file in folder.iterdir() if file.suffix == ".py" or file.name == "py.typed")


def entries(version, library, tag):
    """Names and contents, without the list of them."""
    for file in modules():
        yield f"trelvane/{file.name}", file.read_bytes()
    yield f"trelvane/{library.name}", library.read_bytes()
    info = f"trelvane-{version}.dist-info"
    metadata = (PROJECT / "python/METADATA.in").read_text(encoding="utf-8")
    yield f"{info}/METADATA", metadata.replace("@PROJECT_VERSION@", version).encode()
    yield f"{info}/WHEEL", ("Wheel-Version: 1.0\nGenerator: trelvane\nRoot-Is-Purelib: false\n"
                            f"Tag: {tag}\n").encode()
    yield f"{info}/licenses/LICENSE", (PROJECT / "LICENSE").read_bytes()
    # Of what the library has inside.
    yield f"{info}/licenses/copyright", (PROJECT / "packaging/copyright").read_bytes()
    for package in INSIDE:
        file = Path("/usr/share/doc", package, "copyright")
        yield f"{info}/licenses/{package}.copyright", file.read_bytes()


def write_wheel(version, library, folder):
    tag = f"py3-none-{platform_tag()}"
    path = folder / f"trelvane-{version}-{tag}.whl"
    changed = time.gmtime(int(os.environ.get("SOURCE_DATE_EPOCH", time.time())))[:6]
    record = []
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as wheel:
        def add(name, content):
            entry = zipfile.ZipInfo(name, changed)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            wheel.writestr(entry, content)

        for name, content in entries(version, library, tag):
            add(name, content)
            digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=")
            record.append(f"{name},sha256={digest.decode()},{len(content)}\n")
        name = f"trelvane-{version}.dist-info/RECORD"
        add(name, "".join([*record, f"{name},,\n"]))
    return path


if __name__ == "__main__":
    print(write_wheel(sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])))
