// SPDX-License-Identifier: MIT
// What stands where in a recording stream.
#pragma once

#include "pipeline/field_reader.h"
#include "sdk/pipeline.h"

namespace sdk::replay {

inline constexpr z32u kNoChunk = static_cast<z32u>(-1);

// The payload of a scan message.
struct MessagePlace {
  z64u offset;  // in the stream, or in the records of the compressed chunk
  z64u size;
  z32u compressedChunk;  // number in ReplayIndex::compressedChunks, or kNoChunk
};

struct FramePlace {
  z32u index;          // the frame's index entry
  zSize firstMessage;  // in ReplayIndex::messages; the frame ends where the next one begins
};

// A chunk that begins frames.
struct Segment {
  zSize firstFrame;
  zSize frameCount;
};

struct CompressedChunk {
  Chunk chunk;
  z64u offset;  // of its record in the stream
};

struct ReplayIndex {
  bool classic = false;
  std::vector<Plovia::ReplayScannerInfo> scanners;
  std::vector<MessagePlace> messages;
  std::vector<FramePlace> frames;
  std::vector<Segment> segments;
  std::vector<CompressedChunk> compressedChunks;
};

// Walks a whole stream, checks its structure and its checksums and tells what stands where. Scan
// messages are found, not read. The index looks into the stream. Throws Orv::Exception for damage.
// With a log, tells there what is damaged and leaves it out, and compares what the indexes and the
// summary say.
ReplayIndex IndexReplay(Bytes stream, DamageLog* log = nullptr);

}  // namespace sdk::replay
