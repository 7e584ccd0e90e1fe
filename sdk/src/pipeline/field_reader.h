// SPDX-License-Identifier: MIT
// Takes records out of a stream and their fields out of records, comparing every length with the
// bytes that are left.
#pragma once

#include <libdeflate.h>

#include <cstring>

#include "pipeline/damage.h"
#include "pipeline/records.h"

namespace sdk::replay {

class FieldReader {
 public:
  FieldReader(Bytes content, const Place& place) : left_(content), place_(place) {}

  template <class Number>
  requires std::is_unsigned_v<Number>
  void operator()(const char* name, Number& value) {
    std::memcpy(&value, Take(sizeof value, name).data(), sizeof value);
  }
  void operator()(const char* name, std::string_view& text) {
    const Bytes bytes = TakeCounted<z32u>(name);
    text = {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
  void operator()(const char* name, Bytes32& data) { data.bytes = TakeCounted<z32u>(name); }
  void operator()(const char* name, Bytes64& data) { data.bytes = TakeCounted<z64u>(name); }
  void operator()(const char*, RestBytes& data) { data.bytes = std::exchange(left_, {}); }
  template <class Key, class Value>
  void operator()(const char* name, std::vector<std::pair<Key, Value>>& entries) {
    const Place place = place_;
    FieldReader inner(TakeCounted<z32u>(name), place + sizeof(z32u));
    while (!inner.left_.empty()) {
      auto& [key, value] = entries.emplace_back();
      inner(name, key);
      inner(name, value);
    }
  }

  void RequireEnd() const {
    if (!left_.empty()) ThrowDamage(place_, "%zu bytes follow the record's fields", left_.size());
  }

 private:
  // The next `size` bytes.
  Bytes Take(z64u size, const char* name) {
    if (size > left_.size()) {
      ThrowDamage(place_, "%s takes %llu bytes, %zu are left", name, size, left_.size());
    }
    const Bytes taken = left_.first(static_cast<zSize>(size));
    left_ = left_.subspan(taken.size());
    place_ = place_ + size;
    return taken;
  }
  template <class Count>
  Bytes TakeCounted(const char* name) {
    Count count = 0;
    (*this)(name, count);
    return Take(count, name);
  }

  Bytes left_;
  Place place_;
};

// One record: its opcode, its content and where its first byte, the opcode, stands.
struct RawRecord {
  Opcode opcode{};
  Bytes content;
  Place place;
};

// The fields of a record; bytes that follow them are ignored unless the record's size is fixed.
template <class Record>
Record Parse(const RawRecord& raw) {
  Record record;
  FieldReader reader(raw.content, raw.place + kRecordPrefix);
  Record::Fields(record, reader);
  if constexpr (requires { Record::kFixedSize; }) reader.RequireEnd();
  return record;
}

// Throws Orv::Exception when the bytes have another CRC-32. A stored checksum of 0 means "not
// computed".
inline void CheckCrc(Bytes bytes, z32u stored, const Place& place, std::string_view what) {
  if (stored == 0) return;
  const z32u computed = libdeflate_crc32(0, bytes.data(), bytes.size());
  if (computed == stored) return;
  ThrowDamage(place, "the checksum of the %s is %08x, its bytes give %08x", what, stored, computed);
}

// Walks the records that stand one after the other in `bytes`.
class RecordCursor {
 public:
  RecordCursor(Bytes bytes, const Place& place) : left_(bytes), place_(place) {}

  bool AtEnd() const { return left_.empty(); }
  const Place& Position() const { return place_; }

  RawRecord Next() {
    RawRecord record;
    record.place = place_;
    FieldReader reader(left_, place_);
    z8u opcode = 0;
    Bytes64 content;
    reader("record opcode", opcode);
    reader("record content", content);
    record.opcode = static_cast<Opcode>(opcode);
    record.content = content.bytes;
    left_ = left_.subspan(kRecordPrefix + content.bytes.size());
    place_ = place_ + kRecordPrefix + content.bytes.size();
    return record;
  }

 private:
  Bytes left_;
  Place place_;
};

}  // namespace sdk::replay
