// SPDX-License-Identifier: MIT
#include "core/block.h"

#include <limits>
#include <new>

namespace sdk {

Block AllocateBlock(zAlloc alloc, z64u bytes, Fill fill) noexcept {
  // Pointers into the block are subtracted, so its size stays within that range.
  if (bytes > static_cast<z64u>(std::numeric_limits<std::ptrdiff_t>::max())) return nullptr;
  const auto size = static_cast<zSize>(bytes);
  void* memory = fill == Fill::zeros ? alloc->AllocateZeroed(size) : alloc->Allocate(size);
  if (memory == nullptr) return nullptr;
  try {
    return {static_cast<std::byte*>(memory), [alloc](std::byte* block) { alloc->Free(block); }};
  } catch (const std::bad_alloc&) {
    return nullptr;  // the deleter has run
  }
}

}  // namespace sdk
