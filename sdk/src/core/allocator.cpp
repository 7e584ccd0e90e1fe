// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "sdk/core.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace {

// Touching a fresh buffer costs a page fault for every 4 KiB; with large pages it is one for every
// 2 MiB, and a scan of many megabytes is copied at the speed of memory.
constexpr zSize kLargePage = zSize{2} << 20;

class StandardAllocator : public zAllocator {
 public:
  void* Allocate(zSize bytes) noexcept override {
#ifdef __linux__
    if (bytes >= kLargePage && bytes <= static_cast<zSize>(-1) - kLargePage) {
      const zSize whole = (bytes + kLargePage - 1) / kLargePage * kLargePage;
      void* block = std::aligned_alloc(kLargePage, whole);
      // A refusal only means ordinary pages.
      if (block != nullptr) static_cast<void>(madvise(block, bytes, MADV_HUGEPAGE));
      return block;
    }
#endif
    return std::malloc(bytes == 0 ? 1 : bytes);
  }

  void* AllocateZeroed(zSize bytes) noexcept override {
    return std::calloc(bytes == 0 ? 1 : bytes, 1);
  }

  void Free(void* block) noexcept override { std::free(block); }
};

}  // namespace

zAllocator& zAllocator::Default() noexcept {
  static StandardAllocator allocator;
  return allocator;
}
