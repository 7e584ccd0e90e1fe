// SPDX-License-Identifier: MIT
// Real values as raw ones.
#pragma once

#include <cmath>

#include "sdk/core.h"

// The integer part; 0 for what is no 64-bit integer or no number.
inline z64s Truncate(z64f value) { return std::abs(value) < 0x1p63 ? static_cast<z64s>(value) : 0; }

// Rounds half away from zero and keeps the low 16 bits.
inline z16s RoundToRaw(z64f value) {
  return static_cast<z16s>(Truncate(value + std::copysign(0.5, value)));
}
