// SPDX-License-Identifier: MIT
// Heights by their place in the order of all, without keeping or sorting all.
#pragma once

#include <vector>

#include "inspect/measure/heights.h"

// How many heights fall into each of equal parts of a range.
class Histogram {
 public:
  // From `low` to `high`, both included; `parts` from 1 to a million.
  Histogram(z64f low, z64f high, zSize parts);

  void Add(const HeightBlock& block);

  bool Has(z64f height) const { return low_ <= height && height <= high_; }
  // Of a height that it has; never less for a higher one.
  zSize PartOf(z64f height) const {
    return static_cast<zSize>(static_cast<int>(std::min(last_, (height - low_) * partsPerHeight_)));
  }
  const std::vector<z64f>& Counts() const { return counts_; }
  z64f Below() const { return below_; }  // heights below the range
  z64f Size() const { return high_ - low_; }
  // The range of these parts, and a little more.
  Histogram Narrowed(zSize first, zSize last) const;

 private:
  z64f low_, high_;
  z64f partsPerHeight_;
  z64f last_;  // part
  std::vector<z64f> counts_;
  z64f below_ = 0;
};

// The heights with these ranks, which ascend from 0 to the number of heights less 1. `histogram`
// has counted all blocks. Exact, except where more than a million different heights lie within
// 1/65536 of the range of those that are asked for: then as near as that.
std::vector<z64f> HeightsOfRanks(const HeightBlocks& blocks, Histogram histogram,
                                 const std::vector<z64f>& ranks);
