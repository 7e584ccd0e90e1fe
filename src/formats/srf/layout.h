// SPDX-License-Identifier: MIT
// Layout of the tool's own compact surface files, little-endian without padding: the header below,
// width x length z16s heights row by row, a flag byte, and, where it is 1, width x length z8u
// intensities.
#pragma once

#include "sdk/core.h"

inline constexpr z32u kSrfVersion = 1;

struct SrfHeader {
  z32u version = kSrfVersion;
  z32u width = 0, length = 0;     // points in a row, rows
  zPoint3d64f scale{}, offset{};  // mm
};

inline constexpr zSize kSrfHeaderSize = 3 * sizeof(z32u) + 6 * sizeof(z64f);

// Gives `step` the fields in file order, as a type, the address of the first item and their number;
// stops at the first status that is not 1.
template <class Header, class Step>
zStatus ForEachSrfField(Header& header, Step step) {
  zStatus status = step(zType::z32u, &header.version, 1);
  if (status == zOK) status = step(zType::z32u, &header.width, 1);
  if (status == zOK) status = step(zType::z32u, &header.length, 1);
  if (status == zOK) status = step(zType::z64f, &header.scale, 3);
  if (status == zOK) status = step(zType::z64f, &header.offset, 3);
  return status;
}
