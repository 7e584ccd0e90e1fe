// SPDX-License-Identifier: MIT
// Memory that several owners look into.
#pragma once

#include <cstddef>
#include <memory>

#include "sdk/core.h"

namespace sdk {

// Owners share a block by copying this; a view of a part of it keeps all of it alive.
using Block = std::shared_ptr<std::byte>;

enum class Fill { none, zeros };

// Null when the memory cannot be had.
Block AllocateBlock(zAlloc alloc, z64u bytes, Fill fill) noexcept;

// The product of two sizes, or false when it does not fit.
constexpr bool Multiply(z64u a, z64u b, z64u& product) noexcept {
  if (b != 0 && a > static_cast<z64u>(-1) / b) return false;
  product = a * b;
  return true;
}

}  // namespace sdk
