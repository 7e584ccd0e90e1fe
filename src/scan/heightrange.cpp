// SPDX-License-Identifier: MIT
#include "scan/heightrange.h"

#include <algorithm>

HeightRange FindHeightRange(std::span<const z16s> heights, zVectors vectors) {
  // A loop that every compiler turns into vector instructions. The invalid height is the smallest
  // value: it never is the highest, and one less wraps to the largest, which never is the lowest.
  HeightRange range;
  zVectors_Run(vectors, [&] {
    z16s lowestLessOne = 32767;
    z16s lowestOfAll = 32767;
    z16s highest = kInvalidRaw;
    for (const z16s height : heights) {
      lowestLessOne = std::min(lowestLessOne, static_cast<z16s>(height - 1));
      lowestOfAll = std::min(lowestOfAll, height);
      highest = std::max(highest, height);
    }
    const int lowest = std::min(lowestLessOne + 1, 32767);  // 32768: nothing but invalid heights
    range = {static_cast<z16s>(lowest), highest, lowestOfAll == kInvalidRaw};
  });
  return range;
}
