// SPDX-License-Identifier: MIT
// Lists the surfaces of a recording and their heights. Needs: npm install @mcap/core flatbuffers
import { McapStreamReader } from "@mcap/core";
import { ByteBuffer } from "flatbuffers";
import { readFileSync } from "node:fs";

// Position of a field of a table, by its number in the schema; 0 when it is absent.
const field = (bb, table, number) => {
  const offset = bb.__offset(table, 4 + 2 * number);
  return offset && table + offset;
};

function describe(payload) {
  const bb = new ByteBuffer(payload);
  const message = bb.__indirect(0);
  if (bb.readUint8(field(bb, message, 0)) !== 1) return "holds no surface";
  const surface = bb.__indirect(field(bb, message, 1));
  const size = [0, 1].map((number) => {
    const position = field(bb, surface, number);
    return position && bb.readUint32(position);
  });
  const pointType = field(bb, surface, 2);
  if (pointType && bb.readUint8(pointType) !== 0) return `${size.join(" x ")} point cloud`;

  const vector = field(bb, surface, 3);
  const start = bb.__vector(vector);
  const offsetZ = bb.readFloat64(field(bb, surface, 5) + 16);
  const scaleZ = bb.readFloat64(field(bb, surface, 6) + 16);
  let count = 0;
  let lowest = Infinity;
  let highest = -Infinity;
  for (let i = 0; i < bb.__vector_len(vector); i++) {
    const raw = bb.readInt16(start + 2 * i);
    if (raw === -32768) continue; // an invalid point
    count++;
    lowest = Math.min(lowest, raw);
    highest = Math.max(highest, raw);
  }
  const real = (raw) => Number((raw * scaleZ + offsetZ).toPrecision(6));
  const extent = count > 0 ? ` from ${real(lowest)} to ${real(highest)}` : "";
  return `${size.join(" x ")}, ${count} valid heights${extent}`;
}

const reader = new McapStreamReader({ validateCrcs: true });
reader.append(readFileSync(process.argv[2]));
const topics = new Map();
for (let record; (record = reader.nextRecord()); ) {
  if (record.type === "Channel") topics.set(record.id, record.topic);
  if (record.type !== "Message") continue;
  const topic = topics.get(record.channelId);
  if (topic === "/frame_index") {
    console.log("frame", JSON.parse(Buffer.from(record.data).toString()).index);
  } else {
    console.log(topic, describe(record.data));
  }
}
