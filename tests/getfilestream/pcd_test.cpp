// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <bit>
#include <cmath>

#include "getfilestream/getfilestream.h"
#include "support/recordings.h"
#include "support/sur_file.h"

namespace {

zAlloc Alloc() { return &zAllocator::Default(); }

zBytes WritePcd(MxMsg message) {
  const Handle stream = MakeStream();
  EXPECT_EQ(GetPcdFileStream(message, stream.Get(), Alloc()), zOK);
  return BytesOf(stream.Get());
}

// The 32-bit floats after a text.
std::vector<z32f> FloatsAfter(const zBytes& bytes, const std::string& header) {
  const std::string text(bytes.begin(), bytes.end());
  EXPECT_THAT(text, testing::StartsWith(header));
  std::vector<z32f> floats;
  for (zSize at = header.size(); at < bytes.size(); at += 4) {
    floats.push_back(sur::Get<z32f>(bytes, at));
  }
  return floats;
}

Handle MakeCloudOf(z32u width, z32u length, const std::vector<zPoint3d16s>& points) {
  Handle cloud;
  MustBeOk(MxSurfaceMsg_ConstructUnresampledSimple(cloud.Out(), width, length, Alloc()));
  MustBeOk(MxSurfaceMsg_CopyPointsArray(cloud.Get(), MakeArray2(length, width, points).Get()));
  const zPoint3d64f scale{1, 0.5, 2};
  const zPoint3d64f offset{100, 0, -1};
  MustBeOk(MxSurfaceMsg_SetScale(cloud.Get(), &scale));
  MustBeOk(MxSurfaceMsg_SetOffset(cloud.Get(), &offset));
  return cloud;
}

TEST(WritePcd, WritesAUniformSurfaceAsAnOrganisedCloud) {
  const Handle surface = MakeSurface(3, 2, {1, 2, -32768, 4, -5, 6}, {0.5, 0.25, 2}, {10, 20, 0.5});
  const std::vector<z32f> floats = FloatsAfter(WritePcd(surface.Get()),
                                               "# .PCD v0.7 - Point Cloud Data file format\n"
                                               "# Saved by Brenlow\n"
                                               "VERSION 0.7\n"
                                               "FIELDS x y z\n"
                                               "SIZE 4 4 4\n"
                                               "TYPE F F F\n"
                                               "COUNT 1 1 1\n"
                                               "WIDTH 3\n"
                                               "HEIGHT 2\n"
                                               "VIEWPOINT 0 0 0 1 0 0 0\n"
                                               "POINTS 6\n"
                                               "DATA binary\n");
  ASSERT_EQ(floats.size(), 18U);
  for (zSize i = 6; i < 9; ++i) EXPECT_EQ(std::bit_cast<z32u>(floats[i]), 0x7FC00000U);
  EXPECT_EQ((std::vector(floats.begin(), floats.begin() + 6)),
            (std::vector<z32f>{10, 20, 2.5, 10.5, 20, 4.5}));
  EXPECT_EQ((std::vector(floats.begin() + 12, floats.end())),
            (std::vector<z32f>{10.5, 20.25, -9.5, 11, 20.25, 12.5}));
}

TEST(WritePcd, WritesIntensitiesFrom0To1) {
  const Handle cloud =
      MakeCloudOf(2, 2, {{1, 2, 3}, {0, -32768, 0}, {-32767, 32767, 0}, {0, 0, -32768}});
  MustBeOk(MxSurfaceMsg_AllocateIntensity(cloud.Get(), zType::z8u));
  const std::span<z8u> bytes = zArray_EditableItems<z8u>(MxSurfaceMsg_Intensities(cloud.Get(), 0));
  bytes[0] = 255;
  bytes[1] = 51;
  bytes[2] = 1;
  const std::vector<z32f> floats = FloatsAfter(WritePcd(cloud.Get()),
                                               "# .PCD v0.7 - Point Cloud Data file format\n"
                                               "# Saved by Brenlow\n"
                                               "VERSION 0.7\n"
                                               "FIELDS x y z intensity\n"
                                               "SIZE 4 4 4 4\n"
                                               "TYPE F F F F\n"
                                               "COUNT 1 1 1 1\n"
                                               "WIDTH 2\n"
                                               "HEIGHT 2\n"
                                               "VIEWPOINT 0 0 0 1 0 0 0\n"
                                               "POINTS 4\n"
                                               "DATA binary\n");
  using testing::ElementsAre;
  using testing::IsNan;
  EXPECT_THAT(floats, ElementsAre(101, 1, 5, 1, IsNan(), IsNan(), IsNan(), 51 / 255.0F, -32667,
                                  16383.5, -1, 1 / 255.0F, IsNan(), IsNan(), IsNan(), 0));
  EXPECT_EQ(GetSurfaceIntensity(cloud.Get(), 1, 0), 51);
  EXPECT_EQ(GetSurfaceIntensity(cloud.Get(), 0, 1), 1);
  for (const auto& [x, y] : {std::pair{2, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
    EXPECT_EQ(Thrown([&, x = x, y = y] { GetSurfaceIntensity(cloud.Get(), x, y); }),
              "-997 GetSurfaceIntensity: Invalid pixel index.");
  }
}

TEST(WritePcd, RefusesWhatIsNoSurface) {
  const Handle stream = MakeStream();
  for (const Handle& message : {Handle(), MakeProfile(zType::z16s, 1)}) {
    EXPECT_EQ(GetPcdFileStream(message.Get(), stream.Get(), Alloc()), kRefused);
  }
  EXPECT_EQ(GetPcdFileStream(MakeCloud(1).Get(), nullptr, Alloc()), kRefused);
  EXPECT_EQ(zMemory_Length(stream.Get()), 0U);
  const z8u buffer[1024]{};  // attached to memory, a stream cannot be written
  MustBeOk(zMemory_Attach(stream.Get(), buffer, 0, sizeof buffer, sizeof buffer));
  EXPECT_EQ(GetPcdFileStream(MakeCloud(1).Get(), stream.Get(), Alloc()), zERROR_STREAM);
}

TEST(WritePcd, DoesNotWalkRowsOfNoPoints) {
  Handle surface;
  MustBeOk(MxSurfaceMsg_ConstructSimple(surface.Out(), 0, 4294967295, Alloc()));
  const zBytes bytes = WritePcd(surface.Get());
  EXPECT_THAT(std::string(bytes.begin(), bytes.end()),
              testing::EndsWith("WIDTH 0\nHEIGHT 4294967295\nVIEWPOINT 0 0 0 1 0 0 0\n"
                                "POINTS 0\nDATA binary\n"));
}

TEST(AllPointsPcd, AreAppendedToAListOfTheirType) {
  const Handle surface = MakeSurface(2, 1, {3, -32768}, {1, 1, 1}, {0.5, 0, 0});
  Handle list;
  GetAllPointsPcd(surface.Get(), list, Alloc());
  GetAllPointsPcd(surface.Get(), list, Alloc());
  ASSERT_EQ(zArrayList_Count(list.Get()), 4U);
  const auto* points = static_cast<const zPoint3d32f*>(zArrayList_At(list.Get(), 0));
  EXPECT_EQ(points[2].x, 0.5F);
  EXPECT_EQ(points[2].z, 3);
  EXPECT_TRUE(std::isnan(points[3].y));
  Handle texts;
  MustBeOk(zArrayList_Construct(texts.Out(), zType::zString, 1, Alloc()));
  EXPECT_EQ(Thrown([&] { GetAllPointsPcd(surface.Get(), texts, Alloc()); }),
            "-984 GetAllPointsPcd: ");
  // The points are looked at before the list.
  EXPECT_EQ(Thrown([&] { GetAllPointsPcd(MakeProfile(zType::z16s, 1).Get(), texts, Alloc()); }),
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
  GenerateSurfaceMsgFromBuffer(cloud, file, 0, 0, false, nullptr, nullptr, Alloc());
  EXPECT_FALSE(MxSurfaceMsg_IsResampled(cloud.Get()));
  EXPECT_EQ(MxSurfaceMsg_Width(cloud.Get()), kWidth);
  Handle list;
  GetAllPointsPcd(cloud.Get(), list, Alloc());
  const auto* back = static_cast<const zPoint3d32f*>(zArrayList_At(list.Get(), 0));
  const zPoint3d64f step = *MxSurfaceMsg_Scale(cloud.Get());
  const auto near = [](z32f a, z32f b, z64f scale) {
    const z64f rounding = 0x1p-24 * static_cast<z64f>(std::max(std::abs(a), std::abs(b)));
    return std::abs(static_cast<z64f>(a) - static_cast<z64f>(b)) <= scale / 2 + 2 * rounding;
  };
  const zBytes written = WritePcd(cloud.Get());
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
