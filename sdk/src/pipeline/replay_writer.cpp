// SPDX-License-Identifier: MIT
#include "pipeline/replay_writer.h"

#include <algorithm>

#include "pipeline/payload.h"
#include "pipeline/replay_names.h"
#include "scan_message_bfbs.h"

namespace sdk::replay {

namespace {

constexpr z16u kSchemaId = 1;
constexpr z64u kNanosecondsPerFrame = 100'000'000;  // a nominal ten frames a second
constexpr z64u kChunkSize = z64u{64} << 20;

constexpr Orv::Operation kOperation{"pipeline", "Plovia::ReplaySerializer"};

}  // namespace

void ReplayWriter::PutScanners(const std::vector<Plovia::ReplayScannerInfo>& scanners) {
  if (headWritten_) kOperation.Fail(zERROR_PARAMETER, "The scanners stand before the first frame");
  scanners_ = scanners;
  PutHead();
}

void ReplayWriter::PutHead() {
  headWritten_ = true;
  out_.Append(kMagic, sizeof kMagic);
  out_.Put(Header{kProfile, kLibrary});
  PutMetadata(
      {kRecordingMetadata,
       {{kLayoutKey, classic_ ? kClassicLayout : kSegmentedLayout}, {kVersionKey, kVersion}}});
  for (const Plovia::ReplayScannerInfo& scanner : scanners_) {
    PutMetadata(
        {kScannerMetadata,
         {{kFamilyKey, scanner.family}, {kIdKey, scanner.id}, {kNameKey, scanner.displayName}}});
  }
  PutSchema();
  PutChannels();
}

void ReplayWriter::BeginFrame(z32u index) {
  if (!headWritten_) PutHead();
  if (frameCount_ == 0xFFFFFFFF)
    kOperation.Fail(zERROR_PARAMETER, "A recording holds at most 4294967295 frames");
  if (chunk_ && out_.Position() - chunk_->recordsStart >= kChunkSize) CloseChunk();
  const z64u logTime = frameCount_++ * kNanosecondsPerFrame;
  messagesInFrame_ = 0;
  if (!classic_ && !chunk_) OpenNextChunk();
  if (chunk_) chunk_->fields.messageEndTime = logTime;
  statistics_.messageEndTime = logTime;  // the first frame's is 0
  const std::string text = "{\"index\":" + std::to_string(index) + "}";
  PutMessageHead(kFrameIndexChannel, 0, text.size());
  out_.Append(text.data(), text.size());
}

void ReplayWriter::PutMessage(const sdk::Message& message) {
  const PayloadBuilder payload(message);
  BeginMessage(message, payload.Size());
  payload.AppendTo(out_);
}

void ReplayWriter::PutSurface(const Plovia::SurfaceStream& stream) {
  const Owned<Surface> surface = MakeHollowSurface(zType::z16s, stream.width, stream.length);
  surface->resampled = true;
  surface->scale = stream.scale;
  surface->offset = stream.offset;
  surface->stamp = stream.stamp;
  if (const Array* intensities = As<Array>(stream.intensities.Get())) {
    surface->intensities = MakeHollowArray(zType::z8u, stream.width, stream.length);
    surface->intensities->ShareItemsOf(*intensities);
  }
  const PayloadBuilder payload(*surface);
  BeginMessage(*surface, payload.Size());
  const z64u start = out_.Position();
  payload.AppendTo(out_, [&] {
    surface->box = stream.heights(
        [&](std::span<const z16s> heights) { out_.Append(heights.data(), heights.size_bytes()); });
  });
  if (out_.Position() - start != payload.Size()) {
    kOperation.Fail(zERROR_PARAMETER, "The heights of a surface are not as many as its points");
  }
  out_.Replace(start, payload.Head(), PayloadBuilder(*surface).Head());
}

void ReplayWriter::BeginMessage(const sdk::Message& message, zSize size) {
  if (frameCount_ == 0) {
    kOperation.Fail(zERROR_PARAMETER, "A message needs a frame to belong to");
  }
  if (sourceCount_ == 0) {
    kOperation.Fail(zERROR_PARAMETER, "The recording has messages but no source for them");
  }
  const MxStamp* stamp = message.Stamp();
  const auto channel = static_cast<z16u>(std::min<zSize>(++messagesInFrame_, sourceCount_));
  PutMessageHead(channel, stamp == nullptr ? 0 : stamp->time, size);
}

void ReplayWriter::Finish() {
  if (!headWritten_) PutHead();
  if (chunk_) CloseChunk();
  out_.Put(DataEnd{classic_ ? out_.Checksum() : 0});
  PutSummary();
  out_.Append(kMagic, sizeof kMagic);
}

void ReplayWriter::PutMetadata(const Metadata& metadata) {
  const z64u offset = out_.Position();
  metadataIndexes_.push_back({offset, out_.Put(metadata), metadata.name});
}

void ReplayWriter::PutSchema() {
  out_.Put(Schema{kSchemaId, kSchemaName, kFlatBufferEncoding, {Bytes(scan_message_bfbs)}});
}

void ReplayWriter::PutChannels() {
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
void ReplayWriter::PutMessageHead(z16u channel, z64u publishTime, z64u dataSize) {
  const z64u frame = frameCount_ - 1;
  const z64u logTime = frame * kNanosecondsPerFrame;
  if (chunk_) {
    chunk_->entries[channel].emplace_back(logTime, out_.Position() - chunk_->recordsStart);
  }
  ++messageCounts_[channel];
  out_.Put(Message{channel, static_cast<z32u>(frame), logTime, publishTime, {}}, dataSize);
}

void ReplayWriter::OpenNextChunk() {
  chunk_.emplace();
  chunk_->fields.messageStartTime = (frameCount_ - 1) * kNanosecondsPerFrame;
  chunk_->start = out_.Position();
  out_.Put(chunk_->fields);
  chunk_->recordsStart = out_.Position();
  out_.RestartChecksum();
}

// Writes the chunk's sizes and checksum, which are known now, and its indexes.
void ReplayWriter::CloseChunk() {
  Chunk& fields = chunk_->fields;
  const z64u start = chunk_->start;
  const z64u end = out_.Position();
  const z64u size = end - chunk_->recordsStart;
  fields.uncompressedSize = fields.records.size = size;
  fields.uncompressedCrc = out_.Checksum();
  out_.MoveTo(start);
  out_.Put(fields, size);
  out_.MoveTo(end);

  ChunkIndex index{
      fields.messageStartTime, fields.messageEndTime, start, end - start, {}, 0, {}, size, size};
  for (auto& [channel, entries] : chunk_->entries) {
    index.messageIndexOffsets.emplace_back(channel, out_.Position());
    index.messageIndexLength += out_.Put(MessageIndex{channel, std::move(entries)});
  }
  chunkIndexes_.push_back(std::move(index));
  chunk_.reset();
}

void ReplayWriter::PutSummary() {
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

Statistics ReplayWriter::FinishedStatistics() {
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

}  // namespace sdk::replay
