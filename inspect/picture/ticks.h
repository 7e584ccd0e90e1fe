// SPDX-License-Identifier: MIT
// Round numbers along an axis.
#pragma once

#include <string>
#include <vector>

#include "sdk/core.h"

struct AxisRange {
  z64f low = 0, high = 0;

  z64f Size() const { return high - low; }
  // 0 at the low end, 1 at the high end; in the middle of a range without size.
  z64f ShareOf(z64f value) const { return Size() > 0 ? (value - low) / Size() : 0.5; }
};

struct Tick {
  z64f value;
  std::string label;
};

// Multiples of 1, 2 or 5 times a power of ten within a range of finite numbers, about `most` at the
// most; one for a range without size.
std::vector<Tick> TicksWithin(const AxisRange& range, int most);
