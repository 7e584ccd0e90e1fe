// SPDX-License-Identifier: MIT
// Takes records out of a stream and their fields out of records, comparing every length with the
// bytes that are left.
#pragma once

#include <cstring>

#include "pipeline/damage.h"
#include "pipeline/piece_reader.h"

namespace sdk::replay {

class FieldReader {
 public:
  // Of a content of `size` bytes, those from its start on that are at hand hold all fields but the
  // bulk.
  FieldReader(Bytes atHand, z64u size, const Place& place)
      : atHand_(atHand), size_(size), left_(size), place_(place) {}

  template <class Number>
  requires std::is_unsigned_v<Number>
  void operator()(const char* name, Number& value) {
    std::memcpy(&value, Take(sizeof value, name).data(), sizeof value);
  }
  void operator()(const char* name, std::string_view& text) {
    const Bytes bytes = TakeCounted(name);
    text = {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
  void operator()(const char* name, Bytes32& data) { data.bytes = TakeCounted(name); }
  void operator()(const char* name, Bulk64& data) {
    (*this)(name, data.size);
    Require(data.size, name);
    data.start = size_ - left_;
    left_ -= data.size;
  }
  void operator()(const char*, RestBulk& data) {
    data = {size_ - left_, left_};
    left_ = 0;
  }
  template <class Key, class Value>
  void operator()(const char* name, std::vector<std::pair<Key, Value>>& entries) {
    const Place place = place_;
    const Bytes bytes = TakeCounted(name);
    FieldReader inner(bytes, bytes.size(), place + sizeof(z32u));
    while (inner.left_ > 0) {
      auto& [key, value] = entries.emplace_back();
      inner(name, key);
      inner(name, value);
    }
  }

  void RequireEnd() const {
    if (left_ > 0) ThrowDamage(place_, "%llu bytes follow the record's fields", left_);
  }

 private:
  void Require(z64u size, const char* name) const {
    if (size > left_) {
      ThrowDamage(place_, "%s takes %llu bytes, %llu are left", name, size, left_);
    }
  }
  // The next `size` bytes.
  Bytes Take(z64u size, const char* name) {
    Require(size, name);
    const Bytes taken = atHand_.first(static_cast<zSize>(size));
    atHand_ = atHand_.subspan(taken.size());
    left_ -= size;
    place_ = place_ + size;
    return taken;
  }
  Bytes TakeCounted(const char* name) {
    z32u count = 0;
    (*this)(name, count);
    return Take(count, name);
  }

  Bytes atHand_;
  z64u size_, left_;
  Place place_;
};

// One record: its opcode, the size of its content, where its first byte, the opcode, stands, and
// the first bytes of its content: of a chunk and a message all in front of their bulk, of what is
// not understood none, of other records all. They are valid until the reader moves.
struct RawRecord {
  Opcode opcode{};
  z64u size = 0;
  Bytes head;
  Place place;

  Place End() const { return place + kRecordPrefix + size; }
};

// The next record, of records that end with the position `end`, before which the reader stands at
// `place`. The reader then stands behind the head.
RawRecord NextRecord(PieceReader& reader, z64u end, const Place& place);

// The fields of a record; bytes that follow them are ignored unless the record's size is fixed.
template <class Record>
Record Parse(const RawRecord& raw) {
  Record record;
  FieldReader reader(raw.head, raw.size, raw.place + kRecordPrefix);
  Record::Fields(record, reader);
  if constexpr (requires { Record::kFixedSize; }) reader.RequireEnd();
  return record;
}

// Throws Orv::Exception unless a computed checksum is the one that is stored, where 0 means "not
// computed".
inline void CheckSum(z32u computed, z32u stored, const Place& place, std::string_view what) {
  if (stored == 0 || computed == stored) return;
  ThrowDamage(place, "the checksum of the %s is %08x, its bytes give %08x", what, stored, computed);
}

}  // namespace sdk::replay
