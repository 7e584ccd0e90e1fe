// SPDX-License-Identifier: MIT
#include "support/sur_file.h"

zBytes SurFile::Bytes() const {
  zBytes bytes(sur::kHeaderSize, 0);
  std::memcpy(bytes.data(), "DIGITAL SURF", 12);
  sur::Set(bytes, sur::kSpecialPoints, flag);
  sur::Set(bytes, sur::kBits, bits);
  sur::Set(bytes, sur::kZMin, zMin);
  sur::Set(bytes, sur::kZMax, zMax);
  sur::Set(bytes, sur::kWidth, width);
  sur::Set(bytes, sur::kLength, length);
  sur::Set(bytes, sur::kSpacing, spacing);
  sur::Set(bytes, sur::kOffset, offset);
  sur::Set(bytes, sur::kCommentSize, commentSize);
  sur::Set(bytes, sur::kPrivateSize, privateSize);
  bytes.resize(bytes.size() + static_cast<zSize>(commentSize + privateSize), '#');
  for (const z32s sample : samples) {
    const auto* first = reinterpret_cast<const z8u*>(&sample);
    bytes.insert(bytes.end(), first, first + (bits == 32 ? 4 : 2));
  }
  return bytes;
}

SurFile SurRow(const std::vector<z32s>& samples) {
  return {static_cast<z32s>(samples.size()), 1, samples};
}
