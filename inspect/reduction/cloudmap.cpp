// SPDX-License-Identifier: MIT
// Clouds seen from above.
#include <algorithm>

#include "inspect/measure/span.h"
#include "inspect/reduction/mapcells.h"

namespace {

struct Footprint {
  zSize points = 0;
  Span x, y, rows, columns;
};

template <class Use>
void ForEachDrawablePoint(const Scan& scan, Use use) {
  ForEachValidPoint(scan, [&](z32u row, z32u column, const zPoint3d64f& point) {
    if (IsDrawable(point)) use(row, column, point);
  });
}

// Equal cells side by side along one axis.
struct CellAxis {
  z64f start;  // mm, where the first cell begins
  z64f size;   // mm, of all cells
  z32u cells;
  z64f cellsPerMm;

  CellAxis(z64f start, z64f size, z32u cells)
      : start(start), size(size), cells(cells), cellsPerMm(size > 0 ? cells / size : 0) {
    if (!std::isfinite(cellsPerMm)) cellsPerMm = 0;
  }

  zSize CellOf(z64f mm) const {
    return static_cast<zSize>(
        std::clamp((mm - start) * cellsPerMm, 0.0, static_cast<z64f>(cells - 1)));
  }
};

struct CellGrid {
  CellAxis x, y;

