# SPDX-License-Identifier: MIT
"""What the tests of the Python package share."""

import os
import shutil
import subprocess
from pathlib import Path
from typing import Callable

import pytest

PROJECT = Path(__file__).resolve().parents[2]
EXAMPLES = PROJECT / "examples"
FIELD = PROJECT.parent / "shared" / "data"  # not part of the project
Tool = Callable[..., str]


# All that can be opened: the examples, and files from the field where they are.
SCANS = sorted([EXAMPLES / "scans", *EXAMPLES.glob("*.ovrec"), *EXAMPLES.glob("part.*"),
                *FIELD.glob("accepted/*"), *FIELD.glob("made/*")])
each_scan = pytest.mark.parametrize("file", SCANS, ids=[file.name for file in SCANS])


@pytest.fixture(autouse=True)
def folder(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    """The working directory, empty but for the configuration that archives take along."""
    monkeypatch.chdir(tmp_path)
    shutil.copytree(EXAMPLES / "config", "config")


@pytest.fixture
def tool() -> Tool:
    """Runs Trelvane with these arguments; gives what it prints."""
    def run(*arguments: object) -> str:
        command = [os.environ["TRELVANE_PROGRAM"], *map(str, arguments)]
        return subprocess.run(command, check=True, capture_output=True, text=True,
                              env={**os.environ, "LD_PRELOAD": ""}).stdout
    return run
