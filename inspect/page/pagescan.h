// SPDX-License-Identifier: MIT
// A scan as a page holds it: 16-bit values with a scale and an offset, intensities as bytes.
// Lengths are in the units that the file tells.
#pragma once

#include <vector>

#include "inspect/reduction/heightmap.h"

// A value v stands for v * scale + offset, kInvalidRaw for nothing measured.
struct PageValues {
  std::vector<z16s> raw;
  z64f scale = 1, offset = 0;
};

// The points of a profile are cells in one row.
struct PageScan : MapGrid {
  PageValues heights;            // row by row
  PageValues lows, highs;        // of the points of each cell, unless each cell is one point
  PageValues places;             // x of the points of a profile that have no even step
  std::vector<z8u> intensities;  // likewise; empty for a scan without
  bool reduced = false;  // more points than wished; of a surface, cells stand for more than one
  zSize measured = 0;    // cells with a height
};

// At most `mostPoints` cells or points. A scan of no more points keeps its raw heights, their scale
// and offset, a cloud excepted: it falls into a grid. A point without a finite place is not
// measured.
PageScan MakePageScan(const Scan& scan, zSize mostPoints);
