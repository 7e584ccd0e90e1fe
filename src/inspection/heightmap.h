// SPDX-License-Identifier: MIT
// Scans reduced to what a picture or a page can show. Reduction is by area: a cell is the mean of
// all points that fall into it, never one of them.
#pragma once

#include <vector>

#include "inspection/scan.h"

// A surface or a cloud seen from above.
struct HeightMap {
  z32u width = 0, length = 0;    // cells
  z64f x = 0, y = 0;             // mm, centre of the first cell of the first row
  z64f stepX = 0, stepY = 0;     // mm from cell to cell; negative steps are possible
  std::vector<z32f> heights;     // mm, row by row; NaN where nothing was measured
  std::vector<z8u> intensities;  // likewise; empty for a scan without
  bool reduced = false;          // a cell may stand for more than one point
};

// At most `mostCells` cells in all. A surface of no more points keeps its own grid.
HeightMap MakeHeightMap(const Scan& scan, zSize mostCells);

// A profile, from left to right. Of many points that fall into one of `mostColumns` columns, the
// lowest and the highest remain.
struct ProfileLine {
  std::vector<z64f> x, z;        // mm; z is NaN in gaps
  std::vector<z8u> intensities;  // likewise; empty for a scan without
  bool reduced = false;
};
ProfileLine MakeProfileLine(const Scan& scan, zSize mostColumns);
