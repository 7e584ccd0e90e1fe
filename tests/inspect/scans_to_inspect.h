// SPDX-License-Identifier: MIT
// Scans to look at.
#pragma once

#include "scan/points.h"
#include "support/scans.h"

template <class Point>
Scan MakeScan(ScanKind kind, z32u width, z32u length, const std::vector<Point>& points,
              zPoint3d64f scale = {1, 1, 1}, zPoint3d64f offset = {}) {
  Scan scan;
  scan.kind = kind;
  scan.width = width;
  scan.length = length;
  scan.scale = scale;
  scan.offset = offset;
  scan.points = MakeArray2(length, width, points);
  return scan;
}
