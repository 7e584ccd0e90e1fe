// SPDX-License-Identifier: MIT
#include "pipeline/replay_index.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "pipeline/decompress.h"
#include "pipeline/replay_channels.h"
#include "pipeline/replay_names.h"
#include "pipeline/summary_check.h"

namespace sdk::replay {

namespace {

z32u ParseFrameIndex(Bytes data, const Place& place) {
  constexpr zSize kLongest = 256;  // one small number, and room for white space
  if (data.size() <= kLongest) {
    const auto document = nlohmann::json::parse(data.begin(), data.end(), nullptr, false);
    if (document.is_object() && document.size() == 1 && document.contains("index") &&
        document["index"].is_number_unsigned()) {
      const auto index = document["index"].get<z64u>();
      if (index <= 0xFFFFFFFF) return static_cast<z32u>(index);
    }
  }
  const auto shown = std::min<zSize>(data.size(), 64);
  ThrowDamage(place, "a frame index is not {\"index\":N} with an unsigned 32-bit N, but %s",
              std::string_view(reinterpret_cast<const char*>(data.data()), shown));
}

class Indexer {
 public:
  Indexer(Bytes stream, DamageLog* log) : stream_(stream), log_(log) {
    if (log != nullptr) summary_.emplace(stream);
  }

  ReplayIndex Run() {
    RunStep(log_, [&] { WalkStream(); });
    return std::move(index_);
  }

 private:
  void WalkStream() {
    const Bytes records = CheckMagic();
    RecordCursor cursor(records, Place{sizeof kMagic});
    if (cursor.AtEnd()) ThrowDamage(cursor.Position(), "there is no record");
    const RawRecord first = cursor.Next();
    if (first.opcode != Opcode::header) ThrowDamage(first.place, "the first record is no header");
    static_cast<void>(Parse<Header>(first));
    WalkDataSection(cursor);
    RunStep(log_, [&] { WalkSummary(cursor); });
    if (!described_) {
      ThrowDamage(cursor.Position(), "there is no metadata \"%s\"", kRecordingMetadata);
    }
    index_.scanners = channels_.Scanners();
  }

  // The records between the magic bytes.
  Bytes CheckMagic() const {
    const Bytes magic(kMagic);
    if (stream_.size() < magic.size() || !std::ranges::equal(stream_.first(magic.size()), magic)) {
      ThrowDamage(Place{}, "the stream does not begin as a recording does");
    }
    const Bytes rest = stream_.subspan(magic.size());
    if (rest.size() < magic.size() || !std::ranges::equal(rest.last(magic.size()), magic)) {
      RunStep(log_, [&] {
        ThrowDamage(Place{stream_.size()}, "the stream does not end as a recording does");
      });
      return rest;
    }
    return rest.first(rest.size() - magic.size());
  }

  void WalkDataSection(RecordCursor& cursor) {
    for (bool atEnd = false; !atEnd;) {
      if (cursor.AtEnd()) ThrowDamage(cursor.Position(), "the data section has no end");
      const RawRecord record = cursor.Next();
      atEnd = record.opcode == Opcode::dataEnd;
      CheckSummary([&] { summary_->TakeData(record); });
      RunStep(log_, [&] { TakeRecord(record); });
    }
  }

  // What the indexes and the summary say matters only where damage is told.
  template <class Step>
  void CheckSummary(const Step& step) {
    if (summary_) RunStep(log_, step, true);
  }

  void TakeRecord(const RawRecord& record) {
    switch (record.opcode) {
      case Opcode::metadata:
        return TakeMetadata(record);
      case Opcode::chunk:
        return TakeChunk(record);
      case Opcode::dataEnd: {
        const Bytes section = stream_.first(static_cast<zSize>(record.place.offset));
        return CheckCrc(section, Parse<DataEnd>(record).dataSectionCrc, record.place,
                        "data section");
      }
      case Opcode::header:
      case Opcode::footer:
        ThrowMisplaced(record);
      default:
        TakeContent(record, kNoChunk);
    }
  }

  // Records that may stand in a chunk as well as outside. What is not known is skipped.
  void TakeContent(const RawRecord& record, z32u compressedChunk) {
    if (record.opcode == Opcode::schema) channels_.AddSchema(record);
    if (record.opcode == Opcode::channel) channels_.AddChannel(record);
    if (record.opcode == Opcode::message) TakeMessage(record, compressedChunk);
  }

  void TakeMessage(const RawRecord& record, z32u compressedChunk) {
    const auto message = Parse<Message>(record);
    const Bytes data = message.data.bytes;
    const Place place = record.place + kRecordPrefix + (record.content.size() - data.size());
    const ReplayChannels::Kind kind = channels_.KindOf(message, record.place);
    if (kind == ReplayChannels::Kind::frameIndex) {
      index_.frames.push_back({ParseFrameIndex(data, place), index_.messages.size()});
    } else if (kind == ReplayChannels::Kind::source) {
      if (index_.frames.empty()) {
        ThrowDamage(record.place, "a scan message stands before the first frame index");
      }
      index_.messages.push_back({place.offset, data.size(), compressedChunk});
    }
  }

