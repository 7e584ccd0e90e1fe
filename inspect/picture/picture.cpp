// SPDX-License-Identifier: MIT
#include "inspect/picture/picture.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <optional>

#include "inspect/measure/units.h"
#include "inspect/picture/lineplot.h"
#include "inspect/picture/plot.h"
#include "inspect/reduction/heightmap.h"

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
            0,
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

// How far the points of a cell are from their mean; NaN where none is.
z32f SpreadOf(const HeightMap& map, zSize cell) {
  const z32f mean = map.heights[cell];
  return std::isnan(mean) ? mean : std::max(map.highs[cell] - mean, mean - map.lows[cell]);
}

// The median of all cells: rough surfaces have no point that stands out.
z32f UsualSpread(const HeightMap& map) {
  std::vector<z32f> spreads;
  for (zSize cell = 0; cell < map.lows.size(); ++cell) {
    if (const z32f spread = SpreadOf(map, cell); !std::isnan(spread)) spreads.push_back(spread);
  }
  if (spreads.empty()) return 0;
  const auto middle = spreads.begin() + static_cast<std::ptrdiff_t>(spreads.size() / 2);
  std::nth_element(spreads.begin(), middle, spreads.end());
  return *middle;
}

// What is seen of each cell: its mean, or a point that stands out from it.
class SeenHeights {
 public:
  SeenHeights(const HeightMap& map, const AxisRange& colours)
      : map_(map),
        low_(static_cast<z32f>(colours.low)),
        high_(static_cast<z32f>(colours.high)),
        colours_(colours),
        most_(std::max((high_ - low_) / 8, 4 * UsualSpread(map))) {}

  // Nothing where nothing was measured.
  std::optional<Rgb> ColorOf(zSize cell) const {
    const z32f z = HeightOf(cell);
    if (std::isnan(z)) return std::nullopt;
    if (z < low_) return kBelowRange;
    if (z > high_) return kAboveRange;
    const z64f share = colours_.ShareOf(static_cast<z64f>(z));  // rounding may leave 0 to 1
    return palette_[share > 0 ? static_cast<zSize>(std::lround(std::min(share, 1.0) * 255)) : 0];
  }
  // Whether a point stands out from the others of its cell, or lies far beyond the colours.
  bool IsOdd(zSize cell) const {
    const z32f z = HeightOf(cell);
    return StandsOut(cell) || z < low_ - (high_ - low_) || z > high_ + (high_ - low_);
  }

 private:
  bool StandsOut(zSize cell) const { return !map_.lows.empty() && SpreadOf(map_, cell) > most_; }
  z32f HeightOf(zSize cell) const {
    const z32f mean = map_.heights[cell];
    if (!StandsOut(cell)) return mean;
    const bool up = map_.highs[cell] - mean > mean - map_.lows[cell];
    return up ? map_.highs[cell] : map_.lows[cell];
  }

  const HeightMap& map_;
  z32f low_, high_;  // of the colours
  AxisRange colours_;
  z32f most_;  // that a point may be from the mean of its cell and not stand out
  std::array<Rgb, 256> palette_ = HeightPalette();
};

// Around each of these places on a plot.
void DrawRings(Canvas& canvas, const Plot& plot, const std::vector<PenPoint>& places) {
  constexpr int kSides = 24;
  constexpr z32f kRadius = 9;
  for (const auto& [thickness, color] :
       {std::pair(3.5F, kInk), std::pair(1.5F, Rgb{255, 255, 255})}) {
    Pen pen(plot.width, plot.height);
    for (const PenPoint& place : places) {
      const auto corner = [&](int i) {
        const z32f angle = static_cast<z32f>(2 * std::numbers::pi * i / kSides);
        return PenPoint{place.x + kRadius * std::cos(angle), place.y + kRadius * std::sin(angle)};
      };
      for (int i = 0; i < kSides; ++i) pen.Line(corner(i), corner(i + 1), thickness);
    }
    pen.DrawOnto(canvas, plot.x, plot.y, color);
  }
}

