// SPDX-License-Identifier: MIT
#include "inspect/scanfacts.h"

#include <algorithm>

#include "formats/digitalsurf/writer.h"
#include "scan/box.h"
#include "scan/points.h"

namespace {

MeasuredPoints Measure(std::span<const z16s> heights) {
  MeasuredPoints measured;
  measured.Include(heights);
  return measured;
}

template <class Point>
MeasuredPoints Measure(std::span<const Point> points) {
  MeasuredPoints measured;
  for (const Point& point : points) {
    if (!IsValid(point)) continue;
    ++measured.valid;
    measured.heights.lowest = std::min(measured.heights.lowest, point.z);
    measured.heights.highest = std::max(measured.heights.highest, point.z);
  }
  return measured;
}

// The format needs room for a mark of invalid points.
void WarnOfHeights(const HeightRange& heights, ScanFacts& facts) {
  if (facts.kind != ScanKind::surface && facts.kind != ScanKind::profile) return;
  if (IsWritableAsDigitalSurf(heights)) return;
  facts.cautions.push_back(
      {kNotWritable,
       Orv::Format("a conversion refuses to write the heights as %s: raw %d to %d is not within "
                   "%d to %d",
                   facts.kind == ScanKind::profile ? ".pro" : ".sur", heights.lowest,
                   heights.highest, kLowestWritable, kHighestWritable)});
}

}  // namespace

void MeasuredPoints::Include(std::span<const z16s> points) {
  constexpr zSize kBlock = 8192;  // stays in the cache, and its number of points in 16 bits
  while (!points.empty()) {
    const auto block = points.first(std::min(points.size(), kBlock));
    points = points.subspan(block.size());
    z16u count = 0;
    for (const z16s height : block) count = static_cast<z16u>(count + IsValid(height));
    valid += count;
    heights.Include(FindHeightRange(block));
  }
}

ScanFacts MeasureScan(const Scan& scan) {
  return MeasureScan(scan, WithPoints(scan, [](auto points) { return Measure(points); }));
}

ScanFacts MeasureScan(const Scan& scan, const MeasuredPoints& measured) {
  ScanFacts facts{scan.kind,
                  scan.width,
                  scan.length,
                  zSize{scan.width} * scan.length,
                  measured.valid,
                  scan.scale,
                  scan.offset,
                  {},
                  {},
                  {},
                  scan.stamp,
                  scan.cautions,
                  {}};
  if (measured.valid > 0) {
    const auto [lowest, highest] = std::minmax(
        {Real(measured.heights.lowest, scan.Z()), Real(measured.heights.highest, scan.Z())});
    facts.heights = {lowest, highest};
    facts.box = scan.box ? scan.box : FindBox(scan);
    WarnOfHeights(measured.heights, facts);
  }
  const auto intensities = zArray_Items<z8u>(scan.intensities.Get());
  if (!intensities.empty()) {
    facts.intensity = {std::ranges::min(intensities), std::ranges::max(intensities)};
  }
  return facts;
}
