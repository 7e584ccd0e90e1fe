// SPDX-License-Identifier: MIT
// Appends records to a stream and keeps a checksum of what it appends.
#pragma once

#include "pipeline/field_writer.h"

namespace sdk::replay {

// What cannot be written is an Orv::Exception with the stream's status.
class StreamWriter {
 public:
  // The stream stands at its start.
  explicit StreamWriter(zStream stream) : stream_(stream) {}

  z64u Position() const { return position_; }
  void Append(const void* bytes, zSize size);
  // Appends at an earlier position, before what is there, or at the end again.
  void MoveTo(z64u position);
  // Replaces bytes at an earlier position by as many others; the checksum becomes that of the new
  // ones.
  void Replace(z64u position, Bytes before, Bytes now);
  // Opcode and length of a record whose content is appended next.
  void BeginRecord(Opcode opcode, z64u contentLength);

  // A whole record, or, of one with a bulk, what stands in front of it; returns the length of the
  // record with opcode and length field.
  template <class Record>
  z64u Put(const Record& record, z64u bulk = 0) {
    const Bytes content = Encode(record);
    BeginRecord(Record::kOpcode, content.size() + bulk);
    Append(content.data(), content.size());
    return kRecordPrefix + content.size() + bulk;
  }

  // The content of a record without its bulk, valid until the next call.
  template <class Record>
  Bytes Encode(const Record& record) {
    content_.clear();
    FieldWriter writer(content_);
    Record::Fields(record, writer);
    return content_;
  }

  // CRC-32 of everything appended since the last restart.
  void RestartChecksum() { crc_ = 0; }
  z32u Checksum() const { return crc_; }

 private:
  zStream stream_;
  z64u position_ = 0;
  zBytes content_;
  z32u crc_ = 0;
};

}  // namespace sdk::replay
