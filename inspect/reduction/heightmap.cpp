// SPDX-License-Identifier: MIT
// Surfaces. Both axes are reduced by a box filter whose borders may cut a point in two.
#include "inspect/reduction/heightmap.h"

#include <algorithm>

#include "inspect/reduction/mapcells.h"
#include "scan/heightrange.h"

namespace {

// The points of an axis that one cell covers, with their shares in it. All is counted in such parts
// of a point that a point has as many parts as there are cells, and a cell as there are points.
struct Cover {
  z64u first, last;
  z64f firstShare, share, lastShare;  // of the first, of each in between, of the last

  Cover(z64u cell, z64u cells, z64u points) {
    const z64u begin = cell * points;
    const z64u end = begin + points;
    first = begin / cells;
    last = (end - 1) / cells;
    firstShare = static_cast<z64f>(std::min(end, (first + 1) * cells) - begin);
    share = static_cast<z64f>(cells);
    lastShare = static_cast<z64f>(end - last * cells);
  }
  z64f ShareOf(z64u point) const {
    return point == first ? firstShare : point == last ? lastShare : share;
  }
};

// What has fallen into a cell so far.
struct Sums {
  z64f height = 0, intensity = 0, area = 0;
  HeightRange range;  // of the points that lie in it, even with a part only

  void Add(const Sums& other, z64f share) {
    height += other.height * share;
    intensity += other.intensity * share;
    area += other.area * share;
    range.Include(other.range);
  }
};

// Of at most 32768 points, so that 32 bits hold their sums.
Sums SumOfFew(std::span<const z16s> heights, std::span<const z8u> intensities) {
  z32s height = 0;
  z32s intensity = 0;
  z32s count = 0;
  HeightRange range;
  for (const z16s raw : heights) {
    const bool valid = IsValid(raw);
    height += valid ? raw : 0;
    count += valid ? 1 : 0;
    range.lowest = std::min(range.lowest, valid ? raw : range.lowest);
    range.highest = std::max(range.highest, raw);
  }
  for (zSize i = 0; i < intensities.size(); ++i) {
    intensity += IsValid(heights[i]) ? intensities[i] : 0;
  }
  return {static_cast<z64f>(height), static_cast<z64f>(intensity), static_cast<z64f>(count), range};
}

Sums SumOf(std::span<const z16s> heights, std::span<const z8u> intensities) {
  constexpr zSize kFew = 32'768;
  if (heights.size() <= kFew) return SumOfFew(heights, intensities);
  Sums sums;
  for (zSize at = 0; at < heights.size(); at += kFew) {
    const zSize count = std::min(kFew, heights.size() - at);
    sums.Add(SumOfFew(heights.subspan(at, count),
                      intensities.empty() ? intensities : intensities.subspan(at, count)),
             1);
  }
  return sums;
}

class SurfaceReduction {
 public:
  SurfaceReduction(const Scan& scan, const MapSize& size)
      : scan(scan),
        heights(zArray_Items<z16s>(scan.points.Get())),
        intensities(IntensitiesOf(scan)),
        size(size),
        line(size.width),
        cells(size.width) {
    columns.reserve(size.width);
    for (z32u i = 0; i < size.width; ++i) columns.emplace_back(i, size.width, scan.width);
  }

  void Fill(HeightMap& map) {
    const zSize count = zSize{size.width} * size.length;
    map.heights.reserve(count);
    if (map.reduced) map.lows.reserve(count);
    if (map.reduced) map.highs.reserve(count);
    if (!intensities.empty()) map.intensities.reserve(map.heights.capacity());
    for (z32u row = 0; row < size.length; ++row) {
      std::fill(cells.begin(), cells.end(), Sums());
      const Cover rows(row, size.length, scan.length);
      for (z64u i = rows.first; i <= rows.last; ++i) {
        ReduceRow(i);
        const z64f share = rows.ShareOf(i);
        for (z32u column = 0; column < size.width; ++column) {
          cells[column].Add(line[column], share);
        }
      }
      for (const Sums& cell : cells) Append(map, cell);
    }
  }

 private:
  // A row on the border of two cells is asked for twice in a row.
  void ReduceRow(z64u row) {
    if (row == lineRow) return;
    lineRow = row;
    const zSize start = row * scan.width;
    for (z32u column = 0; column < size.width; ++column) {
      const Cover& cover = columns[column];
      const auto sum = [&](z64u first, z64u count) {
        return SumOf(heights.subspan(start + first, count),
                     intensities.empty() ? intensities : intensities.subspan(start + first, count));
      };
      Sums& cell = line[column];
      cell = Sums();
      cell.Add(sum(cover.first, 1), cover.firstShare);
      if (cover.last == cover.first) continue;
      cell.Add(sum(cover.first + 1, cover.last - cover.first - 1), cover.share);
      cell.Add(sum(cover.last, 1), cover.lastShare);
    }
  }

