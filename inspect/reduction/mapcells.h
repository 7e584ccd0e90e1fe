// SPDX-License-Identifier: MIT
// What the maps of surfaces and of clouds have in common.
#pragma once

#include <cmath>
#include <limits>

#include "inspect/reduction/heightmap.h"

inline constexpr z32f kNotMeasured = std::numeric_limits<z32f>::quiet_NaN();

// A number of mm that can be drawn: neither NaN nor infinite, not even as a float.
inline bool IsDrawable(z64f mm) {
  return std::abs(mm) <= static_cast<z64f>(std::numeric_limits<z32f>::max());
}
inline bool IsDrawable(const zPoint3d64f& point) {
  return IsDrawable(point.x) && IsDrawable(point.y) && IsDrawable(point.z);
}

// The intensities of the scan's points; empty when there is not one for each.
inline std::span<const z8u> IntensitiesOf(const Scan& scan) {
  const auto items = zArray_Items<z8u>(scan.intensities.Get());
  return items.size() == scan.Count() ? items : std::span<const z8u>();
}

// Whether width, length and kind describe the array of points.
template <class Point>
bool HoldsGridOf(const Scan& scan) {
  return zArray_Items<Point>(scan.points.Get()).size() == zSize{scan.width} * scan.length;
}

// Seen from above, each point in the cell that it falls into.
HeightMap MakeCloudMap(const Scan& scan, const std::function<MapSize(const MapGrid&)>& most);
