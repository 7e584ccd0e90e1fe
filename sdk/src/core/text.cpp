// SPDX-License-Identifier: MIT
#include <cstring>

#include "sdk/core.h"

void zMemCopy(void* destination, const void* source, zSize size) noexcept {
  if (size > 0) std::memcpy(destination, source, size);
}

z32s zStrCompare(const char* a, const char* b) noexcept {
  if (a == nullptr || b == nullptr) return static_cast<z32s>(a != nullptr) - (b != nullptr);
  const int order = std::strcmp(a, b);
  return static_cast<z32s>(order > 0) - (order < 0);
}
