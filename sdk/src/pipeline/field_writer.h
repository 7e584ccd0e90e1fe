// SPDX-License-Identifier: MIT
// Appends the fields of a record to a buffer.
#pragma once

#include <cstring>

#include "pipeline/records.h"

namespace sdk::replay {

class FieldWriter {
 public:
  explicit FieldWriter(zBytes& out) : out_(out) {}

  template <class Number>
  requires std::is_unsigned_v<Number>
  void operator()(const char*, Number value) { PutBytes(&value, sizeof value); }
  void operator()(const char*, std::string_view text) {
    PutCounted(static_cast<z32u>(text.size()), text.data());
  }
  void operator()(const char*, const Bytes32& data) {
    PutCounted(static_cast<z32u>(data.bytes.size()), data.bytes.data());
  }
  void operator()(const char* name, const Bulk64& data) { (*this)(name, data.size); }
  void operator()(const char*, const RestBulk&) {}
  template <class Key, class Value>
  void operator()(const char*, const std::vector<std::pair<Key, Value>>& entries) {
    const zSize lengthAt = out_.size();
    (*this)("length", z32u{0});
    for (const auto& [key, value] : entries) {
      (*this)("key", key);
      (*this)("value", value);
    }
    const auto length = static_cast<z32u>(out_.size() - lengthAt - sizeof(z32u));
    std::memcpy(out_.data() + lengthAt, &length, sizeof length);
  }

 private:
  template <class Count>
  void PutCounted(Count count, const void* bytes) {
    PutBytes(&count, sizeof count);
    PutBytes(bytes, static_cast<zSize>(count));
  }
  void PutBytes(const void* bytes, zSize size) {
    const auto* first = static_cast<const z8u*>(bytes);
    out_.insert(out_.end(), first, first + size);
  }

  zBytes& out_;
};

}  // namespace sdk::replay
