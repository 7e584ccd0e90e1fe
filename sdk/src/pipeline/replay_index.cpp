// SPDX-License-Identifier: MIT
#include "pipeline/replay_index.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "pipeline/replay_channels.h"
#include "pipeline/replay_names.h"
#include "pipeline/replay_summary.h"
#include "pipeline/summary_check.h"

namespace sdk::replay {

namespace {

z32u ParseFrameIndex(PieceReader& reader, z64u size, const Place& place) {
  constexpr zSize kLongest = 256;  // one small number, and room for white space
  const Bytes data = reader.Look(static_cast<zSize>(std::min<z64u>(size, kLongest)));
  if (size <= kLongest) {
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

// Ends a walk that goes no further than the first frame.
struct FirstFrameIsRead {};

// A source of which little is used here and there: it is read in small pieces, that grow where one
// follows the other.
class HeadsSource final : public zSource {
 public:
  explicit HeadsSource(const zSource& whole) : whole_(whole) {}

  z64u Size() const noexcept override { return whole_.Size(); }
  void Read(z64u offset, void* destination, zSize size) const override {
    whole_.Read(offset, destination, size);
    piece_ = offset == end_ ? std::min(2 * piece_, whole_.Piece()) : kLeastPiece;
    end_ = offset + size;
  }
  const z8u* Bytes() const noexcept override { return whole_.Bytes(); }
  zSize Piece() const noexcept override { return piece_; }

 private:
  static constexpr zSize kLeastPiece = 512;

  const zSource& whole_;
  mutable zSize piece_ = kLeastPiece;
  mutable z64u end_ = 0;  // of what was read last
};

class Indexer {
 public:
  Indexer(const zSource& stream, PayloadReader& payloads, DamageLog* log,
          const Plovia::MessageVisitor& visit)
      : stream_(stream),
        payloads_(payloads),
        log_(log),
        visit_(visit),
        budget_(UnpackingBudget(stream.Size())) {
    if (log != nullptr) summary_.emplace(stream);
  }

  ReplayIndex Run() {
    RunStep(log_, [&] { WalkStream(); });
    return std::move(index_);
  }

  ReplayIndex RunUnverified(Extent extent) {
    extent_ = extent;
    WalkStream();
    if (extent == Extent::firstFrame && !index_.frames.empty()) index_.segments = {{0, 1}};
    return std::move(index_);
  }

 private:
  bool IsVerified() const { return extent_ == Extent::whole; }

  void WalkStream() {
    PieceReader reader(stream_, 0, CheckMagic());
    std::optional<PieceReader::Sum> section;
    if (IsVerified() && IsSectionSummed()) section.emplace(reader);
    reader.SkipTo(sizeof kMagic);
    if (reader.Left() == 0) ThrowDamage(PlaceOf(reader), "there is no record");
    const RawRecord first = NextRecord(reader, reader.End(), PlaceOf(reader));
    if (first.opcode != Opcode::header) ThrowDamage(first.place, "the first record is no header");
    static_cast<void>(Parse<Header>(first));
    try {
      WalkDataSection(reader, section);
      section.reset();
      if (IsVerified()) RunStep(log_, [&] { WalkSummary(reader); });
    } catch (const FirstFrameIsRead&) {
      // What stands behind it is not looked at.
    }
    if (!described_) {
      ThrowDamage(PlaceOf(reader), "there is no metadata \"%s\"", kRecordingMetadata);
    }
    index_.scanners = channels_.Scanners();
  }

  static Place PlaceOf(const PieceReader& reader) { return {reader.Position(), std::nullopt}; }

  // Where the records end that stand between the magic bytes.
  z64u CheckMagic() const {
    if (!HasMagicAt(0)) ThrowDamage(Place{}, "the stream does not begin as a recording does");
    const z64u size = stream_.Size();
    if (size >= 2 * sizeof kMagic && HasMagicAt(size - sizeof kMagic)) return size - sizeof kMagic;
    RunStep(log_, [&] { ThrowDamage(Place{size}, "the stream does not end as a recording does"); });
    return size;
  }

  bool HasMagicAt(z64u offset) const {
    if (stream_.Size() - offset < sizeof kMagic) return false;
    z8u bytes[sizeof kMagic];
    stream_.Read(offset, bytes, sizeof bytes);
    return std::ranges::equal(bytes, kMagic);
  }

  // Whether the end of the data section, where the footer says that it is, has a checksum. If that
  // is wrong, the section is read again for it.
  bool IsSectionSummed() const {
    const std::optional<z64u> summary = FindSummary(stream_);
    if (!summary) return false;
    z32u stored = 0;
    stream_.Read(*summary - sizeof stored, &stored, sizeof stored);
    return stored != 0;
  }

  void WalkDataSection(PieceReader& reader, const std::optional<PieceReader::Sum>& section) {
    for (bool atEnd = false; !atEnd;) {
      if (reader.Left() == 0) ThrowDamage(PlaceOf(reader), "the data section has no end");
      const z32u sum = section ? section->Value() : 0;
      const RawRecord record = NextRecord(reader, reader.End(), PlaceOf(reader));
      atEnd = record.opcode == Opcode::dataEnd;
      CheckSummary([&] { summary_->TakeData(record, reader); });
      RunStep(log_, [&] {
        if (atEnd && IsVerified()) {
          const z32u stored = Parse<DataEnd>(record).dataSectionCrc;
          const bool summed = section.has_value() || stored == 0;
          CheckSum(summed ? sum : SumOf(stream_, 0, record.place.offset), stored, record.place,
                   "data section");
        } else if (!atEnd) {
          TakeRecord(record, reader);
        }
      });
      reader.SkipTo(record.End().offset);
    }
  }

  // What the indexes and the summary say matters only where damage is told.
  template <class Step>
  void CheckSummary(const Step& step) {
    if (summary_) RunStep(log_, step, true);
  }

  void TakeRecord(const RawRecord& record, PieceReader& reader) {
    switch (record.opcode) {
      case Opcode::metadata:
        return TakeMetadata(record);
      case Opcode::chunk:
        return TakeChunk(record, reader);
      case Opcode::header:
      case Opcode::footer:
        ThrowMisplaced(record);
      default:
        TakeContent(record, reader, kNoChunk);
    }
  }

  // Records that may stand in a chunk as well as outside. What is not known is skipped.
  void TakeContent(const RawRecord& record, PieceReader& reader, z32u compressedChunk) {
    if (record.opcode == Opcode::schema) channels_.AddSchema(record);
    if (record.opcode == Opcode::channel) channels_.AddChannel(record);
    if (record.opcode == Opcode::message) TakeMessage(record, reader, compressedChunk);
  }

  void TakeMessage(const RawRecord& record, PieceReader& reader, z32u compressedChunk) {
    const auto message = Parse<Message>(record);
    const z64u size = message.data.size;
    const Place place = record.place + kRecordPrefix + message.data.start;
    const ReplayChannels::Kind kind = channels_.KindOf(message, record.place);
    if (kind == ReplayChannels::Kind::frameIndex) {
      if (extent_ == Extent::firstFrame && !index_.frames.empty()) throw FirstFrameIsRead();
      index_.frames.push_back({ParseFrameIndex(reader, size, place), index_.messages.size()});
    } else if (kind == ReplayChannels::Kind::source) {
      if (index_.frames.empty()) {
        ThrowDamage(record.place, "a scan message stands before the first frame index");
      }
      index_.messages.push_back({place.offset, size, compressedChunk});
      if (extent_ != Extent::heads) CheckPayload(index_.messages.back(), reader, place);
    }
  }

  void CheckPayload(MessagePlace& message, PieceReader& reader, const Place& place) {
    Orv::Object<void*>& scan = index_.lastMessage;
    scan.Reset();  // its memory serves this one
    if (PassSurface(message, reader)) return;
    try {
      scan = payloads_.Read(reader, message.size, place);
      message.items = static_cast<z32u>(MxArrayMsg_Count(scan.Get()));
      if (visit_.message) visit_.message(index_.messages.size() - 1, scan.Get());
    } catch (const Damage&) {
      message.damaged = true;  // whoever asks for it is told
    }
  }

  // Most messages need not be held to be checked.
  bool PassSurface(const MessagePlace& message, PieceReader& reader) const {
    const PayloadLayouts& layouts = payloads_.Layouts();
    auto head = layouts.Find(reader.Look(layouts.StartSize(message.size)), message.size);
    if (!head || !visit_.surface) return head.has_value();
    if (head->pointType != zType::z16s) return false;
    reader.Take(head->size);
    head->surface.heights = [&](const Plovia::SurfaceStream::Put& put) {
      PutHeights(reader, head->surface, put);
      return head->box;
    };
    visit_.surface(index_.messages.size() - 1, head->surface);
    return true;
  }

  void TakeChunk(const RawRecord& record, PieceReader& reader) {
    if (summary_) summary_->BeginChunk();
    const auto chunk = Parse<Chunk>(record);
    const zSize firstFrame = index_.frames.size();
    const z64u start = record.place.offset + kRecordPrefix + chunk.records.start;
    const z64u size = chunk.records.size;
    if (chunk.compression.empty()) {
      if (chunk.uncompressedSize != size) {
        RunStep(log_, [&] {
          ThrowDamage(record.place, "the chunk declares %llu bytes of records and holds %llu",
                      chunk.uncompressedSize, size);
        });
      }
      WalkChunk(chunk.uncompressedCrc, reader, {start, std::nullopt}, size, record.place, kNoChunk);
    } else {
      const auto number = static_cast<z32u>(index_.compressedChunks.size());
      index_.compressedChunks.push_back({std::string(chunk.compression), chunk.uncompressedSize,
                                         start, size, record.place.offset});
      // Of all but the last only places are kept; their records are unpacked again when a frame is
      // read.
      zBytes& records = index_.unpackedRecords;
      index_.unpackedChunk = kNoChunk;
      Decompress(index_.compressedChunks.back(), reader, budget_, records);
      index_.unpackedChunk = number;
      budget_ -= records.size();
      const zMemorySource source(records);
      PieceReader unpacked(source, 0, records.size());
      WalkChunk(chunk.uncompressedCrc, unpacked, {0, record.place.offset}, records.size(),
                record.place, number);
    }
    const zSize frameCount = index_.frames.size() - firstFrame;
    if (frameCount > 0) index_.segments.push_back({firstFrame, frameCount});
  }

  // The records of a chunk, before which the reader stands at `first`. A wrong checksum explains
  // all other damage in it.
  void WalkChunk(z32u storedSum, PieceReader& reader, const Place& first, z64u size,
                 const Place& chunkPlace, z32u compressedChunk) {
    const z64u end = first.offset + size;
    if (!IsVerified()) return WalkChunkRecords(reader, first, end, compressedChunk);
    std::exception_ptr failure;
    z32u computed = 0;
    {
      const PieceReader::Sum sum(reader);
      try {
        WalkChunkRecords(reader, first, end, compressedChunk);
      } catch (const Damage&) {
        failure = std::current_exception();
      }
      reader.SkipTo(end);
      computed = sum.Value();
    }
    RunStep(log_, [&] { CheckSum(computed, storedSum, chunkPlace, "chunk's records"); });
    if (failure != nullptr) std::rethrow_exception(failure);
    if (summary_) summary_->EndChunk();
  }

  void WalkChunkRecords(PieceReader& reader, const Place& first, z64u end, z32u compressedChunk) {
    for (Place place = first; place.offset < end;) {
      const RawRecord record = NextRecord(reader, end, place);
      CheckSummary([&] { summary_->TakeChunkRecord(record, place.offset - first.offset); });
      RunStep(log_, [&] { TakeChunkRecord(record, reader, compressedChunk); });
      place = record.End();
      reader.SkipTo(place.offset);
    }
  }

  void TakeChunkRecord(const RawRecord& record, PieceReader& reader, z32u compressedChunk) {
    switch (record.opcode) {
      case Opcode::header:
      case Opcode::footer:
      case Opcode::chunk:
      case Opcode::dataEnd:
        ThrowMisplaced(record);
      default:
        TakeContent(record, reader, compressedChunk);
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
  void WalkSummary(PieceReader& reader) {
    const z64u start = reader.Position();
    for (;;) {
      if (reader.Left() == 0) ThrowDamage(PlaceOf(reader), "there is no footer");
      const RawRecord record = NextRecord(reader, reader.End(), PlaceOf(reader));
      if (record.opcode != Opcode::footer) {
        CheckSummary([&] { summary_->TakeSummary(record); });
        reader.SkipTo(record.End().offset);
        continue;
      }
      if (reader.Left() > 0) ThrowDamage(PlaceOf(reader), "records stand after the footer");
      const auto footer = Parse<Footer>(record);
      const z64u end = record.place.offset + kRecordPrefix + sizeof footer.summaryStart +
                       sizeof footer.summaryOffsetStart;
      const z64u summary = footer.summaryStart == 0 ? record.place.offset : footer.summaryStart;
      if (summary < start || summary > record.place.offset) {
        ThrowDamage(record.place, "the summary is said to start at %llu", summary);
      }
      const z32u stored = footer.summaryCrc;
      CheckSum(stored == 0 ? 0 : SumOf(stream_, summary, end), stored, record.place, "summary");
      return;
    }
  }

  const zSource& stream_;
  PayloadReader& payloads_;
  DamageLog* log_;  // null: damage is thrown
  const Plovia::MessageVisitor& visit_;
  z64u budget_;                          // for what compressed chunks still hold
  std::optional<SummaryCheck> summary_;  // with a log
  ReplayIndex index_;
  ReplayChannels channels_;
  bool described_ = false;
  Extent extent_ = Extent::whole;
};

}  // namespace

ReplayIndex IndexReplay(const zSource& stream, PayloadReader& payloads, DamageLog* log,
                        const Plovia::MessageVisitor& visit) {
  return Indexer(stream, payloads, log, visit).Run();
}

ReplayIndex IndexUnverified(const zSource& stream, PayloadReader& payloads, Extent extent) {
  const Plovia::MessageVisitor nobody{};
  const HeadsSource heads(stream);
  return Indexer(extent == Extent::heads ? heads : stream, payloads, nullptr, nobody)
      .RunUnverified(extent);
}

}  // namespace sdk::replay