// Circles odd points as long as they are few.
void DrawCells(Canvas& canvas, const Plot& plot, const HeightMap& map, const AxisRange& colours,
               const Blank& blank) {
  constexpr zSize kMostRings = 20;
  const SeenHeights seen(map, colours);
  const auto cell = [](int pixel, int pixels, z32u cells, bool backwards) {
    const int at = backwards ? pixels - 1 - pixel : pixel;
    return static_cast<zSize>(at) * cells / static_cast<zSize>(pixels);
  };
  std::map<zSize, PenPoint> odd;  // by cell
  for (int row = 0; row < plot.height; ++row) {
    const zSize line = cell(row, plot.height, map.length, map.stepY >= 0) * map.width;
    for (int column = 0; column < plot.width; ++column) {
      const zSize at = line + cell(column, plot.width, map.width, map.stepX < 0);
      canvas.Set(plot.x + column, plot.y + row, seen.ColorOf(at).value_or(blank.At(column, row)));
      if (odd.size() <= kMostRings && seen.IsOdd(at)) {
        odd.try_emplace(at,
                        PenPoint{static_cast<z32f>(column) + 0.5F, static_cast<z32f>(row) + 0.5F});
      }
    }
  }
  if (odd.empty() || odd.size() > kMostRings) return;
  std::vector<PenPoint> places;
  places.reserve(odd.size());
  for (const auto& [at, place] : odd) places.push_back(place);
  DrawRings(canvas, plot, places);
}

// A scan as it is drawn, and what is told about it.
struct Sheet {
  Scan scan;  // in the units that are shown
  ShownUnits units;
  AxisRange heights, colours;  // shown
  SheetText text;
};

AxisRange Shown(const ShownUnit& unit, const Span& span) {
  return {unit.Shown(span.low), unit.Shown(span.high)};
}

// "Heights from 0 to 5 mm, colours from 0 to 1 mm: 3 points above, 12 below."
std::string HeightsText(const Scan& told, const ShownUnit& unit, const PictureView& view) {
  std::string text =
      "Heights from " + unit.RangeText(view.heights.low, view.heights.high, view.step);
  const z64f low = view.colours.low;
  const z64f high = view.colours.high;
  if (told.IsProfile() || (low <= view.heights.low && high >= view.heights.high))
    return text.ends_with('.') ? text : text + ".";
  z64f above = 0;
  z64f below = 0;
  HeightsOf(told)([&](const HeightBlock& block) {
    for (zSize i = 0; i < block.heights.size(); ++i) {
      if (block.heights[i] > high) above += block.CountOf(i);
      if (block.heights[i] < low) below += block.CountOf(i);
    }
  });
  return text + Orv::Format(", colours from %s: %.0f points above, %.0f below.",
                            unit.RangeText(low, high, (high - low) / 1000), above, below);
}

std::string LevelText(Levelling levelling) {
  if (levelling == Levelling::mean) return "Levelled: heights count from their mean.";
  if (levelling == Levelling::plane) return "Levelled by a plane (least squares, steps left out).";
  return {};
}

Sheet MakeSheet(const Scan& told, const std::string& title, const PictureView& view) {
  Sheet sheet{{}, FittingUnits(told, view.heights), {}, {}, {title, {}, told.cautions, {}}};
  sheet.scan = InUnits(told, sheet.units);
  sheet.heights = Shown(sheet.units.z, view.heights);
  sheet.colours = Shown(sheet.units.z, view.colours);
  if (view.heights.low <= view.heights.high) {
    sheet.text.head.push_back(HeightsText(told, sheet.units.z, view));
  }
  if (view.levelling != Levelling::none) sheet.text.head.push_back(LevelText(view.levelling));
  return sheet;
}

zBytes DrawNothing(Sheet& sheet) {
  sheet.text.head.clear();
  Canvas canvas = MakeSheet(kShortestSide, sheet.text);
  const Lettering text(18);
  const std::string nothing = "no valid point";
  text.Draw(canvas, (kPictureWidth - text.Width(nothing)) / 2,
            sheet.text.PlotTop() + kShortestSide / 2, nothing, kPaleInk);
  return canvas.ToPng();
}

