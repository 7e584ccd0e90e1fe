// SPDX-License-Identifier: MIT
// Recordings exchanged with the public MCAP library, in both directions.
import { crc32 } from "@foxglove/crc";
import zstd from "@foxglove/wasm-zstd";
import { McapIndexedReader, McapStreamReader, McapWriter, TempBuffer } from "@mcap/core";
import lz4 from "lz4js";
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdtempSync, readFileSync, rmSync, symlinkSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import { after, before, describe, test } from "node:test";

import { decodeScanMessage } from "./scan_message.mjs";

const tool = process.env.TRELVANE_REPLAY;
const bfbs = readFileSync(process.env.TRELVANE_BFBS);
const examples = path.resolve("../../examples");
const folder = mkdtempSync(path.join(tmpdir(), "trelvane-interop-"));
const decompressHandlers = { zstd: (data, size) => zstd.decompress(data, Number(size)) };

const layouts = ["segmented", "classic"];
const recordings = {}; // layout to the bytes of a recording of ours
const listings = {}; // layout to what our reader tells of it

function list(bytes) {
  const name = path.join(folder, "given.rep");
  writeFileSync(name, bytes);
  return execFileSync(tool, ["list", name], { encoding: "utf8", stdio: ["ignore", "pipe", "pipe"] });
}

function streamRecords(bytes) {
  const reader = new McapStreamReader({ validateCrcs: true, includeChunks: true, decompressHandlers });
  reader.append(bytes);
  const records = [];
  for (let record; (record = reader.nextRecord()); ) records.push(record);
  assert.ok(reader.done());
  return records;
}

async function all(items) {
  const list = [];
  for await (const item of items) list.push(item);
  return list;
}

const ofType = (records, type) => records.filter((record) => record.type === type);

before(async () => {
  await zstd.isLoaded;
  for (const layout of layouts) {
    const name = path.join(folder, `${layout}.rep`);
    execFileSync(tool, ["make", layout, name]);
    recordings[layout] = new Uint8Array(readFileSync(name));
    listings[layout] = list(recordings[layout]);
  }
});
after(() => rmSync(folder, { recursive: true }));

