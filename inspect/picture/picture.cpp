// SPDX-License-Identifier: MIT
#include "inspect/picture/picture.h"

#include <algorithm>
#include <cmath>

#include "inspect/picture/lineplot.h"
#include "inspect/picture/plot.h"
#include "inspect/reduction/heightmap.h"
#include "inspect/reduction/ownunits.h"

namespace {

constexpr int kMapLeft = 104;
constexpr int kMapWidth = 736;
constexpr int kMapHeight = 800;
constexpr int kShortestSide = 160;
constexpr int kLineLeft = 104;
constexpr int kLineWidth = 860;
constexpr int kLineHeight = 420;

bool HasValidPoint(const Scan& scan) {
  bool any = false;
  ForEachValidPoint(scan, [&any](z32u, z32u, const zPoint3d64f&) { any = true; });
  return any;
}

AxisRange EdgesOf(z64f first, z64f step, z32u cells) {
  const z64f begin = first - step / 2;
  const z64f end = begin + step * cells;
  return {std::min(begin, end), std::max(begin, end)};
}

// Where the map lies on the sheet: both axes to the same scale, in the middle of its room. Cells
// without an extent along one axis get that of the other.
Plot PlotOf(const MapGrid& map) {
  Plot plot{kMapLeft,
            kPlotTop,
            0,
            0,
            EdgesOf(map.x, map.stepX, map.width),
            EdgesOf(map.y, map.stepY, map.length)};
  const auto or1 = [](z64f size) { return size > 0 ? size : 1.0; };
  const z64f stepX = or1(std::abs(map.stepX == 0 ? map.stepY : map.stepX));
  const z64f stepY = or1(std::abs(map.stepY == 0 ? map.stepX : map.stepY));
  const z64f aspect = (stepX * map.width) / (stepY * map.length);
  z64f width = std::min<z64f>(kMapWidth, kMapHeight * aspect);
  z64f height = std::min<z64f>(kMapHeight, kMapWidth / aspect);
  // Square cells become squares of whole pixels, if that does not cost too much.
  const z64f pixels = std::floor(width / map.width);
  if (std::abs(stepX / stepY - 1) < 1e-6 && pixels * map.width > 0.75 * width) {
    width = pixels * map.width;
    height = pixels * map.length;
  }
  plot.width = std::max(kShortestSide, static_cast<int>(std::lround(width)));
  plot.height = std::max(kShortestSide, static_cast<int>(std::lround(height)));
  plot.x += (kMapWidth - plot.width) / 2;
  return plot;
}

void DrawCells(Canvas& canvas, const Plot& plot, const HeightMap& map, const AxisRange& heights,
               const Blank& blank) {
  const auto palette = HeightPalette();
  const auto cell = [](int pixel, int pixels, z32u cells, bool backwards) {
    const int at = backwards ? pixels - 1 - pixel : pixel;
    return static_cast<zSize>(at) * cells / static_cast<zSize>(pixels);
  };
  for (int row = 0; row < plot.height; ++row) {
    const zSize line = cell(row, plot.height, map.length, map.stepY >= 0) * map.width;
    for (int column = 0; column < plot.width; ++column) {
      const z64f z =
          static_cast<z64f>(map.heights[line + cell(column, plot.width, map.width, map.stepX < 0)]);
      const Rgb color = std::isnan(z)
                            ? blank.At(column, row)
                            : palette[static_cast<zSize>(std::lround(heights.ShareOf(z) * 255))];
      canvas.Set(plot.x + column, plot.y + row, color);
    }
  }
}

// "x (mm)"
std::string AxisName(const char* axis, const AxisUnit& unit) {
  return Orv::Format("%s (%s)", axis, unit.name);
}

zBytes DrawNothing(const Scan& scan, const std::string& title) {
  Canvas canvas = MakeSheet(kShortestSide, title, scan.cautions, {});
  const Lettering text(18);
  const std::string nothing = "no valid point";
  text.Draw(canvas, (kPictureWidth - text.Width(nothing)) / 2, kPlotTop + kShortestSide / 2,
            nothing, kPaleInk);
  return canvas.ToPng();
}

// Single points stand out better from a plain ground.
Blank BlankOf(const Scan& scan, const HeightMap& map) {
  if (scan.kind == ScanKind::cloud) return {"no point", false};
  return {map.reduced ? "mostly not measured" : "not measured", true};
}

zBytes DrawMap(const Scan& scan, const std::string& title) {
  Plot plot{};
  const HeightMap map = MakeHeightMap(scan, [&plot](const MapGrid& finest) {
    plot = PlotOf(finest);
    return MapSize{static_cast<z32u>(plot.width), static_cast<z32u>(plot.height)};
  });
  const auto measured =
      map.heights.size() -
      static_cast<zSize>(std::ranges::count_if(map.heights, [](z32f z) { return std::isnan(z); }));
  if (map.heights.empty() || (measured == 0 && !HasValidPoint(scan)))
    return DrawNothing(scan, title);
  std::vector<std::string> notes;
  NoteStretching(plot, "y", 1, notes);
  if (plot.across.Size() == 0) notes.emplace_back("All points have the same x.");
  if (plot.up.Size() == 0) notes.emplace_back("All points have the same y.");
  if (measured == 0) notes.emplace_back("Too few points were measured to be seen at this size.");
  Canvas canvas = MakeSheet(plot.height, title, scan.cautions, notes);
  const AxisRange heights = ExtentOf(map.heights);
  const Blank blank = BlankOf(scan, map);
  DrawCells(canvas, plot, map, heights, blank);
  const auto& [x, y, z] = scan.units;
  DrawAxes(canvas, plot, AxisName("x", x), AxisName("y", y));
  if (measured > 0) DrawColorBar(canvas, plot, heights, AxisName("z", z));
  if (measured < map.heights.size()) DrawLegend(canvas, plot, blank);
  return canvas.ToPng();
}

// All finite values; some room around a single one.
AxisRange RangeOf(const std::vector<z64f>& values) {
  const AxisRange range = ExtentOf(values);
  if (range.Size() > 0) return range;
  const z64f room = std::max(0.5, std::abs(range.low) * 1e-3);
  return {range.low - room, range.high + room};
}

zBytes DrawProfile(const Scan& scan, const std::string& title) {
  const ProfileLine line = MakeProfileLine(scan, kLineWidth);
  if (line.z.empty()) return DrawNothing(scan, title);
  Plot plot{kLineLeft, kPlotTop, kLineWidth, kLineHeight, RangeOf(line.x), RangeOf(line.z)};
  const z64f room = plot.up.Size() * 0.05;
  plot.up = {plot.up.low - room, plot.up.high + room};
  std::vector<std::string> notes;
  NoteStretching(plot, "z", HeightUnit(scan), notes);
  Canvas canvas = MakeSheet(plot.height, title, scan.cautions, notes);
  DrawGridLines(canvas, plot);

  Pen pen(plot.width, plot.height);
  const auto place = [&](zSize i) {
    return PenPoint{static_cast<z32f>(plot.across.ShareOf(line.x[i]) * plot.width),
                    static_cast<z32f>((1 - plot.up.ShareOf(line.z[i])) * plot.height)};
  };
  const auto isPoint = [&](zSize i) { return i < line.z.size() && !std::isnan(line.z[i]); };
  for (zSize i = 0; i < line.z.size(); ++i) {
    if (!isPoint(i)) continue;
    if (isPoint(i + 1)) {
      pen.Line(place(i), place(i + 1), 1.6F);
    } else if (!isPoint(i - 1)) {
      pen.Line(place(i), place(i), 5);  // one by itself
    }
  }
  pen.DrawOnto(canvas, plot.x, plot.y, HeightPalette()[60]);
  DrawAxes(canvas, plot, AxisName("x", scan.units[0]), AxisName("z", scan.units[2]));
  return canvas.ToPng();
}

}  // namespace

zBytes DrawPicture(const Scan& told, const std::string& title) {
  const Scan scan = InOwnUnits(told);
  return scan.IsProfile() ? DrawProfile(scan, title) : DrawMap(scan, title);
}