  void TakeChunk(const RawRecord& record) {
    if (summary_) summary_->BeginChunk();
    const auto chunk = Parse<Chunk>(record);
    const zSize firstFrame = index_.frames.size();
    if (chunk.compression.empty()) {
      const Bytes records = chunk.records.bytes;
      const auto before = static_cast<z64u>(records.data() - stream_.data());
      if (chunk.uncompressedSize != records.size()) {
        RunStep(log_, [&] {
          ThrowDamage(record.place, "the chunk declares %llu bytes of records and holds %zu",
                      chunk.uncompressedSize, records.size());
        });
      }
      WalkChunk(chunk, records, Place{before}, record.place, kNoChunk);
    } else {
      const auto number = static_cast<z32u>(index_.compressedChunks.size());
      index_.compressedChunks.push_back({chunk, record.place.offset});
      // Only places are kept; the records are decompressed again when a frame is read.
      const zBytes records = Decompress(chunk, record.place);
      WalkChunk(chunk, records, Place{0, record.place.offset}, record.place, number);
    }
    const zSize frameCount = index_.frames.size() - firstFrame;
    if (frameCount > 0) index_.segments.push_back({firstFrame, frameCount});
  }

  void WalkChunk(const Chunk& chunk, Bytes records, const Place& first, const Place& chunkPlace,
                 z32u compressedChunk) {
    RunStep(log_, [&] { CheckCrc(records, chunk.uncompressedCrc, chunkPlace, "chunk's records"); });
    for (RecordCursor cursor(records, first); !cursor.AtEnd();) {
      const RawRecord record = cursor.Next();
      RunStep(log_, [&] { TakeChunkRecord(record, compressedChunk); });
      CheckSummary([&] { summary_->TakeChunkRecord(record, record.place.offset - first.offset); });
    }
    if (summary_) summary_->EndChunk();
  }

  void TakeChunkRecord(const RawRecord& record, z32u compressedChunk) {
    switch (record.opcode) {
      case Opcode::header:
      case Opcode::footer:
      case Opcode::chunk:
      case Opcode::dataEnd:
        ThrowMisplaced(record);
      default:
        TakeContent(record, compressedChunk);
    }
  }

  [[noreturn]] static void ThrowMisplaced(const RawRecord& record) {
    ThrowDamage(record.place, "a record of type 0x%02x does not belong here", record.opcode);
  }

  void TakeMetadata(const RawRecord& record) {
    const auto metadata = Parse<Metadata>(record);
    if (metadata.name == kScannerMetadata) channels_.AddScanner(metadata.metadata);
    if (metadata.name != kRecordingMetadata) return;
    const std::string_view layout = TextOf(metadata.metadata, kLayoutKey);
    const std::string_view version = TextOf(metadata.metadata, kVersionKey);
    if (layout != kClassicLayout && layout != kSegmentedLayout) {
      ThrowDamage(record.place, "unknown layout \"%s\"", layout);
    }
    if (version != kVersion) ThrowDamage(record.place, "unknown version \"%s\"", version);
    if (described_ && index_.classic != (layout == kClassicLayout)) {
      ThrowDamage(record.place, "the layout is told twice, and differently");
    }
    index_.classic = layout == kClassicLayout;
    described_ = true;
  }

  // The summary repeats what the data section holds.
  void WalkSummary(RecordCursor& cursor) {
    const Place start = cursor.Position();
    for (;;) {
      if (cursor.AtEnd()) ThrowDamage(cursor.Position(), "there is no footer");
      const RawRecord record = cursor.Next();
      if (record.opcode != Opcode::footer) {
        CheckSummary([&] { summary_->TakeSummary(record); });
        continue;
      }
      if (!cursor.AtEnd()) ThrowDamage(cursor.Position(), "records stand after the footer");
      const auto footer = Parse<Footer>(record);
      const z64u end = record.place.offset + kRecordPrefix + sizeof footer.summaryStart +
                       sizeof footer.summaryOffsetStart;
      const z64u summary = footer.summaryStart == 0 ? record.place.offset : footer.summaryStart;
      if (summary < start.offset || summary > record.place.offset) {
        ThrowDamage(record.place, "the summary is said to start at %llu", summary);
      }
      const Bytes checked =
          stream_.subspan(static_cast<zSize>(summary), static_cast<zSize>(end - summary));
      CheckCrc(checked, footer.summaryCrc, record.place, "summary");
      return;
    }
  }

  Bytes stream_;
  DamageLog* log_;                       // null: damage is thrown
  std::optional<SummaryCheck> summary_;  // with a log
  ReplayIndex index_;
  ReplayChannels channels_;
  bool described_ = false;
};

}  // namespace

ReplayIndex IndexReplay(Bytes stream, DamageLog* log) { return Indexer(stream, log).Run(); }

}  // namespace sdk::replay
