// SPDX-License-Identifier: MIT
// The bytes of a file, read from front to back as little-endian numbers.
#pragma once

#include <algorithm>

#include "sdk/object.h"

// What cannot be read of the source throws its own error.
class FileReader {
 public:
  // The source must outlive the reader.
  explicit FileReader(const zSource& source) : source_(source) {}

  z64u Position() const { return position_; }
  z64u Left() const { return source_.Size() - position_; }
  // -4 for a position outside of the file.
  zStatus Seek(z64s position) {
    if (position < 0 || static_cast<z64u>(position) > source_.Size()) return zERROR_STREAM;
    position_ = static_cast<z64u>(position);
    return zOK;
  }

  // -4 where the file ends before.
  zStatus Read(zType type, void* items, zSize count) {
    const zSize size = zType_Size(type);
    if (count > Left() / size) return zERROR_STREAM;
    auto* bytes = static_cast<z8u*>(items);
    for (zSize part = 0, left = count * size; left > 0; left -= part) {
      part = std::min(left, source_.Piece());
      source_.Read(position_, bytes, part);
      bytes += part;
      position_ += part;
    }
    return zOK;
  }
  // Fills a whole array.
  zStatus ReadArray(zObject array) {
    void* items = zArray_EditableData(array);
    if (items == nullptr && zArray_Count(array) > 0) return zERROR_MEMORY;
    return Read(zArray_ItemType(array), items, zArray_Count(array));
  }

 private:
  const zSource& source_;
  z64u position_ = 0;
};
