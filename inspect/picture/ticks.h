// SPDX-License-Identifier: MIT
// Round numbers along an axis.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "sdk/core.h"

struct AxisRange {
  z64f low = 0, high = 0;

  z64f Size() const { return high - low; }
  // 0 at the low end, 1 at the high end; in the middle of a range without size.
  z64f ShareOf(z64f value) const { return Size() > 0 ? (value - low) / Size() : 0.5; }
};

// From the least to the greatest of the finite values; without one, low is infinite and above high.
template <class Value>
AxisRange ExtentOf(const std::vector<Value>& values) {
  constexpr z64f kInfinity = std::numeric_limits<z64f>::infinity();
  AxisRange range{kInfinity, -kInfinity};
  for (const Value value : values) {
    if (!std::isfinite(value)) continue;
    const auto wide = static_cast<z64f>(value);
    range = {std::min(range.low, wide), std::max(range.high, wide)};
  }
  return range;
}

struct Tick {
  z64f value;
  std::string label;
};

// Multiples of 1, 2 or 5 times a power of ten within a range of finite numbers, about `most` at the
// most; one for a range without size.
std::vector<Tick> TicksWithin(const AxisRange& range, int most);
