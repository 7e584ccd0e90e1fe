// SPDX-License-Identifier: MIT
#include "pipeline/replay_reader.h"

namespace sdk::replay {

namespace {

constexpr Orv::Operation kNextSegment{"pipeline", "Plovia::ReplaySerializer::LoadDataIndexFiles"};
constexpr Orv::Operation kReadData{"pipeline", "Plovia::ReplaySerializer::ReadData"};

}  // namespace

ReplayReader::ReplayReader(zSourcePtr stream, DamageLog& log, const Plovia::MessageVisitor& visit)
    : stream_(std::move(stream)),
      log_(&log),
      index_(IndexReplay(*stream_, payloads_, log_, visit)) {
  // Nobody asks for frames outside of segments. Damage in them is told all the same.
  zSize frame = 0;
  const auto tell = [&](zSize end, bool harmless) {
    for (; frame < end; ++frame) {
      for (zSize i = index_.frames[frame].firstMessage; i < index_.EndOf(frame); ++i) {
        if (!index_.messages[i].damaged || log.size() >= Plovia::kMostReplayProblems) continue;
        const zSize told = log.size();
        RunStep(
            log_, [&] { static_cast<void>(ReadMessage(i)); }, harmless);
        if (log.size() > told) log.back().message = i;
      }
    }
  };
  if (!index_.classic) {
    for (const Segment& segment : index_.segments) {
      tell(segment.firstFrame, true);
      tell(segment.firstFrame + segment.frameCount, false);
    }
  }
  tell(index_.frames.size(), !index_.classic);
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
  return TakeFrame(static_cast<zSize>(position));
}

Plovia::ReplayFrame ReplayReader::NextFrame() {
  const Segment current = CurrentFrames();
  if (framesRead_ == current.frameCount) {
    kReadData.Fail(zERROR_PARAMETER, "The segment has no further frame");
  }
  return TakeFrame(current.firstFrame + framesRead_++);
}

Plovia::ReplayFrame ReplayReader::TakeFrame(zSize frame) {
  const FramePlace& place = index_.frames[frame];
  const zSize end = index_.EndOf(frame);
  for (zSize i = place.firstMessage; i < end && log_ == nullptr; ++i) {
    if (index_.messages[i].damaged) static_cast<void>(ReadMessage(i));
  }
  return {place.index, place.firstMessage, end - place.firstMessage};
}

const MessagePlace& ReplayReader::PlaceOf(z64u message) const {
  if (message >= index_.messages.size()) {
    kReadData.Fail(zERROR_PARAMETER, "The recording has no such message");
  }
  return index_.messages[static_cast<zSize>(message)];
}

zSize ReplayReader::ItemCount(z64u message) {
  const MessagePlace& place = PlaceOf(message);
  // After a walk over the heads alone nobody knows yet.
  return extent_ == Extent::heads ? MxArrayMsg_Count(ReadMessage(message).Get()) : place.items;
}

Orv::Object<void*> ReplayReader::ReadMessage(z64u message) {
  const MessagePlace& place = PlaceOf(message);
  Orv::Object<void*> last = std::exchange(index_.lastMessage, {});
  if (last && message + 1 == index_.messages.size()) return last;
  last.Reset();  // its memory serves this one
  PieceReader reader(SourceOf(place), place.offset, place.offset + place.size);
  Place told{place.offset, std::nullopt};
  if (place.compressedChunk != kNoChunk) {
    told.chunkOffset = index_.compressedChunks[place.compressedChunk].offset;
  }
  return payloads_.Read(reader, place.size, told);
}

std::optional<Plovia::SurfaceStream> ReplayReader::OpenSurface(z64u message) {
  const MessagePlace& place = PlaceOf(message);
  const PayloadLayouts& layouts = payloads_.Layouts();
  zBytes start(layouts.StartSize(place.size));
  SourceOf(place).Read(place.offset, start.data(), start.size());
  const std::optional<PayloadHead> head = layouts.Find(start, place.size);
  if (!head || head->pointType != zType::z16s) return std::nullopt;
  Plovia::SurfaceStream surface = head->surface;
  surface.heights = [this, &place, head = *head](const Plovia::SurfaceStream::Put& put) {
    PieceReader reader(SourceOf(place), place.offset + head.size, place.offset + place.size);
    PutHeights(reader, head.surface, put);
    return head.box;
  };
  return surface;
}

const zSource& ReplayReader::SourceOf(const MessagePlace& place) {
  if (place.compressedChunk == kNoChunk) return *stream_;
  if (index_.unpackedChunk != place.compressedChunk) {
    const CompressedChunk& compressed = index_.compressedChunks[place.compressedChunk];
    index_.unpackedChunk = kNoChunk;
    PieceReader reader(*stream_, compressed.packedStart,
                       compressed.packedStart + compressed.packedSize);
    Decompress(compressed, reader, compressed.unpackedSize, index_.unpackedRecords);
    index_.unpackedChunk = place.compressedChunk;
  }
  return unpacked_.emplace(index_.unpackedRecords);
}

}  // namespace sdk::replay