describe("the public library reads our recordings", () => {
  const sources = [
    ["0", "Top", "Top side", "14", "0", "0"],
    ["0", "Cloud", "Cloud", "15", "0", "1"],
    ["0", "Line", "Line", "12", "0", "18446744073709551615"],
    ["0", "Trace", "Trace ä", "13", "0", "0"],
    ["0", "Many", "Many", "14", "1", "0"],
    ["1", "Left", "Left", "14", "0", "2"],
  ];
  const scannerIds = ["Scanner-0", "Scanner-ü"];
  // Of the 8 messages of a frame; the second scanner's source takes the surplus one too.
  const channelOf = (message) => Math.min(message % 8, 6);

  for (const layout of layouts) {
    test(`record by record, ${layout}`, () => {
      const records = streamRecords(recordings[layout]);
      assert.deepEqual(records[0], { type: "Header", profile: "trelvane-replay", library: "Trelvane 1.0.0.4" });
      assert.deepEqual(
        ofType(records, "Metadata").map(({ name, metadata }) => [name, [...metadata]]),
        [
          ["recording", [["layout", layout], ["version", "1"]]],
          ["scanner", [["family", "r4xxx"], ["id", "Scanner-0"], ["name", "Scanner 0"]]],
          ["scanner", [["family", "r4xxx"], ["id", "Scanner-ü"], ["name", "Scanner ü"]]],
        ],
      );
      const schemas = ofType(records, "Schema");
      assert.equal(schemas.length, 2); // once more in the summary
      for (const schema of schemas) {
        assert.deepEqual([schema.id, schema.name, schema.encoding], [1, "trelvane.ScanMessage", "flatbuffer"]);
        assert.deepEqual(Buffer.from(schema.data), bfbs);
      }
      const channels = ofType(records, "Channel").map((channel) => [
        channel.id, channel.schemaId, channel.topic, channel.messageEncoding, [...channel.metadata],
      ]);
      const expected = [
        [0, 0, "/frame_index", "json", []],
        ...sources.map(([scanner, name, display, type, arrayed, reserved], i) => [
          i + 1, 1, `/${scannerIds[scanner]}/${name}`, "flatbuffer",
          [["scanner", scanner], ["name", name], ["display_name", display], ["data_type", type],
           ["arrayed", arrayed], ["reserved", reserved]],
        ]),
      ];
      assert.deepEqual(channels, [...expected, ...expected]);

      const messages = ofType(records, "Message");
      assert.equal(messages.length, 24);
      messages.forEach((message, i) => {
        const frame = Math.floor(i / 8);
        assert.equal(message.channelId, channelOf(i));
        assert.equal(message.sequence, frame);
        assert.equal(message.logTime, BigInt(frame) * 100_000_000n);
        if (i % 8 === 0) {
          assert.equal(Buffer.from(message.data).toString(), `{"index":${40 + frame}}`);
          assert.equal(message.publishTime, 0n);
        } else {
          const scan = decodeScanMessage(message.data);
          assert.equal(message.publishTime, (scan.items ?? [scan])[0].stamp[1]);
        }
      });
    });

    test(`checksums, ${layout}`, () => {
      const bytes = recordings[layout];
      const records = streamRecords(bytes);
      const [end] = ofType(records, "DataEnd");
      const [footer] = ofType(records, "Footer");
      const dataEnd = Number(footer.summaryStart) - 13;
      const stored = layout === "classic" ? crc32(bytes.subarray(0, dataEnd)) : 0;
      assert.equal(end.dataSectionCrc, stored);
      const summary = bytes.subarray(Number(footer.summaryStart), bytes.length - 12);
      assert.equal(footer.summaryCrc, crc32(summary));
      assert.notEqual(footer.summaryCrc, 0);
    });
  }

  test("through its index", async () => {
    const bytes = recordings.segmented;
    const reader = await McapIndexedReader.Initialize({ readable: new TempBuffer(bytes) });
    // Each offset leads to a record of its kind, and the groups of the summary leave no gap.
    let position = reader.footer.summaryStart;
    for (const { groupOpcode, groupStart, groupLength } of reader.summaryOffsetsByOpcode.values()) {
      assert.deepEqual([groupStart, bytes[groupStart]], [position, groupOpcode]);
      position += groupLength;
    }
    assert.equal(position, reader.footer.summaryOffsetStart);
    assert.deepEqual([...reader.summaryOffsetsByOpcode.keys()], [0x03, 0x04, 0x0b, 0x0d, 0x08]);
    assert.deepEqual(reader.metadataIndexes.map(({ offset }) => bytes[offset]), [0x0c, 0x0c, 0x0c]);

    assert.equal(reader.chunkIndexes.length, 1);
    const [chunk] = reader.chunkIndexes;
    const indexes = [...chunk.messageIndexOffsets.values()];
    const afterChunk = chunk.chunkStartOffset + chunk.chunkLength;
    assert.deepEqual([bytes[chunk.chunkStartOffset], indexes[0]], [0x06, afterChunk]);
    assert.deepEqual(indexes.map((offset) => bytes[offset]), Array(7).fill(0x07));
    assert.equal(bytes[afterChunk + chunk.messageIndexLength], 0x0f);
    assert.deepEqual(
      [chunk.messageStartTime, chunk.messageEndTime, chunk.compression, chunk.compressedSize],
      [0n, 200_000_000n, "", chunk.uncompressedSize],
    );
    const { statistics } = reader;
    assert.deepEqual(
      [statistics.messageCount, statistics.schemaCount, statistics.channelCount,
       statistics.metadataCount, statistics.chunkCount, statistics.messageStartTime,
       statistics.messageEndTime, [...statistics.channelMessageCounts]],
      [24n, 1, 7, 3, 1, 0n, 200_000_000n,
       [3n, 3n, 3n, 3n, 3n, 3n, 6n].map((count, channel) => [channel, count])],
    );

    const messages = ofType(streamRecords(bytes), "Message");
    assert.deepEqual(await all(reader.readMessages({ validateCrcs: true })), messages);
    for (const [id, { topic }] of reader.channelsById) {
      const ofChannel = messages.filter(({ channelId }) => channelId === id);
      assert.deepEqual(await all(reader.readMessages({ validateCrcs: true, topics: [topic] })), ofChannel);
    }
    const scanners = await all(reader.readMetadata({ name: "scanner" }));
    assert.deepEqual(scanners.map(({ metadata }) => metadata.get("id")), scannerIds);
  });

  test("and a payload holds the scan", () => {
    // 16-bit numbers whose bytes count up.
    const heights = (length, first) =>
      Array.from(new Int16Array(Uint8Array.from({ length: 2 * length }, (_, i) => first + i).buffer));
    const messages = ofType(streamRecords(recordings.classic), "Message");
    const [, surface, cloud, profile, trace, array, empty, invalid] = messages
      .map((message, i) => (i % 8 === 0 ? null : decodeScanMessage(message.data)));
    assert.deepEqual(surface, {
      kind: "surface", width: 5, length: 3, pointType: "height",
      points: heights(15, 11), intensities: Array.from({ length: 15 }, (_, i) => 87 + i),
      offset: [2.5, -2, 3], scale: [0.1, 0.2, 1e-9], box: [1, 2, 3, 4, 5, 7.5], resampled: true,
      stamp: [1n, 11n, -3n, -3n, 0xbeefn, 5n, 5n, -1n],
    });
    assert.deepEqual([cloud.pointType, cloud.width, cloud.length, cloud.resampled], ["point3d", 2, 3, false]);
    assert.deepEqual(cloud.points, heights(18, -11));
    assert.equal(cloud.intensities, null);
    assert.deepEqual([profile.kind, profile.width, profile.pointType], ["profile", 7, "height"]);
    assert.equal(profile.intensities.length, 7);
    assert.deepEqual([trace.pointType, trace.points.length], ["point2d", 14]);
    assert.deepEqual(array.items.map((item) => item.pointType), ["height", "point3d"]);
    assert.deepEqual([empty.width, empty.length, empty.points], [0, 4, []]);
    assert.deepEqual(invalid.points, [-32768, -32768]);
  });

  test("and finds a changed byte", async () => {
    const changed = Uint8Array.from(recordings.segmented);
    const sound = await McapIndexedReader.Initialize({ readable: new TempBuffer(changed) });
    const [chunk] = sound.chunkIndexes;
    changed[chunk.chunkStartOffset + chunk.chunkLength - 1n] ^= 1; // the last point's
    assert.throws(() => streamRecords(changed), /CRC/);
    const reader = await McapIndexedReader.Initialize({ readable: new TempBuffer(changed) });
    await assert.rejects(all(reader.readMessages({ validateCrcs: true })), /CRC/);
    assert.throws(() => list(changed), /checksum of the chunk/);

    const classic = Uint8Array.from(recordings.classic);
    const { summaryStart } = ofType(streamRecords(classic), "Footer")[0];
    classic[summaryStart - 14n] ^= 1; // in front of the data section's end
    assert.throws(() => list(classic), /checksum of the data section/);
  });
});

