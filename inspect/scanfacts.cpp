// SPDX-License-Identifier: MIT
#include "inspect/scanfacts.h"

#include <algorithm>
#include <span>

#include "getfilestream/getfilestream.h"
#include "getfilestream/heightrange.h"

namespace {

struct Measured {
  zSize validPoints = 0;
  HeightRange heights;  // raw
};

Measured MeasureHeights(std::span<const z16s> heights) {
  constexpr zSize kBlock = 8192;  // stays in the cache, and its number of points in 16 bits
  Measured measured;
  for (std::span<const z16s> left = heights; !left.empty();) {
    const auto block = left.first(std::min(left.size(), kBlock));
    left = left.subspan(block.size());
    z16u valid = 0;
    for (const z16s height : block) valid = static_cast<z16u>(valid + (height != kInvalidRaw));
    measured.validPoints += valid;
    const HeightRange range = FindHeightRange(block);
    if (valid == 0) continue;
    measured.heights.lowest = std::min(measured.heights.lowest, range.lowest);
    measured.heights.highest = std::max(measured.heights.highest, range.highest);
  }
  return measured;
}

template <class Point>
Measured MeasurePoints(std::span<const Point> points) {
  Measured measured;
  for (const Point& point : points) {
    bool valid = point.x != kInvalidRaw && point.z != kInvalidRaw;
    if constexpr (requires { point.y; }) valid = valid && point.y != kInvalidRaw;
    if (!valid) continue;
    ++measured.validPoints;
    measured.heights.lowest = std::min(measured.heights.lowest, point.z);
    measured.heights.highest = std::max(measured.heights.highest, point.z);
  }
  return measured;
}

Measured Measure(const Scan& scan) {
  zObject points = scan.points.Get();
  switch (scan.kind) {
    case ScanKind::cloud:
      return MeasurePoints(zArray_Items<zPoint3d16s>(points));
    case ScanKind::pointProfile:
      return MeasurePoints(zArray_Items<zPoint16s>(points));
    default:
      return MeasureHeights(zArray_Items<z16s>(points));
  }
}

template <class Record>
Record ToRecord(const Scan& scan) {
  Record record;
  record.scale = scan.scale;
  record.offset = scan.offset;
  record.points = scan.points;
  return record;
}

BoundingBox6 ComputeBox(const Scan& scan) {
  if (scan.IsProfile()) {
    auto record = ToRecord<ProfileBuffer>(scan);
    record.count = scan.width;
    return GetProfileBoundingBox(record);
  }
  auto record = ToRecord<SurfaceBuffer>(scan);
  record.width = scan.width;
  record.length = scan.length;
  return GetSurfaceBoundingBox(record);
}

// Nothing for a scan that a conversion calls empty, such as one that never is below the largest raw
// value.
std::optional<BoundingBox6> FindBox(const Scan& scan) {
  try {
    return ComputeBox(scan);
  } catch (const Orv::Exception&) {
    return std::nullopt;
  }
}

}  // namespace

ScanFacts MeasureScan(const Scan& scan) {
  const Measured measured = Measure(scan);
  ScanFacts facts{scan.kind,  scan.width,  scan.length, scan.Count(), measured.validPoints,
                  scan.scale, scan.offset, {},          {},           {},
                  scan.stamp};
  if (measured.validPoints > 0) {
    const auto real = [&](z16s raw) { return raw * scan.scale.z + scan.offset.z; };
    const auto [lowest, highest] =
        std::minmax({real(measured.heights.lowest), real(measured.heights.highest)});
    facts.heights = {lowest, highest};
    facts.box = scan.box ? scan.box : FindBox(scan);
  }
  const auto intensities = zArray_Items<z8u>(scan.intensities.Get());
  if (!intensities.empty()) {
    z8u lowest = 255;
    z8u highest = 0;
    for (const z8u intensity : intensities) {
      lowest = std::min(lowest, intensity);
      highest = std::max(highest, intensity);
    }
    facts.intensity = {lowest, highest};
  }
  return facts;
}
