// SPDX-License-Identifier: MIT
#include "inspect/reduction/heightmap.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <random>

#include "inspect/scans_to_inspect.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::NanSensitiveDoubleEq;
using testing::NanSensitiveFloatEq;
using testing::Pointwise;

const z64f kNan = std::nan("");
constexpr z16s kNo = kInvalidRaw;

// Tilted, of `width` x `length` points on a grid turned by `angle`, some of them missing.
Scan MakeLattice(z32u width, z32u length, z64f angle) {
  std::vector<zPoint3d16s> points;
  for (z32u row = 0; row < length; ++row) {
    for (z32u column = 0; column < width; ++column) {
      const z64f x = 100.0 * column * std::cos(angle) - 100.0 * row * std::sin(angle);
      const z64f y = 100.0 * column * std::sin(angle) + 100.0 * row * std::cos(angle);
      const z16s z = (row + column) % 17 == 3 ? kNo : static_cast<z16s>(column);
      points.push_back({static_cast<z16s>(x), static_cast<z16s>(y), z});
    }
  }
  return MakeScan(ScanKind::cloud, width, length, points);
}

z64f MeasuredShare(const HeightMap& map) {
  const auto count = std::ranges::count_if(map.heights, [](z32f z) { return !std::isnan(z); });
  return static_cast<z64f>(count) / static_cast<z64f>(map.heights.size());
}

// 5 x 3 points of 6 x 6 mm to 3 x 2 cells of 10 x 9 mm; one cell has too few measured points.
TEST(HeightMapOfSurface, IsTheMeanByAreaWithBordersThatCutPoints) {
  Scan scan = MakeScan<z16s>(ScanKind::surface, 5, 3,
                             {10, 20, kNo, 40, 50, kNo, 7, 8, kNo, -30, 3, kNo, kNo, kNo, 5},
                             {6, -6, 10}, {4, 2, 1});
  scan.intensities =
      MakeArray2<z8u>(3, 5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 200, 210, 220, 230, 240});
  HeightMap map = MakeHeightMap(scan, [](const MapGrid&) { return MapSize{3, 2}; });
  EXPECT_THAT((std::vector{map.x, map.y, map.stepX, map.stepY}), ElementsAre(6, 0.5, 10, -9));
  EXPECT_THAT(map.heights, Pointwise(NanSensitiveFloatEq(), {129.33333F, 189.75F, 285.61539F, 41.F,
                                                             std::nanf(""), -65.666664F}));
  EXPECT_THAT(map.intensities, ElementsAre(2, 5, 6, 152, 0, 163));
  EXPECT_TRUE(map.reduced);
  // Exactly half of the area is enough.
  scan = MakeScan<z16s>(ScanKind::surface, 8, 1, {8, kNo, kNo, kNo, 4, 5, kNo, kNo});
  map = MakeHeightMap(scan, [](const MapGrid&) { return MapSize{2, 1}; });
  EXPECT_THAT(map.heights, Pointwise(NanSensitiveFloatEq(), {std::nanf(""), 4.5F}));
}

TEST(HeightMapOfSurface, HasAsManyCellsAsAllowedInTheShapeOfTheGrid) {
  const struct {
    z32u width, length;
    zSize most;
    std::vector<z32u> size;
  } rows[] = {
      {1000, 1, 7, {7, 1}},    {1, 1000, 7, {1, 7}},     {700, 3, 100, {100, 1}},
      {3, 700, 100, {1, 100}}, {40, 50, 2000, {40, 50}}, {40, 50, 1999, {39, 49}},
      {40, 50, 500, {20, 25}}, {40, 50, 1, {1, 1}},      {40, 50, 0, {0, 0}},
      {1, 1, 9, {1, 1}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.width << " x " << row.length << " to " << row.most);
    const std::vector<z16s> heights(zSize{row.width} * row.length, 5);
    const HeightMap map =
        MakeHeightMap(MakeScan(ScanKind::surface, row.width, row.length, heights), row.most);
    EXPECT_EQ((std::vector{map.width, map.length}), row.size);
    EXPECT_EQ(map.heights, std::vector<z32f>(zSize{map.width} * map.length, 5));
  }
}

