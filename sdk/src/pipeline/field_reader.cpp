// SPDX-License-Identifier: MIT
#include "pipeline/field_reader.h"

namespace sdk::replay {

namespace {

constexpr zSize kMessageFields = sizeof(z16u) + sizeof(z32u) + 2 * sizeof(z64u);
constexpr zSize kChunkNumbers = 3 * sizeof(z64u) + sizeof(z32u);  // in front of its texts

// How many bytes of a content come in front of what may be large, if they are there.
z64u HeadSize(Opcode opcode, PieceReader& reader, z64u size) {
  switch (opcode) {
    case Opcode::message:
      return kMessageFields;
    case Opcode::chunk: {
      z32u compression = 0;
      if (size < kChunkNumbers + sizeof compression) return size;
      const Bytes numbers = reader.Look(kChunkNumbers + sizeof compression);
      std::memcpy(&compression, numbers.data() + kChunkNumbers, sizeof compression);
      return z64u{kChunkNumbers} + sizeof compression + compression + sizeof(z64u);
    }
    case Opcode::header:
    case Opcode::footer:
    case Opcode::schema:
    case Opcode::channel:
    case Opcode::messageIndex:
    case Opcode::chunkIndex:
    case Opcode::statistics:
    case Opcode::metadata:
    case Opcode::metadataIndex:
    case Opcode::summaryOffset:
    case Opcode::dataEnd:
      return size;
    default:
      return 0;
  }
}

}  // namespace

RawRecord NextRecord(PieceReader& reader, z64u end, const Place& place) {
  const z64u left = end - reader.Position();
  const auto prefix = static_cast<zSize>(std::min<z64u>(kRecordPrefix, left));
  FieldReader fields(reader.Look(prefix), left, place);
  RawRecord record;
  record.place = place;
  z8u opcode = 0;
  Bulk64 content;
  fields("record opcode", opcode);
  fields("record content", content);
  record.opcode = static_cast<Opcode>(opcode);
  record.size = content.size;
  reader.Take(prefix);
  const z64u head = HeadSize(record.opcode, reader, record.size);
  record.head = reader.Take(static_cast<zSize>(std::min(head, record.size)));
  return record;
}

}  // namespace sdk::replay
