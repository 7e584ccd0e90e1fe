// SPDX-License-Identifier: MIT
#include "scan/box.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "scan/points.h"

namespace {

struct Extent {
  z64f center, size;
};

// Of raw values, each of which stands for a cell of one step.
Extent RawExtent(z16s lowest, z16s highest, const Axis& axis) {
  const z64f size = (highest - lowest + 1) * axis.scale;
  return {Real(lowest, axis) + size / 2, size};
}

// Of the columns or rows of a grid.
Extent GridExtent(z32u count, const Axis& axis) {
  const z64f size = count * axis.scale;
  return {axis.offset + size / 2, size};
}

// Smallest and largest raw value of one axis.
struct RawRange {
  z16s lowest = 32767;
  z16s highest = -32768;

  void Include(z16s raw) {
    lowest = std::min(lowest, raw);
    highest = std::max(highest, raw);
  }
};

// The ranges of a cloud's axes. Groups without an invalid point, which are most, are taken as runs
// of coordinates, so that compilers make vector instructions of them.
class CloudRange {
 public:
  static constexpr zSize kGroup = 16;  // points

  CloudRange() {
    lowest_.fill(32767);
    highest_.fill(-32768);
  }

  void Include(const zPoint3d16s& point) {
    if (!IsValid(point)) return;
    single_[0].Include(point.x);
    single_[1].Include(point.y);
    single_[2].Include(point.z);
  }

  void IncludeGroup(std::span<const zPoint3d16s, kGroup> points) {
    std::array<z16s, kLanes> raws;
    static_assert(sizeof raws == kGroup * sizeof(zPoint3d16s));
    std::memcpy(raws.data(), points.data(), sizeof raws);
    z16s least = 32767;
    for (const z16s raw : raws) least = std::min(least, raw);
    if (least == kInvalidRaw) {
      for (const zPoint3d16s& point : points) Include(point);
      return;
    }
    for (zSize i = 0; i < kLanes; ++i) {
      lowest_[i] = std::min(lowest_[i], raws[i]);
      highest_[i] = std::max(highest_[i], raws[i]);
    }
  }

  std::array<RawRange, 3> Ranges() const {
    std::array<RawRange, 3> ranges = single_;
    for (zSize i = 0; i < kLanes; ++i) {
      RawRange& range = ranges[i % 3];
      range.lowest = std::min(range.lowest, lowest_[i]);
      range.highest = std::max(range.highest, highest_[i]);
    }
    return ranges;
  }

 private:
  static constexpr zSize kLanes = 3 * kGroup;  // x, y, z of each point in turn

  std::array<RawRange, 3> single_{};
  std::array<z16s, kLanes> lowest_, highest_;
};

BoundingBox6 MakeBox(const Extent& x, const Extent& y, const Extent& z) {
  return {{x.center, y.center, z.center}, {x.size, y.size, z.size}};
}

std::optional<BoundingBox6> CloudBox(const Scan& scan) {
  CloudRange cloud;
  std::span<const zPoint3d16s> points = zArray_Items<zPoint3d16s>(scan.points.Get());
  for (; points.size() >= CloudRange::kGroup; points = points.subspan(CloudRange::kGroup)) {
    cloud.IncludeGroup(points.first<CloudRange::kGroup>());
  }
  for (const zPoint3d16s& point : points) cloud.Include(point);
  const auto [x, y, z] = cloud.Ranges();
  if (x.lowest == 32767 || y.lowest == 32767 || z.lowest == 32767) return std::nullopt;
  return MakeBox(RawExtent(x.lowest, x.highest, scan.X()), RawExtent(y.lowest, y.highest, scan.Y()),
                 RawExtent(z.lowest, z.highest, scan.Z()));
}

std::optional<BoundingBox6> ProfileBox(const Scan& scan) {
  const HeightRange range = FindHeightRange(zArray_Items<z16s>(scan.points.Get()));
  if (range.highest == kInvalidRaw) return std::nullopt;
  return MakeBox({scan.offset.x, scan.width * scan.scale.x}, {},
                 RawExtent(range.lowest, range.highest, scan.Z()));
}

std::optional<BoundingBox6> PointProfileBox(const Scan& scan) {
  RawRange x, z;
  for (const zPoint16s& point : zArray_Items<zPoint16s>(scan.points.Get())) {
    if (!IsValid(point)) continue;
    x.Include(point.x);
    z.Include(point.z);
  }
  if (x.lowest == 32767) return std::nullopt;
  return MakeBox(RawExtent(x.lowest, x.highest, scan.X()), {},
                 RawExtent(z.lowest, z.highest, scan.Z()));
}

}  // namespace

std::optional<BoundingBox6> FindBox(const Scan& scan) {
  if (scan.width == 0 || scan.length == 0) return std::nullopt;
  switch (scan.kind) {
    case ScanKind::surface:
      return FindBox(scan, FindHeightRange(zArray_Items<z16s>(scan.points.Get())));
    case ScanKind::cloud:
      return CloudBox(scan);
    case ScanKind::profile:
      return ProfileBox(scan);
    case ScanKind::pointProfile:
      return PointProfileBox(scan);
  }
  return std::nullopt;
}

std::optional<BoundingBox6> FindBox(const Scan& scan, const HeightRange& range) {
  if (range.lowest == 32767 || range.highest == kInvalidRaw) return std::nullopt;
  return MakeBox(GridExtent(scan.width, scan.X()), GridExtent(scan.length, scan.Y()),
                 RawExtent(range.lowest, range.highest, scan.Z()));
}
