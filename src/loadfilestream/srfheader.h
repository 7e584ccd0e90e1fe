// SPDX-License-Identifier: MIT
// Layout of the tool's own compact surface files, little-endian without padding: the version, the
// fields below, width x length z16s heights row by row, a flag byte, and, where it is 1, width x
// length z8u intensities.
#pragma once

#include "loadfilestream/loadfilestream.h"

inline constexpr z32u kSrfVersion = 1;
inline constexpr zSize kSrfHeaderSize = 60;  // up to the heights

// Gives `step` what stands between version and heights in file order, as a type, the address of the
// first item and their number; stops at the first status that is not 1.
template <class Record, class Step>
zStatus ForEachSrfField(Record& record, Step step) {
  zStatus status = step(zType::z32u, &record.width, 1);
  if (status == zOK) status = step(zType::z32u, &record.length, 1);
  if (status == zOK) status = step(zType::z64f, &record.scale, 3);
  if (status == zOK) status = step(zType::z64f, &record.offset, 3);
  return status;
}