describe("the example programs read our recordings", () => {
  const ranges = ["3 to 3.00001", "3.00001 to 3.00001", "3.00001 to 3.00002"];
  const expected = ranges.map((range, i) =>
    [`frame ${40 + i}`, `/Scanner-0/Top 5 x 3, 15 valid heights from ${range}`,
     "/Scanner-0/Cloud 2 x 3 point cloud", "/Scanner-0/Line holds no surface",
     "/Scanner-0/Trace holds no surface", "/Scanner-0/Many holds no surface",
     "/Scanner-ü/Left 0 x 4, 0 valid heights", "/Scanner-ü/Left 2 x 1, 0 valid heights\n"].join("\n"),
  ).join("");

  for (const layout of layouts) {
    const recording = path.join(folder, `${layout}.rep`);
    test(`in JavaScript, ${layout}`, () => {
      // Where a user's copy would find the libraries.
      const copy = path.join(mkdtempSync(path.join(folder, "js-")), "read_recording.mjs");
      copyFileSync(path.join(examples, "read_recording.mjs"), copy);
      symlinkSync(path.resolve("node_modules"), path.join(path.dirname(copy), "node_modules"));
      assert.equal(execFileSync("node", [copy, recording], { encoding: "utf8" }), expected);
    });
    test(`in Python, ${layout}`, () => {
      const script = path.join(examples, "read_recording.py");
      assert.equal(execFileSync("/usr/bin/python3", [script, recording], { encoding: "utf8" }), expected);
    });
  }
});

