// SPDX-License-Identifier: MIT
// Files of heights in a grid, which are read where they are needed.
#pragma once

#include <functional>
#include <span>

#include "scan/scan.h"

// One that was opened, whose source must outlive it.
struct HeightFile {
  Scan scan;  // all but the points
  // Fills a block with the next heights, row by row; a copy goes on by itself. -4 where the file
  // ends before.
  std::function<zStatus(std::span<z16s> heights)> read;
};

// The scan with its points, which are read now.
zStatus LoadHeights(HeightFile& file, Scan& record, zAlloc alloc);
