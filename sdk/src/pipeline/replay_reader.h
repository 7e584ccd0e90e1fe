// SPDX-License-Identifier: MIT
// Reads the frames of an indexed recording stream.
#pragma once

#include <optional>

#include "pipeline/payload.h"
#include "pipeline/replay_index.h"

namespace sdk::replay {

class ReplayReader {
 public:
  explicit ReplayReader(zSourcePtr stream, Extent extent = Extent::whole)
      : stream_(std::move(stream)),
        extent_(extent),
        index_(extent == Extent::whole ? IndexReplay(*stream_, payloads_)
                                       : IndexUnverified(*stream_, payloads_, extent)) {}
  // With a log, see IndexReplay; messages that are damaged are told there too.
  ReplayReader(zSourcePtr stream, DamageLog& log, const Plovia::MessageVisitor& visit);

  const ReplayIndex& Index() const { return index_; }

  // Moves to the next segment; throws Orv::Exception after the last one.
  void NextSegment();
  // Index entries of all frames (classic), or of the current segment.
  std::vector<z32u> FrameIndexes() const;

  // A frame by its position in a classic recording.
  Plovia::ReplayFrame Frame(z64u position);
  // The next frame of the current segment.
  Plovia::ReplayFrame NextFrame();

  zSize ItemCount(z64u message);
  Orv::Object<void*> ReadMessage(z64u message);
  // See Plovia::ReplaySerializer.
  std::optional<Plovia::SurfaceStream> OpenSurface(z64u message);

 private:
  const MessagePlace& PlaceOf(z64u message) const;
  Segment CurrentFrames() const;
  // Throws where a message of the frame is damaged, unless that is told in the log.
  Plovia::ReplayFrame TakeFrame(zSize frame);
  // Where the message stands, until one of another compressed chunk is read. Frames come in order,
  // so one unpacked chunk is enough.
  const zSource& SourceOf(const MessagePlace& place);

  zSourcePtr stream_;
  Extent extent_ = Extent::whole;
  PayloadReader payloads_;
  DamageLog* log_ = nullptr;
  ReplayIndex index_;
  std::optional<zMemorySource> unpacked_;  // the index's unpacked records
  zSize segmentsBegun_ = 0;
  zSize framesRead_ = 0;  // of the current segment
};

}  // namespace sdk::replay
