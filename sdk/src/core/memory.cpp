// SPDX-License-Identifier: MIT
#include <cstring>

#include "core/stream.h"

namespace {

class Memory : public sdk::Stream {
 public:
  zStatus Write(const void* source, zSize size) noexcept override try {
    if (size > bytes_.max_size() - position_) return zERROR_MEMORY;
    if (position_ + size > bytes_.size()) bytes_.resize(position_ + size);
    std::memcpy(bytes_.data() + position_, source, size);
    position_ += size;
    return zOK;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }

  zStatus Seek(z64u position) noexcept override {
    if (position > bytes_.size()) return zERROR_STREAM;
    position_ = static_cast<zSize>(position);
    return zOK;
  }

  std::span<const z8u> Bytes() const noexcept { return bytes_; }

 private:
  zBytes bytes_;
  zSize position_ = 0;  // within the bytes
};

}  // namespace

zStatus zMemory_Construct(zMemory* stream, zAlloc alloc) noexcept {
  if (stream == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  return sdk::HandOut(stream, sdk::Make<Memory>());
}

std::span<const z8u> zMemory_Bytes(zMemory stream) noexcept {
  const Memory* memory = sdk::As<Memory>(stream);
  return memory == nullptr ? std::span<const z8u>() : memory->Bytes();
}

void zMemorySource::Read(z64u offset, void* destination, zSize size) const {
  if (size > 0) std::memcpy(destination, bytes_.data() + offset, size);
}
