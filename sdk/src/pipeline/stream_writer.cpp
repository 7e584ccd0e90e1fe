// SPDX-License-Identifier: MIT
#include "pipeline/stream_writer.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>

#include "sdk/object.h"

namespace sdk::replay {

namespace {

constexpr Orv::Operation kOperation{"pipeline", "Plovia::ReplaySerializer"};
constexpr const char* kFailed = "The recording stream cannot be written";

}  // namespace

void StreamWriter::Append(const void* bytes, zSize size) {
  constexpr zSize kPiece = zSize{256} << 10;  // which is still at hand when it is written
  const auto* from = static_cast<const z8u*>(bytes);
  for (zSize part = 0; size > 0; from += part, size -= part) {
    part = std::min(size, kPiece);
    crc_ = libdeflate_crc32(crc_, from, part);
    kOperation.Require(zStream_Write(stream_, from, part), kFailed);
    position_ += part;
  }
}

void StreamWriter::MoveTo(z64u position) {
  kOperation.Require(zStream_Seek(stream_, position), kFailed);
  position_ = position;
}

void StreamWriter::Replace(z64u position, Bytes before, Bytes now) {
  const z64u end = position_;
  const z32u sum = crc_;
  MoveTo(position);
  crc_ = libdeflate_crc32(0, before.data(), before.size());
  const z32u replaced = crc_;
  crc_ = 0;
  Append(now.data(), now.size());
  // What differs in front counts as much as if zeros followed it.
  const auto behind = static_cast<z_off_t>(end - position_);
  crc_ = sum ^ static_cast<z32u>(crc32_combine(replaced ^ crc_, 0, behind));
  MoveTo(end);
}

void StreamWriter::BeginRecord(Opcode opcode, z64u contentLength) {
  const auto code = static_cast<z8u>(opcode);
  Append(&code, sizeof code);
  Append(&contentLength, sizeof contentLength);
}

}  // namespace sdk::replay
