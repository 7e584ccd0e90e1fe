# SPDX-License-Identifier: MIT
"""Writes Digital Surf surfaces (.sur) and profiles (.pro) with 16-bit samples."""

import struct
import sys
from array import array

INVALID = -32768
PROFILE, SURFACE = 1, 2  # object types


def _header(low, high, width, length, step, offset, kind):
    header = bytearray(512)

    def put(position, layout, *values):
        struct.pack_into("<" + layout, header, position, *values)

    put(0, "12s", b"DIGITAL SURF")
    put(12, "4H", 0, 1, 1, kind)  # format, objects, version, object type
    put(80, "5h", 1, 10, 0, 1, 1)  # material, acquisition, range, special points, absolute
    put(98, "h", 16)  # bits per point
    put(100, "5i", low, high, width, length, width * length)
    put(120, "3f", *step)
    put(132, "16s 16s 16s", b"X", b"Y", b"Z")
    put(180, "16s 16s 16s 16s 16s 16s", *[b"mm"] * 6)  # units of the steps and of the lengths
    put(276, "3f", 1.0, 1.0, 1.0)  # unit ratios
    put(466, "3f", *offset)
    return header


def write_sur(path, width, rows, step, offset, kind=SURFACE):
    """Writes `rows`, each an array('h') of `width` raw heights; INVALID marks an invalid point. A
    profile (kind PROFILE, in a .pro file) has one row.

    `step` and `offset` are (x, y, z) in mm: the point of column i and row j lies at
    x = i * step x + offset x, y = j * step y + offset y, z = raw * step z + offset z.
    """
    values = set().union(*rows) - {INVALID}
    low, high = min(values), max(values)
    with open(path, "wb") as file:
        file.write(_header(low, high, width, len(rows), step, offset, kind))
        for row in rows:
            # A sample below the z minimum is an invalid point.
            samples = array("h", (low - 2 if raw == INVALID else raw for raw in row))
            if sys.byteorder == "big":
                samples.byteswap()
            file.write(samples.tobytes())
