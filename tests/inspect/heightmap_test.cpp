// SPDX-License-Identifier: MIT
#include "inspect/reduction/heightmap.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "inspect/scans_to_inspect.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::NanSensitiveDoubleEq;
using testing::NanSensitiveFloatEq;
using testing::Pointwise;

constexpr z64f kNan = std::numeric_limits<z64f>::quiet_NaN();
constexpr z64f kInf = std::numeric_limits<z64f>::infinity();

std::vector<z16s> RandomHeights(zSize count) {
  std::mt19937 random(7);
  std::vector<z16s> heights(count);
  for (z16s& height : heights) {
    height = random() % 3 == 0 ? kInvalidRaw : static_cast<z16s>(random() % 65535 - 32767);
  }
  return heights;
}

// The share of point `point` in cell `cell`, in points.
z64f Overlap(zSize cell, zSize cells, zSize points, zSize point) {
  const z64f size = static_cast<z64f>(points) / static_cast<z64f>(cells);
  const z64f begin = static_cast<z64f>(cell) * size;
  const z64f at = static_cast<z64f>(point);
  return std::max(0.0, std::min(begin + size, at + 1) - std::max(begin, at));
}

// Tilted, of `width` x `length` points on a grid turned by `angle`, some of them missing.
std::vector<zPoint3d16s> MakeLattice(z32u width, z32u length, z64f angle) {
  std::vector<zPoint3d16s> points;
  for (z32u row = 0; row < length; ++row) {
    for (z32u column = 0; column < width; ++column) {
      const z64f x = 100.0 * column * std::cos(angle) - 100.0 * row * std::sin(angle);
      const z64f y = 100.0 * column * std::sin(angle) + 100.0 * row * std::cos(angle);
      const z16s z = (row + column) % 17 == 3 ? kInvalidRaw : static_cast<z16s>(column);
      points.push_back({static_cast<z16s>(x), static_cast<z16s>(y), z});
    }
  }
  return points;
}

z64f MeasuredShare(const HeightMap& map) {
  const auto count = std::ranges::count_if(map.heights, [](z32f z) { return !std::isnan(z); });
  return static_cast<z64f>(count) / static_cast<z64f>(map.heights.size());
}

TEST(HeightMapOfSurface, KeepsTheOwnGridWhenThereIsRoom) {
  Scan scan = MakeScan<z16s>(ScanKind::surface, 3, 2, {1, 2, kInvalidRaw, 4, 32767, -32767},
                             {0.5, -2, 0.25}, {10, 20, 1});
  scan.intensities = MakeArray2<z8u>(2, 3, {0, 50, 60, 70, 80, 255});
  const HeightMap map = MakeHeightMap(scan, 6);
  EXPECT_EQ(map.width, 3U);
  EXPECT_EQ(map.length, 2U);
  EXPECT_THAT((std::vector{map.x, map.y, map.stepX, map.stepY}), ElementsAre(10, 20, 0.5, -2));
  EXPECT_THAT(map.heights, Pointwise(NanSensitiveFloatEq(),
                                     {1.25F, 1.5F, std::nanf(""), 2.0F, 8192.75F, -8190.75F}));
  EXPECT_THAT(map.intensities, ElementsAre(0, 50, 0, 70, 80, 255));
  EXPECT_FALSE(map.reduced);
}

TEST(HeightMapOfSurface, IsTheMeanByAreaWithBordersThatCutPoints) {
  for (const auto& [width, length, across, along] :
       {std::tuple(11U, 7U, 4U, 3U), {9U, 8U, 3U, 8U}, {5U, 6U, 5U, 1U}, {64U, 48U, 63U, 47U}}) {
    SCOPED_TRACE(testing::Message() << width << " x " << length << " to " << across);
    const auto heights = RandomHeights(zSize{width} * length);
    Scan scan = MakeScan(ScanKind::surface, width, length, heights, {2, 3, 0.5}, {1, 1, 5});
    std::vector<z8u> light(heights.size());
    for (zSize i = 0; i < light.size(); ++i) light[i] = static_cast<z8u>(i * 37);
    scan.intensities = MakeArray2(length, width, light);
    const MapSize size{across, along};
    const HeightMap map = MakeHeightMap(scan, [&](const MapGrid&) { return size; });
    ASSERT_EQ(map.heights.size(), zSize{across} * along);
    EXPECT_TRUE(map.reduced);
    EXPECT_NEAR(map.x - map.stepX / 2, 1 - 2.0 / 2, 1e-9);
    EXPECT_NEAR(map.y + map.stepY * (along - 0.5), 1 + 3 * (length - 0.5), 1e-9);
    for (zSize cell = 0; cell < map.heights.size(); ++cell) {
      z64f height = 0;
      z64f intensity = 0;
      z64f area = 0;
      for (zSize i = 0; i < heights.size(); ++i) {
        if (heights[i] == kInvalidRaw) continue;
        const z64f share = Overlap(cell % across, across, width, i % width) *
                           Overlap(cell / across, along, length, i / width);
        height += share * heights[i];
        intensity += share * light[i];
        area += share;
      }
      const z64f whole = static_cast<z64f>(width * length) / (across * along);
      if (std::abs(area / whole - 0.5) < 1e-9) continue;
      ASSERT_EQ(std::isnan(map.heights[cell]), area < whole / 2) << cell;
      if (area < whole / 2) continue;
      EXPECT_NEAR(map.heights[cell], height / area * 0.5 + 5, 1e-2) << cell;
      EXPECT_NEAR(map.intensities[cell], intensity / area, 0.51) << cell;
    }
  }
}

