// SPDX-License-Identifier: MIT
// Recordings exchanged with the public MCAP library, in both directions.
import { crc32 } from "@foxglove/crc";
import zstd from "@foxglove/wasm-zstd";
import { McapIndexedReader, McapStreamReader, McapWriter, TempBuffer } from "@mcap/core";
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdtempSync, readFileSync, rmSync, symlinkSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import { after, before, describe, test } from "node:test";

import { decodeScanMessage } from "./scan_message.mjs";

const tool = process.env.TRELVANE_REPLAY;
const bfbs = readFileSync(process.env.TRELVANE_BFBS);
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
    ["Top", "Top side", "14", "0", "0"],
    ["Cloud", "Cloud", "15", "0", "1"],
    ["Line", "Line", "12", "0", "18446744073709551615"],
    ["Trace", "Trace ä", "13", "0", "0"],
    ["Many", "Many", "14", "1", "0"],
  ];

  for (const layout of layouts) {
    test(`record by record, ${layout}`, () => {
      const records = streamRecords(recordings[layout]);
      assert.deepEqual(records[0], { type: "Header", profile: "trelvane-replay", library: "Trelvane 1.0.0.4" });
      assert.deepEqual(
        ofType(records, "Metadata").map(({ name, metadata }) => [name, [...metadata]]),
        [
          ["recording", [["layout", layout], ["version", "1"]]],
          ["scanner", [["family", "r4xxx"], ["id", "Scanner-0"], ["name", "Scanner 0"]]],
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
        ...sources.map(([name, display, type, arrayed, reserved], i) => [
          i + 1, 1, `/Scanner-0/${name}`, "flatbuffer",
          [["scanner", "0"], ["name", name], ["display_name", display], ["data_type", type],
           ["arrayed", arrayed], ["reserved", reserved]],
        ]),
      ];
      assert.deepEqual(channels, [...expected, ...expected]);

      const messages = ofType(records, "Message");
      assert.equal(messages.length, 18);
      messages.forEach((message, i) => {
        const frame = Math.floor(i / 6);
        assert.equal(message.channelId, i % 6);
        assert.equal(message.sequence, frame);
        assert.equal(message.logTime, BigInt(frame) * 100_000_000n);
        if (i % 6 === 0) {
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
    const reader = await McapIndexedReader.Initialize({ readable: new TempBuffer(recordings.segmented) });
    assert.equal(reader.chunkIndexes.length, 1);
    assert.equal(reader.metadataIndexes.length, 2);
    assert.deepEqual([...reader.summaryOffsetsByOpcode.keys()], [0x03, 0x04, 0x0b, 0x0d, 0x08]);
    const { statistics } = reader;
    assert.deepEqual(
      [statistics.messageCount, statistics.schemaCount, statistics.channelCount,
       statistics.metadataCount, statistics.chunkCount, statistics.messageStartTime,
       statistics.messageEndTime, [...statistics.channelMessageCounts]],
      [18n, 1, 6, 2, 1, 0n, 200_000_000n, [0, 1, 2, 3, 4, 5].map((channel) => [channel, 3n])],
    );
    const topics = [];
    for await (const message of reader.readMessages({ validateCrcs: true, topics: ["/Scanner-0/Line"] })) {
      topics.push([message.channelId, message.sequence, decodeScanMessage(message.data).kind]);
    }
    assert.deepEqual(topics, [[3, 0, "profile"], [3, 1, "profile"], [3, 2, "profile"]]);
    for await (const metadata of reader.readMetadata({ name: "scanner" })) {
      assert.equal(metadata.metadata.get("id"), "Scanner-0");
    }
  });

  test("and a payload holds the scan", () => {
    const [, surface, cloud, profile, trace, array] = ofType(streamRecords(recordings.classic), "Message")
      .map((message, i) => (i % 6 === 0 ? null : decodeScanMessage(message.data)));
    assert.deepEqual(surface, {
      kind: "surface", width: 5, length: 3, pointType: "height",
      points: Array.from({ length: 15 }, (_, i) => 1000 + i),
      intensities: Array.from({ length: 15 }, (_, i) => (-29000 + 7 * (i + 1)) & 0xff),
      offset: [2.5, -2, 3], scale: [0.1, 0.2, 1e-9], box: [1, 2, 3, 4, 5, 7.5], resampled: true,
      stamp: [1n, 11n, -3n, -3n, 0xbeefn, 5n, 5n, -1n],
    });
    assert.deepEqual([cloud.pointType, cloud.width, cloud.length, cloud.resampled], ["point3d", 2, 3, false]);
    assert.deepEqual(cloud.points, Array.from({ length: 18 }, (_, i) => -1000 + i));
    assert.equal(cloud.intensities, null);
    assert.deepEqual([profile.kind, profile.width, profile.pointType], ["profile", 7, "height"]);
    assert.equal(profile.intensities.length, 7);
    assert.deepEqual([trace.pointType, trace.points.length], ["point2d", 14]);
    assert.deepEqual(array.items.map((item) => item.pointType), ["height", "point3d"]);
  });

  test("and finds a changed byte", () => {
    const changed = Uint8Array.from(recordings.segmented);
    const { summaryStart } = ofType(streamRecords(changed), "Footer")[0];
    changed[Number(summaryStart) / 2] ^= 1;
    assert.throws(() => streamRecords(changed), /CRC/);
    assert.throws(() => list(changed), /checksum of the chunk/);
  });
});

describe("the example programs read our recordings", () => {
  const examples = path.resolve("../../examples");
  const expected = [40, 41, 42].map((frame) =>
    [`frame ${frame}`, "/Scanner-0/Top 5 x 3, 15 valid heights from 3 to 3",
     "/Scanner-0/Cloud 2 x 3 point cloud", "/Scanner-0/Line holds no surface",
     "/Scanner-0/Trace holds no surface", "/Scanner-0/Many holds no surface\n"].join("\n"),
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

describe("we read what the public library writes", () => {
  const compressChunk = (data) => ({ compression: "zstd", compressedData: zstd.compress(data) });
  const bare = {
    useStatistics: false, useSummaryOffsets: false, repeatSchemas: false, repeatChannels: false,
    useMessageIndex: false, useChunkIndex: false, useMetadataIndex: false, useAttachmentIndex: false,
  };
  const cases = [
    ["one chunk", "segmented", { chunkSize: 100_000_000 }, {}],
    ["a chunk for every few messages", "segmented", { chunkSize: 600 }, {}],
    ["a chunk for every message", "segmented", { chunkSize: 1 }, {}],
    ["compressed chunks", "segmented", { chunkSize: 1000, compressChunk }, {}],
    ["other ids and strange records", "segmented", { chunkSize: 500 }, { shifted: true, extra: true }],
    ["no summary", "segmented", { chunkSize: 500, ...bare }, {}],
    ["no chunks", "classic", { useChunks: false }, {}],
    ["no chunks, no summary, other ids", "classic", { useChunks: false, ...bare }, { shifted: true }],
    ["chunks", "classic", { chunkSize: 700, compressChunk }, { extra: true }],
  ];
  for (const [name, layout, options, changes] of cases) {
    test(`${name} (${layout})`, async () => {
      assert.equal(list(await rewrite(layout, options, changes)), listings[layout]);
    });
  }
});
