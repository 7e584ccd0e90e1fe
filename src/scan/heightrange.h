// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <span>

#include "sdk/message.h"
#include "sdk/vectors.h"

// Smallest and largest valid height; 32767 and -32768 when none is valid.
struct HeightRange {
  z16s lowest = 32767;
  z16s highest = -32768;
  bool hasInvalid = false;

  // Of both together.
  void Include(const HeightRange& other) {
    lowest = std::min(lowest, other.lowest);
    highest = std::max(highest, other.highest);
    hasInvalid = hasInvalid || other.hasInvalid;
  }
};

// The same for every `vectors`.
HeightRange FindHeightRange(std::span<const z16s> heights, zVectors vectors = zVectors_Widest());
