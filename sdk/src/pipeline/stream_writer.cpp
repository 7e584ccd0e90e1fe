// SPDX-License-Identifier: MIT
#include "pipeline/stream_writer.h"

#include <libdeflate.h>

namespace sdk::replay {

void StreamWriter::Append(const void* bytes, zSize size) {
  out_.Append(Bytes(static_cast<const z8u*>(bytes), size));
  crc_ = libdeflate_crc32(crc_, bytes, size);
}

void StreamWriter::AppendInPlace(const void* bytes, zSize size) {
  out_.AppendInPlace(Bytes(static_cast<const z8u*>(bytes), size));
  crc_ = libdeflate_crc32(crc_, bytes, size);
}

void StreamWriter::BeginRecord(Opcode opcode, z64u contentLength) {
  const auto code = static_cast<z8u>(opcode);
  Append(&code, sizeof code);
  Append(&contentLength, sizeof contentLength);
}

}  // namespace sdk::replay
