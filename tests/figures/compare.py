# SPDX-License-Identifier: MIT
"""Figures of scans, as trelvane-inspect tells them and as Gwyddion's library does.

Started by tests/figures/run with the program and the folder of the examples. Shows for each scan the
largest difference, as the scan is and levelled: of lengths as a share of Sq; of Ssk and Sku themselves or,
above 1, as a share of them.
"""

import ctypes
import json
import math
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
from array import array

from sur_file import INVALID, PROFILE, SURFACE, write_sur

MOST = 1e-9
INCLUDE = 1  # only the points that the mask has

try:
    ctypes.CDLL("libgwyddion2.so.0", ctypes.RTLD_GLOBAL)  # which the other one does not ask for
    LIBRARY = ctypes.CDLL("libgwyprocess2.so.0")
except OSError as error:
    print(error)
    sys.exit(77)
LIBRARY.gwy_data_field_new.restype = ctypes.c_void_p
LIBRARY.gwy_data_field_get_data.restype = ctypes.c_void_p
LIBRARY.gwy_data_field_area_get_median_mask.restype = ctypes.c_double


class Field:
    """Heights in rows; NaN is a gap."""

    def __init__(self, heights, width):
        size = (width, len(heights) // width)
        self._heights = self._make(size, [0 if math.isnan(z) else z for z in heights])
        self._mirrored = self._make(size, [0 if math.isnan(z) else -z for z in heights])
        self._mask = self._make(size, [0 if math.isnan(z) else 1 for z in heights])
        self._whole = (0, 0, *size)
        self._valid = sum(not math.isnan(z) for z in heights)

    @staticmethod
    def _make(size, values):
        real = ctypes.c_double(1)
        field = ctypes.c_void_p(LIBRARY.gwy_data_field_new(*size, real, real, 0))
        values = array("d", values)
        ctypes.memmove(LIBRARY.gwy_data_field_get_data(field), values.buffer_info()[0],
                       8 * len(values))
        return field

    def _numbers(self, function, count, *mode):
        numbers = [ctypes.c_double() for _ in range(count)]
        function(self._heights, self._mask, *mode, *self._whole, *map(ctypes.byref, numbers))
        return [number.value for number in numbers]

    def level(self):
        plane = self._numbers(LIBRARY.gwy_data_field_area_fit_plane, 3)
        LIBRARY.gwy_data_field_plane_level(self._heights, *map(ctypes.c_double, plane))
        LIBRARY.gwy_data_field_plane_level(self._mirrored, *(ctypes.c_double(-x) for x in plane))

    def _median(self, field):
        return LIBRARY.gwy_data_field_area_get_median_mask(field, self._mask, INCLUDE, *self._whole)

    def figures(self):
        mean, sa, sq, ssk, excess = self._numbers(LIBRARY.gwy_data_field_area_get_stats_mask, 5,
                                                  INCLUDE)
        low, high = self._numbers(LIBRARY.gwy_data_field_area_get_min_max_mask, 2, INCLUDE)
        # Of two heights in the middle it takes the higher one.
        median = (self._median(self._heights) - self._median(self._mirrored)) / 2
        return {"valid_points": self._valid, "mean": mean, "median": median, "sa": sa, "sq": sq,
                "sz": high - low, "sp": high - mean, "sv": mean - low, "ssk": ssk,
                "sku": excess + 3}


def read(path):
    """The heights of a scan in mm, and how many stand in a row."""
    content = path.read_bytes()
    if path.suffix == ".srf":
        width, length, scale, offset = struct.unpack_from("<4x2I16xd16xd", content)
        start, low = 60, INVALID + 1
    else:
        low, width, length, scale, offset = struct.unpack_from("<i4x2i12xf342xf", content, 100)
        start = 512
    raw = struct.unpack_from(f"<{width * length}h", content, start)
    return [math.nan if z < low else z * scale + offset for z in raw], width


def make_scans(folder):
    """Scans without steps: their planes are those of least squares."""
    dice = random.Random(5)
    shapes = {
        "noise": lambda x, y: 1000 * dice.gauss(0, 1),
        "tilt": lambda x, y: 40 * x - 25 * y + dice.uniform(-300, 300),
        "gaps": lambda x, y: 30 * x + 20 * y + 500 * math.sin(x / 9) * math.sin(y / 7)
        if dice.random() < 0.6 and not 40 < x < 90 else INVALID,
        "far": lambda x, y: 3 * x + 200 * math.sin(x * y / 99),
    }
    for name, height in shapes.items():
        rows = [array("h", (round(height(x, y)) for x in range(301))) for y in range(180)]
        write_sur(folder / f"{name}.sur", 301, rows, (0.01, 0.01, 1e-5),
                  (0, 0, 5 if name == "far" else -0.5), SURFACE)
    line = array("h", (round(3 * x + 900 * dice.gauss(0, 1)) for x in range(2001)))
    write_sur(folder / "line.pro", 2001, [line], (0.01, 0.01, 1e-3), (0, 0, 7), PROFILE)
    return sorted(folder.iterdir())


def difference(told, others):
    """The largest one, and in which figure."""
    def of(name):
        unit = max(1, abs(others[name])) if name in ("ssk", "sku") else others["sq"]
        return abs(told[name] - others[name]) / unit
    return max((of(name), name) for name in told)


def main(program, examples):
    examples = pathlib.Path(examples)
    worst = (0, "")
    with tempfile.TemporaryDirectory() as folder:
        made = make_scans(pathlib.Path(folder))
        for path in (*made, *(examples / f"part.{kind}" for kind in ("sur", "srf", "pro")),
                     *sorted((examples / "scans").iterdir())):
            output = subprocess.run([program, "--json", "--figures", path], check=True,
                                    stdout=subprocess.PIPE).stdout
            scan = json.loads(output)["scans"][0]
            field = Field(*read(path))
            differences = [difference(scan["figures"], field.figures())]
            if path in made and path.suffix == ".sur":
                field.level()
                differences.append(difference(scan["figures_levelled"], field.figures()))
            print(path.name, *(f"{most:.1e} ({name})" for most, name in differences))
            worst = max(worst, *differences)
    if not worst[0] <= MOST:
        sys.exit(f"more than {MOST:g}")


main(*sys.argv[1:])
