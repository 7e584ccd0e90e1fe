// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <bit>
#include <cmath>

#include "support/recordings.h"
#include "support/scan_files.h"
#include "support/sur_file.h"

namespace {

using testing::ElementsAre;
using testing::IsNan;

// The 32-bit floats of the file after its header.
std::vector<z32f> PointsOf(const Handle& message, z32u width, z32u height,
                           const char* fields = "x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1") {
  const zBytes bytes = WriteScan(message, PCD);
  const std::string header = Orv::Format(
      "# .PCD v0.7 - Point Cloud Data file format\n# Saved by Brenlow\nVERSION 0.7\nFIELDS %s\n"
      "WIDTH %u\nHEIGHT %u\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS %u\nDATA binary\n",
      fields, width, height, z64u{width} * height);
  EXPECT_THAT(std::string(bytes.begin(), bytes.end()), testing::StartsWith(header));
  std::vector<z32f> floats;
  for (zSize at = header.size(); at < bytes.size(); at += 4) {
    floats.push_back(sur::Get<z32f>(bytes, at));
  }
  return floats;
}

TEST(WritePcd, WritesAUniformSurfaceAsAnOrganisedCloud) {
  const Handle surface = MakeSurface(3, 2, {1, 2, -32768, 4, -5, 6}, {0.5, 0.25, 2}, {10, 20, 0.5});
  const std::vector<z32f> floats = PointsOf(surface, 3, 2);
  EXPECT_THAT(floats, ElementsAre(10, 20, 2.5, 10.5, 20, 4.5, IsNan(), IsNan(), IsNan(), 10, 20.25,
                                  8.5, 10.5, 20.25, -9.5, 11, 20.25, 12.5));
  for (zSize i = 6; i < 9; ++i) EXPECT_EQ(std::bit_cast<z32u>(floats[i]), 0x7FC00000U);
  Handle empty;  // of many rows, which are not walked
  MustBeOk(MxSurfaceMsg_ConstructSimple(empty.Out(), 0, 4294967295, DefaultAlloc()));
  EXPECT_THAT(PointsOf(empty, 0, 4294967295), ElementsAre());
}

TEST(WritePcd, PutsEachPointOfALargeSurfaceInItsPlace) {
  std::vector<z16s> heights(300 * 100);
  for (zSize i = 0; i < heights.size(); ++i) heights[i] = static_cast<z16s>(i);
  const std::vector<z32f> floats = PointsOf(MakeSurface(300, 100, heights), 300, 100);
  ASSERT_EQ(floats.size(), 3 * heights.size());
  for (zSize i = 0; i < heights.size(); ++i) {
    const std::vector<z32f> expected{static_cast<z32f>(i % 300), static_cast<z32f>(i / 300),
                                     static_cast<z32f>(i)};
    ASSERT_EQ(std::vector(&floats[3 * i], &floats[3 * i] + 3), expected) << i;
  }
}

TEST(WritePcd, WritesIntensitiesFrom0To1) {
  const Handle cloud =
      MakeCloudOf(2, 2, {{1, 2, 3}, {0, -32768, 0}, {-32767, 32767, 0}, {0, 0, -32768}},
                  {1, 0.5, 2}, {100, 0, -1});
  MustBeOk(MxSurfaceMsg_AllocateIntensity(cloud.Get(), zType::z8u));
  MustBeOk(
      MxSurfaceMsg_CopyIntensityArray(cloud.Get(), MakeArray2<z8u>(2, 2, {255, 51, 1, 0}).Get()));
  EXPECT_THAT(PointsOf(cloud, 2, 2, "x y z intensity\nSIZE 4 4 4 4\nTYPE F F F F\nCOUNT 1 1 1 1"),
              ElementsAre(101, 1, 5, 1, IsNan(), IsNan(), IsNan(), 51 / 255.0F, -32667, 16383.5, -1,
                          1 / 255.0F, IsNan(), IsNan(), IsNan(), 0));
  EXPECT_EQ(GetSurfaceIntensity(cloud.Get(), 1, 0), 51);
  EXPECT_EQ(GetSurfaceIntensity(cloud.Get(), 0, 1), 1);
  for (const auto& [x, y] : {std::pair{2, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
    EXPECT_EQ(Thrown([&, x = x, y = y] { GetSurfaceIntensity(cloud.Get(), x, y); }),
              "-997 GetSurfaceIntensity: Invalid pixel index.")
        << x << ' ' << y;
  }
}

TEST(AllPointsPcd, AreAppendedToAListOfTheirType) {
  const Handle surface = MakeSurface(2, 1, {3, -32768}, {1, 1, 1}, {0.5, 0, 0});
  Handle list;
  GetAllPointsPcd(surface.Get(), list, DefaultAlloc());
  GetAllPointsPcd(surface.Get(), list, DefaultAlloc());
  ASSERT_EQ(zArrayList_Count(list.Get()), 4U);
  const auto* points = static_cast<const zPoint3d32f*>(zArrayList_At(list.Get(), 0));
  EXPECT_EQ(points[2].x, 0.5F);
  EXPECT_EQ(points[2].z, 3);
  EXPECT_TRUE(std::isnan(points[3].y));
  EXPECT_EQ(zArrayList_At(list.Get(), 4), nullptr);
  Handle texts;
  MustBeOk(zArrayList_Construct(texts.Out(), zType::zString, 1, DefaultAlloc()));
  EXPECT_EQ(Thrown([&] { GetAllPointsPcd(surface.Get(), texts, DefaultAlloc()); }),
            "-984 GetAllPointsPcd: ");
}

}  // namespace
