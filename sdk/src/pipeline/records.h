// SPDX-License-Identifier: MIT
// The records of an MCAP file (https://mcap.dev/spec), each described once: Fields walks a
// record's fields in file order, for the reader as for the writer. Texts and bytes are views; of
// what may be larger than memory, a record tells only the size.
#pragma once

#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "sdk/core.h"

namespace sdk::replay {

inline constexpr z8u kMagic[] = {0x89, 'M', 'C', 'A', 'P', '0', '\r', '\n'};

enum class Opcode : z8u {
  header = 0x01,
  footer = 0x02,
  schema = 0x03,
  channel = 0x04,
  message = 0x05,
  chunk = 0x06,
  messageIndex = 0x07,
  chunkIndex = 0x08,
  attachment = 0x09,
  statistics = 0x0B,
  metadata = 0x0C,
  metadataIndex = 0x0D,
  summaryOffset = 0x0E,
  dataEnd = 0x0F,
};

// Opcode and content length in front of every record.
inline constexpr zSize kRecordPrefix = 1 + 8;

using Bytes = std::span<const z8u>;
using TextMap = std::vector<std::pair<std::string_view, std::string_view>>;
using OffsetMap = std::vector<std::pair<z16u, z64u>>;     // channel id to number
using IndexEntries = std::vector<std::pair<z64u, z64u>>;  // log time, offset

// Bytes behind a length field of 32 bits.
struct Bytes32 {
  Bytes bytes;
};
// Bytes behind a length field of 64 bits, and bytes up to the end of the record: where they begin
// in its content, and how many they are. They are written by themselves.
struct Bulk64 {
  z64u start = 0, size = 0;
};
struct RestBulk {
  z64u start = 0, size = 0;
};

struct Header {
  static constexpr Opcode kOpcode = Opcode::header;
  std::string_view profile, library;

  static void Fields(auto& header, auto& field) {
    field("profile", header.profile);
    field("library", header.library);
  }
};

struct Footer {
  static constexpr Opcode kOpcode = Opcode::footer;
  static constexpr bool kFixedSize = true;  // nothing may follow the fields
  z64u summaryStart = 0;                    // 0: no summary
  z64u summaryOffsetStart = 0;
  z32u summaryCrc = 0;

  static void Fields(auto& footer, auto& field) {
    field("summary_start", footer.summaryStart);
    field("summary_offset_start", footer.summaryOffsetStart);
    field("summary_crc", footer.summaryCrc);
  }
};

struct Schema {
  static constexpr Opcode kOpcode = Opcode::schema;
  z16u id = 0;
  std::string_view name, encoding;
  Bytes32 data;

  static void Fields(auto& schema, auto& field) {
    field("id", schema.id);
    field("name", schema.name);
    field("encoding", schema.encoding);
    field("data", schema.data);
  }
};

struct Channel {
  static constexpr Opcode kOpcode = Opcode::channel;
  z16u id = 0;
  z16u schemaId = 0;  // 0: none
  std::string_view topic, messageEncoding;
  TextMap metadata;

  static void Fields(auto& channel, auto& field) {
    field("id", channel.id);
    field("schema_id", channel.schemaId);
    field("topic", channel.topic);
    field("message_encoding", channel.messageEncoding);
    field("metadata", channel.metadata);
  }
};

struct Message {
  static constexpr Opcode kOpcode = Opcode::message;
  z16u channelId = 0;
  z32u sequence = 0;
  z64u logTime = 0;      // nanoseconds
  z64u publishTime = 0;  // nanoseconds
  RestBulk data;

  static void Fields(auto& message, auto& field) {
    field("channel_id", message.channelId);
    field("sequence", message.sequence);
    field("log_time", message.logTime);
    field("publish_time", message.publishTime);
    field("data", message.data);
  }
};

struct Chunk {
  static constexpr Opcode kOpcode = Opcode::chunk;
  z64u messageStartTime = 0;
  z64u messageEndTime = 0;
  z64u uncompressedSize = 0;
  z32u uncompressedCrc = 0;
  std::string_view compression;
  Bulk64 records;