  void Append(HeightMap& map, const Sums& cell) const {
    const z64f whole = static_cast<z64f>(scan.width) * scan.length;
    const z64f height = cell.height / cell.area * scan.scale.z + scan.offset.z;
    const bool measured = 2 * cell.area >= whole && IsDrawable(height);
    map.heights.push_back(measured ? static_cast<z32f>(height) : kNotMeasured);
    if (map.reduced) {
      const auto [low, high] =
          std::minmax({Real(cell.range.lowest, scan.Z()), Real(cell.range.highest, scan.Z())});
      map.lows.push_back(measured ? static_cast<z32f>(low) : kNotMeasured);
      map.highs.push_back(measured ? static_cast<z32f>(high) : kNotMeasured);
    }
    if (intensities.empty()) return;
    map.intensities.push_back(measured ? static_cast<z8u>(std::lround(cell.intensity / cell.area))
                                       : z8u{0});
  }

  const Scan& scan;
  std::span<const z16s> heights;
  std::span<const z8u> intensities;
  MapSize size;
  std::vector<Cover> columns;
  std::vector<Sums> line;  // the row `lineRow`, reduced
  z64u lineRow = ~z64u{0};
  std::vector<Sums> cells;  // a row of the map
};

HeightMap MakeSurfaceMap(const Scan& scan, const std::function<MapSize(const MapGrid&)>& most) {
  HeightMap map;
  const bool placed = HoldsGridOf<z16s>(scan) && scan.width > 0 && scan.length > 0 &&
                      IsDrawable(scan.offset.x) && IsDrawable(scan.offset.y) &&
                      IsDrawable(scan.offset.x + scan.scale.x * scan.width) &&
                      IsDrawable(scan.offset.y + scan.scale.y * scan.length);
  if (!placed) return map;
  const MapGrid finest{scan.width,    scan.length,  scan.offset.x,
                       scan.offset.y, scan.scale.x, scan.scale.y};
  MapSize size = most(finest);
  size = {std::min(size.width, scan.width), std::min(size.length, scan.length)};
  if (size.width == 0 || size.length == 0) return map;
  const z64f pointsX = static_cast<z64f>(scan.width) / size.width;
  const z64f pointsY = static_cast<z64f>(scan.length) / size.length;
  map.width = size.width;
  map.length = size.length;
  map.x = scan.offset.x + scan.scale.x * (pointsX - 1) / 2;
  map.y = scan.offset.y + scan.scale.y * (pointsY - 1) / 2;
  map.stepX = scan.scale.x * pointsX;
  map.stepY = scan.scale.y * pointsY;
  map.reduced = size.width < scan.width || size.length < scan.length;
  SurfaceReduction(scan, size).Fill(map);
  return map;
}

// As many cells as allowed, in the shape of the grid.
MapSize Within(zSize mostCells, const MapGrid& grid) {
  const zSize width = grid.width;
  const zSize length = grid.length;
  if (mostCells == 0) return {0, 0};
  if (width * length <= mostCells) return {grid.width, grid.length};
  const z64f shrink = std::sqrt(static_cast<z64f>(mostCells) / static_cast<z64f>(width) /
                                static_cast<z64f>(length));
  const auto part = [shrink](zSize side) {
    return std::max(zSize{1}, static_cast<zSize>(static_cast<z64f>(side) * shrink));
  };
  // A side that would be less than one cell leaves fewer cells to the other.
  const zSize across = std::min(part(width), mostCells / std::min(part(length), mostCells));
  const zSize along = std::min(part(length), mostCells / across);
  return {static_cast<z32u>(across), static_cast<z32u>(along)};
}

}  // namespace

HeightMap MakeHeightMap(const Scan& scan, const std::function<MapSize(const MapGrid&)>& most) {
  return scan.kind == ScanKind::cloud ? MakeCloudMap(scan, most) : MakeSurfaceMap(scan, most);
}

HeightMap MakeHeightMap(const Scan& scan, zSize mostCells) {
  return MakeHeightMap(scan, [mostCells](const MapGrid& grid) { return Within(mostCells, grid); });
}
