// SPDX-License-Identifier: MIT
// What the indexes and the summary of a recording stream say, compared with its data section, which
// is walked in front of them.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "pipeline/field_reader.h"

namespace sdk::replay {

// Takes the records in the order of the stream. The stream must outlive it. All operations throw
// Orv::Exception for what is wrong; the checksums of attachments are verified too.
class SummaryCheck {
 public:
  explicit SummaryCheck(const zSource& stream) : stream_(stream) {}

  // A record of the data section, outside of chunks; the reader stands behind its head. It passes
  // attachments.
  void TakeData(const RawRecord& record, PieceReader& reader);
  // A chunk's records, between these two, with their offset in the chunk. Of a chunk that does not
  // reach its end, nothing is known.
  void BeginChunk();
  void TakeChunkRecord(const RawRecord& record, z64u offset);
  void EndChunk() { chunkRead_ = true; }
  // A record behind the data section.
  void TakeSummary(const RawRecord& record) const;

 private:
  // There may be very many.
  struct ChunkMessage {
    z64u offset;  // in the chunk's records
    z16u channel;
    z64u time;
  };

  // A chunk or metadata, of which the summary has an index.
  struct Indexed {
    Opcode opcode;
    z64u size;         // of the content
    std::string name;  // of metadata; of a chunk, its compression
    z64u compressedSize = 0, uncompressedSize = 0;
    bool known = true;  // its fields; otherwise it is damaged, which is told elsewhere
  };

  // What a data section holds.
  struct Counted {
    z64u messages = 0, attachments = 0, metadata = 0, chunks = 0;
    std::set<z16u> schemas;
    std::map<z16u, z64u> channels;  // messages of each
  };

  void NoteIndexed(const RawRecord& record);
  void Count(const RawRecord& record);
  void CheckMessageIndex(const RawRecord& record) const;
  void CheckAttachment(const RawRecord& record, PieceReader& reader);
  void CheckStatistics(const RawRecord& record) const;
  const Indexed& Find(const RawRecord& entry, Opcode opcode, z64u offset, z64u length) const;
  void CheckChunkIndex(const RawRecord& record) const;
  void CheckMetadataIndex(const RawRecord& record) const;
  void CheckSummaryOffset(const RawRecord& record) const;

  const zSource& stream_;
  Counted counted_;
  std::map<z64u, Indexed> indexed_;          // by offset
  std::vector<ChunkMessage> chunkMessages_;  // of the last chunk, in order
  bool chunkRead_ = true;
};

}  // namespace sdk::replay
