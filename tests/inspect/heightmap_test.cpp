// SPDX-License-Identifier: MIT
#include "inspect/reduction/heightmap.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <sstream>

#include "inspect/scans_to_inspect.h"

namespace {

constexpr z16s kNo = kInvalidRaw;

std::string Numbers(const auto& row) {
  std::ostringstream out;
  for (const auto& number : row) out << +number << ' ';
  return out.str() + "; ";
}
std::string Told(const HeightMap& map) {
  return Numbers(std::vector{map.x, map.y, map.stepX, map.stepY}) + Numbers(map.heights) +
         Numbers(map.intensities) + Numbers(map.lows) + Numbers(map.highs);
}
std::string Told(const ProfileLine& line) {
  return Numbers(line.x) + Numbers(line.z) + Numbers(line.intensities);
}

TEST(HeightMap, IsTheMeanOfACell) {
  // 5 x 3 points of 6 x 6 mm to 3 x 2 cells of 10 x 9 mm, whose borders cut points; one cell has
  // too few measured points.
  Scan grid = MakeScan<z16s>(ScanKind::surface, 5, 3,
                             {10, 20, kNo, 40, 50, kNo, 7, 8, kNo, -30, 3, kNo, kNo, kNo, 5},
                             {6, -6, 10}, {4, 2, 1});
  grid.intensities =
      MakeArray2<z8u>(3, 5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 200, 210, 220, 230, 240});
  Scan cloud = MakeScan<zPoint3d16s>(ScanKind::cloud, 2, 2,
                                     {{0, 0, 10}, {100, 0, 9}, {0, 50, 4}, {kNo, 50, 5}},
                                     {1, 2, 0.5}, {1000, 0, -1});
  cloud.intensities = MakeArray2<z8u>(2, 2, {10, 255, 5, 99});
  const std::tuple<Scan, MapSize, const char*> rows[] = {
      {grid,
       {3, 2},
       "6 0.5 10 -9 ; 129.333 189.75 285.615 41 nan -65.6667 ; 2 5 6 152 0 163 ; "
       "71 71 -299 31 nan -299 ; 201 401 501 71 nan 51 ; "},
      {cloud, {2, 1}, "1000 50 100 200 ; 2.5 3.5 ; 8 255 ; 1 3.5 ; 4 3.5 ; "},
      // Exactly half of the area is enough.
      {MakeScan<z16s>(ScanKind::surface, 8, 1, {8, kNo, kNo, kNo, 4, 5, kNo, kNo}),
       {2, 1},
       "1.5 0 4 1 ; nan 4.5 ; ; nan 4 ; nan 5 ; "},
  };
  for (const auto& [scan, size, told] : rows) {
    const HeightMap map = MakeHeightMap(scan, [&size = size](const MapGrid&) { return size; });
    EXPECT_EQ(Told(map), told);
    EXPECT_TRUE(map.reduced) << told;
  }
}

TEST(HeightMap, HasAsManyCellsAsAllowedInTheShapeOfTheGrid) {
  const std::vector<z32u> rows[] = {
      // width and length of the grid, cells, width and length
      {1000, 1, 7, 7, 1},     {1, 1000, 7, 1, 7}, {700, 3, 100, 100, 1}, {40, 50, 2000, 40, 50},
      {40, 50, 1999, 39, 49}, {40, 50, 1, 1, 1},  {40, 50, 0, 0, 0}};
  for (const auto& row : rows) {
    const Scan scan =
        MakeScan(ScanKind::surface, row[0], row[1], std::vector<z16s>(row[0] * row[1], 5));
    const HeightMap map = MakeHeightMap(scan, row[2]);
    EXPECT_EQ((std::vector{row[0], row[1], row[2], map.width, map.length}), row);
    EXPECT_EQ(map.heights, std::vector<z32f>(row[3] * row[4], 5));
  }
}

