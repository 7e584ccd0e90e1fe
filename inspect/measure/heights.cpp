// SPDX-License-Identifier: MIT
#include "inspect/measure/heights.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "scan/heightrange.h"

namespace {

constexpr zSize kRawHeights = 65'536;

// How often each raw height is there, by z16u(raw).
class RawCounts {
 public:
  template <class Point>
  void Add(std::span<const Point> points) {
    // Neighbours are often equal: a count each does not wait for the one before.
    for (zSize i = 0; i < points.size(); ++i) {
      const z16s height = IsValid(points[i]) ? Raw(points[i]) : kInvalidRaw;
      ++tables_[i % kTables][static_cast<z16u>(height)];
    }
  }
  z64u Of(z16s height) const {
    z64u count = 0;
    for (const Table& table : tables_) count += table[static_cast<z16u>(height)];
    return count;
  }

 private:
  static constexpr zSize kTables = 4;
  using Table = std::array<z64u, kRawHeights>;

  static z16s Raw(z16s height) { return height; }
  template <class Point>
  static z16s Raw(const Point& point) {
    return point.z;
  }

  std::vector<Table> tables_ = std::vector<Table>(kTables);
};

using TakeBlock = std::function<void(const HeightBlock&)>;

constexpr zSize kBlock = 8192;

void TakePointsOver(const Scan& scan, const Plane& plane, const TakeBlock& take) {
  std::vector<z64f> block(kBlock);
  zSize count = 0;
  ForEachPlace(scan, [&](const PlacedHeight& place) {
    const z64f height = place.z - plane.At(place);
    if (!std::isfinite(height)) return;
    block[count++] = height;
    if (count < kBlock) return;
    take({block, {}});
    count = 0;
  });
  take({std::span(block).first(count), {}});
}

// Moves the heights of valid points to the front, and tells how many there are.
zSize KeepValid(std::span<const z16s> points, std::vector<z64f>& heights) {
  if (!FindHeightRange(points).hasInvalid) return points.size();
  zSize count = 0;
  for (zSize i = 0; i < points.size(); ++i) {
    heights[count] = heights[i];
    if (IsValid(points[i])) ++count;
  }
  return count;
}

void TakeGridOver(const Scan& scan, const Plane& plane, const TakeBlock& take) {
  const auto heights = zArray_Items<z16s>(scan.points.Get());
  const auto [scale, offset] = scan.Z();
  if (heights.size() != zSize{scan.width} * scan.length) return;
  if (!std::isfinite(Real(-32'768, scan.Z())) || !std::isfinite(Real(32'767, scan.Z()))) return;
  std::vector<z64f> block(kBlock);
  for (zSize next = 0; next < heights.size();) {
    const zSize column = next % scan.width;
    const zSize row = next / scan.width;
    const auto part = heights.subspan(next, std::min(kBlock, scan.width - column));
    next += part.size();
    const z64f start = offset - plane.At(static_cast<z64f>(column), static_cast<z64f>(row));
    for (int i = 0; i < static_cast<int>(part.size()); ++i) {
      const auto at = static_cast<zSize>(i);
      block[at] = part[at] * scale + (start - plane.perU * i);
    }
    take({std::span(block).first(KeepValid(part, block)), {}});
  }
}

}  // namespace

HeightBlocks HeightsOf(const Scan& scan) {
  RawCounts raw;
  WithPoints(scan, [&](auto points) {
    if (points.size() == zSize{scan.width} * scan.length) raw.Add(points);
  });
  struct Found {
    std::vector<z64f> heights, counts;
  };
  const auto found = std::make_shared<Found>();
  for (int height = kInvalidRaw + 1; height <= 32'767; ++height) {
    const z64u count = raw.Of(static_cast<z16s>(height));
    const z64f real = Real(height, scan.Z());
    if (count == 0 || !std::isfinite(real)) continue;
    found->heights.push_back(real);
    found->counts.push_back(static_cast<z64f>(count));
  }
  return [found](const auto& take) { take({found->heights, found->counts}); };
}

HeightBlocks HeightsOver(const Scan& scan, const Plane& plane) {
  return [&scan, plane](const TakeBlock& take) {
    IsGrid(scan) ? TakeGridOver(scan, plane, take) : TakePointsOver(scan, plane, take);
  };
}
