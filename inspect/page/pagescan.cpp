// SPDX-License-Identifier: MIT
#include "inspect/page/pagescan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "inspect/picture/ticks.h"
#include "inspect/reduction/mapcells.h"

namespace {

constexpr z64f kMostRaw = std::numeric_limits<z16s>::max();

z16s Raw(z16s height) { return height; }
z16s Raw(zPoint16s point) { return point.z; }

// Heights as they came. Where `known` says no, or a real value is not finite, none was measured.
template <class Point, class Known>
PageValues Keep(std::span<const Point> points, z64f scale, z64f offset, Known known) {
  PageValues values{{}, scale, offset};
  values.raw.reserve(points.size());
  for (zSize i = 0; i < points.size(); ++i) {
    const z16s raw = Raw(points[i]);
    values.raw.push_back(known(i) && std::isfinite(raw * scale + offset) ? raw : kInvalidRaw);
  }
  if (!std::isfinite(scale) || !std::isfinite(offset)) values.scale = values.offset = 0;
  return values;
}

// Real values, rounded to 1/65534 of their range.
PageValues Quantise(const std::vector<z64f>& reals) {
  const auto [low, high] = ExtentOf(reals);
  PageValues values;
  if (low <= high) values.offset = low + (high / 2 - low / 2);
  const z64f step = high / (2 * kMostRaw) - low / (2 * kMostRaw);
  if (low < high && step > 0) values.scale = step;
  values.raw.reserve(reals.size());
  for (const z64f real : reals) {
    const z64f raw = (real - values.offset) / values.scale;
    values.raw.push_back(std::isfinite(real)
                             ? static_cast<z16s>(std::lround(std::clamp(raw, -kMostRaw, kMostRaw)))
                             : kInvalidRaw);
  }
  return values;
}

// Those of points without a height too.
std::vector<z8u> OwnIntensities(const Scan& scan) {
  const std::span<const z8u> intensities = IntensitiesOf(scan);
  return {intensities.begin(), intensities.end()};
}

PageScan FromMap(const Scan& scan, zSize mostPoints) {
  HeightMap map = MakeHeightMap(scan, std::min(mostPoints, scan.Count()));
  const MapGrid& grid = map;
  PageScan page;
  static_cast<MapGrid&>(page) = grid;
  // Clouds fall into cells anyway.
  page.reduced = scan.kind == ScanKind::cloud ? scan.Count() > mostPoints : map.reduced;
  page.intensities = std::move(map.intensities);
  const auto own = zArray_Items<z16s>(scan.points.Get());
  if (scan.kind == ScanKind::surface && !map.reduced && own.size() == map.heights.size()) {
    page.heights = Keep(own, scan.scale.z, scan.offset.z,
                        [&map](zSize i) { return std::isfinite(map.heights[i]); });
    page.intensities = OwnIntensities(scan);
  } else {
    page.heights = Quantise({map.heights.begin(), map.heights.end()});
  }
  if (map.reduced) {
    page.lows = Quantise({map.lows.begin(), map.lows.end()});
    page.highs = Quantise({map.highs.begin(), map.highs.end()});
  }
  return page;
}

PageScan FromWholeProfile(const Scan& scan) {
  PageScan page;
  const auto place = [&scan](z64f raw) { return raw * scan.scale.x + scan.offset.x; };
  page.intensities = OwnIntensities(scan);
  if (scan.kind == ScanKind::profile) {
    page.x = scan.offset.x;
    page.stepX = scan.scale.x;
    const bool placed = std::isfinite(place(0)) && std::isfinite(place(scan.width));
    page.heights = Keep(zArray_Items<z16s>(scan.points.Get()), scan.scale.z, scan.offset.z,
                        [placed](zSize) { return placed; });
    return page;
  }
  const auto points = zArray_Items<zPoint16s>(scan.points.Get());
  const auto placed = [&](zSize i) {
    return points[i].x != kInvalidRaw && std::isfinite(place(points[i].x));
  };
  page.heights = Keep(points, scan.scale.z, scan.offset.z, placed);
  page.places = {{}, scan.scale.x, scan.offset.x};
  for (zSize i = 0; i < points.size(); ++i) {
    page.places.raw.push_back(placed(i) ? points[i].x : kInvalidRaw);
  }
  return page;
}

PageScan FromProfile(const Scan& scan, zSize mostPoints) {
  PageScan page;
  if (scan.Count() <= mostPoints) {
    page = FromWholeProfile(scan);
  } else {
    // Of each column, two points may remain.
    ProfileLine line = MakeProfileLine(scan, std::max(zSize{1}, mostPoints / 2));
    const zSize count = std::min(line.z.size(), mostPoints);
    line.x.resize(count);
    line.z.resize(count);
    line.intensities.resize(std::min(line.intensities.size(), count));
    page.heights = Quantise(line.z);
    page.places = Quantise(line.x);
    page.intensities = std::move(line.intensities);
    page.reduced = true;
  }
  page.width = static_cast<z32u>(page.heights.raw.size());
  page.length = 1;
  return page;
}

}  // namespace

PageScan MakePageScan(const Scan& scan, zSize mostPoints) {
  PageScan page = scan.IsProfile() ? FromProfile(scan, mostPoints) : FromMap(scan, mostPoints);
  page.measured = page.heights.raw.size() -
                  static_cast<zSize>(std::ranges::count(page.heights.raw, kInvalidRaw));
  return page;
}