// A cell for each point where rows follow the axes; elsewhere cells without holes, but fine ones.
TEST(HeightMapOfCloud, HasFineCellsForRowsInAnyDirection) {
  const z64f pi = std::numbers::pi;
  for (const z64f angle : {0.0, pi / 2, pi, 0.1, 2.0}) {
    SCOPED_TRACE(angle);
    const z64f cosine = std::cos(angle), sine = std::sin(angle);
    std::vector<zPoint3d16s> points;  // 90 x 60, tilted, some of them missing
    for (int i = 0; i < 90 * 60; ++i) {
      const int column = i % 90, row = i / 90;
      points.push_back({static_cast<z16s>(100.0 * column * cosine - 100.0 * row * sine),
                        static_cast<z16s>(100.0 * column * sine + 100.0 * row * cosine),
                        (row + column) % 17 == 3 ? kNo : static_cast<z16s>(column)});
    }
    const HeightMap map = MakeHeightMap(MakeScan(ScanKind::cloud, 90, 60, points), 1'000'000);
    const z64f c = std::abs(cosine), s = std::abs(sine);
    const bool along = c * s < 1e-9;
    // The turned rectangle within its frame; some cells on its edge are cut.
    const z64f share = 90 * 60 / ((90 * c + 60 * s) * (90 * s + 60 * c));
    const auto gaps = std::ranges::count_if(map.heights, [](z32f z) { return std::isnan(z); });
    EXPECT_GT(1 - static_cast<z64f>(gaps) / static_cast<z64f>(map.heights.size()),
              along ? 0.93 : share - 0.03);
    EXPECT_LT(map.stepX, along ? 100.5 : 160);
    if (!along) continue;
    EXPECT_EQ(std::pair(map.width, map.length),
              s > 0.5 ? std::pair(60U, 90U) : std::pair(90U, 60U));
    EXPECT_NEAR(map.x, angle == 0 ? 0 : angle < 2 ? -5900 : -8900, 1);
    EXPECT_NEAR(map.y, angle < 2 ? 0 : -5900, 1);
    EXPECT_FALSE(map.reduced);
  }
}

TEST(HeightMap, WithstandsAnyScale) {
  for (const Scan& scan : MakeHostileScans()) {
    for (const zSize most : {1U, 1000U}) {
      const HeightMap map = MakeHeightMap(scan, most);
      const ProfileLine line = MakeProfileLine(scan, most);
      const std::string told = Told(map) + Told(line);
      EXPECT_THAT(told, testing::Not(testing::HasSubstr("inf")));
      EXPECT_LE(map.heights.size(), most) << told;
      EXPECT_EQ(map.heights.size(), zSize{map.width} * map.length) << told;
      EXPECT_TRUE(std::isfinite(map.x + map.stepX * map.width + map.y + map.stepY * map.length))
          << told;
      EXPECT_LE(line.x.size(), 2 * most) << told;
      EXPECT_TRUE(std::ranges::all_of(line.x, [](z64f x) { return std::isfinite(x); })) << told;
    }
  }
}

TEST(HeightMap, IsEmptyWithoutPoints) {
  for (const Scan& scan : {Scan(), MakeScan<z16s>(ScanKind::surface, 0, 7, {}),
                           MakeScan<zPoint3d16s>(ScanKind::cloud, 1, 1, {{0, 0, kNo}}),
                           MakeScan<z16s>(ScanKind::profile, 1, 1, {kNo})}) {
    EXPECT_EQ(MakeHeightMap(scan, scan.IsProfile() ? 0 : 10).heights.size(), 0U);
    EXPECT_EQ(MakeProfileLine(scan, 10).z.size(), 0U);
  }
  const Scan point = MakeScan<zPoint3d16s>(ScanKind::cloud, 1, 1, {{3, 4, 5}});
  EXPECT_EQ(Told(MakeHeightMap(point, 10)), "3 4 0 0 ; 5 ; ; ; ; ");
}

TEST(ProfileLine, RunsFromLeftToRightWithGapsAndKeepsTheExtremesOfEachColumn) {
  Scan many =
      MakeScan<z16s>(ScanKind::profile, 12, 1, {4, 9, 1, 5, kNo, kNo, kNo, kNo, 7, kNo, 7, kNo});
  many.intensities = MakeArray2<z8u>(1, 12, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  const std::pair<Scan, const char*> rows[] = {
      {MakeScan<z16s>(ScanKind::profile, 3, 1, {1, kNo, 3}, {-2, 1, 0.5}),
       "-4 -2 0 ; 1.5 nan 0.5 ; ; "},
      {MakeScan<zPoint16s>(ScanKind::pointProfile, 4, 1, {{kNo, 0}, {5, 1}, {6, kNo}, {9, 2}}),
       "5 5 5 9 ; nan 1 nan 2 ; ; "},
      {many, "1 2 4 8 ; 9 1 nan 7 ; 1 2 4 8 ; "},
  };
  for (const auto& [scan, told] : rows) {
    const ProfileLine line = MakeProfileLine(scan, scan.width == 12 ? 3 : 10);
    EXPECT_EQ(Told(line), told);
  }
}

}  // namespace
