// SPDX-License-Identifier: MIT
#include "pipeline/summary_check.h"

#include <algorithm>

namespace sdk::replay {

void SummaryCheck::TakeData(const RawRecord& record, PieceReader& reader) {
  if (record.opcode == Opcode::chunk) ++counted_.chunks;
  if (record.opcode == Opcode::metadata) ++counted_.metadata;
  NoteIndexed(record);
  if (record.opcode == Opcode::messageIndex) CheckMessageIndex(record);
  if (record.opcode == Opcode::attachment) CheckAttachment(record, reader);
  Count(record);
}

void SummaryCheck::NoteIndexed(const RawRecord& record) {
  Indexed indexed{record.opcode, record.size, {}};
  try {
    if (record.opcode == Opcode::chunk) {
      const auto chunk = Parse<Chunk>(record);
      indexed.name = chunk.compression;
      indexed.compressedSize = chunk.records.size;
      indexed.uncompressedSize = chunk.uncompressedSize;
    } else if (record.opcode == Opcode::metadata) {
      indexed.name = Parse<Metadata>(record).name;
    } else {
      return;
    }
  } catch (const Damage&) {
    indexed.known = false;
  }
  indexed_.emplace(record.place.offset, std::move(indexed));
}

void SummaryCheck::Count(const RawRecord& record) {
  if (record.opcode == Opcode::schema) counted_.schemas.insert(Parse<Schema>(record).id);
  if (record.opcode == Opcode::channel) counted_.channels.try_emplace(Parse<Channel>(record).id);
  if (record.opcode != Opcode::message) return;
  ++counted_.messages;
  ++counted_.channels[Parse<Message>(record).channelId];
}

void SummaryCheck::BeginChunk() {
  chunkRead_ = false;
  chunkMessages_.clear();
}

void SummaryCheck::TakeChunkRecord(const RawRecord& record, z64u offset) {
  Count(record);
  if (record.opcode != Opcode::message) return;
  const auto message = Parse<Message>(record);
  chunkMessages_.push_back({offset, message.channelId, message.logTime});
}

// It stands behind its chunk. Of one that cannot be read, nothing is known.
void SummaryCheck::CheckMessageIndex(const RawRecord& record) const {
  const auto index = Parse<MessageIndex>(record);
  if (!chunkRead_) return;
  for (const auto& [time, offset] : index.records) {
    const auto found = std::ranges::lower_bound(chunkMessages_, offset, {}, &ChunkMessage::offset);
    if (found == chunkMessages_.end() || found->offset != offset ||
        found->channel != index.channelId || found->time != time) {
      ThrowDamage(record.place,
                  "a message of channel %u at time %llu is said to stand at byte %llu of the "
                  "chunk before, and does not",
                  index.channelId, time, offset);
    }
  }
}

void SummaryCheck::CheckAttachment(const RawRecord& record, PieceReader& reader) {
  ++counted_.attachments;
  z32u stored = 0;
  if (record.size < sizeof stored) ThrowDamage(record.place, "the attachment has no checksum");
  z32u computed = 0;
  {
    const PieceReader::Sum sum(reader);
    reader.SkipTo(record.End().offset - sizeof stored);
    computed = sum.Value();
  }
  reader.ReadInto(&stored, sizeof stored);
  CheckSum(computed, stored, record.place, "attachment");
}

void SummaryCheck::TakeSummary(const RawRecord& record) const {
  if (record.opcode == Opcode::statistics) CheckStatistics(record);
  if (record.opcode == Opcode::chunkIndex) CheckChunkIndex(record);
  if (record.opcode == Opcode::metadataIndex) CheckMetadataIndex(record);
  if (record.opcode == Opcode::summaryOffset) CheckSummaryOffset(record);
}

void SummaryCheck::CheckStatistics(const RawRecord& record) const {
  const auto told = Parse<Statistics>(record);
  const auto compare = [&](const char* what, z64u said, z64u found) {
    if (said != found) {
      ThrowDamage(record.place, "the statistics tell of %llu %s, there are %llu", said, what,
                  found);
    }
  };
  compare("messages", told.messageCount, counted_.messages);
  compare("schemas", told.schemaCount, counted_.schemas.size());
  compare("channels", told.channelCount, counted_.channels.size());
  compare("attachments", told.attachmentCount, counted_.attachments);
  compare("metadata records", told.metadataCount, counted_.metadata);
  compare("chunks", told.chunkCount, counted_.chunks);
  for (const auto& [channel, messages] : told.channelMessageCounts) {
    const auto found = counted_.channels.find(channel);
    compare("messages of a channel", messages,
            found == counted_.channels.end() ? 0 : found->second);
  }
}

// The record that an index entry tells of.
const SummaryCheck::Indexed& SummaryCheck::Find(const RawRecord& entry, Opcode opcode, z64u offset,
                                                z64u length) const {
  const auto found = indexed_.find(offset);
  if (found == indexed_.end() || found->second.opcode != opcode ||
      kRecordPrefix + found->second.size != length) {
    ThrowDamage(entry.place, "%s of %llu bytes is said to stand at byte offset %llu, and does not",
                opcode == Opcode::chunk ? "a chunk" : "a metadata record", length, offset);
  }
  return found->second;
}

void SummaryCheck::CheckChunkIndex(const RawRecord& record) const {
  const auto told = Parse<ChunkIndex>(record);
  const Indexed& chunk = Find(record, Opcode::chunk, told.chunkStartOffset, told.chunkLength);
  if (!chunk.known) return;
  if (told.compression != chunk.name || told.compressedSize != chunk.compressedSize ||
      told.uncompressedSize != chunk.uncompressedSize) {
    ThrowDamage(record.place, "the index of the chunk at byte offset %llu tells other sizes",
                told.chunkStartOffset);
  }
}

void SummaryCheck::CheckMetadataIndex(const RawRecord& record) const {
  const auto told = Parse<MetadataIndex>(record);
  const Indexed& metadata = Find(record, Opcode::metadata, told.offset, told.length);
  if (metadata.known && told.name != metadata.name) {
    ThrowDamage(record.place, "the metadata at byte offset %llu has another name", told.offset);
  }
}

void SummaryCheck::CheckSummaryOffset(const RawRecord& record) const {
  const auto told = Parse<SummaryOffset>(record);
  z8u opcode = 0;
  const bool inside =
      told.groupStart < stream_.Size() && told.groupLength <= stream_.Size() - told.groupStart;
  if (inside) stream_.Read(told.groupStart, &opcode, sizeof opcode);
  if (!inside || opcode != told.groupOpcode) {
    ThrowDamage(record.place, "records of type 0x%02x are said to stand at byte offset %llu",
                told.groupOpcode, told.groupStart);
  }
}

}  // namespace sdk::replay
