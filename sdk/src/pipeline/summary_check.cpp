// SPDX-License-Identifier: MIT
#include "pipeline/summary_check.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "pipeline/checksum.h"
#include "pipeline/decompress.h"
#include "pipeline/field_reader.h"

namespace sdk::replay {

namespace {

// A chunk or metadata record, as an index should tell of it.
struct Indexed {
  Opcode opcode;
  z64u length;  // with its prefix
  RawRecord record;
};

// There may be very many.
struct ChunkMessage {
  z64u offset;  // in the chunk's records
  z16u channel;
  z64u time;
};

// What a data section holds.
struct Counted {
  z64u messages = 0, attachments = 0, metadata = 0, chunks = 0;
  std::set<z16u> schemas;
  std::map<z16u, z64u> channels;  // messages of each
};

class SummaryCheck {
 public:
  SummaryCheck(Bytes stream, DamageLog& log) : stream_(stream), log_(log) {}

  void Run() {
    RecordCursor cursor(stream_.subspan(sizeof kMagic), Place{sizeof kMagic});
    for (bool inSummary = false; !cursor.AtEnd();) {
      const RawRecord record = cursor.Next();
      if (record.opcode == Opcode::footer) return;
      RunStep(&log_, [&] { inSummary ? TakeSummary(record) : TakeData(record); });
      if (record.opcode == Opcode::dataEnd) inSummary = true;
    }
  }

 private:
  void TakeData(const RawRecord& record) {
    switch (record.opcode) {
      case Opcode::chunk:
        Note(record);
        ++counted_.chunks;
        return TakeChunk(record);
      case Opcode::metadata:
        Note(record);
        ++counted_.metadata;
        return;
      case Opcode::messageIndex:
        return CheckMessageIndex(record);
      case Opcode::attachment:
        ++counted_.attachments;
        return CheckAttachment(record);
      default:
        Count(record);
    }
  }

  void Note(const RawRecord& record) {
    indexed_.emplace(record.place.offset,
                     Indexed{record.opcode, kRecordPrefix + record.content.size(), record});
  }

  void Count(const RawRecord& record) {
    if (record.opcode == Opcode::schema) counted_.schemas.insert(Parse<Schema>(record).id);
    if (record.opcode == Opcode::channel) counted_.channels.try_emplace(Parse<Channel>(record).id);
    if (record.opcode != Opcode::message) return;
    ++counted_.messages;
    ++counted_.channels[Parse<Message>(record).channelId];
  }

  void TakeChunk(const RawRecord& raw) {
    chunkRead_ = false;
    chunkMessages_.clear();
    const auto chunk = Parse<Chunk>(raw);
    const zBytes decompressed = chunk.compression.empty() ? zBytes() : Decompress(chunk, raw.place);
    const Bytes records = chunk.compression.empty() ? chunk.records.bytes : Bytes(decompressed);
    for (RecordCursor cursor(records, Place{}); !cursor.AtEnd();) {
      const RawRecord record = cursor.Next();
      Count(record);
      if (record.opcode != Opcode::message) continue;
      const auto message = Parse<Message>(record);
      chunkMessages_.push_back({record.place.offset, message.channelId, message.logTime});
    }
    chunkRead_ = true;
  }

  // It stands behind its chunk. Of one that cannot be read, nothing is known.
  void CheckMessageIndex(const RawRecord& record) {
    const auto index = Parse<MessageIndex>(record);
    if (!chunkRead_) return;
    for (const auto& [time, offset] : index.records) {
      const auto found =
          std::ranges::lower_bound(chunkMessages_, offset, {}, &ChunkMessage::offset);
      if (found == chunkMessages_.end() || found->offset != offset ||
          found->channel != index.channelId || found->time != time) {
        ThrowDamage(record.place,
                    "a message of channel %u at time %llu is said to stand at byte %llu of the "
                    "chunk before, and does not",
                    index.channelId, time, offset);
      }
    }
  }

  static void CheckAttachment(const RawRecord& record) {
    z32u stored = 0;
    if (record.content.size() < sizeof stored) {
      ThrowDamage(record.place, "the attachment has no checksum");
    }
    const Bytes checked = record.content.first(record.content.size() - sizeof stored);
    std::memcpy(&stored, checked.data() + checked.size(), sizeof stored);
    CheckCrc(checked, stored, record.place, "attachment");
  }

  void TakeSummary(const RawRecord& record) {
    switch (record.opcode) {
      case Opcode::statistics:
        return CheckStatistics(record);
      case Opcode::chunkIndex:
        return CheckChunkIndex(record);
      case Opcode::metadataIndex:
        return CheckMetadataIndex(record);
      case Opcode::summaryOffset:
        return CheckSummaryOffset(record);
      default:
        return;
    }
  }

  void CheckStatistics(const RawRecord& record) const {
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
  const RawRecord& Find(const RawRecord& entry, Opcode opcode, z64u offset, z64u length) const {
    const auto found = indexed_.find(offset);
    if (found == indexed_.end() || found->second.opcode != opcode ||
        found->second.length != length) {
      ThrowDamage(entry.place,
                  "%s of %llu bytes is said to stand at byte offset %llu, and does not",
                  opcode == Opcode::chunk ? "a chunk" : "a metadata record", length, offset);
    }
    return found->second.record;
  }

  void CheckChunkIndex(const RawRecord& record) const {
    const auto told = Parse<ChunkIndex>(record);
    const auto chunk =
        Parse<Chunk>(Find(record, Opcode::chunk, told.chunkStartOffset, told.chunkLength));
    if (told.compression != chunk.compression ||
        told.compressedSize != chunk.records.bytes.size() ||
        told.uncompressedSize != chunk.uncompressedSize) {
      ThrowDamage(record.place, "the index of the chunk at byte offset %llu tells other sizes",
                  told.chunkStartOffset);
    }
  }

  void CheckMetadataIndex(const RawRecord& record) const {
    const auto told = Parse<MetadataIndex>(record);
    const auto metadata = Parse<Metadata>(Find(record, Opcode::metadata, told.offset, told.length));
    if (told.name != metadata.name) {
      ThrowDamage(record.place, "the metadata at byte offset %llu has another name", told.offset);
    }
  }

  void CheckSummaryOffset(const RawRecord& record) const {
    const auto told = Parse<SummaryOffset>(record);
    const bool inside =
        told.groupStart < stream_.size() && told.groupLength <= stream_.size() - told.groupStart;
    if (!inside || stream_[static_cast<zSize>(told.groupStart)] != told.groupOpcode) {
      ThrowDamage(record.place, "records of type 0x%02x are said to stand at byte offset %llu",
                  told.groupOpcode, told.groupStart);
    }
  }

  Bytes stream_;
  DamageLog& log_;
  Counted counted_;
  std::map<z64u, Indexed> indexed_;          // by offset
  std::vector<ChunkMessage> chunkMessages_;  // of the last chunk, in order
  bool chunkRead_ = true;
};

}  // namespace

void CheckSummary(Bytes stream, DamageLog& log) {
  if (stream.size() < sizeof kMagic) return;
  try {
    SummaryCheck(stream, log).Run();
  } catch (const Damage&) {
    // Whoever indexed the stream has found it.
  }
}

}  // namespace sdk::replay
