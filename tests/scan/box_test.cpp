// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <random>

#include "getfilestream/getfilestream.h"
#include "scan/heightrange.h"
#include "support/scans.h"

namespace {

template <class Item>
Scan MakeSurfaceOf(z32u width, z32u length, const std::vector<Item>& items) {
  Scan record;
  record.kind = sizeof(Item) == 6 ? ScanKind::cloud : ScanKind::surface;
  record.width = width;
  record.length = length;
  record.scale = {0.1, 0.2, 0.01};
  record.offset = {1, 2, 3};
  record.points = MakeArray2(length, width, items);
  return record;
}

template <class Item>
Scan MakeProfileOf(const std::vector<Item>& items) {
  Scan record;
  record.kind = sizeof(Item) == 4 ? ScanKind::pointProfile : ScanKind::profile;
  record.width = static_cast<z32u>(items.size());
  record.length = 1;
  record.scale = {0.1, 0.2, 0.01};
  record.offset = {1, 2, 3};
  record.points = MakeArray2(static_cast<z64s>(items.size()), 1, items);
  return record;
}

// "centre, size", or the error.
template <class Find>
std::string Text(Find find) {
  BoundingBox6 box{};
  const std::string error = Thrown([&] { box = find(); });
  if (!error.empty()) return error;
  const auto& [c, s] = box;
  return Orv::Format("%.12g %.12g %.12g, %.12g %.12g %.12g", c.x, c.y, c.z, s.x, s.y, s.z);
}
std::string Box(const Scan& record) {
  return Text([&] {
    return record.IsProfile() ? GetProfileBoundingBox(record) : GetSurfaceBoundingBox(record);
  });
}

TEST(SurfaceBoundingBox, CountsWholeCellsOfAUniformSurface) {
  std::vector<z16s> heights(50, 150);
  heights[3] = 100;
  heights[7] = -32768;
  heights[49] = 199;
  EXPECT_EQ(Box(MakeSurfaceOf(10, 5, heights)), "1.5 2.5 4.5, 1 1 1");
  EXPECT_EQ(Box(MakeSurfaceOf<z16s>(1, 1, {-32767})), "1.05 2.1 -324.665, 0.1 0.2 0.01");
}

TEST(SurfaceBoundingBox, TakesTheValidPointsOfACloudOnEachAxis) {
  const std::vector<zPoint3d16s> points{{-10, 20, 300},       {-32768, 5000, 5000},   {9, 69, 399},
                                        {5000, -32768, 5000}, {-5000, -5000, -32768}, {0, 30, 350}};
  EXPECT_EQ(Box(MakeSurfaceOf(3, 2, points)), "1 11 6.5, 2 10 1");
}

TEST(SurfaceBoundingBox, RefusesASurfaceWithoutAValidPoint) {
  const zPoint3d16s bad{0, -32768, 0};
  const Scan records[] = {
      MakeSurfaceOf<z16s>(2, 1, {-32768, -32768}),
      MakeSurfaceOf<z16s>(2, 1, {-32768, 32767}),  // nothing below the largest counts as none
      MakeSurfaceOf<z16s>(0, 3, {}),
      MakeSurfaceOf<z16s>(3, 0, {}),
      MakeSurfaceOf<zPoint3d16s>(2, 1, {bad, bad}),
      MakeSurfaceOf<zPoint3d16s>(1, 1, {{0, 0, 32767}}),
      MakeSurfaceOf<zPoint3d16s>(1, 1, {{0, 32767, 0}}),
      Scan{},
  };
  for (const Scan& record : records) {
    EXPECT_EQ(Box(record), "-997 GetSurfaceBoundingBox: The input surface is empty");
  }
  EXPECT_EQ(Box(MakeSurfaceOf<z8u>(1, 1, {0})),
            "-996 GetSurfaceBoundingBox: Unsupported surface type");
}

TEST(ProfileBoundingBox, IsCentredOnTheOffsetAlongAUniformProfile) {
  EXPECT_EQ(Box(MakeProfileOf<z16s>({150, -32768, 100, 199})), "1 0 4.5, 0.4 0 1");
  EXPECT_EQ(Box(MakeProfileOf<z16s>({32767})), "1 0 330.675, 0.1 0 0.01");
}

TEST(ProfileBoundingBox, TakesTheValidPoints) {
  EXPECT_EQ(Box(MakeProfileOf<zPoint16s>(
                {{-10, 300}, {-32768, 5000}, {9, 399}, {5000, -32768}, {0, 350}})),
            "1 0 6.5, 2 0 1");
}

TEST(ProfileBoundingBox, RefusesAProfileWithoutAValidPoint) {
  const Scan records[] = {
      MakeProfileOf<z16s>({-32768, -32768}),
      MakeProfileOf<zPoint16s>({{-32768, 0}, {0, -32768}}),
      MakeProfileOf<zPoint16s>({{32767, 0}}),
      MakeProfileOf<z16s>({}),
  };
  for (const Scan& record : records) {
    EXPECT_EQ(Box(record), "-997 GetProfileBoundingBox: The input profile is empty");
  }
  EXPECT_EQ(Box(MakeProfileOf<z8u>({0})), "-996 GetProfileBoundingBox: Unsupported profile type");
}

// With vectors of every width, at every length, as a plain loop tells it.
TEST(HeightRange, IsTheSameForEveryWidthOfVectors) {
  std::mt19937 random(1);
  for (zSize size = 0; size < 200; ++size) {
    std::vector<z16s> heights(size);
    HeightRange plain;
    for (z16s& height : heights) {
      constexpr z16s kEdges[] = {-32768, -32767, 32767, 32766, 0};
      const auto draw = static_cast<z32u>(random());
      height = draw % 8 < std::size(kEdges) ? kEdges[draw % 8] : static_cast<z16s>(draw >> 16);
      if (size % 3 == 1) height = kInvalidRaw;
      if (height == kInvalidRaw) {
        plain.hasInvalid = true;
      } else {
        plain.lowest = std::min(plain.lowest, height);
        plain.highest = std::max(plain.highest, height);
      }
    }
    for (const zVectors vectors : {zVectors::baseline, zVectors_Widest()}) {
      const HeightRange range = FindHeightRange(heights, vectors);
      EXPECT_EQ(range.lowest, plain.lowest) << size;
      EXPECT_EQ(range.highest, plain.highest) << size;
      EXPECT_EQ(range.hasInvalid, plain.hasInvalid) << size;
    }
  }
}

}  // namespace
