// SPDX-License-Identifier: MIT
// Appends records to a growing stream and keeps a checksum of what it appends.
#pragma once

#include "pipeline/field_writer.h"
#include "sdk/pipeline.h"

namespace sdk::replay {

class StreamWriter {
 public:
  z64u Position() const { return out_.Size(); }
  Plovia::ReplayStream Take() { return std::move(out_); }

  void Append(const void* bytes, zSize size);
  // The same for bytes that stay where they are until the stream has been written.
  void AppendInPlace(const void* bytes, zSize size);
  // What another writer has appended; the checksum does not see it.
  void Append(const StreamWriter& other) { out_.Append(other.out_); }
  // Opcode and length of a record whose content is appended next.
  void BeginRecord(Opcode opcode, z64u contentLength);

  // A whole record; returns its length with opcode and length field.
  template <class Record>
  z64u Put(const Record& record) {
    const Bytes content = Encode(record);
    BeginRecord(Record::kOpcode, content.size());
    Append(content.data(), content.size());
    return kRecordPrefix + content.size();
  }

  // The content of a record, valid until the next call.
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
  Plovia::ReplayStream out_;
  zBytes content_;
  z32u crc_ = 0;
};

}  // namespace sdk::replay
