// SPDX-License-Identifier: MIT
#include "pipeline/replay_writer.h"

#include <algorithm>
#include <map>
#include <optional>

#include "pipeline/payload.h"
#include "pipeline/replay_names.h"
#include "scan_message_bfbs.h"

namespace sdk::replay {

namespace {

constexpr z16u kSchemaId = 1;
constexpr z64u kNanosecondsPerFrame = 100'000'000;  // a nominal ten frames a second
constexpr z64u kChunkSize = z64u{64} << 20;

constexpr Orv::Operation kOperation{"pipeline", "Plovia::ReplaySerializer::GetReplayFile"};

class ReplayWriter {
 public:
  ReplayWriter(const std::vector<Plovia::ReplayScannerInfo>& scanners, bool classic)
      : scanners_(scanners), classic_(classic) {
    out_.Append(kMagic, sizeof kMagic);
    out_.Put(Header{kProfile, kLibrary});
    PutMetadata(
        {kRecordingMetadata,
         {{kLayoutKey, classic ? kClassicLayout : kSegmentedLayout}, {kVersionKey, kVersion}}});
    for (const Plovia::ReplayScannerInfo& scanner : scanners) {
      PutMetadata(
          {kScannerMetadata,
           {{kFamilyKey, scanner.family}, {kIdKey, scanner.id}, {kNameKey, scanner.displayName}}});
    }
    PutSchema();
    PutChannels();
  }

  void PutFrame(z32u frame, const FrameContent& content) {
    const z64u logTime = frame * kNanosecondsPerFrame;
    if (!classic_ && !chunk_) chunk_.emplace().fields.messageStartTime = logTime;
    if (chunk_) chunk_->fields.messageEndTime = logTime;
    statistics_.messageEndTime = logTime;  // the first frame's is 0
    const std::string index = "{\"index\":" + std::to_string(content.index) + "}";
    BeginMessage(kFrameIndexChannel, frame, 0, index.size());
    Messages().Append(index.data(), index.size());
    for (zSize j = 0; j < content.messages.size(); ++j) {
      const auto& message = *As<sdk::Message>(content.messages[j].Get());
      const MxStamp* stamp = message.Stamp();
      const PayloadBuilder payload(message);
      const auto channel = static_cast<z16u>(std::min<zSize>(j + 1, sourceCount_));
      BeginMessage(channel, frame, stamp == nullptr ? 0 : stamp->time, payload.Size());
      payload.AppendTo(Messages());
    }
    if (chunk_ && chunk_->records.Position() >= kChunkSize) CloseChunk();
  }

  Plovia::ReplayStream Finish() {
    if (chunk_) CloseChunk();
    out_.Put(DataEnd{classic_ ? out_.Checksum() : 0});
    PutSummary();
    out_.Append(kMagic, sizeof kMagic);
    return out_.Take();
  }

 private:
  struct OpenChunk {
    Chunk fields;
    StreamWriter records;
    std::map<z16u, IndexEntries> entries;
  };

  // Where messages go.
  StreamWriter& Messages() { return chunk_ ? chunk_->records : out_; }

  void PutMetadata(const Metadata& metadata) {
    const z64u offset = out_.Position();
    metadataIndexes_.push_back({offset, out_.Put(metadata), metadata.name});
  }

  void PutSchema() {
    out_.Put(Schema{kSchemaId, kSchemaName, kFlatBufferEncoding, {Bytes(scan_message_bfbs)}});
  }

  void PutChannels() {
    out_.Put(Channel{kFrameIndexChannel, 0, kFrameIndexTopic, kJsonEncoding, {}});
    sourceCount_ = 0;
    for (zSize i = 0; i < scanners_.size(); ++i) {
      for (const ReplaySourceInfo& source : scanners_[i].sources) {
        if (sourceCount_ == 0xFFFF)
          kOperation.Fail(zERROR_PARAMETER, "A recording holds at most 65535 sources");
        const std::string topic = "/" + scanners_[i].id + "/" + source.name;
        const std::string scanner = std::to_string(i);
        const std::string dataType = std::to_string(source.dataType);
        const std::string reserved = std::to_string(source.reserved);
        out_.Put(Channel{++sourceCount_,
                         kSchemaId,
                         topic,
                         kFlatBufferEncoding,
                         {{kScannerKey, scanner},
                          {kNameKey, source.name},
                          {kDisplayNameKey, source.displayName},
                          {kDataTypeKey, dataType},
                          {kArrayedKey, source.arrayed != 0 ? "1" : "0"},
                          {kReservedKey, reserved}}});
      }
    }
  }

