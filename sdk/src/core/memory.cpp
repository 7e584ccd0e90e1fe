// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "core/block.h"
#include "core/stream.h"

namespace {

class Memory : public sdk::Stream {
 public:
  explicit Memory(zAlloc alloc) noexcept : alloc_(alloc) {}

  zStatus Read(void* destination, zSize size) noexcept override {
    if (size > length_ - position_) return zERROR_STREAM;
    std::memcpy(destination, bytes_ + position_, size);
    position_ += size;
    return zOK;
  }

  zStatus Write(const void* source, zSize size) noexcept override {
    if (attached_) return zERROR_STREAM;
    if (size > static_cast<zSize>(-1) - position_) return zERROR_MEMORY;
    const zSize end = position_ + size;
    if (end > capacity_) {
      const zSize doubled = capacity_ > static_cast<zSize>(-1) / 2 ? end : 2 * capacity_;
      const zStatus status = Reserve(std::max({zSize{1024}, doubled, end}));
      if (status != zOK) return status;
    }
    std::memcpy(owned_.get() + position_, source, size);
    position_ = end;
    length_ = std::max(length_, end);
    return zOK;
  }

  zStatus Seek(z64s position) noexcept override {
    if (position < 0 || static_cast<z64u>(position) > length_) return zERROR_STREAM;
    position_ = static_cast<zSize>(position);
    return zOK;
  }

  zStatus Reserve(zSize capacity) noexcept {
    if (attached_) return zERROR_STREAM;
    if (capacity <= capacity_) return zOK;
    sdk::Block grown = sdk::AllocateBlock(alloc_, capacity, sdk::Fill::none);
    if (grown == nullptr) return zERROR_MEMORY;
    if (length_ > 0) std::memcpy(grown.get(), owned_.get(), length_);
    owned_ = std::move(grown);
    bytes_ = owned_.get();
    capacity_ = capacity;
    return zOK;
  }

  void Attach(const std::byte* bytes, zSize position, zSize length, zSize capacity) noexcept {
    owned_.reset();
    attached_ = true;
    bytes_ = bytes;
    position_ = position;
    length_ = length;
    capacity_ = capacity;
  }

  zSize Position() const noexcept { return position_; }
  zSize Length() const noexcept { return length_; }
  const std::byte* At(zSize offset) const noexcept {
    return bytes_ == nullptr || offset > length_ ? nullptr : bytes_ + offset;
  }

 private:
  zAlloc alloc_;
  sdk::Block owned_;
  const std::byte* bytes_ = nullptr;  // owned or attached
  zSize position_ = 0;                // <= length_
  zSize length_ = 0;                  // <= capacity_
  zSize capacity_ = 0;
  bool attached_ = false;
};

}  // namespace

zStatus zMemory_Construct(zMemory* stream, zAlloc alloc) noexcept {
  if (stream == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  return sdk::HandOut(stream, sdk::Make<Memory>(alloc));
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
  memory->Attach(static_cast<const std::byte*>(buffer), position, length, capacity);
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
