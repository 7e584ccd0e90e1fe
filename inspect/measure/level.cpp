// SPDX-License-Identifier: MIT
#include "inspect/measure/level.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace {

constexpr z64f kMostRaw = std::numeric_limits<z16s>::max();

z16s& Height(z16s& height) { return height; }
template <class Point>
z16s& Height(Point& point) {
  return point.z;
}

// Writes heights as raw values of the new axis. `place(row, column, point)` tells where a valid
// point lies.
template <class Point>
void Rewrite(const Scan& scan, const Plane& plane, const Axis& axis) {
  const auto points = zArray_EditableItems<Point>(scan.points.Get());
  if (points.size() != zArray_Items<Point>(scan.points.Get()).size()) throw std::bad_alloc();
  zSize next = 0;
  ForEachPlace(scan, [&](const PlacedHeight& place) {
    while (!IsValid(points[next])) ++next;
    const z64f raw = (place.z - plane.At(place) - axis.offset) / axis.scale;
    Height(points[next++]) =
        std::isfinite(raw) ? static_cast<z16s>(std::lround(std::clamp(raw, -kMostRaw, kMostRaw)))
                           : kInvalidRaw;
  });
}

}  // namespace

Scan LevelScan(Scan scan, const Plane& plane) {
  z64f low = std::numeric_limits<z64f>::infinity();
  z64f high = -low;
  ForEachPlace(scan, [&](const PlacedHeight& place) {
    const z64f height = place.z - plane.At(place);
    if (!std::isfinite(height)) return;
    low = std::min(low, height);
    high = std::max(high, height);
  });
  if (low > high) return scan;
  const z64f step = high / (2 * kMostRaw) - low / (2 * kMostRaw);
  const Axis axis{step > 0 ? step : 1, low + (high / 2 - low / 2)};
  switch (scan.kind) {
    case ScanKind::cloud:
      Rewrite<zPoint3d16s>(scan, plane, axis);
      break;
    case ScanKind::pointProfile:
      Rewrite<zPoint16s>(scan, plane, axis);
      break;
    default:
      Rewrite<z16s>(scan, plane, axis);
  }
  scan.scale.z = axis.scale;
  scan.offset.z = axis.offset;
  scan.box.reset();
  return scan;
}
