// SPDX-License-Identifier: MIT
// Chunks that other MCAP tools compressed.
#pragma once

#include <limits>
#include <string>

#include "pipeline/field_reader.h"

namespace sdk::replay {

// How many bytes all compressed chunks of a stream may hold together, once each: 256 MiB and 300
// times the size of the stream. A few bytes could keep a reader busy for hours.
constexpr z64u UnpackingBudget(z64u streamSize) {
  constexpr z64u kMost = std::numeric_limits<z64u>::max();
  constexpr z64u kTimes = 300;
  constexpr z64u kAlways = z64u{256} << 20;
  return streamSize > (kMost - kAlways) / kTimes ? kMost : kAlways + kTimes * streamSize;
}

struct CompressedChunk {
  std::string compression;
  z64u unpackedSize;             // of its records, as it declares it
  z64u packedStart, packedSize;  // of its records, in the stream
  z64u offset;                   // of the chunk in the stream
};

// Fills `records` with those of a chunk; the reader stands before the packed ones, and passes them.
// Throws Orv::Exception for an unknown compression, damaged data, records that are not as long as
// the chunk declares, and for more than `budget` bytes. Memory grows with what comes out, not with
// what is declared.
void Decompress(const CompressedChunk& chunk, PieceReader& reader, z64u budget, zBytes& records);

}  // namespace sdk::replay