// A cell for each point where rows follow the axes; elsewhere cells without holes, but fine ones.
TEST(HeightMapOfCloud, HasFineCellsForRowsInAnyDirection) {
  const z64f pi = std::numbers::pi;
  for (const z64f angle : {0.0, pi / 2, pi, 0.1, 0.4, pi / 4, 2.0}) {
    SCOPED_TRACE(angle);
    const HeightMap map = MakeHeightMap(MakeLattice(90, 60, angle), 1'000'000);
    const z64f c = std::abs(std::cos(angle));
    const z64f s = std::abs(std::sin(angle));
    const bool along = c * s < 1e-9;
    // The turned rectangle within its frame; some cells on its edge are cut.
    const z64f share = 90 * 60 / ((90 * c + 60 * s) * (90 * s + 60 * c));
    EXPECT_GT(MeasuredShare(map), along ? 0.93 : share - 0.03);
    EXPECT_LT(MeasuredShare(map), along ? 0.95 : 1);
    EXPECT_LT(map.stepX, along ? 100.5 : 160);
    if (along) {
      EXPECT_THAT((std::vector{map.width, map.length}),
                  s > 0.5 ? ElementsAre(60, 90) : ElementsAre(90, 60));
      EXPECT_NEAR(map.x, angle == 0 ? 0 : angle < 2 ? -5900 : -8900, 1);
      EXPECT_NEAR(map.y, angle < 2 ? 0 : -5900, 1);
      EXPECT_FALSE(map.reduced);
    }
  }
}

TEST(HeightMapOfCloud, HasAsManyCellsAsScatteredPointsFill) {
  std::mt19937 random(3);
  std::vector<zPoint3d16s> points(4000);
  for (auto& point : points) {
    point = {static_cast<z16s>(random() % 1000), static_cast<z16s>(random() % 2000), 7};
  }
  const HeightMap map = MakeHeightMap(MakeScan(ScanKind::cloud, 80, 50, points), 1'000'000);
  EXPECT_GT(MeasuredShare(map), 0.9);
  EXPECT_GT(map.heights.size(), 1000U);
  EXPECT_NEAR(map.stepX, map.stepY, map.stepX / 10);
  // Most of them in one corner: cells follow these, but are no more than the points allow.
  for (zSize i = 0; i < points.size() - 1; ++i) {
    points[i] = {static_cast<z16s>(i % 63), static_cast<z16s>(i / 63), 7};
  }
  points.back() = {32000, 32000, 7};
  const HeightMap corner = MakeHeightMap(MakeScan(ScanKind::cloud, 4000, 1, points), 1'000'000);
  EXPECT_LE(corner.heights.size(), 8000U);
  EXPECT_GE(corner.heights.size(), 4000U);
}

TEST(HeightMapOfCloud, AveragesWhatFallsIntoACell) {
  Scan scan = MakeScan<zPoint3d16s>(ScanKind::cloud, 2, 2,
                                    {{0, 0, 10}, {100, 0, 9}, {0, 50, 4}, {kNo, 50, 5}},
                                    {1, 2, 0.5}, {1000, 0, -1});
  scan.intensities = MakeArray2<z8u>(2, 2, {10, 255, 5, 99});
  const HeightMap map = MakeHeightMap(scan, [](const MapGrid&) { return MapSize{2, 1}; });
  EXPECT_THAT((std::vector{map.x, map.y, map.stepX, map.stepY}), ElementsAre(1000, 50, 100, 200));
  EXPECT_THAT(map.heights, ElementsAre(2.5F, 3.5F));
  EXPECT_THAT(map.intensities, ElementsAre(8, 255));
  EXPECT_TRUE(map.reduced);
}

