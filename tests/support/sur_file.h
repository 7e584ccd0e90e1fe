// SPDX-License-Identifier: MIT
// Digital Surf files made byte by byte, apart from the product's own description of the header.
#pragma once

#include <cstring>
#include <vector>

#include "sdk/core.h"

// Header offsets that tests read or damage.
namespace sur {
inline constexpr zSize kSpecialPoints = 86, kBits = 98, kZMin = 100, kZMax = 104, kWidth = 108,
                       kLength = 112, kTotal = 116, kSpacing = 120, kCommentSize = 334,
                       kPrivateSize = 336, kOffset = 466, kHeaderSize = 512;

// A little-endian number of a file.
template <class Number>
Number Get(const zBytes& bytes, zSize offset) {
  Number value;
  std::memcpy(&value, &bytes.at(offset + sizeof value - 1) - (sizeof value - 1), sizeof value);
  return value;
}
template <class Number>
void Set(zBytes& bytes, zSize offset, Number value) {
  std::memcpy(&bytes.at(offset + sizeof value - 1) - (sizeof value - 1), &value, sizeof value);
}
}  // namespace sur

struct SurFile {
  z32s width = 3, length = 2;
  std::vector<z32s> samples{10, 11, 12, 20, 21, 22};
  z16s bits = 16;  // the samples are written with 32 bits or with 16
  z16s flag = 0;   // special points
  z32s zMin = 0, zMax = 0;
  zPoint3d32f spacing{0.5F, 0.25F, 0.125F}, offset{1, 2, 3};
  z16s commentSize = 0, privateSize = 0;  // bytes of the zones before the samples

  zBytes Bytes() const;
};

// One row of samples.
SurFile SurRow(const std::vector<z32s>& samples);
