#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Lists the surfaces of a recording and their heights. Needs Debian's python3-flatbuffers."""
import json
import struct
import sys

from flatbuffers.number_types import Float64Flags, Uint8Flags, Uint32Flags
from flatbuffers.table import Table


def records(data):
    """Yields opcode and content of each record, those in uncompressed chunks included."""
    position = 0
    while position + 9 <= len(data):
        opcode, length = struct.unpack_from("<BQ", data, position)
        content = data[position + 9 : position + 9 + length]
        position += 9 + length
        if opcode == 0x06:  # chunk: 28 bytes, the compression's name, then the records
            (name_length,) = struct.unpack_from("<I", content, 28)
            if name_length:
                sys.exit("compressed chunks need a full MCAP library")
            yield from records(content[40:])
        else:
            yield opcode, content
        if opcode == 0x0F:  # the data section ends; what follows repeats it
            return


def field(table, number):
    """Position of a field of a table, None when it is absent."""
    offset = table.Offset(4 + 2 * number)
    return table.Pos + offset if offset else None


def number(table, flags, index):
    position = field(table, index)
    return table.Get(flags, position) if position else 0


with open(sys.argv[1], "rb") as file:
    stream = memoryview(file.read())
topics = {}
for opcode, content in records(stream[8:]):
    if opcode == 0x04:  # channel
        channel, _, length = struct.unpack_from("<HHI", content)
        topics[channel] = bytes(content[8 : 8 + length]).decode()
    if opcode != 0x05:  # message: 22 bytes, then the payload
        continue
    (channel,) = struct.unpack_from("<H", content)
    payload = bytes(content[22:])
    if topics[channel] == "/frame_index":
        print("frame", json.loads(payload)["index"])
        continue
    message = Table(payload, struct.unpack_from("<I", payload)[0])
    kind = number(message, Uint8Flags, 0)  # 1 surface, 2 profile, 3 array
    if kind != 1:
        print(topics[channel], "holds no surface")
        continue
    surface = Table(payload, message.Indirect(field(message, 1)))
    width, rows = number(surface, Uint32Flags, 0), number(surface, Uint32Flags, 1)
    if number(surface, Uint8Flags, 2) != 0:  # points are x, y, z, not heights
        print(topics[channel], width, "x", rows, "point cloud")
        continue
    vector = surface.Offset(4 + 2 * 3)
    start, count = surface.Vector(vector), surface.VectorLen(vector)
    heights = [h for h in struct.unpack_from(f"<{count}h", payload, start) if h != -32768]
    offset_z = surface.Get(Float64Flags, field(surface, 5) + 16)
    scale_z = surface.Get(Float64Flags, field(surface, 6) + 16)
    extent = ""
    if heights:
        lowest, highest = (h * scale_z + offset_z for h in (min(heights), max(heights)))
        extent = f" from {lowest:g} to {highest:g}"
    print(f"{topics[channel]} {width} x {rows}, {len(heights)} valid heights{extent}")
