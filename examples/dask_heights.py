#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Tells the heights of every frame of a folder of recordings, on many machines.

Needs Debian's python3-trelvane and, but for --workers 0, python3-distributed. All machines see the
folder under the same name.

  dask_heights.py FOLDER                        two worker processes on this machine
  dask_heights.py --workers 0 FOLDER            this process alone
  dask_heights.py --scheduler tcp://head:8786 FOLDER
"""

import argparse
from pathlib import Path

import numpy as np

import trelvane

BLOCK = 64  # frames that a worker measures at a time


def measure(path, start, stop):
    """Rows of one source's frames: file, frame, source, valid points, lowest, mean and highest."""
    rows = []
    # Checking all of a file for each of its blocks would be most of the work: check it before.
    with trelvane.open(path, check=False) as recording:
        for source in range(len(recording.sources)):
            for scan in recording[start:stop, source]:
                z = scan.heights()[scan.mask]
                low, mean, high = (z.min(), z.mean(dtype=np.float64), z.max()) if z.size else [
                    np.nan] * 3
                rows.append((Path(path).name, scan.frame, scan.source, z.size, low, mean, high))
    return rows


def find_blocks(folder):
    """What is sent to the workers: names and numbers, never scans."""
    for path in sorted(folder.iterdir()):
        if path.suffix in (".rep", ".rec", ".ovrec"):
            with trelvane.open(path, check=False) as recording:
                frames = len(recording)
            for start in range(0, frames, BLOCK):
                yield str(path), start, min(start + BLOCK, frames)


def measure_on(client, blocks):
    return client.gather(client.map(measure, *zip(*blocks), pure=False))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=Path, help="with .rep, .rec or .ovrec files")
    parser.add_argument("--scheduler", help="address of a scheduler that runs already")
    parser.add_argument("--workers", type=int, default=2, help="processes on this machine (2)")
    options = parser.parse_args()

    blocks = list(find_blocks(options.folder.resolve()))
    if not blocks:
        parser.error(f"{options.folder} holds no recordings")
    if options.scheduler or options.workers:
        from distributed import Client, LocalCluster

        cluster = options.scheduler or LocalCluster(
            n_workers=options.workers, threads_per_worker=1, host="127.0.0.1",
            dashboard_address=None)
        with Client(cluster) as client:
            results = measure_on(client, blocks)
    else:
        results = [measure(*block) for block in blocks]

    print("file,frame,source,valid,lowest,mean,highest")
    for rows in results:
        for row in rows:
            print("{},{},{},{},{:.6g},{:.6g},{:.6g}".format(*row))


if __name__ == "__main__":
    main()