TEST(HeightMapOfSurface, IsMeasuredWhereHalfOfTheAreaIs) {
  const z16s no = kInvalidRaw;
  const Scan scan = MakeScan<z16s>(ScanKind::surface, 8, 1, {8, no, no, no, 4, 5, no, no});
  const HeightMap map = MakeHeightMap(scan, [](const MapGrid&) { return MapSize{2, 1}; });
  EXPECT_THAT(map.heights, Pointwise(NanSensitiveFloatEq(), {std::nanf(""), 4.5F}));
}

TEST(HeightMapOfSurface, HasNoMoreCellsThanAllowedWhateverTheShape) {
  for (const auto& [width, length] :
       {std::pair(1000U, 1U), {1U, 1000U}, {700U, 3U}, {3U, 700U}, {40U, 50U}, {1U, 1U}}) {
    const std::vector<z16s> heights(zSize{width} * length, 5);
    const Scan scan = MakeScan(ScanKind::surface, width, length, heights);
    for (const zSize most : {0U, 1U, 2U, 7U, 100U, 1999U, 2000U}) {
      SCOPED_TRACE(testing::Message() << width << " x " << length << " to " << most);
      const HeightMap map = MakeHeightMap(scan, most);
      EXPECT_EQ(map.heights.size(), zSize{map.width} * map.length);
      EXPECT_LE(map.heights.size(), most);
      EXPECT_GE(map.heights.size(), std::min(most / 4, heights.size()));
      EXPECT_THAT(map.heights, testing::Each(5.0F));
    }
  }
}

TEST(HeightMapOfCloud, HasACellForEachPointOfRowsAlongTheAxes) {
  for (const z64f angle : {0.0, std::numbers::pi / 2, std::numbers::pi}) {
    const Scan scan = MakeScan(ScanKind::cloud, 30, 20, MakeLattice(30, 20, angle), {2, 2, 0.5});
    const HeightMap map = MakeHeightMap(scan, 10000);
    const bool turned = std::abs(std::sin(angle)) > 0.5;
    EXPECT_EQ(map.width, turned ? 20U : 30U);
    EXPECT_EQ(map.length, turned ? 30U : 20U);
    EXPECT_NEAR(map.stepX, 200, 0.5);
    EXPECT_NEAR(MeasuredShare(map), 16.0 / 17, 0.01);
    EXPECT_FALSE(map.reduced);
  }
}

