# SPDX-License-Identifier: MIT
"""The example for many machines, on a scheduler and two workers of this one."""

import os
import shutil
import subprocess
from pathlib import Path
from sys import executable

import numpy as np
import pytest
from conftest import EXAMPLES

import trelvane

distributed = pytest.importorskip("distributed")


def test_a_cluster_measures_what_one_process_does(tmp_path: Path) -> None:
    os.mkdir("recordings")
    shutil.copy(EXAMPLES / "recording.ovrec", "recordings/a.ovrec")
    rows = np.random.default_rng(1).integers(-32768, 32767, (70, 20, 30), np.int16)
    trelvane.write("recordings/b.rep", (trelvane.Scan(raw, scale=(1, 1, 0.001)) for raw in rows))

    def run(*options: str) -> str:
        return subprocess.run([executable, EXAMPLES / "dask_heights.py", *options, "recordings"],
                              check=True, capture_output=True, text=True, timeout=300).stdout

    alone = run("--workers", "0")
    assert len(alone.splitlines()) == 1 + 3 * 2 + 70
    name, frame, source, valid, low, _, high = alone.splitlines()[-1].split(",")
    seen = rows[69][rows[69] != trelvane.INVALID]
    assert (name, frame, source, int(valid)) == ("b.rep", "69", "Top", seen.size)
    assert [float(low), float(high)] == pytest.approx([seen.min() / 1000, seen.max() / 1000])
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, host="127.0.0.1",
                                  dashboard_address=None) as cluster:
        assert run("--scheduler", cluster.scheduler_address) == alone
        with distributed.Client(cluster) as client:
            scan = trelvane.open("recordings/b.rep")[69]
            assert client.submit(trelvane.Scan.heights, scan).result().tobytes() == \
                scan.heights().tobytes()
