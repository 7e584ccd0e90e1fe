// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "getfilestream/getfilestream.h"
#include "support/scans.h"

namespace {

constexpr const char* kEmpty = "-997 GetSurfaceBoundingBox: The input surface is empty";

template <class Item>
SurfaceBuffer MakeRecord(z32u width, z32u length, const std::vector<Item>& items) {
  SurfaceBuffer record;
  record.width = width;
  record.length = length;
  record.scale = {0.1, 0.2, 0.01};
  record.offset = {1, 2, 3};
  record.points = MakeArray2(length, width, items);
  return record;
}

template <class Item>
ProfileBuffer MakeProfileRecord(const std::vector<Item>& items) {
  ProfileBuffer record;
  record.count = static_cast<z32u>(items.size());
  record.scale = {0.1, 0.2, 0.01};
  record.offset = {1, 2, 3};
  record.points = MakeArray2(static_cast<z64s>(items.size()), 1, items);
  return record;
}

void ExpectBox(const BoundingBox6& box, const zPoint3d64f& center, const zPoint3d64f& size) {
  EXPECT_DOUBLE_EQ(box.center.x, center.x);
  EXPECT_DOUBLE_EQ(box.center.y, center.y);
  EXPECT_DOUBLE_EQ(box.center.z, center.z);
  EXPECT_DOUBLE_EQ(box.size.x, size.x);
  EXPECT_DOUBLE_EQ(box.size.y, size.y);
  EXPECT_DOUBLE_EQ(box.size.z, size.z);
}
void ExpectBox(const SurfaceBuffer& record, const zPoint3d64f& center, const zPoint3d64f& size) {
  ExpectBox(GetSurfaceBoundingBox(record), center, size);
}

TEST(SurfaceBoundingBox, CountsWholeCellsOfAUniformSurface) {
  std::vector<z16s> heights(50, 150);
  heights[3] = 100;
  heights[7] = -32768;
  heights[49] = 199;
  ExpectBox(MakeRecord(10, 5, heights), {1.5, 2.5, 4.5}, {1, 1, 1});
  ExpectBox(MakeRecord<z16s>(1, 1, {-32767}), {1.05, 2.1, 3 - 327.67 + 0.005}, {0.1, 0.2, 0.01});
}

TEST(SurfaceBoundingBox, TakesTheValidPointsOfACloudOnEachAxis) {
  const std::vector<zPoint3d16s> points{{-10, 20, 300},       {-32768, 5000, 5000},   {9, 69, 399},
                                        {5000, -32768, 5000}, {-5000, -5000, -32768}, {0, 30, 350}};
  ExpectBox(MakeRecord(3, 2, points), {1, 11, 6.5}, {2, 10, 1});
}

TEST(SurfaceBoundingBox, RefusesASurfaceWithoutAValidPoint) {
  const zPoint3d16s bad{0, -32768, 0};
  const SurfaceBuffer records[] = {
      MakeRecord<z16s>(2, 1, {-32768, -32768}),
      MakeRecord<z16s>(2, 1, {-32768, 32767}),  // nothing below the largest value counts as none
      MakeRecord<z16s>(0, 3, {}),
      MakeRecord<z16s>(3, 0, {}),
      MakeRecord<zPoint3d16s>(2, 1, {bad, bad}),
      MakeRecord<zPoint3d16s>(1, 1, {{0, 0, 32767}}),
      MakeRecord<zPoint3d16s>(1, 1, {{0, 32767, 0}}),
      SurfaceBuffer{},
  };
  for (const SurfaceBuffer& record : records) {
    EXPECT_EQ(Thrown([&] { GetSurfaceBoundingBox(record); }), kEmpty);
  }
}

TEST(SurfaceBoundingBox, RefusesOtherPoints) {
  EXPECT_EQ(Thrown([] { GetSurfaceBoundingBox(MakeRecord<z8u>(1, 1, {0})); }),
            "-996 GetSurfaceBoundingBox: Unsupported surface type");
}

TEST(ProfileBoundingBox, IsCentredOnTheOffsetAlongAUniformProfile) {
  const ProfileBuffer record = MakeProfileRecord<z16s>({150, -32768, 100, 199});
  ExpectBox(GetProfileBoundingBox(record), {1, 0, 4.5}, {0.4, 0, 1});
  const ProfileBuffer high = MakeProfileRecord<z16s>({32767});
  ExpectBox(GetProfileBoundingBox(high), {1, 0, 330.675}, {0.1, 0, 0.01});
}

TEST(ProfileBoundingBox, TakesTheValidPoints) {
  const ProfileBuffer record = MakeProfileRecord<zPoint16s>(
      {{-10, 300}, {-32768, 5000}, {9, 399}, {5000, -32768}, {0, 350}});
  ExpectBox(GetProfileBoundingBox(record), {1, 0, 6.5}, {2, 0, 1});
}

TEST(ProfileBoundingBox, RefusesAProfileWithoutAValidPoint) {
  const ProfileBuffer records[] = {
      MakeProfileRecord<z16s>({-32768, -32768}),
      MakeProfileRecord<zPoint16s>({{-32768, 0}, {0, -32768}}),
      MakeProfileRecord<zPoint16s>({{32767, 0}}),
      ProfileBuffer{},
  };
  for (const ProfileBuffer& record : records) {
    EXPECT_EQ(Thrown([&] { GetProfileBoundingBox(record); }),
              "-997 GetProfileBoundingBox: The input profile is empty");
  }
  EXPECT_EQ(Thrown([] { GetProfileBoundingBox(MakeProfileRecord<z8u>({0})); }),
            "-996 GetProfileBoundingBox: Unsupported profile type");
}

}  // namespace
