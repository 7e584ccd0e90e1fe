// SPDX-License-Identifier: MIT
// Clouds seen from above.
#include <algorithm>

#include "inspection/mapcells.h"

namespace {

struct Extent {
  z64f low = std::numeric_limits<z64f>::infinity();
  z64f high = -low;

  void Add(z64f value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  z64f Size() const { return high - low; }
};

struct Footprint {
  zSize points = 0;
  Extent x, y, rows, columns;
};

template <class Use>
void ForEachDrawablePoint(const Scan& scan, Use use) {
  ForEachValidPoint(scan, [&](z32u row, z32u column, const zPoint3d64f& point) {
    if (IsDrawable(point)) use(row, column, point);
  });
}

// Equal cells side by side along one axis.
struct CellAxis {
  z64f start = 0;  // mm, where the first cell begins
  z64f size = 0;   // mm, of all cells
  z32u cells = 1;

  z64f Step() const { return size / cells; }
  zSize CellOf(z64f mm) const {
    if (cells == 1 || !(size > 0)) return 0;
    return static_cast<zSize>(
        std::clamp((mm - start) / size * cells, 0.0, static_cast<z64f>(cells - 1)));
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
  std::vector<z8u> filled(grid.Count());
  ForEachDrawablePoint(
      scan, [&](z32u, z32u, const zPoint3d64f& point) { filled[grid.CellOf(point)] = 1; });
  return static_cast<zSize>(std::count(filled.begin(), filled.end(), z8u{1}));
}

// As many cells as points lie side by side, with the outermost points in the middle of theirs.
CellAxis AxisOfPoints(const Extent& extent, z64f points) {
  const z64f pitch = points > 1 ? extent.Size() / (points - 1) : 0;
  return {extent.low - pitch / 2, extent.Size() + pitch, static_cast<z32u>(points)};
}

CellAxis AxisOfSize(const Extent& extent, z64f cellSize, z64f mostCells) {
  const z64f cells = cellSize > 0 ? extent.Size() / cellSize : 1;
  return {extent.low, extent.Size(), static_cast<z32u>(std::clamp(cells, 1.0, mostCells))};
}

// Square cells of an area that holds `pointsPerCell` points if they are spread evenly over the part
// `covered` of the extent.
CellGrid SquareCells(const Footprint& footprint, z64f pointsPerCell, z64f covered) {
  const z64f cells = std::max(1.0, static_cast<z64f>(footprint.points) / pointsPerCell);
  const z64f width = footprint.x.Size();
  const z64f length = footprint.y.Size();
  // Points along a thin strip lie one after the other rather than side by side.
  const z64f side = std::max(std::sqrt(width / cells * length * covered),
                             std::max(width, length) * covered / cells);
  return {AxisOfSize(footprint.x, side, cells), AxisOfSize(footprint.y, side, cells)};
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
  // Others often leave much of their extent empty: coarse cells tell how much. In random places,
  // three points a cell leave one cell in twenty empty.
  const CellGrid coarse =
      SquareCells(footprint, std::max(16.0, static_cast<z64f>(footprint.points) / 4096), 1);
  const z64f covered =
      static_cast<z64f>(CountFilledCells(scan, coarse)) / static_cast<z64f>(coarse.Count());
  return SquareCells(footprint, 3, covered);
}

Footprint FootprintOf(const Scan& scan) {
  Footprint footprint;
  ForEachDrawablePoint(scan, [&](z32u row, z32u column, const zPoint3d64f& point) {
    ++footprint.points;
    footprint.x.Add(point.x);
    footprint.y.Add(point.y);
    footprint.rows.Add(row);
    footprint.columns.Add(column);
  });
  return footprint;
}

MapGrid ToMapGrid(const CellGrid& grid) {
  const z64f stepX = grid.x.Step();
  const z64f stepY = grid.y.Step();
  return {grid.x.cells, grid.y.cells, grid.x.start + stepX / 2, grid.y.start + stepY / 2,
          stepX,        stepY};
}

void Fill(HeightMap& map, const Scan& scan, const CellGrid& grid) {
  struct Sums {
    z64f height = 0, intensity = 0;
    zSize count = 0;
  };
  std::vector<Sums> cells(grid.Count());
  const auto intensities = IntensitiesOf(scan);
  ForEachDrawablePoint(scan, [&](z32u row, z32u column, const zPoint3d64f& point) {
    Sums& cell = cells[grid.CellOf(point)];
    cell.height += point.z;
    if (!intensities.empty()) cell.intensity += intensities[zSize{row} * scan.width + column];
    ++cell.count;
  });
  map.heights.reserve(cells.size());
  if (!intensities.empty()) map.intensities.reserve(cells.size());
  for (const Sums& cell : cells) {
    const z64f count = static_cast<z64f>(cell.count);
    map.reduced = map.reduced || cell.count > 1;
    map.heights.push_back(cell.count > 0 ? static_cast<z32f>(cell.height / count) : kNotMeasured);
    if (intensities.empty()) continue;
    map.intensities.push_back(cell.count > 0 ? static_cast<z8u>(std::lround(cell.intensity / count))
                                             : z8u{0});
  }
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
  grid.x.cells = std::min(grid.x.cells, size.width);
  grid.y.cells = std::min(grid.y.cells, size.length);
  static_cast<MapGrid&>(map) = ToMapGrid(grid);
  Fill(map, scan, grid);
  return map;
}
