// SPDX-License-Identifier: MIT
// Reads a part of a stream from front to back, a piece at a time, and keeps checksums of what it
// passes.
#pragma once

#include <vector>

#include "pipeline/records.h"

namespace sdk::replay {

class PieceReader {
 public:
  // The source must outlive the reader. What it throws passes through.
  PieceReader(const zSource& source, z64u start, z64u end)
      : source_(source), position_(start), end_(end) {}

  z64u Position() const { return position_; }
  z64u End() const { return end_; }
  z64u Left() const { return end_ - position_; }

  // All sizes below are at most what is left.
  // The next bytes, which stay in place until the next call; Take moves past them, Look does not.
  Bytes Look(zSize size);
  Bytes Take(zSize size);
  void ReadInto(void* destination, zSize size);
  void SkipTo(z64u position);  // forward

  // CRC-32 of all bytes that the reader passes while the sum lives. Sums end in the reverse order
  // of their beginnings.
  class Sum {
   public:
    explicit Sum(PieceReader& reader) : reader_(reader) { reader.sums_.push_back(&value_); }
    ~Sum() { reader_.sums_.pop_back(); }
    Sum(const Sum&) = delete;
    Sum& operator=(const Sum&) = delete;
    z32u Value() const { return value_; }

   private:
    PieceReader& reader_;
    z32u value_ = 0;
  };

 private:
  void Pass(Bytes bytes);

  const zSource& source_;
  z64u position_, end_;
  zBytes buffer_;  // of a source that is not in memory: bytes from some position on
  Bytes ahead_;    // of the buffer, from the position on
  std::vector<z32u*> sums_;
};

// CRC-32 of a part of a source.
z32u SumOf(const zSource& source, z64u start, z64u end);

}  // namespace sdk::replay