// Single points stand out better from a plain ground.
Blank BlankOf(const Scan& scan, const HeightMap& map) {
  if (scan.kind == ScanKind::cloud) return {"no point", false};
  return {map.reduced ? "mostly not measured" : "not measured", true};
}

// What the cells of a map are, where they are not points.
void TellReduction(Sheet& sheet, const HeightMap& map) {
  if (!map.reduced) return;
  const Scan& scan = sheet.scan;
  sheet.text.head.push_back(
      Orv::Format("Reduced: %u x %u points to %u x %u cells of their means; what stands out "
                  "from them is seen.",
                  scan.width, scan.length, map.width, map.length));
  if (scan.kind != ScanKind::cloud) return;
  const z64f most = sheet.heights.Size() / 10;
  zSize mixed = 0;
  for (zSize i = 0; i < map.lows.size(); ++i) {
    if (static_cast<z64f>(map.highs[i] - map.lows[i]) > most) ++mixed;
  }
  if (mixed > 0) {
    sheet.text.notes.push_back(Orv::Format(
        "%zu cells hold points of heights far apart: front and back may be mixed there.", mixed));
  }
}

zBytes DrawMap(Sheet& sheet) {
  const Scan& scan = sheet.scan;
  Plot plot{};
  const HeightMap map = MakeHeightMap(scan, [&plot](const MapGrid& finest) {
    plot = PlotOf(finest);
    return MapSize{static_cast<z32u>(plot.width), static_cast<z32u>(plot.height)};
  });
  const auto measured =
      map.heights.size() -
      static_cast<zSize>(std::ranges::count_if(map.heights, [](z32f z) { return std::isnan(z); }));
  if (map.heights.empty() || (measured == 0 && !HasValidPoint(scan))) return DrawNothing(sheet);
  std::vector<std::string>& notes = sheet.text.notes;
  TellReduction(sheet, map);
  NoteStretching(plot, "y", LengthRatio(sheet.units.x, sheet.units.y), notes);
  if (plot.across.Size() == 0) notes.emplace_back("All points have the same x.");
  if (plot.up.Size() == 0) notes.emplace_back("All points have the same y.");
  if (measured == 0) notes.emplace_back("Too few points were measured to be seen at this size.");
  plot.y = sheet.text.PlotTop();
  Canvas canvas = MakeSheet(plot.height, sheet.text);
  const Blank blank = BlankOf(scan, map);
  DrawCells(canvas, plot, map, sheet.colours, blank);
  DrawAxes(canvas, plot, sheet.units.x.AxisName("x"), sheet.units.y.AxisName("y"));
  if (measured > 0) {
    DrawColorBar(canvas, plot, sheet.colours, sheet.heights, sheet.units.z.AxisName("z"));
  }
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

zBytes DrawProfile(Sheet& sheet) {
  const ProfileLine line = MakeProfileLine(sheet.scan, kLineWidth);
  if (line.z.empty()) return DrawNothing(sheet);
  if (sheet.scan.Count() > kLineWidth) {
    sheet.text.head.push_back(
        Orv::Format("Reduced: of %zu points, the lowest and the highest of each column remain.",
                    sheet.scan.Count()));
  }
  Plot plot{kLineLeft,   sheet.text.PlotTop(), kLineWidth,
            kLineHeight, RangeOf(line.x),      RangeOf(line.z)};
  const z64f room = plot.up.Size() * 0.05;
  plot.up = {plot.up.low - room, plot.up.high + room};
  NoteStretching(plot, "z", LengthRatio(sheet.units.x, sheet.units.z), sheet.text.notes);
  Canvas canvas = MakeSheet(plot.height, sheet.text);
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
  DrawAxes(canvas, plot, sheet.units.x.AxisName("x"), sheet.units.z.AxisName("z"));
  return canvas.ToPng();
}

}  // namespace

zBytes DrawPicture(const Scan& scan, const std::string& title, const PictureView& view) {
  Sheet sheet = MakeSheet(scan, title, view);
  const bool line = scan.IsProfile() || (scan.kind == ScanKind::surface && scan.length == 1);
  return line ? DrawProfile(sheet) : DrawMap(sheet);
}
