// SPDX-License-Identifier: MIT
#include "pipeline/stream_writer.h"

#include <libdeflate.h>

#include <algorithm>

namespace sdk::replay {

void StreamWriter::Append(const void* bytes, zSize size) {
  // Bytes are summed while they are still in the processor's cache.
  constexpr zSize kSlice = zSize{256} << 10;
  const auto* source = static_cast<const z8u*>(bytes);
  const zSize start = out_.size();
  out_.resize(start + size);
  for (zSize done = 0; done < size;) {
    const zSize slice = std::min(kSlice, size - done);
    std::memcpy(out_.data() + start + done, source + done, slice);
    crc_ = libdeflate_crc32(crc_, source + done, slice);
    done += slice;
  }
}

void StreamWriter::BeginRecord(Opcode opcode, z64u contentLength) {
  const auto code = static_cast<z8u>(opcode);
  Append(&code, sizeof code);
  Append(&contentLength, sizeof contentLength);
}

void StreamWriter::Overwrite(z64u position, Bytes bytes) {
  std::ranges::copy(bytes, out_.begin() + static_cast<std::ptrdiff_t>(position));
}

}  // namespace sdk::replay
