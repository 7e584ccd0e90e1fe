// SPDX-License-Identifier: MIT
// The points of a scan: which of them are valid, and where they lie.
#pragma once

#include <span>

#include "scan/scan.h"

inline constexpr zPoint3d16s kInvalidPoint{kInvalidRaw, kInvalidRaw, kInvalidRaw};

// A point with any coordinate at -32768 is invalid: nothing was seen there.
constexpr bool IsValid(z16s height) { return height != kInvalidRaw; }
constexpr bool IsValid(const zPoint16s& point) { return IsValid(point.x) && IsValid(point.z); }
constexpr bool IsValid(const zPoint3d16s& point) {
  return IsValid(point.x) && IsValid(point.y) && IsValid(point.z);
}

// Raw points to mm. What a point does not tell itself comes from its place in the grid; the y of a
// profile is 0.
class RealPoints {
 public:
  explicit RealPoints(const Scan& scan)
      : x_(scan.X()), y_(scan.IsProfile() ? Axis{} : scan.Y()), z_(scan.Z()) {}

  zPoint3d64f operator()(z32u row, z32u column, z16s height) const {
    return {Real(column, x_), Real(row, y_), Real(height, z_)};
  }
  zPoint3d64f operator()(z32u, z32u, const zPoint3d16s& raw) const {
    return {Real(raw.x, x_), Real(raw.y, y_), Real(raw.z, z_)};
  }
  zPoint3d64f operator()(z32u row, z32u, const zPoint16s& raw) const {
    return {Real(raw.x, x_), Real(row, y_), Real(raw.z, z_)};
  }

 private:
  Axis x_, y_, z_;
};

// Calls use(points) with all points in their own type. The span is empty when the scan's array
// holds another type than its kind says.
template <class Use>
decltype(auto) WithPoints(const Scan& scan, Use&& use) {
  zObject points = scan.points.Get();
  switch (scan.kind) {
    case ScanKind::cloud:
      return use(zArray_Items<zPoint3d16s>(points));
    case ScanKind::pointProfile:
      return use(zArray_Items<zPoint16s>(points));
    default:
      return use(zArray_Items<z16s>(points));
  }
}

// Gives each raw point to `use(row, column, raw)`, row by row; nothing unless the array is as large
// as the scan says.
template <class Use>
void ForEachPoint(const Scan& scan, Use use) {
  WithPoints(scan, [&](auto points) {
    if (points.empty() || points.size() != zSize{scan.width} * scan.length) return;
    auto point = points.begin();
    for (z32u row = 0; row < scan.length; ++row) {
      for (z32u column = 0; column < scan.width; ++column) use(row, column, *point++);
    }
  });
}

// Gives the real coordinates of each valid point to `use(row, column, zPoint3d64f)`, row by row.
template <class Use>
void ForEachValidPoint(const Scan& scan, Use use) {
  const RealPoints real(scan);
  ForEachPoint(scan, [&](z32u row, z32u column, const auto& raw) {
    if (IsValid(raw)) use(row, column, real(row, column, raw));
  });
}
