// SPDX-License-Identifier: MIT
// Reads the payload of a recording's message: a FlatBuffer of trelvane.ScanMessage.
import { ByteBuffer } from "flatbuffers";

// One table: its fields by their number in the schema.
class Table {
  constructor(bb, position) {
    this.bb = bb;
    this.position = position;
  }
  at(field) {
    const offset = this.bb.__offset(this.position, 4 + 2 * field);
    return offset === 0 ? 0 : this.position + offset;
  }
  uint8(field) {
    return this.at(field) === 0 ? 0 : this.bb.readUint8(this.at(field));
  }
  uint32(field) {
    return this.at(field) === 0 ? 0 : this.bb.readUint32(this.at(field));
  }
  table(field) {
    return new Table(this.bb, this.bb.__indirect(this.at(field)));
  }
  doubles(field, count) {
    return Array.from({ length: count }, (_, i) => this.bb.readFloat64(this.at(field) + 8 * i));
  }
  words(field, count) {
    return Array.from({ length: count }, (_, i) => this.bb.readInt64(this.at(field) + 8 * i));
  }
  vector(field, size, read) {
    if (this.at(field) === 0) return null;
    const start = this.bb.__vector(this.at(field));
    const length = this.bb.__vector_len(this.at(field));
    return Array.from({ length }, (_, i) => read(start + size * i));
  }
  int16s(field) {
    return this.vector(field, 2, (position) => this.bb.readInt16(position));
  }
  bytes(field) {
    return this.vector(field, 1, (position) => this.bb.readUint8(position));
  }
  tables(field) {
    return this.vector(field, 4, (p) => new Table(this.bb, this.bb.__indirect(p)));
  }
}

function decodeScan(message) {
  const kind = ["none", "surface", "profile", "array"][message.uint8(0)];
  const data = message.table(1);
  if (kind === "array") return { kind, items: data.tables(0).map(decodeScan) };
  const surface = kind === "surface";
  const first = surface ? 2 : 1; // the fields from the point type on
  return {
    kind,
    width: data.uint32(0),
    length: surface ? data.uint32(1) : 1,
    pointType: ["height", "point3d", "point2d"][data.uint8(first)],
    points: data.int16s(first + 1),
    intensities: data.bytes(first + 2),
    offset: data.doubles(first + 3, 3),
    scale: data.doubles(first + 4, 3),
    box: data.doubles(first + 5, 6),
    resampled: surface ? data.uint8(8) === 1 : undefined,
    stamp: data.words(surface ? 9 : 7, 8),
  };
}

export function decodeScanMessage(payload) {
  const bb = new ByteBuffer(payload);
  if (!bb.__has_identifier("TSCN")) throw new Error("no scan message");
  return decodeScan(new Table(bb, bb.__indirect(0)));
}
