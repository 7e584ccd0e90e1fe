// SPDX-License-Identifier: MIT
// Scans reduced to what a picture or a page can show. Reduction is by area: a cell is the mean of
// all points that fall into it, and keeps the lowest and the highest of them. A coordinate that no
// float can hold, such as an infinite one, makes its point count as not measured.
#pragma once

#include <functional>
#include <vector>

#include "scan/points.h"

// Where the cells of a map lie. 0 x 0 when there is nothing to place.
struct MapGrid {
  z32u width = 0, length = 0;  // cells
  z64f x = 0, y = 0;           // mm, centre of the first cell of the first row
  z64f stepX = 0, stepY = 0;   // mm from cell to cell; may be negative or 0
};

// A surface or a cloud seen from above.
struct HeightMap : MapGrid {
  std::vector<z32f> heights;  // mm, row by row; NaN where nothing was measured
  std::vector<z32f> lows,
      highs;  // likewise, of the lowest and the highest point; empty unless reduced
  std::vector<z8u> intensities;  // likewise, 0 there; empty for a scan without
  bool reduced = false;          // a cell stands for more than one point
};

// At most `mostCells` cells in all. A surface of no more points keeps its own grid. A larger one is
// shared out among equal cells; one that is measured to less than half of its area is empty. A
// cloud falls into a grid along x and y, rows upwards, that is no finer than its points are dense.
HeightMap MakeHeightMap(const Scan& scan, zSize mostCells);

// The same, with at most as many cells along each axis as `most` tells, given the finest grid.
struct MapSize {
  z32u width, length;
};
HeightMap MakeHeightMap(const Scan& scan, const std::function<MapSize(const MapGrid&)>& most);

// A profile, from left to right. Of many points that follow each other in one of `mostColumns`
// columns, the lowest and the highest remain.
struct ProfileLine {
  std::vector<z64f> x, z;        // mm; z is NaN in gaps, and x then that of a neighbour if unknown
  std::vector<z8u> intensities;  // likewise; empty for a scan without
};
// Empty when no point is valid.
ProfileLine MakeProfileLine(const Scan& scan, zSize mostColumns);
