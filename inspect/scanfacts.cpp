// SPDX-License-Identifier: MIT
#include "inspect/scanfacts.h"

#include <algorithm>
#include <span>

#include "formats/digitalsurf/writer.h"
#include "scan/box.h"
#include "scan/heightrange.h"
#include "scan/points.h"

namespace {

struct Measured {
  zSize validPoints = 0;
  HeightRange heights;  // raw
};

Measured Measure(std::span<const z16s> heights) {
  constexpr zSize kBlock = 8192;  // stays in the cache, and its number of points in 16 bits
  Measured measured;
  for (std::span<const z16s> left = heights; !left.empty();) {
    const auto block = left.first(std::min(left.size(), kBlock));
    left = left.subspan(block.size());
    z16u valid = 0;
    for (const z16s height : block) valid = static_cast<z16u>(valid + IsValid(height));
    measured.validPoints += valid;
    const HeightRange range = FindHeightRange(block);
    measured.heights.lowest = std::min(measured.heights.lowest, range.lowest);
    measured.heights.highest = std::max(measured.heights.highest, range.highest);
  }
  return measured;
}

template <class Point>
Measured Measure(std::span<const Point> points) {
  Measured measured;
  for (const Point& point : points) {
    if (!IsValid(point)) continue;
    ++measured.validPoints;
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

ScanFacts MeasureScan(const Scan& scan) {
  const Measured measured = WithPoints(scan, [](auto points) { return Measure(points); });
  ScanFacts facts{scan.kind,  scan.width,   scan.length, scan.Count(), measured.validPoints,
                  scan.scale, scan.offset,  {},          {},           {},
                  scan.stamp, scan.cautions};
  if (measured.validPoints > 0) {
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
