// SPDX-License-Identifier: MIT
// What the writers of Digital Surf surfaces and profiles share.
#pragma once

#include "sdk/core.h"

// A uniform scan as its file describes it.
struct DigitalSurfScan {
  z16s objectType;  // 1 profile, 2 surface
  z32u pointsPerLine, lineCount;
  zPoint3d64f scale, offset;  // narrowed to 32 bits in the file
  zObject points;             // array of pointsPerLine x lineCount z16s heights
};

// Appends header and samples to a memory stream. Returns 1; 0 for heights outside -32765..32766, or
// the status of the write that failed. Invalid points of the array itself become the smallest
// height - 2, as they stand in the file.
zStatus WriteDigitalSurf(const DigitalSurfScan& scan, zMemory stream);
