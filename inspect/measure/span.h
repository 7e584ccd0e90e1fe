// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>

#include "sdk/core.h"

// From the lowest to the highest of some values; low is above high where there is none.
struct Span {
  z64f low = HUGE_VAL, high = -HUGE_VAL;

  void Include(z64f value) {
    low = value < low ? value : low;
    high = value > high ? value : high;
  }
  z64f Size() const { return high - low; }
};
