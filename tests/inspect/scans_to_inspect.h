// SPDX-License-Identifier: MIT
// Scans to look at.
#pragma once

#include <cmath>

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

// Scans of each kind in turn, with a scale or an offset that no file should have.
inline std::vector<Scan> MakeHostileScans() {
  std::vector<Scan> scans;
  const std::vector<z16s> heights{1, 2, 3, kInvalidRaw, 5, -32767};
  const std::vector<zPoint3d16s> cloud{{1, 2, 3}, {5, 9, 2}, {-9, 4, 4}};
  const std::vector<zPoint16s> line{{1, 2}, {9, 5}, {-4, 4}};
  for (const z64f number : {0.0, std::nan(""), HUGE_VAL, 1e308, -1e34, 5e-324}) {
    for (int i = 0; i < 6; ++i) {
      zPoint3d64f scale{1, 1, 1}, offset{};
      zPoint3d64f& changed = i % 2 == 0 ? scale : offset;
      (i < 2 ? changed.x : i < 4 ? changed.y : changed.z) = number;
      scans.push_back(MakeScan(ScanKind::surface, 3, 2, heights, scale, offset));
      scans.push_back(MakeScan(ScanKind::cloud, 3, 1, cloud, scale, offset));
      scans.push_back(MakeScan(ScanKind::profile, 6, 1, heights, scale, offset));
      scans.push_back(MakeScan(ScanKind::pointProfile, 3, 1, line, scale, offset));
    }
  }
  return scans;
}
