// SPDX-License-Identifier: MIT
// What stands where in a recording stream.
#pragma once

#include <functional>

#include "pipeline/decompress.h"
#include "pipeline/payload.h"
#include "sdk/pipeline.h"

namespace sdk::replay {

inline constexpr z32u kNoChunk = static_cast<z32u>(-1);

// The payload of a scan message.
struct MessagePlace {
  z64u offset;  // in the stream, or in the records of the compressed chunk
  z64u size;
  z32u compressedChunk;  // number in ReplayIndex::compressedChunks, or kNoChunk
  z32u items = 0;        // of an array message
  bool damaged = false;
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

struct ReplayIndex {
  bool classic = false;
  std::vector<Plovia::ReplayScannerInfo> scanners;
  std::vector<MessagePlace> messages;
  std::vector<FramePlace> frames;
  std::vector<Segment> segments;
  std::vector<CompressedChunk> compressedChunks;
  // The last of the messages, which may well be the only one, where it was held to be checked.
  Orv::Object<void*> lastMessage;
  // The records of the compressed chunk that was unpacked last, which may well be the only one.
  z32u unpackedChunk = kNoChunk;
  zBytes unpackedRecords;

  // The position behind a frame's last message.
  zSize EndOf(zSize frame) const {
    return frame + 1 < frames.size() ? frames[frame + 1].firstMessage : messages.size();
  }
};

// How far a stream is walked, and how closely it is looked at.
enum class Extent {
  whole,       // everything is verified
  firstFrame,  // up to its end; no checksum is verified
  heads,       // all records, but of messages where they are alone, and no checksum
};

// Walks a whole stream once, checks its structure, its checksums and its scan messages and tells
// what stands where. Throws Orv::Exception for damage; a message that is damaged is noted in the
// index. With a log, tells there what is damaged and leaves it out, and compares what the indexes
// and the summary say. `visit`, where there is one, is given each message that is whole.
ReplayIndex IndexReplay(const zSource& stream, PayloadReader& payloads, DamageLog* log = nullptr,
                        const Plovia::MessageVisitor& visit = {});

// The same, less closely.
ReplayIndex IndexUnverified(const zSource& stream, PayloadReader& payloads, Extent extent);

}  // namespace sdk::replay
