// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <limits>
#include <numbers>
#include <random>
#include <set>

#include "inspect/measure/figures.h"
#include "inspect/measure/level.h"
#include "inspect/measure/units.h"
#include "inspect/scans_to_inspect.h"

namespace {

using Heights = std::vector<z64f>;
using testing::DoubleNear;
using testing::Pointwise;

constexpr z16s kNo = kInvalidRaw;
constexpr z64f kNone = std::numeric_limits<z64f>::quiet_NaN();

Heights Make(int count, auto height) {
  Heights heights;
  for (int i = 0; i < count; ++i) heights.push_back(height(i));
  return heights;
}

// In blocks of that size; each height is there so often, once where `counts` is empty.
HeightBlocks BlocksOf(const Heights& heights, zSize size, const Heights& counts = {}) {
  return [=](const std::function<void(const HeightBlock&)>& take) {
    for (zSize i = 0; i < heights.size(); i += size) {
      const zSize count = std::min(size, heights.size() - i);
      take({std::span(heights).subspan(i, count),
            std::span(counts).subspan(counts.empty() ? 0 : i, counts.empty() ? 0 : count)});
    }
  };
}
Heights ListOf(const HeightBlocks& blocks) {
  Heights list;
  blocks([&list](const HeightBlock& block) {
    list.insert(list.end(), block.heights.begin(), block.heights.end());
  });
  return list;
}

TEST(Figures, FollowFromMathematics) {
  const z64f a = 0.003, pi = std::numbers::pi, root = std::sqrt(0.1875);
  const auto sine = [=](int i, int count) { return std::sin(2 * pi * i / count); };
  const auto twoSines = [&](int i) { return a * sine(i % 300, 300) * sine(i / 300, 300); };
  const auto high = [=](int most) { return [=](int i) { return i * 7 % 9999 < most ? a : 0; }; };
  const z64f mean = 1 / std::tan(pi / 300) / 150;  // of a sine at 300 points
  const struct {
    const char* name;
    Heights heights;
    z64f low, high, mean, median, sa, sq, ssk, sku;
  } rows[] = {
      {"sine", Make(100'000, [&](int i) { return a * sine(i, 100'000); }), -a, a, 0, 0, 2 * a / pi,
       a / std::sqrt(2), 0, 1.5},
      {"two sines", Make(90'000, twoSines), -a, a, 0, 0, a * mean * mean, a / 2, 0, 2.25},
      {"steps", Make(1000, [=](int i) { return a * (i * 7 % 1000); }), 0, 999 * a, 499.5 * a,
       499.5 * a, 250 * a, a * std::sqrt(999'999 / 12.0), 0, 0.6 * 2'999'993 / 999'999},
      {"a third is high", Make(9999, high(3333)), 0, a, a / 3, 0, 4 * a / 9, a * std::sqrt(2) / 3,
       std::sqrt(0.5), 1.5},
      {"three of four are high", Make(9996, high(7497)), 0, a, 0.75 * a, a, 0.375 * a, root * a,
       -0.5 / root, 1 / 0.1875 - 3},
      {"one height", {7 * a}, 7 * a, 7 * a, 7 * a, 7 * a, 0, 0, kNone, kNone},
      {"equal heights", Heights(12'345, -a), -a, -a, -a, -a, 0, 0, kNone, kNone},
      {"none", {}, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone},
  };
  for (const auto& row : rows) {
    for (const z64f offset : {0.0, 1e6 * a}) {
      Heights heights = row.heights;
      for (z64f& height : heights) height += offset;
      const Heights thrice(heights.size(), 3);
      for (const HeightBlocks& blocks : {BlocksOf(heights, 1), BlocksOf(heights, 3),
                                         BlocksOf(heights, 8193), BlocksOf(heights, 7, thrice)}) {
        const Figures f = MeasureHeights(blocks, {}).figures;
        const z64f unit = row.sq > 0 ? row.sq : a;
        EXPECT_THAT(
            (Heights{f.lowest - offset, f.highest - offset, f.mean - offset, f.median - offset,
                     f.sz, f.sp, f.sv, f.sa, f.sq, f.ssk * unit, f.sku * unit}),
            Pointwise(testing::NanSensitiveDoubleNear(1e-9 * unit),
                      Heights{row.low, row.high, row.mean, row.median, row.high - row.low,
                              row.high - row.mean, row.mean - row.low, row.sa, row.sq,
                              row.ssk * unit, row.sku * unit}))
            << row.name << " at " << offset;
        EXPECT_TRUE(f.validPoints == heights.size() || f.validPoints == 3 * heights.size());
      }
    }
  }
}

TEST(Percentiles, AreThoseOfSortedHeights) {
  std::mt19937 random(3);
  Heights uneven = Make(10'007, [&](int) { return std::log(1.0 + static_cast<z64f>(random())); });
  std::ranges::sort(uneven);
  // More than are sorted, close together or equal, and some far away.
  Heights close = Make(1'050'001, [](int i) { return i * 1e-9; });
  close.front() = -1e9;
  close.back() = 1e9;
  Heights equal(1'050'001, 0.3);
  equal.front() = -1e9;
  const Heights percents{99, 1, 50, 12.34, 95};
  for (const Heights& sorted : {uneven, {1, 2}, close, equal, {-1.7e308, 0, 1, 1.7e308}}) {
    Heights heights, expected;
    for (zSize i = 0; i < sorted.size(); ++i) heights.push_back(sorted[i * 7919 % sorted.size()]);
    for (const z64f percent : percents) {
      const z64f rank = percent / 100 * static_cast<z64f>(sorted.size() - 1);
      const z64f low = sorted[static_cast<zSize>(rank)];
      const z64f high = sorted[static_cast<zSize>(std::ceil(rank))];
      expected.push_back(low + (high - low) * (rank - std::floor(rank)));
    }
    const HeightStatistics told = MeasureHeights(BlocksOf(heights, 8193), percents);
    EXPECT_EQ(told.percentiles, expected) << heights.size();
    EXPECT_EQ(told.figures.median, expected[2]) << heights.size();
  }
  EXPECT_THAT(
      MeasureHeights(BlocksOf({4, -1, 9}, 2, {3, 5, 2}), {0, 40, 45, 50, 87, 100}).percentiles,
      Pointwise(DoubleNear(1e-12), Heights{-1, -1, -0.75, 1.5, 8.15, 9}));
  Heights parts(kHistogramParts, 2);
  parts.back() = 3;
  EXPECT_EQ(MeasureHeights(BlocksOf(Make(513, [](int i) { return 512 - i; }), 10), {}).histogram,
            parts);
}

// Of the rounded heights `raw(column, row)`.
Scan Grid(int width, int length, auto raw, z64f scale = 1, z64f offset = 0) {
  std::vector<z16s> heights;
  for (int i = 0; i < width * length; ++i) {
    heights.push_back(static_cast<z16s>(std::lround(raw(i % width, i / width))));
  }
  return MakeScan(length == 1 ? ScanKind::profile : ScanKind::surface, static_cast<z32u>(width),
                  static_cast<z32u>(length), heights, {1, 1, scale}, {0, 0, offset});
}
Scan Cloud(const std::vector<zPoint3d16s>& points, zPoint3d64f scale, zPoint3d64f offset) {
  return MakeScan(ScanKind::cloud, static_cast<z32u>(points.size()), 1, points, scale, offset);
}

// One of each kind, which rises by 0.5 along u and, but for profiles, falls by 0.25 along v.
std::vector<Scan> MakeTilted() {
  std::vector<zPoint3d16s> cloud;
  std::vector<zPoint16s> line;
  for (int i = 0; i < 12'000; ++i) {
    const auto x = static_cast<z16s>(i * 77 % 601), y = static_cast<z16s>(i % 23);
    cloud.push_back({x, y, static_cast<z16s>(i % 5 == 3 ? kNo : x + y)});
    line.push_back({i % 7 == 3 ? kNo : x, static_cast<z16s>(i % 9 == 1 ? kNo : x)});
  }
  const auto onPlane = [](int u, int v) { return (u + v) % 6 == 1 ? kNo : 2 * u - v; };
  return {Grid(70, 41, onPlane, 0.25, 3), Grid(9001, 2, onPlane, 0.25, 3),
          Grid(500, 1, onPlane, 0.25, 3), Cloud(cloud, {0.01, -0.02, 0.005}, {1e6, -3e5, 3}),
          MakeScan(ScanKind::pointProfile, 12'000, 1, line, {0.01, 7, 0.005}, {1e6, 7, 3})};
}

TEST(Levelling, TakesOffWhatThePlaneSaysAndNothingElse) {
  for (Scan& scan : MakeTilted()) {
    scan.box.emplace();
    const Plane fit = FitPlane(scan);
    EXPECT_NEAR(fit.perU, 0.5, 1e-9);
    EXPECT_NEAR(fit.perV, scan.IsProfile() ? 0 : -0.25, 1e-9);
    Heights expected, rounded, counted = ListOf(HeightsOf(scan));
    std::set<z64f> different;
    ForEachPlace(scan, [&](const PlacedHeight& place) {
      different.insert(place.z);
      expected.push_back(place.z - 0.7 - 0.3 * (place.u - 3) + 0.2 * (place.v - 1));
    });
    const Plane plane{3, 1, 0.7, 0.3, -0.2};
    EXPECT_THAT(ListOf(HeightsOver(scan, plane)), Pointwise(DoubleNear(1e-9), expected));
    for (const z64f height : ListOf(HeightsOver(scan, fit))) EXPECT_NEAR(height, 0, 1e-7);
    EXPECT_EQ(counted, Heights(different.begin(), different.end()));
    EXPECT_EQ(MeasureFigures(scan).plain.figures.validPoints, expected.size());
    const auto [low, high] = std::ranges::minmax(expected);
    scan = LevelScan(scan, plane);
    ForEachPlace(scan, [&](const PlacedHeight& place) { rounded.push_back(place.z); });
    EXPECT_THAT(rounded, Pointwise(DoubleNear(0.5001 * (high - low) / 65'534), expected));
    EXPECT_FALSE(scan.box);
  }
}

TEST(Levelling, IsLeastSquaresUnlessStepsOrObjectsTurnIt) {
  std::mt19937 random(1);
  std::vector<std::tuple<Scan, z64f, z64f, z64f>> rows{
      // Slopes follow from symmetry; the last ones have too few rows for parts that tell a slope
      // across.
      {Grid(301, 201, [](int u, int v) { return 9e3 * std::cos((u - 150) / 31.0) + 30 * v; }), 0,
       30, 1e-9},
      {Grid(180, 150, [](int u, int v) { return u * u - v * v; }), 179, -149, 1e-9},
      {Grid(200, 17, [](int u, int v) { return 9 * v + (v == 8 ? 500 : 0) + u; }), 1, 9, 1e-9},
      {Grid(9, 400, [](int u, int v) { return 9 * u + (u == 4 ? 500 : 0) + v; }), 9, 1, 1e-9},
      {Grid(4, 1, [](int u, int) { return u == 1 ? kNo : 3 * u; }), 3, 0, 1e-12},
      {MakeScan<z16s>(ScanKind::surface, 1, 4, {2, 4, kNo, 8}), 0, 2, 1e-12},
      // Level where no more is known.
      {Scan(), 0, 0, 0},
      {Grid(2, 1, [](int, int) { return kNo; }), 0, 0, 0},
      {Grid(1, 1, [](int, int) { return 32'767; }), 0, 0, 0},
      {Grid(1, 1, [](int, int) { return -32'767; }), 0, 0, 0},
      {Cloud({{7, 8, 5}, {7, 8, 9}}, {1, 1, 1}, {}), 0, 0, 0},
      {Cloud({{0, 0, 0}, {1, 1, 2}, {2, 2, 4}}, {1, 1, 1}, {}), 0, 0, 0}};
  for (const int at : {20, 60, 133, 200, 251}) {
    const auto add = [&](auto more) {
      rows.emplace_back(Grid(401, 301,
                             [&](int u, int v) {
                               const int height = more(u, v);
                               return height == kNo ? kNo
                                                    : 50 * u - 20 * v - 9000 + height +
                                                          static_cast<int>(random() % 7);
                             }),
                        50, -20, 3e-3);
    };
    add([at](int u, int) { return u < at ? 0 : 100; });
    add([at](int, int v) { return v < at ? 100 : 0; });
    add([at](int u, int v) { return u > at && u < at + 90 && v < 250 ? 4000 : 0; });
    add([at](int u, int v) { return u + v > 540 - at / 4 ? 0 : kNo; });
    add([](int, int v) { return v > 175 ? 30 * (175 - v) : 0; });
  }
  for (const auto& [scan, perU, perV, tolerance] : rows) {
    SCOPED_TRACE(&std::get<0>(rows[0]) - &scan);
    const z64f mean = MeasureFigures(scan).plain.figures.mean;
    for (const Levelling way : {Levelling::none, Levelling::mean, Levelling::plane}) {
      const Plane plane = PlaneFor(way, scan);
      const z64f slope = way == Levelling::plane ? 1 : 0;
      EXPECT_NEAR(plane.height, way == Levelling::none || std::isnan(mean) ? 0 : mean, 1e-9);
      EXPECT_NEAR(plane.perU, slope * perU, tolerance);
      EXPECT_NEAR(plane.perV, slope * perV, tolerance);
    }
  }
  for (const Scan& scan : MakeHostileScans()) {
    const ScanFigures figures = MeasureFigures(scan);
    EXPECT_LE(figures.levelled.figures.validPoints, figures.plain.figures.validPoints);
    const Plane plane = FitPlane(scan);
    EXPECT_TRUE(std::isfinite(plane.height + plane.perU + plane.perV));
    const Axis axis = LevelScan(scan, plane).Z();
    EXPECT_TRUE(figures.levelled.figures.validPoints == 0 ||
                std::isfinite(axis.scale + axis.offset));
  }
}

TEST(Units, FitWhatIsShown) {
  const AxisUnit mm, m{"m", 1e3}, nm{"nm", 1e-6}, pm{"pm", 1e-9}, inch{"inch", 25.4}, au{"a.u.", 0};
  const struct {
    AxisUnit unit;
    z64f low, high, step;
    const char* text;
  } rows[] = {
      {mm, 12.345, 12.345018, 1e-6, "12.345009 mm + -9 to 9 nm; z \u2212 12.345009 mm (nm)"},
      {mm, 12.3355, 12.354, 1e-4, "12.345 mm + -9.5 to 9 µm; z \u2212 12.345 mm (µm)"},
      {mm, -18.003, -18, 1e-4, "-18.002 mm + -1 to 2 µm; z + 18.002 mm (µm)"},
      {mm, -0.9, -1e-9, 0.25e-3, "-900 to 0 µm; z (µm)"},
      {mm, 0.00175, 0.999, 0.25e-3, "1.75 to 999 µm; z (µm)"},
      {mm, -100, 1000, 10, "-0.1 to 1 m; z (m)"},
      {mm, 0, 0, 0, "0 to 0 mm; z (mm)"},
      {mm, 0.25, 0.25, 0.01, "250 to 250 µm; z (µm)"},
      {mm, 9e17, 3e20, 1e18, "900000000000000 to 3e+17 m; z (m)"},
      {mm, -HUGE_VAL, 1 / 3.0, 0, "-inf to 0.333333333333 mm; z (mm)"},
      {m, 2e-3, 4e-3, 1e-4, "2 to 4 mm; z (mm)"},
      {m, 7, 7.000004, 1e-7, "7.000002 m + -2 to 2 µm; z \u2212 7.000002 m (µm)"},
      {nm, -1e6, 0, 100, "-1 to 0 mm; z (mm)"},
      {pm, 5e5, 2.5e6, 1e4, "0.5 to 2.5 µm; z (µm)"},
      {pm, 0, 0.3, 0.1, "0 to 0.3 pm; z (pm)"},
      {inch, 2, 2.5, 0.01, "2 to 2.5 inch; z (inch)"},
      {inch, 1e6, 1e6 + 4, 1, "1000002 inch + -2 to 2 inch; z \u2212 1000002 inch (inch)"},
      {au, 0.001, 0.002, 1e-4, "0.001 to 0.002 a.u.; z (a.u.)"},
  };
  for (const auto& row : rows) {
    const ShownUnit shown = FittingUnit(row.unit, Span{row.low, row.high});
    EXPECT_EQ(shown.RangeText(row.low, row.high, row.step) + "; " + shown.AxisName("z"), row.text);
  }
  Scan scan = MakeScan<z16s>(ScanKind::surface, 3, 2, {}, {0.5, -2, 1e-3}, {1, 70, 5});
  scan.units[1] = m;
  const ShownUnits units = FittingUnits(scan, {4.9, 5.1});
  EXPECT_EQ(units.x.name + units.y.name + units.z.name, "mmµm");
  EXPECT_DOUBLE_EQ(LengthRatio(units.x, units.z), 1e-6);
  EXPECT_EQ(LengthRatio(FittingUnit(au, 1), units.x), 0);
  const Scan shown = InUnits(scan, units);
  EXPECT_DOUBLE_EQ(shown.Z().scale, 1);
  EXPECT_DOUBLE_EQ(shown.Z().offset, 5000);
  EXPECT_DOUBLE_EQ(shown.X().offset, 1e-3);
}

TEST(ColourRange, IsAsChosen) {
  const auto scan = [](z32u points, z64f lowest, z64f low, z64f high, z64f highest) {
    HeightStatistics statistics{{}, {low, high}, {}};
    statistics.figures.validPoints = points;
    statistics.figures.lowest = lowest;
    statistics.figures.highest = highest;
    return statistics;
  };
  const auto no = scan(0, 9, 9, 9, 9), wide = scan(1, -10, 2, 3, 4), high = scan(1, 0, 1, 2, 20);
  const struct {
    const char* choice;
    std::vector<HeightStatistics> scans;
    Heights percents;
    z64f low, high;
  } rows[] = {
      {"auto", {scan(1, 0, 2, 6, 8)}, {1, 99}, 0, 8},
      {"auto", {scan(1, 0, 2, 5.9, 8)}, {1, 99}, 2, 5.9},
      {"auto", {scan(1, 0, 3, 3, 8)}, {1, 99}, 0, 8},
      {"auto", {wide, no, high}, {1, 99}, 1, 3},
      {"auto", {no}, {1, 99}, HUGE_VAL, -HUGE_VAL},
      {"full", {wide, no, high}, {1, 99}, -10, 20},
      {"2.5,95", {wide, no, high}, {2.5, 95}, 1, 3},
      {"0,100", {wide}, {0, 100}, 2, 3},
      {"-1.5:2e3", {wide}, {1, 99}, -1.5, 2000},
  };
  for (const auto& row : rows) {
    const auto choice = ColourChoice::FromText(row.choice);
    ASSERT_TRUE(choice) << row.choice;
    EXPECT_EQ(choice->Percents(), row.percents) << row.choice;
    SharedRange range(*choice);
    for (const HeightStatistics& added : row.scans) range.Add(added);
    EXPECT_EQ(range.Colours().low, row.low) << row.choice;
    EXPECT_EQ(range.Colours().high, row.high) << row.choice;
  }
  for (const char* text : {"", "Auto", "5", ",", "5,", ":5", "5,5", "9,5", "2:1", "-1,50", "50,101",
                           "1,2,3", "1;2", " 1,2", "1,2 ", "1,nan", "-inf:0", "1e999:2"}) {
    EXPECT_FALSE(ColourChoice::FromText(text)) << text;
  }
}

}  // namespace