  // The record of a message up to its data, which is appended next.
  void BeginMessage(z16u channel, z32u frame, z64u publishTime, z64u dataSize) {
    const z64u logTime = frame * kNanosecondsPerFrame;
    StreamWriter& out = Messages();
    if (chunk_) chunk_->entries[channel].emplace_back(logTime, out.Position());
    ++messageCounts_[channel];
    const Bytes fields = out.Encode(Message{channel, frame, logTime, publishTime, {}});
    out.BeginRecord(Opcode::message, fields.size() + dataSize);
    out.Append(fields.data(), fields.size());
  }

  // Writes the chunk, whose sizes and checksum are known now, and its indexes.
  void CloseChunk() {
    Chunk& fields = chunk_->fields;
    const z64u start = out_.Position();
    const z64u recordsSize = chunk_->records.Position();
    fields.uncompressedSize = recordsSize;
    fields.uncompressedCrc = chunk_->records.Checksum();
    const Bytes content = out_.Encode(fields);  // ends with the size of the records, none yet
    out_.BeginRecord(Opcode::chunk, content.size() + recordsSize);
    out_.Append(content.data(), content.size() - sizeof recordsSize);
    out_.Append(&recordsSize, sizeof recordsSize);
    out_.Append(chunk_->records);

    ChunkIndex index{fields.messageStartTime,
                     fields.messageEndTime,
                     start,
                     out_.Position() - start,
                     {},
                     0,
                     {},
                     recordsSize,
                     recordsSize};
    for (auto& [channel, entries] : chunk_->entries) {
      index.messageIndexOffsets.emplace_back(channel, out_.Position());
      index.messageIndexLength += out_.Put(MessageIndex{channel, std::move(entries)});
    }
    chunkIndexes_.push_back(std::move(index));
    chunk_.reset();
  }

  void PutSummary() {
    Footer footer;
    footer.summaryStart = out_.Position();
    out_.RestartChecksum();
    std::vector<SummaryOffset> groups;
    const auto group = [&](Opcode opcode, const auto& put) {
      const z64u start = out_.Position();
      put();
      if (out_.Position() == start) return;
      groups.push_back({static_cast<z8u>(opcode), start, out_.Position() - start});
    };
    group(Opcode::schema, [&] { PutSchema(); });
    group(Opcode::channel, [&] { PutChannels(); });
    group(Opcode::statistics, [&] { out_.Put(FinishedStatistics()); });
    group(Opcode::metadataIndex, [&] {
      for (const MetadataIndex& index : metadataIndexes_) out_.Put(index);
    });
    group(Opcode::chunkIndex, [&] {
      for (const ChunkIndex& index : chunkIndexes_) out_.Put(index);
    });
    footer.summaryOffsetStart = out_.Position();
    for (const SummaryOffset& offset : groups) out_.Put(offset);

    const Bytes fields = out_.Encode(footer);
    out_.BeginRecord(Opcode::footer, fields.size());
    out_.Append(fields.data(), fields.size() - sizeof footer.summaryCrc);
    const z32u crc = out_.Checksum();
    out_.Append(&crc, sizeof crc);
  }

  Statistics FinishedStatistics() {
    statistics_.schemaCount = 1;
    statistics_.channelCount = z32u{sourceCount_} + 1;
    statistics_.metadataCount = static_cast<z32u>(metadataIndexes_.size());
    statistics_.chunkCount = static_cast<z32u>(chunkIndexes_.size());
    for (const auto& [channel, count] : messageCounts_) {
      statistics_.messageCount += count;
      statistics_.channelMessageCounts.emplace_back(channel, count);
    }
    return statistics_;
  }

  const std::vector<Plovia::ReplayScannerInfo>& scanners_;
  bool classic_;
  StreamWriter out_;
  z16u sourceCount_ = 0;
  std::optional<OpenChunk> chunk_;
  std::vector<MetadataIndex> metadataIndexes_;
  std::vector<ChunkIndex> chunkIndexes_;
  std::map<z16u, z64u> messageCounts_;
  Statistics statistics_;
};

}  // namespace

Plovia::ReplayStream WriteReplay(const std::vector<Plovia::ReplayScannerInfo>& scanners,
                                 const std::vector<FrameContent>& frames, bool classic) {
  const bool sources = std::ranges::any_of(
      scanners, [](const Plovia::ReplayScannerInfo& scanner) { return !scanner.sources.empty(); });
  const bool messages = std::ranges::any_of(
      frames, [](const FrameContent& frame) { return !frame.messages.empty(); });
  if (messages && !sources)
    kOperation.Fail(zERROR_PARAMETER, "The recording has messages but no source for them");
  if (frames.size() > 0xFFFFFFFF)
    kOperation.Fail(zERROR_PARAMETER, "A recording holds at most 4294967295 frames");

  ReplayWriter writer(scanners, classic);
  for (zSize i = 0; i < frames.size(); ++i) writer.PutFrame(static_cast<z32u>(i), frames[i]);
  return writer.Finish();
}

}  // namespace sdk::replay
