# SPDX-License-Identifier: MIT
"""Scans are what Trelvane writes of them, bit for bit."""

import os
import shutil
import struct
from pathlib import Path

import numpy as np
from conftest import EXAMPLES, Tool, each_scan

import trelvane

CSV_TITLE, CSV_DATA = 24, 28


def cells(*coordinates: object) -> list[str]:
    """As Trelvane writes numbers into CSV files; an invalid point is three empty cells."""
    values = np.stack(np.broadcast_arrays(*coordinates), axis=-1).reshape(-1)  # type: ignore
    return ["" if np.isnan(value) else f"{value:g}" for value in values]


def expected_lines(scan: trelvane.Scan) -> list[list[str]]:
    z = scan.heights(np.float64)
    if scan.kind == "surface":
        return [cells(scan.y[row]) + cells(z[row]) for row in range(len(z))]
    if scan.kind == "cloud":
        return [cells(scan.x[row], scan.y[row], z[row]) for row in range(len(z))]
    return [cells(z[0])] if scan.kind == "profile" else [cells(scan.x[0]), cells(z[0])]


def csv_lines(file: Path, scan: trelvane.Scan) -> list[list[str]]:
    lines = [line.split(",") for line in file.read_text().split("\n")]
    data = lines[CSV_DATA:CSV_DATA + scan.shape[0]]
    if "profile" in scan.kind:
        data = [line[9:] for line in lines[CSV_DATA:] if len(line) > 8 and line[8] in ("X", "Z")]
    if scan.kind == "surface":
        assert lines[CSV_DATA - 1][1:] == cells(scan.x)
    return data


def check_srf(data: bytes, scan: trelvane.Scan) -> None:
    width, length, *numbers = struct.unpack_from("<2I6d", data, 4)
    raw = np.frombuffer(data, "<i2", width * length, 60).reshape(length, width)
    heights = np.where(raw == trelvane.INVALID, np.nan, raw * numbers[2] + numbers[5])
    assert (*scan.scale, *scan.offset) == tuple(numbers)
    np.testing.assert_array_equal(scan.raw, raw)
    np.testing.assert_array_equal(scan.heights(np.float64), heights)
    np.testing.assert_array_equal(scan.heights(), heights.astype(np.float32))
    light = data[61 + raw.nbytes:] if data[60 + raw.nbytes] else b""
    assert (b"" if scan.intensity is None else scan.intensity.tobytes()) == light[:raw.size]


@each_scan
def test_exports_have_the_same_coordinates(file: Path, tool: Tool) -> None:
    recording = trelvane.open(file, on_message=print)
    if file.suffix != ".ovrec":
        tool("-i", file, "-o", "a.ovrec")
        file = Path("a.ovrec")
    for target in ["a.csv", "a.srf"] if recording[0].kind == "surface" else ["a.csv"]:
        tool("-i", file, "-o", target, "-a")
    for frame, scans in enumerate(recording.frames()):
        for source, scan in zip(recording.sources, scans):
            assert isinstance(scan, trelvane.Scan)
            names = ["a", f"a-Frame-{frame:04d}_{source.display_name}"]
            (name,) = [name for name in names if Path(name + ".csv").exists()]
            assert csv_lines(Path(name + ".csv"), scan) == expected_lines(scan), name
            if scan.kind == "surface":
                check_srf(Path(name + ".srf").read_bytes(), scan)


def test_conversions_write_the_same_files(tool: Tool) -> None:
    options = {"width": 70, "height": 60, "swap_xz": True, "remove": (1, 2, 3), "zoom": 1000}
    told: list[tuple[str, str]] = []
    made = trelvane.convert(EXAMPLES / "part.pcd", "ours.rep", **options,  # type: ignore
                            on_message=lambda kind, text: told.append((kind, text)))
    assert made == [Path("ours.rep")]
    printed = tool("-i", EXAMPLES / "part.pcd", "-o", "its.rep", "-w", 70, "-h", 60, "-s", 1, "-r",
                   '"(1, 2, 3)"', "-z", 1000)
    assert Path("ours.rep").read_bytes() == Path("its.rep").read_bytes()
    assert all(f"[{kind.upper()}] {text}" in printed for kind, text in told)
    assert "warning" in dict(told)
    grid = trelvane.open(EXAMPLES / "part.pcd", **options,  # type: ignore
                         on_message=print)[0]
    np.testing.assert_array_equal(grid.raw, trelvane.open("its.rep")[0].raw)

    os.rename("config", "others")
    shutil.copytree(EXAMPLES / "scans", "scans")
    for name, target in [("scans.ovrec", None), ("scans.rep", "scans.rep")]:
        assert trelvane.convert("scans", target, config="others") == [Path(name)]
        trelvane.write("ours" + name, trelvane.open("scans"), config="others")
        assert Path("ours" + name).read_bytes() == Path(name).read_bytes()
    frames = trelvane.convert(EXAMPLES / "recording.ovrec", "f.sur", all_frames=True)
    assert [file.name for file in frames] == [
        f"f-Frame-000{frame}_{side}.sur" for frame in range(3) for side in ("Left", "Right")]
