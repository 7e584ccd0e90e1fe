// SPDX-License-Identifier: MIT
#include "pipeline/piece_reader.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>

namespace sdk::replay {

Bytes PieceReader::Look(zSize size) {
  if (const z8u* bytes = source_.Bytes()) return {bytes + position_, size};
  if (size > ahead_.size()) {
    const zSize known = ahead_.size();
    const auto wanted = static_cast<zSize>(std::min<z64u>(Left(), std::max(size, source_.Piece())));
    if (known > 0) std::memmove(buffer_.data(), ahead_.data(), known);
    if (buffer_.size() < wanted) buffer_.resize(wanted);
    source_.Read(position_ + known, buffer_.data() + known, wanted - known);
    ahead_ = {buffer_.data(), wanted};
  }
  return ahead_.first(size);
}

Bytes PieceReader::Take(zSize size) {
  const Bytes bytes = Look(size);
  Pass(bytes);
  return bytes;
}

void PieceReader::ReadInto(void* destination, zSize size) {
  auto* to = static_cast<z8u*>(destination);
  for (zSize part = 0; size > 0; to += part, size -= part) {
    part = std::min(size, ahead_.empty() ? source_.Piece() : ahead_.size());
    if (ahead_.empty()) {
      source_.Read(position_, to, part);
    } else {
      std::memcpy(to, ahead_.data(), part);
    }
    Pass({to, part});
  }
}

void PieceReader::SkipTo(z64u position) {
  while (!sums_.empty() && position_ < position) {
    Take(static_cast<zSize>(std::min<z64u>(position - position_, source_.Piece())));
  }
  const z64u skipped = position - position_;
  position_ = position;
  ahead_ = ahead_.subspan(static_cast<zSize>(std::min<z64u>(skipped, ahead_.size())));
}

void PieceReader::Pass(Bytes bytes) {
  for (z32u* sum : sums_) *sum = libdeflate_crc32(*sum, bytes.data(), bytes.size());
  position_ += bytes.size();
  ahead_ = ahead_.subspan(std::min(bytes.size(), ahead_.size()));
}

z32u SumOf(const zSource& source, z64u start, z64u end) {
  PieceReader reader(source, start, end);
  const PieceReader::Sum sum(reader);
  reader.SkipTo(end);
  return sum.Value();
}

}  // namespace sdk::replay