  static void Fields(auto& chunk, auto& field) {
    field("message_start_time", chunk.messageStartTime);
    field("message_end_time", chunk.messageEndTime);
    field("uncompressed_size", chunk.uncompressedSize);
    field("uncompressed_crc", chunk.uncompressedCrc);
    field("compression", chunk.compression);
    field("records", chunk.records);
  }
};

struct MessageIndex {
  static constexpr Opcode kOpcode = Opcode::messageIndex;
  z16u channelId = 0;
  IndexEntries records;

  static void Fields(auto& index, auto& field) {
    field("channel_id", index.channelId);
    field("records", index.records);
  }
};

struct ChunkIndex {
  static constexpr Opcode kOpcode = Opcode::chunkIndex;
  z64u messageStartTime = 0;
  z64u messageEndTime = 0;
  z64u chunkStartOffset = 0;
  z64u chunkLength = 0;
  OffsetMap messageIndexOffsets;
  z64u messageIndexLength = 0;
  std::string_view compression;
  z64u compressedSize = 0;
  z64u uncompressedSize = 0;

  static void Fields(auto& index, auto& field) {
    field("message_start_time", index.messageStartTime);
    field("message_end_time", index.messageEndTime);
    field("chunk_start_offset", index.chunkStartOffset);
    field("chunk_length", index.chunkLength);
    field("message_index_offsets", index.messageIndexOffsets);
    field("message_index_length", index.messageIndexLength);
    field("compression", index.compression);
    field("compressed_size", index.compressedSize);
    field("uncompressed_size", index.uncompressedSize);
  }
};

struct Statistics {
  static constexpr Opcode kOpcode = Opcode::statistics;
  z64u messageCount = 0;
  z16u schemaCount = 0;
  z32u channelCount = 0;
  z32u attachmentCount = 0;
  z32u metadataCount = 0;
  z32u chunkCount = 0;
  z64u messageStartTime = 0;
  z64u messageEndTime = 0;
  OffsetMap channelMessageCounts;

  static void Fields(auto& statistics, auto& field) {
    field("message_count", statistics.messageCount);
    field("schema_count", statistics.schemaCount);
    field("channel_count", statistics.channelCount);
    field("attachment_count", statistics.attachmentCount);
    field("metadata_count", statistics.metadataCount);
    field("chunk_count", statistics.chunkCount);
    field("message_start_time", statistics.messageStartTime);
    field("message_end_time", statistics.messageEndTime);
    field("channel_message_counts", statistics.channelMessageCounts);
  }
};

struct Metadata {
  static constexpr Opcode kOpcode = Opcode::metadata;
  std::string_view name;
  TextMap metadata;

  static void Fields(auto& metadata, auto& field) {
    field("name", metadata.name);
    field("metadata", metadata.metadata);
  }
};

struct MetadataIndex {
  static constexpr Opcode kOpcode = Opcode::metadataIndex;
  z64u offset = 0;
  z64u length = 0;
  std::string_view name;

  static void Fields(auto& index, auto& field) {
    field("offset", index.offset);
    field("length", index.length);
    field("name", index.name);
  }
};

struct SummaryOffset {
  static constexpr Opcode kOpcode = Opcode::summaryOffset;
  z8u groupOpcode = 0;
  z64u groupStart = 0;
  z64u groupLength = 0;

  static void Fields(auto& offset, auto& field) {
    field("group_opcode", offset.groupOpcode);
    field("group_start", offset.groupStart);
    field("group_length", offset.groupLength);
  }
};

struct DataEnd {
  static constexpr Opcode kOpcode = Opcode::dataEnd;
  static constexpr bool kFixedSize = true;
  z32u dataSectionCrc = 0;

  static void Fields(auto& end, auto& field) { field("data_section_crc", end.dataSectionCrc); }
};

}  // namespace sdk::replay
