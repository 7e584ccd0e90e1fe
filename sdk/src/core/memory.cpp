// SPDX-License-Identifier: MIT
#include <cstring>

#include "core/stream.h"

namespace {

class Memory : public sdk::Stream {
 public:
  zStatus Read(void* destination, zSize size) noexcept override {
    if (size > bytes_.size() - position_) return zERROR_STREAM;
    std::memcpy(destination, bytes_.data() + position_, size);
    position_ += size;
    return zOK;
  }

  zStatus Write(const void* source, zSize size) noexcept override try {
    if (attached_) return zERROR_STREAM;
    if (size > owned_.max_size() - position_) return zERROR_MEMORY;
    if (position_ + size > owned_.size()) owned_.resize(position_ + size);
    bytes_ = owned_;
    std::memcpy(owned_.data() + position_, source, size);
    position_ += size;
    return zOK;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }

  zStatus Seek(z64s position) noexcept override {
    if (position < 0 || static_cast<z64u>(position) > bytes_.size()) return zERROR_STREAM;
    position_ = static_cast<zSize>(position);
    return zOK;
  }

  zStatus Reserve(zSize capacity) noexcept try {
    if (attached_) return zERROR_STREAM;
    owned_.reserve(capacity);
    bytes_ = owned_;
    return zOK;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }

  void Attach(std::span<const z8u> bytes, zSize position) noexcept {
    owned_ = {};
    attached_ = true;
    bytes_ = bytes;
    position_ = position;
  }

  zSize Position() const noexcept { return position_; }
  zSize Length() const noexcept { return bytes_.size(); }
  const z8u* At(zSize offset) const noexcept {
    return bytes_.data() == nullptr || offset > bytes_.size() ? nullptr : bytes_.data() + offset;
  }

 private:
  zBytes owned_;
  std::span<const z8u> bytes_;  // owned or attached
  zSize position_ = 0;          // within the bytes
  bool attached_ = false;
};

}  // namespace

zStatus zMemory_Construct(zMemory* stream, zAlloc alloc) noexcept {
  if (stream == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  return sdk::HandOut(stream, sdk::Make<Memory>());
}

zStatus zMemory_Reserve(zMemory stream, zSize capacity) noexcept {
  Memory* memory = sdk::As<Memory>(stream);
  return memory == nullptr ? zERROR_PARAMETER : memory->Reserve(capacity);
}

zStatus zMemory_Attach(zMemory stream, const void* buffer, zSize position, zSize length,
                       zSize capacity) noexcept {
  Memory* memory = sdk::As<Memory>(stream);
  if (memory == nullptr || (buffer == nullptr && capacity > 0)) return zERROR_PARAMETER;
  if (position > length || length > capacity) return zERROR_PARAMETER;
  memory->Attach({static_cast<const z8u*>(buffer), length}, position);
  return zOK;
}

zSize zMemory_Position(zMemory stream) noexcept {
  const Memory* memory = sdk::As<Memory>(stream);
  return memory == nullptr ? 0 : memory->Position();
}

zSize zMemory_Length(zMemory stream) noexcept {
  const Memory* memory = sdk::As<Memory>(stream);
  return memory == nullptr ? 0 : memory->Length();
}

const void* zMemory_At(zMemory stream, zSize offset) noexcept {
  const Memory* memory = sdk::As<Memory>(stream);
  return memory == nullptr ? nullptr : memory->At(offset);
}
