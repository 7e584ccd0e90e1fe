// SPDX-License-Identifier: MIT
// Recordings exchanged with the public MCAP library, in both directions.
import zstd from "@foxglove/wasm-zstd";
import { McapIndexedReader, McapStreamReader, McapWriter, TempBuffer } from "@mcap/core";
import lz4 from "lz4js";
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdtempSync, readFileSync, rmSync, symlinkSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import { after, test } from "node:test";

const run = (program, ...args) => execFileSync(program, args, { encoding: "utf8" });
const tool = (...args) => run(process.env.TRELVANE_REPLAY, ...args);
const bfbs = readFileSync(process.env.TRELVANE_BFBS);
const folder = mkdtempSync(path.join(tmpdir(), "trelvane-interop-"));
after(() => rmSync(folder, { recursive: true }));
await zstd.isLoaded;
// Where a user's copy of the example would find the libraries.
copyFileSync("../../examples/read_recording.mjs", path.join(folder, "read.mjs"));
symlinkSync(path.resolve("node_modules"), path.join(folder, "node_modules"));

function streamRecords(bytes) {
  const reader = new McapStreamReader({ validateCrcs: true });
  reader.append(bytes);
  const records = [];
  for (let record; (record = reader.nextRecord()); ) records.push(record);
  assert.ok(reader.done());
  return records;
}

// Writes the records of a recording of ours with the public library.
async function rewrite(records, options) {
  const buffer = new TempBuffer();
  const writer = new McapWriter({ writable: buffer, ...options });
  await writer.start({ profile: "", library: "another tool" });
  const schemaIds = new Map([[0, 0]]);
  const channelIds = new Map();
  for (const record of records.slice(0, records.findIndex(({ type }) => type === "DataEnd"))) {
    const { type, id, schemaId, channelId } = record;
    if (type === "Metadata") await writer.addMetadata(record);
    if (type === "Schema") schemaIds.set(id, await writer.registerSchema(record));
    if (type === "Channel") {
      channelIds.set(id, await writer.registerChannel({ ...record, schemaId: schemaIds.get(schemaId) }));
    }
    if (type === "Message") await writer.addMessage({ ...record, channelId: channelIds.get(channelId) });
  }
  await writer.end();
  return buffer.get();
}

const compressed = (compression, compress) => ({
  chunkSize: 1000, compressChunk: (data) => ({ compression, compressedData: compress(data) }),
});
const bare = {
  useStatistics: false, useSummaryOffsets: false, repeatSchemas: false, repeatChannels: false,
  useMessageIndex: false, useChunkIndex: false, useMetadataIndex: false, useAttachmentIndex: false,
};
const writers = {
  "one chunk": { chunkSize: 100_000_000 },
  "a chunk for every message": { chunkSize: 1 },
  "zstd chunks": compressed("zstd", (data) => zstd.compress(data)),
  "lz4 chunks, no summary": { ...compressed("lz4", (data) => lz4.compress(data)), ...bare },
};

for (const layout of ["segmented", "classic"]) {
  const recording = path.join(folder, `${layout}.rep`);
  tool("make", layout, recording);
  const bytes = new Uint8Array(readFileSync(recording));

  test(`the public library reads our ${layout} recording`, async () => {
    const records = streamRecords(bytes);
    const schemas = records.filter(({ type }) => type === "Schema"); // once more in the summary
    assert.deepEqual(schemas.map(({ data }) => Buffer.from(data)), [bfbs, bfbs]);
    const messages = records.filter(({ type }) => type === "Message");
    assert.deepEqual(messages.map(({ channelId }) => channelId), Array(3).fill([0, 1, 2, 3, 4, 5, 6, 6]).flat());
    if (layout === "classic") return; // has no index
    const reader = await McapIndexedReader.Initialize({ readable: new TempBuffer(bytes) });
    const { messageStartTime, messageEndTime } = reader.statistics;
    assert.deepEqual([messageStartTime, messageEndTime], [0n, 200_000_000n]);
    const last = { startTime: 200_000_000n, endTime: 200_000_000n };
    for (const [times, expected] of [[{}, messages], [last, messages.slice(-8)]]) {
      const read = [];
      for await (const message of reader.readMessages({ ...times, validateCrcs: true })) read.push(message);
      assert.deepEqual(read, expected);
    }
  });

  test(`the example programs tell the same of our ${layout} recording`, () => {
    const found = run("node", path.join(folder, "read.mjs"), recording);
    assert.match(found, /^frame 40\n\/Scanner-0\/Top 5 x 3, 15 valid heights from 3 to 3.00001\n/);
    assert.equal(run("/usr/bin/python3", "../../examples/read_recording.py", recording), found);
  });

  const unchunked = layout === "classic" && { "no chunks": { useChunks: false } };
  for (const [name, options] of Object.entries({ ...writers, ...unchunked })) {
    test(`we read a ${layout} recording that the public library writes: ${name}`, async () => {
      const given = path.join(folder, "given.rep");
      writeFileSync(given, await rewrite(streamRecords(bytes), options));
      assert.equal(tool("list", given), tool("list", recording));
    });
  }
}
