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
std::vector<z32f> PointsOf(const Handle& message, const std::string& fields) {
  const zBytes bytes = WriteScan(message, PCD);
  const std::string header =
      "# .PCD v0.7 - Point Cloud Data file format\n# Saved by Brenlow\nVERSION 0.7\n" + fields;
  EXPECT_THAT(std::string(bytes.begin(), bytes.end()), testing::StartsWith(header));
  std::vector<z32f> floats;
  for (zSize at = header.size(); at < bytes.size(); at += 4) {
    floats.push_back(sur::Get<z32f>(bytes, at));
  }
  return floats;
}

TEST(WritePcd, WritesAUniformSurfaceAsAnOrganisedCloud) {
  const Handle surface = MakeSurface(3, 2, {1, 2, -32768, 4, -5, 6}, {0.5, 0.25, 2}, {10, 20, 0.5});
  const std::vector<z32f> floats =
      PointsOf(surface,
               "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 3\nHEIGHT 2\n"
               "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 6\nDATA binary\n");
  EXPECT_THAT(floats, ElementsAre(10, 20, 2.5, 10.5, 20, 4.5, IsNan(), IsNan(), IsNan(), 10, 20.25,
                                  8.5, 10.5, 20.25, -9.5, 11, 20.25, 12.5));
  for (zSize i = 6; i < 9; ++i) EXPECT_EQ(std::bit_cast<z32u>(floats[i]), 0x7FC00000U);
}

TEST(WritePcd, WritesIntensitiesFrom0To1) {
  const Handle cloud =
      MakeCloudOf(2, 2, {{1, 2, 3}, {0, -32768, 0}, {-32767, 32767, 0}, {0, 0, -32768}},
                  {1, 0.5, 2}, {100, 0, -1});
  MustBeOk(MxSurfaceMsg_AllocateIntensity(cloud.Get(), zType::z8u));
  MustBeOk(
      MxSurfaceMsg_CopyIntensityArray(cloud.Get(), MakeArray2<z8u>(2, 2, {255, 51, 1, 0}).Get()));
  EXPECT_THAT(PointsOf(cloud,
                       "FIELDS x y z intensity\nSIZE 4 4 4 4\nTYPE F F F F\nCOUNT 1 1 1 1\n"
                       "WIDTH 2\nHEIGHT 2\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS 4\nDATA binary\n"),
              ElementsAre(101, 1, 5, 1, IsNan(), IsNan(), IsNan(), 51 / 255.0F, -32667, 16383.5, -1,
                          1 / 255.0F, IsNan(), IsNan(), IsNan(), 0));
  EXPECT_EQ(GetSurfaceIntensity(cloud.Get(), 1, 0), 51);
  EXPECT_EQ(GetSurfaceIntensity(cloud.Get(), 0, 1), 1);
  for (const auto& [x, y] : {std::pair{2, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
    EXPECT_EQ(Thrown([&, x = x, y = y] { GetSurfaceIntensity(cloud.Get(), x, y); }),
              "-997 GetSurfaceIntensity: Invalid pixel index.");
  }
}

TEST(WritePcd, DoesNotWalkRowsOfNoPoints) {
  Handle surface;
  MustBeOk(MxSurfaceMsg_ConstructSimple(surface.Out(), 0, 4294967295, DefaultAlloc()));
  const zBytes bytes = WriteScan(surface, PCD);
  EXPECT_THAT(std::string(bytes.begin(), bytes.end()),
              testing::EndsWith("WIDTH 0\nHEIGHT 4294967295\nVIEWPOINT 0 0 0 1 0 0 0\n"
                                "POINTS 0\nDATA binary\n"));
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
  Handle texts;
  MustBeOk(zArrayList_Construct(texts.Out(), zType::zString, 1, DefaultAlloc()));
  EXPECT_EQ(Thrown([&] { GetAllPointsPcd(surface.Get(), texts, DefaultAlloc()); }),
            "-984 GetAllPointsPcd: ");
  // The points are looked at before the list.
  EXPECT_EQ(
      Thrown([&] { GetAllPointsPcd(MakeProfile(zType::z16s, 1).Get(), texts, DefaultAlloc()); }),
      "-996 GetAllPointsPcd: ");
}

// A depth image: what was not seen is NaN. Through a message and back, a coordinate moves by half a
// step of its axis at most, and by the roundings to 32 bits on the way.
TEST(WritePcd, KeepsACloudWithinHalfAStep) {
  constexpr z32u kWidth = 64;
  constexpr z32u kLength = 48;
  std::vector<zPoint3d32f> points;
  for (z32u row = 0; row < kLength; ++row) {
    for (z32u column = 0; column < kWidth; ++column) {
      const auto depth =
          static_cast<z32f>(1.3 + 0.4 * std::sin(0.2 * column) * std::cos(0.1 * row));
      const z32f x = (static_cast<z32f>(column) - 31.5F) * depth / 525;
      const z32f y = (static_cast<z32f>(row) - 23.5F) * depth / 525;
      const bool seen = (row * 7 + column) % 11 != 0;
      points.push_back(seen ? zPoint3d32f{x, y, depth} : zPoint3d32f{NAN, NAN, NAN});
    }
  }
  std::string header =
      "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 64\nHEIGHT 48\n"
      "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 3072\nDATA binary\n";
  const std::string_view data(reinterpret_cast<const char*>(points.data()),
                              points.size() * sizeof(zPoint3d32f));
  const zBytes file = ToBytes(header.append(data));

  Handle cloud;
  GenerateSurfaceMsgFromBuffer(cloud, file, PcdOptions{}, DefaultAlloc());
  EXPECT_FALSE(MxSurfaceMsg_IsResampled(cloud.Get()));
  EXPECT_EQ(MxSurfaceMsg_Width(cloud.Get()), kWidth);
  Handle list;
  GetAllPointsPcd(cloud.Get(), list, DefaultAlloc());
  const auto* back = static_cast<const zPoint3d32f*>(zArrayList_At(list.Get(), 0));
  const zPoint3d64f step = *MxSurfaceMsg_Scale(cloud.Get());
  const auto near = [](z32f a, z32f b, z64f scale) {
    const z64f rounding = 0x1p-24 * static_cast<z64f>(std::max(std::abs(a), std::abs(b)));
    return std::abs(static_cast<z64f>(a) - static_cast<z64f>(b)) <= scale / 2 + 2 * rounding;
  };
  const zBytes written = WriteScan(cloud, PCD);
  const auto* records = reinterpret_cast<const z8u*>(back);
  EXPECT_TRUE(std::equal(records, records + points.size() * sizeof(zPoint3d32f),
                         written.end() - std::ssize(points) * 12));
  for (zSize i = 0; i < points.size(); ++i) {
    if (std::isnan(points[i].x)) {
      EXPECT_TRUE(std::isnan(back[i].x) && std::isnan(back[i].y) && std::isnan(back[i].z)) << i;
    } else {
      EXPECT_TRUE(near(points[i].x, back[i].x, step.x) && near(points[i].y, back[i].y, step.y) &&
                  near(points[i].z, back[i].z, step.z))
          << i;
    }
  }
}

}  // namespace
