// SPDX-License-Identifier: MIT
// Appends the fields of a record to a buffer.
#pragma once

#include <cstring>

#include "pipeline/records.h"

namespace sdk::replay {

class FieldWriter {
 public:
  explicit FieldWriter(zBytes& out) : out_(out) {}

  void operator()(const char*, z8u value) { Put(value); }
  void operator()(const char*, z16u value) { Put(value); }
  void operator()(const char*, z32u value) { Put(value); }
  void operator()(const char*, z64u value) { Put(value); }
  void operator()(const char*, std::string_view text) { PutText(text); }
  void operator()(const char*, const Bytes32& data) {
    Put(static_cast<z32u>(data.bytes.size()));
    PutBytes(data.bytes.data(), data.bytes.size());
  }
  void operator()(const char*, const Bytes64& data) {
    Put(static_cast<z64u>(data.bytes.size()));
    PutBytes(data.bytes.data(), data.bytes.size());
  }
  void operator()(const char*, const RestBytes& data) {
    PutBytes(data.bytes.data(), data.bytes.size());
  }
  template <class Key, class Value>
  void operator()(const char*, const std::vector<std::pair<Key, Value>>& entries) {
    const zSize lengthAt = out_.size();
    Put(z32u{0});
    for (const auto& [key, value] : entries) {
      (*this)("key", key);
      (*this)("value", value);
    }
    const auto length = static_cast<z32u>(out_.size() - lengthAt - sizeof(z32u));
    std::memcpy(out_.data() + lengthAt, &length, sizeof length);
  }

 private:
  template <class Number>
  void Put(Number value) {
    PutBytes(&value, sizeof value);
  }
  void PutText(std::string_view text) {
    Put(static_cast<z32u>(text.size()));
    PutBytes(text.data(), text.size());
  }
  void PutBytes(const void* bytes, zSize size) {
    const auto* first = static_cast<const z8u*>(bytes);
    out_.insert(out_.end(), first, first + size);
  }

  zBytes& out_;
};

}  // namespace sdk::replay
