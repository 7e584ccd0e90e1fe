// SPDX-License-Identifier: MIT
#include "pipeline/replay_summary.h"

#include <algorithm>

#include "pipeline/field_reader.h"
#include "pipeline/replay_names.h"

namespace sdk::replay {

namespace {

constexpr z64u kFooterSize = kRecordPrefix + 2 * sizeof(z64u) + sizeof(z32u);

// Where the footer begins, if the stream is long enough.
std::optional<z64u> FindFooter(const zSource& stream) {
  constexpr z64u kLeast = 2 * sizeof kMagic + kFooterSize;
  if (stream.Size() < kLeast) return std::nullopt;
  return stream.Size() - sizeof kMagic - kFooterSize;
}

}  // namespace

std::optional<z64u> FindSummary(const zSource& stream) {
  const std::optional<z64u> footer = FindFooter(stream);
  if (!footer) return std::nullopt;
  z64u summary = 0;
  stream.Read(*footer + kRecordPrefix, &summary, sizeof summary);
  if (summary == 0) return footer;
  return summary < sizeof kMagic || summary > *footer ? std::nullopt : std::optional(summary);
}

Plovia::ReplaySummary ReadSummary(const zSource& stream) {
  Plovia::ReplaySummary told;
  const std::optional<z64u> start = FindSummary(stream);
  if (!start) return told;
  std::optional<z16u> frameIndex;
  try {
    PieceReader reader(stream, *start, *FindFooter(stream));
    while (reader.Left() > 0) {
      const RawRecord record = NextRecord(reader, reader.End(), Place{reader.Position()});
      if (record.opcode == Opcode::channel) {
        const auto channel = Parse<Channel>(record);
        if (channel.topic == kFrameIndexTopic) frameIndex = channel.id;
      }
      if (record.opcode == Opcode::statistics) {
        const auto statistics = Parse<Statistics>(record);
        told.chunks = statistics.chunkCount;
        for (const auto& [channel, messages] : statistics.channelMessageCounts) {
          if (channel == frameIndex) told.frames = messages;
        }
      }
      reader.SkipTo(record.End().offset);
    }
  } catch (const Damage&) {
    return {};
  }
  return told;
}

}  // namespace sdk::replay