TEST(HeightMap, WithstandsAnyScale) {
  for (const Scan& scan : MakeHostileScans()) {
    for (const zSize most : {1U, 5U, 1000U}) {
      SCOPED_TRACE(testing::Message() << scan.scale.x << ' ' << scan.scale.y << ' ' << scan.scale.z
                                      << ", " << scan.offset.x << ' ' << scan.offset.z);
      const HeightMap map = MakeHeightMap(scan, most);
      EXPECT_LE(map.heights.size(), most);
      EXPECT_EQ(map.heights.size(), zSize{map.width} * map.length);
      EXPECT_TRUE(std::isfinite(map.x + map.stepX * map.width + map.y + map.stepY * map.length));
      EXPECT_TRUE(std::ranges::none_of(map.heights, [](z32f z) { return std::isinf(z); }));
      const ProfileLine line = MakeProfileLine(scan, most);
      EXPECT_LE(line.x.size(), 2 * most);
      EXPECT_TRUE(std::ranges::all_of(line.x, [](z64f x) { return std::isfinite(x); }));
      EXPECT_TRUE(std::ranges::none_of(line.z, [](z64f z) { return std::isinf(z); }));
    }
  }
}

TEST(HeightMap, IsEmptyWithoutPoints) {
  for (const Scan& scan : {Scan(), MakeScan<z16s>(ScanKind::surface, 0, 7, {}),
                           MakeScan<zPoint3d16s>(ScanKind::cloud, 1, 1, {{0, 0, kNo}}),
                           MakeScan<z16s>(ScanKind::profile, 1, 1, {kNo})}) {
    EXPECT_THAT(MakeHeightMap(scan, scan.IsProfile() ? 0 : 10).heights, IsEmpty());
    EXPECT_THAT(MakeProfileLine(scan, 10).z, IsEmpty());
  }
  const HeightMap point =
      MakeHeightMap(MakeScan<zPoint3d16s>(ScanKind::cloud, 1, 1, {{3, 4, 5}}), 10);
  EXPECT_THAT((std::vector{point.x, point.y, point.stepX, point.stepY}), ElementsAre(3, 4, 0, 0));
  EXPECT_THAT(point.heights, ElementsAre(5));
}

TEST(ProfileLine, RunsFromLeftToRightWithGaps) {
  ProfileLine line =
      MakeProfileLine(MakeScan<z16s>(ScanKind::profile, 3, 1, {1, kNo, 3}, {-2, 1, 0.5}), 10);
  EXPECT_THAT(line.x, ElementsAre(-4, -2, 0));
  EXPECT_THAT(line.z, Pointwise(NanSensitiveDoubleEq(), {1.5, kNan, 0.5}));
  line = MakeProfileLine(
      MakeScan<zPoint16s>(ScanKind::pointProfile, 4, 1, {{kNo, 0}, {5, 1}, {6, kNo}, {9, 2}}), 10);
  EXPECT_THAT(line.x, ElementsAre(5, 5, 5, 9));
  EXPECT_THAT(line.z, Pointwise(NanSensitiveDoubleEq(), {kNan, 1.0, kNan, 2.0}));
  EXPECT_FALSE(line.reduced);
}

TEST(ProfileLine, KeepsTheExtremesOfEachColumn) {
  Scan scan =
      MakeScan<z16s>(ScanKind::profile, 12, 1, {4, 9, 1, 5, kNo, kNo, kNo, kNo, 7, kNo, 7, kNo});
  scan.intensities = MakeArray2<z8u>(1, 12, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  const ProfileLine line = MakeProfileLine(scan, 3);
  EXPECT_TRUE(line.reduced);
  EXPECT_THAT(line.x, ElementsAre(1, 2, 4, 8));
  EXPECT_THAT(line.z, Pointwise(NanSensitiveDoubleEq(), {9.0, 1.0, kNan, 7.0}));
  EXPECT_THAT(line.intensities, ElementsAre(1, 2, 4, 8));
}

}  // namespace