// Writes the records of a recording of ours with the public library.
async function rewrite(layout, options, { shifted = false, extra = false } = {}) {
  const buffer = new TempBuffer();
  const writer = new McapWriter({ writable: buffer, ...options });
  await writer.start({ profile: "", library: "another tool" });
  if (extra) {
    await writer.addAttachment({
      name: "photo", logTime: 1n, createTime: 1n, mediaType: "image/png", data: new Uint8Array(1000),
    });
  }
  const schemaIds = new Map([[0, 0]]);
  const channelIds = new Map();
  if (shifted) {
    // Other ids than ours, and a channel that is no part of the recording.
    await writer.registerSchema({ name: "other", encoding: "", data: new Uint8Array() });
    const other = await writer.registerChannel({
      schemaId: 0, topic: "/other", messageEncoding: "", metadata: new Map(),
    });
    await writer.addMessage({ channelId: other, sequence: 0, logTime: 0n, publishTime: 0n, data: new Uint8Array(3) });
  }
  for (const record of streamRecords(recordings[layout])) {
    if (record.type === "Metadata") await writer.addMetadata(record);
    if (record.type === "Schema" && !schemaIds.has(record.id)) {
      schemaIds.set(record.id, await writer.registerSchema(record));
    }
    if (record.type === "Channel" && !channelIds.has(record.id)) {
      const channel = { ...record, schemaId: schemaIds.get(record.schemaId) };
      channelIds.set(record.id, await writer.registerChannel(channel));
    }
    if (record.type === "Message") {
      await writer.addMessage({ ...record, channelId: channelIds.get(record.channelId) });
    }
  }
  await writer.end();
  return buffer.get();
}

test("the page on recordings shows the example programs as they are", () => {
  const unindented = (text) => text.replace(/^ +/gm, "");
  const page = readFileSync("../../docs/recordings.md", "utf8");
  const excerpts = [...page.matchAll(/^```(python|js)\n([^]*?)^```/gm)];
  assert.deepEqual(excerpts.map(([, language]) => language), ["python", "js"]);
  excerpts.forEach(([, , excerpt], i) => {
    const name = ["read_recording.py", "read_recording.mjs"][i];
    const example = readFileSync(path.join(examples, name), "utf8");
    assert.ok(unindented(example).includes(unindented(excerpt)), name);
  });
});

describe("we read what the public library writes", () => {
  const compressors = {
    zstd: { compressChunk: (data) => ({ compression: "zstd", compressedData: zstd.compress(data) }) },
    lz4: { compressChunk: (data) => ({ compression: "lz4", compressedData: lz4.compress(data) }) },
  };
  const bare = {
    useStatistics: false, useSummaryOffsets: false, repeatSchemas: false, repeatChannels: false,
    useMessageIndex: false, useChunkIndex: false, useMetadataIndex: false, useAttachmentIndex: false,
  };
  const cases = [
    ["one chunk", "segmented", { chunkSize: 100_000_000 }, {}],
    ["a chunk for every few messages", "segmented", { chunkSize: 600 }, {}],
    ["a chunk for every message", "segmented", { chunkSize: 1 }, {}],
    ["zstd chunks", "segmented", { chunkSize: 1000, ...compressors.zstd }, {}],
    ["lz4 chunks", "segmented", { chunkSize: 1000, ...compressors.lz4 }, {}],
    ["other ids and strange records", "segmented", { chunkSize: 500 }, { shifted: true, extra: true }],
    ["no summary", "segmented", { chunkSize: 500, ...bare }, {}],
    ["no chunks", "classic", { useChunks: false }, {}],
    ["no chunks, no summary, other ids", "classic", { useChunks: false, ...bare }, { shifted: true }],
    ["chunks", "classic", { chunkSize: 700, ...compressors.zstd }, { extra: true }],
  ];
  for (const [name, layout, options, changes] of cases) {
    test(`${name} (${layout})`, async () => {
      assert.equal(list(await rewrite(layout, options, changes)), listings[layout]);
    });
  }
});
