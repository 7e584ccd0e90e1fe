// SPDX-License-Identifier: MIT
#include "support/sur_file.h"

#include <utility>

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
    const zSize end = bytes.size();
    bytes.resize(end + (bits == 32 ? 4 : 2));
    if (bits == 32) {
      sur::Set(bytes, end, sample);
    } else {
      sur::Set(bytes, end, static_cast<z16s>(sample));
    }
  }
  return bytes;
}

SurFile SurRow(std::vector<z32s> samples) {
  SurFile file;
  file.width = static_cast<z32s>(samples.size());
  file.length = 1;
  file.samples = std::move(samples);
  return file;
}
