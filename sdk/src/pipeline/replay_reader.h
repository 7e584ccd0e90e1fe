// SPDX-License-Identifier: MIT
// Reads the frames of an indexed recording stream.
#pragma once

#include "pipeline/payload.h"
#include "pipeline/replay_index.h"

namespace sdk::replay {

class ReplayReader {
 public:
  // The stream must outlive the reader. Messages share its owner, where there is one.
  ReplayReader(Bytes stream, std::shared_ptr<const void> owner)
      : stream_(stream), owner_(std::move(owner)), index_(IndexReplay(stream)) {}
  // With a log, see IndexReplay; a message that is damaged becomes an empty handle.
  ReplayReader(Bytes stream, DamageLog& log);

  const ReplayIndex& Index() const { return index_; }

  // Moves to the next segment; throws Orv::Exception after the last one.
  void NextSegment();
  // Index entries of all frames (classic), or of the current segment.
  std::vector<z32u> FrameIndexes() const;

  // A frame by its position in a classic recording.
  Plovia::ReplayFrame Frame(z64u position);
  // The next frame of the current segment.
  Plovia::ReplayFrame NextFrame();

 private:
  Segment CurrentFrames() const;
  Plovia::ReplayFrame ReadFrame(zSize frame, bool harmless = false);
  // A message by its position in the index.
  Orv::Object<void*> ReadMessage(zSize position);
  Bytes CompressedRecords(z32u chunk);

  Bytes stream_;
  std::shared_ptr<const void> owner_;
  DamageLog* log_ = nullptr;
  ReplayIndex index_;
  zSize segmentsBegun_ = 0;
  zSize framesRead_ = 0;  // of the current segment
  z32u cachedChunk_ = kNoChunk;
  zBytes cachedRecords_;  // of that chunk: frames come in order, so one is enough
  PayloadReader payloads_;
};

}  // namespace sdk::replay