  zSize Count() const { return zSize{x.cells} * y.cells; }
  zSize CellOf(const zPoint3d64f& point) const {
    return y.CellOf(point.y) * x.cells + x.CellOf(point.x);
  }
};

zSize CountFilledCells(const Scan& scan, const CellGrid& grid) {
  std::vector<z8u> filled(grid.Count());  // 1 for each cell with a point
  ForEachDrawablePoint(
      scan, [&](z32u, z32u, const zPoint3d64f& point) { filled[grid.CellOf(point)] = 1; });
  return static_cast<zSize>(std::count(filled.begin(), filled.end(), z8u{1}));
}

// As many cells as points lie side by side, with the outermost points in the middle of theirs.
CellAxis AxisOfPoints(const Span& extent, z64f points) {
  const z64f pitch = points > 1 ? extent.Size() / (points - 1) : 0;
  return {extent.low - pitch / 2, extent.Size() + pitch, static_cast<z32u>(points)};
}

// The side in mm of square cells that hold `pointsPerCell` points each if these are spread evenly
// over the part `covered` of the extent. Those of a thin strip lie one after the other.
z64f SideOf(const Footprint& footprint, z64f pointsPerCell, z64f covered) {
  const z64f cells = std::max(1.0, static_cast<z64f>(footprint.points) / pointsPerCell);
  const z64f width = footprint.x.Size();
  const z64f length = footprint.y.Size();
  return std::max(std::sqrt(width / cells * length * covered),
                  std::max(width, length) * covered / cells);
}

// Cells of about that side, but at most about two for each point.
CellGrid SquareCells(const Footprint& footprint, z64f side) {
  const z64f allowed = std::max(side, SideOf(footprint, 0.5, 1));
  const auto axis = [allowed](const Span& extent) {
    const z64f cells = allowed > 0 ? extent.Size() / allowed : 0;
    return CellAxis(extent.low, extent.Size(),
                    static_cast<z32u>(std::clamp(cells, 1.0, 4'294'967'295.0)));
  };
  return {axis(footprint.x), axis(footprint.y)};
}

// The side of cells of which those that are filled hold three points: this leaves one cell in
// twenty empty even among points in random places. Clouds leave much of their extent empty, the
// more the closer one looks, so it is found in steps.
z64f SideByDensity(const Scan& scan, const Footprint& footprint) {
  z64f side = SideOf(footprint, 16, 1);
  for (int i = 0; i < 4; ++i) {
    const z64f before = side;
    const CellGrid grid = SquareCells(footprint, side);
    const z64f filled = static_cast<z64f>(CountFilledCells(scan, grid));
    side = SideOf(footprint, 3, filled / static_cast<z64f>(grid.Count()));
    if (std::abs(side - before) <= 0.05 * before) break;
  }
  return side;
}

// The side of cells without holes if the points come row by row from a camera: neighbours, in
// whatever direction, are at most that far apart. Infinite if none is known.
z64f SideByNeighbours(const Scan& scan) {
  const auto points = zArray_Items<zPoint3d16s>(scan.points.Get());
  const zSize width = scan.width;
  std::vector<z64f> sides;
  const auto add = [&](zSize a, zSize b) {
    if (!IsValid(points[a]) || !IsValid(points[b])) return;
    const z64f side = std::abs(scan.scale.x * (points[a].x - points[b].x)) +
                      std::abs(scan.scale.y * (points[a].y - points[b].y));
    if (IsDrawable(side)) sides.push_back(side);
  };
  // Some ten thousand tell enough.
  for (zSize i = 0; i < points.size(); i += points.size() / 50'000 + 1) {
    if (i % width + 1 < width) add(i, i + 1);
    if (i + width < points.size()) add(i, i + width);
  }
  if (sides.empty()) return std::numeric_limits<z64f>::infinity();
  // Edges of things are wider.
  const auto most = sides.begin() + static_cast<std::ptrdiff_t>(sides.size() - 1) * 19 / 20;
  std::nth_element(sides.begin(), most, sides.end());
  return *most;
}

CellGrid FinestGrid(const Scan& scan, const Footprint& footprint) {
  // An organised cloud along the axes has a cell for each point, whichever axis its rows follow.
  const z64f columns = footprint.columns.Size() + 1;
  const z64f rows = footprint.rows.Size() + 1;
  for (const auto& [across, along] : {std::pair(columns, rows), std::pair(rows, columns)}) {
    if ((across > 1) != (footprint.x.Size() > 0)) continue;
    if ((along > 1) != (footprint.y.Size() > 0)) continue;
    const CellGrid grid{AxisOfPoints(footprint.x, across), AxisOfPoints(footprint.y, along)};
    if (CountFilledCells(scan, grid) * 10 >= footprint.points * 9) return grid;
  }
  return SquareCells(footprint, std::min(SideByDensity(scan, footprint), SideByNeighbours(scan)));
}

Footprint FootprintOf(const Scan& scan) {
  Footprint footprint;
  ForEachDrawablePoint(scan, [&](z32u row, z32u column, const zPoint3d64f& point) {
    ++footprint.points;
    footprint.x.Include(point.x);
    footprint.y.Include(point.y);
    footprint.rows.Include(row);
    footprint.columns.Include(column);
  });
  return footprint;
}

MapGrid ToMapGrid(const CellGrid& grid) {
  const z64f stepX = grid.x.size / grid.x.cells;
  const z64f stepY = grid.y.size / grid.y.cells;
  return {grid.x.cells, grid.y.cells, grid.x.start + stepX / 2, grid.y.start + stepY / 2,
          stepX,        stepY};
}

struct Sums {
  z64f height = 0, intensity = 0;
  z32f low = std::numeric_limits<z32f>::infinity();
  z32f high = -low;
  zSize count = 0;
};

void Append(HeightMap& map, const Sums& cell, bool withIntensity) {
  const z64f count = static_cast<z64f>(cell.count);
  const bool measured = cell.count > 0;
  map.heights.push_back(measured ? static_cast<z32f>(cell.height / count) : kNotMeasured);
  if (map.reduced) {
    map.lows.push_back(measured ? cell.low : kNotMeasured);
    map.highs.push_back(measured ? cell.high : kNotMeasured);
  }
  if (!withIntensity) return;
  map.intensities.push_back(measured ? static_cast<z8u>(std::lround(cell.intensity / count))
                                     : z8u{0});
}

void Fill(HeightMap& map, const Scan& scan, const CellGrid& grid) {
  std::vector<Sums> cells(grid.Count());
  const auto intensities = IntensitiesOf(scan);
  ForEachDrawablePoint(scan, [&](z32u row, z32u column, const zPoint3d64f& point) {
    Sums& cell = cells[grid.CellOf(point)];
    cell.height += point.z;
    cell.low = std::min(cell.low, static_cast<z32f>(point.z));
    cell.high = std::max(cell.high, static_cast<z32f>(point.z));
    if (!intensities.empty()) cell.intensity += intensities[zSize{row} * scan.width + column];
    ++cell.count;
  });
  map.reduced = std::ranges::any_of(cells, [](const Sums& cell) { return cell.count > 1; });
  map.heights.reserve(cells.size());
  if (map.reduced) map.lows.reserve(cells.size());
  if (map.reduced) map.highs.reserve(cells.size());
  if (!intensities.empty()) map.intensities.reserve(cells.size());
  for (const Sums& cell : cells) Append(map, cell, !intensities.empty());
}

}  // namespace

HeightMap MakeCloudMap(const Scan& scan, const std::function<MapSize(const MapGrid&)>& most) {
  HeightMap map;
  if (!HoldsGridOf<zPoint3d16s>(scan)) return map;
  const Footprint footprint = FootprintOf(scan);
  if (footprint.points == 0) return map;
  CellGrid grid = FinestGrid(scan, footprint);
  const MapSize size = most(ToMapGrid(grid));
  if (size.width == 0 || size.length == 0) return map;
  grid.x = {grid.x.start, grid.x.size, std::min(grid.x.cells, size.width)};
  grid.y = {grid.y.start, grid.y.size, std::min(grid.y.cells, size.length)};
  static_cast<MapGrid&>(map) = ToMapGrid(grid);
  Fill(map, scan, grid);
  return map;
}
