// SPDX-License-Identifier: MIT
// The valid heights of a scan, in pieces, as often as they are asked for.
#pragma once

#include <functional>
#include <span>

#include "inspect/measure/plane.h"

// Heights in the unit of z, all finite, and how often each is there; once where `counts` is empty.
struct HeightBlock {
  std::span<const z64f> heights;
  std::span<const z64f> counts;

  z64f CountOf(zSize i) const { return counts.empty() ? 1 : counts[i]; }
};

// Gives all blocks to `take`, the same ones each time.
using HeightBlocks = std::function<void(const std::function<void(const HeightBlock&)>& take)>;

// The scan must outlive what is returned. A scan whose array does not fit its kind has none.
HeightBlocks HeightsOf(const Scan& scan);
// Each less the plane below or above its place.
HeightBlocks HeightsOver(const Scan& scan, const Plane& plane);
