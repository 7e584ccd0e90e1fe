// SPDX-License-Identifier: MIT
#include "pipeline/replay_reader.h"

#include "pipeline/decompress.h"

namespace sdk::replay {

namespace {

constexpr Orv::Operation kNextSegment{"pipeline", "Plovia::ReplaySerializer::LoadDataIndexFiles"};
constexpr Orv::Operation kReadData{"pipeline", "Plovia::ReplaySerializer::ReadData"};

}  // namespace

ReplayReader::ReplayReader(Bytes stream, DamageLog& log)
    : stream_(stream), log_(&log), index_(IndexReplay(stream, log_)) {
  if (index_.classic) return;
  // Nobody asks for frames outside of segments. Damage in them is told all the same.
  zSize frame = 0;
  const auto readUpTo = [&](zSize end) {
    for (; frame < end; ++frame) static_cast<void>(ReadFrame(frame, true));
  };
  for (const Segment& segment : index_.segments) {
    readUpTo(segment.firstFrame);
    frame += segment.frameCount;
  }
  readUpTo(index_.frames.size());
}

void ReplayReader::NextSegment() {
  if (segmentsBegun_ == index_.segments.size()) {
    kNextSegment.Fail(zERROR_PARAMETER, "The recording has no further segment");
  }
  ++segmentsBegun_;
  framesRead_ = 0;
}

Segment ReplayReader::CurrentFrames() const {
  if (index_.classic) return {0, index_.frames.size()};
  return segmentsBegun_ == 0 ? Segment{0, 0} : index_.segments[segmentsBegun_ - 1];
}

std::vector<z32u> ReplayReader::FrameIndexes() const {
  const Segment current = CurrentFrames();
  std::vector<z32u> indexes;
  indexes.reserve(current.frameCount);
  for (zSize i = 0; i < current.frameCount; ++i) {
    indexes.push_back(index_.frames[current.firstFrame + i].index);
  }
  return indexes;
}

Plovia::ReplayFrame ReplayReader::Frame(z64u position) {
  if (position >= index_.frames.size()) {
    kReadData.Fail(zERROR_PARAMETER, "The recording has no such frame");
  }
  return ReadFrame(static_cast<zSize>(position));
}

Plovia::ReplayFrame ReplayReader::NextFrame() {
  const Segment current = CurrentFrames();
  if (framesRead_ == current.frameCount) {
    kReadData.Fail(zERROR_PARAMETER, "The segment has no further frame");
  }
  return ReadFrame(current.firstFrame + framesRead_++);
}

Plovia::ReplayFrame ReplayReader::ReadFrame(zSize frame, bool harmless) {
  const zSize end = frame + 1 < index_.frames.size() ? index_.frames[frame + 1].firstMessage
                                                     : index_.messages.size();
  Plovia::ReplayFrame messages;
  for (zSize i = index_.frames[frame].firstMessage; i < end; ++i) {
    Orv::Object<void*>& message = messages.emplace_back();
    RunStep(
        log_, [&] { message = ReadMessage(i); }, harmless);
  }
  return messages;
}

Orv::Object<void*> ReplayReader::ReadMessage(zSize position) {
  const MessagePlace& message = index_.messages[position];
  const bool compressed = message.compressedChunk != kNoChunk;
  const Bytes records = compressed ? CompressedRecords(message.compressedChunk) : stream_;
  Place place{message.offset};
  if (compressed) place.chunkOffset = index_.compressedChunks[message.compressedChunk].offset;
  return payloads_.Read(
      records.subspan(static_cast<zSize>(message.offset), static_cast<zSize>(message.size)),
      compressed ? nullptr : owner_, index_.messages.size() == 1, place);
}

Bytes ReplayReader::CompressedRecords(z32u chunk) {
  if (cachedChunk_ != chunk) {
    const CompressedChunk& compressed = index_.compressedChunks[chunk];
    cachedChunk_ = kNoChunk;
    cachedRecords_ = {};  // before the next ones take their memory
    cachedRecords_ = Decompress(compressed.chunk, Place{compressed.offset});
    cachedChunk_ = chunk;
  }
  return cachedRecords_;
}

}  // namespace sdk::replay