TEST(HeightMapOfCloud, HasFineCellsWithoutHolesForRowsInAnyDirection) {
  for (const z64f angle : {0.1, 0.4, std::numbers::pi / 4, 2.0}) {
    const HeightMap map =
        MakeHeightMap(MakeScan(ScanKind::cloud, 90, 60, MakeLattice(90, 60, angle)), 1'000'000);
    EXPECT_LT(map.stepX, 160) << angle;
    // The turned rectangle within its frame; some cells on its edge are cut.
    const z64f c = std::abs(std::cos(angle));
    const z64f s = std::abs(std::sin(angle));
    const z64f share = 90 * 60 / ((90 * c + 60 * s) * (90 * s + 60 * c));
    EXPECT_GT(MeasuredShare(map), share - 0.03) << angle;
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
  for (zSize i = 0; i < points.size() - 1; ++i)
    points[i] = {static_cast<z16s>(i % 63), static_cast<z16s>(i / 63), 7};
  points.back() = {32000, 32000, 7};
  EXPECT_LE(MakeHeightMap(MakeScan(ScanKind::cloud, 4000, 1, points), 1'000'000).heights.size(),
            8000U);
}

TEST(HeightMapOfCloud, AveragesWhatFallsIntoACell) {
  Scan scan = MakeScan<zPoint3d16s>(ScanKind::cloud, 4, 1,
                                    {{0, 0, 10}, {0, 0, 20}, {50, 0, kInvalidRaw}, {100, 0, 7}});
  scan.intensities = MakeArray2<z8u>(1, 4, {10, 21, 99, 255});
  const HeightMap map = MakeHeightMap(scan, [](const MapGrid&) { return MapSize{1, 1}; });
  ASSERT_EQ(map.heights.size(), 1U);
  EXPECT_FLOAT_EQ(map.heights[0], 37.0F / 3);
  EXPECT_THAT(map.intensities, ElementsAre(95));
  EXPECT_TRUE(map.reduced);
}

TEST(HeightMap, WithstandsAnyScale) {
  const z64f hostile[] = {0, -1, kNan, kInf, -kInf, 1e308, -1e308, 1e37, 5e-324};
  for (const z64f scale : hostile) {
    for (const z64f offset : hostile) {
      SCOPED_TRACE(testing::Message() << scale << " " << offset);
      for (const int axis : {0, 1, 2}) {
        zPoint3d64f scales{1, 1, 1};
        zPoint3d64f offsets{};
        (axis == 0 ? scales.x : axis == 1 ? scales.y : scales.z) = scale;
        (axis == 0 ? offsets.x : axis == 1 ? offsets.y : offsets.z) = offset;
        const Scan surface = MakeScan(ScanKind::surface, 8, 5, RandomHeights(40), scales, offsets);
        const Scan cloud = MakeScan(ScanKind::cloud, 8, 5, MakeLattice(8, 5, 0.3), scales, offsets);
        const Scan profile = MakeScan(ScanKind::profile, 40, 1, RandomHeights(40), scales, offsets);
        for (const zSize most : {1U, 9U, 1000U}) {
          for (const HeightMap& map : {MakeHeightMap(surface, most), MakeHeightMap(cloud, most)}) {
            EXPECT_LE(map.heights.size(), most);
            EXPECT_EQ(map.heights.size(), zSize{map.width} * map.length);
            EXPECT_TRUE(std::isfinite(map.x + map.stepX * map.width)) << map.x;
            EXPECT_TRUE(std::isfinite(map.y + map.stepY * map.length)) << map.y;
            for (const z32f z : map.heights) EXPECT_FALSE(std::isinf(z));
          }
          const ProfileLine line = MakeProfileLine(profile, most);
          EXPECT_LE(line.x.size(), 2 * most);
          for (const z64f x : line.x) EXPECT_TRUE(std::isfinite(x));
          for (const z64f z : line.z) EXPECT_FALSE(std::isinf(z));
        }
      }
    }
  }
}

TEST(HeightMap, IsEmptyWithoutPoints) {
  const zPoint3d16s no{0, 0, kInvalidRaw};
  EXPECT_THAT(MakeHeightMap(Scan(), 10).heights, IsEmpty());
  EXPECT_THAT(MakeHeightMap(MakeScan<z16s>(ScanKind::surface, 0, 7, {}), 10).heights, IsEmpty());
  EXPECT_THAT(MakeHeightMap(MakeScan(ScanKind::cloud, 1, 1, std::vector{no}), 10).heights,
              IsEmpty());
  EXPECT_THAT(MakeProfileLine(MakeScan<z16s>(ScanKind::profile, 1, 1, {kInvalidRaw}), 10).z,
              IsEmpty());
  const HeightMap point =
      MakeHeightMap(MakeScan<zPoint3d16s>(ScanKind::cloud, 1, 1, {{3, 4, 5}}), 10);
  EXPECT_THAT((std::vector{point.x, point.y, point.stepX, point.stepY}), ElementsAre(3, 4, 0, 0));
  EXPECT_THAT(point.heights, ElementsAre(5));
}

TEST(ProfileLine, RunsFromLeftToRightWithGaps) {
  const Scan heights = MakeScan<z16s>(ScanKind::profile, 3, 1, {1, kInvalidRaw, 3}, {-2, 1, 0.5});
  const ProfileLine line = MakeProfileLine(heights, 10);
  EXPECT_THAT(line.x, ElementsAre(-4, -2, 0));
  EXPECT_THAT(line.z, Pointwise(NanSensitiveDoubleEq(), {1.5, kNan, 0.5}));
  const Scan pairs = MakeScan<zPoint16s>(ScanKind::pointProfile, 4, 1,
                                         {{kInvalidRaw, 0}, {5, 1}, {6, kInvalidRaw}, {9, 2}});
  const ProfileLine others = MakeProfileLine(pairs, 10);
  EXPECT_THAT(others.x, ElementsAre(5, 5, 5, 9));
  EXPECT_THAT(others.z, Pointwise(NanSensitiveDoubleEq(), {kNan, 1.0, kNan, 2.0}));
}

TEST(ProfileLine, KeepsTheExtremesOfEachColumn) {
  const z16s no = kInvalidRaw;
  Scan scan = MakeScan<z16s>(ScanKind::profile, 12, 1, {4, 9, 1, 5, no, no, no, no, 7, no, 7, no});
  scan.intensities = MakeArray2<z8u>(1, 12, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  const ProfileLine line = MakeProfileLine(scan, 3);
  EXPECT_TRUE(line.reduced);
  EXPECT_THAT(line.x, ElementsAre(1, 2, 4, 8));
  EXPECT_THAT(line.z, Pointwise(NanSensitiveDoubleEq(), {9.0, 1.0, kNan, 7.0}));
  EXPECT_THAT(line.intensities, ElementsAre(1, 2, 4, 8));
}

}  // namespace
