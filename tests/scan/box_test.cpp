// SPDX-License-Identifier: MIT
#include "scan/box.h"

#include <gtest/gtest.h>

#include <random>

#include "getfilestream/getfilestream.h"
#include "scan/heightrange.h"
#include "support/scans.h"

namespace {

template <class Item>
Scan Make(ScanKind kind, const std::vector<Item>& items, z32u length = 1) {
  const z32u width = static_cast<z32u>(items.size()) / length;
  const Handle points = MakeArray2(length, width, items);
  return {kind, width, length, {0.1, 0.2, 0.01}, {1, 2, 3}, points, {}, {}, {}, {}, {}};
}

// "centre, size", or the error.
std::string Text(const Scan& scan) {
  BoundingBox6 box{};
  const std::string error = Thrown(
      [&] { box = scan.IsProfile() ? GetProfileBoundingBox(scan) : GetSurfaceBoundingBox(scan); });
  if (!error.empty()) return error;
  const auto& [c, s] = box;
  return Orv::Format("%.12g %.12g %.12g, %.12g %.12g %.12g", c.x, c.y, c.z, s.x, s.y, s.z);
}

TEST(Box, HoldsTheValidPoints) {
  const std::string noSurface = "-997 GetSurfaceBoundingBox: The input surface is empty";
  const std::string noProfile = "-997 GetProfileBoundingBox: The input profile is empty";
  using enum ScanKind;
  using Heights = std::vector<z16s>;
  using Cloud = std::vector<zPoint3d16s>;
  using Trace = std::vector<zPoint16s>;
  const struct {
    const char* what;
    Scan scan;
    std::string text;
  } rows[] = {
      {"whole cells", Make(surface, Heights{150, -32768, 100, 199}, 2), "1.1 2.2 4.5, 0.2 0.4 1"},
      {"nothing below the largest height", Make(surface, Heights{-32768, 32767}), noSurface},
      {"no surface", {}, noSurface},
      {"other points", Make<z8u>(surface, {0}),
       "-996 GetSurfaceBoundingBox: Unsupported surface type"},
      {"each axis", Make(cloud, Cloud{{-10, 20, 300}, {9, 69, 399}, {0, 30, 350}}),
       "1 11 6.5, 2 10 1"},
      {"x at the largest", Make(cloud, Cloud{{32767, 0, 0}}), noSurface},
      {"y at the largest", Make(cloud, Cloud{{0, 32767, 0}}), noSurface},
      {"z at the largest", Make(cloud, Cloud{{0, 0, 32767}}), noSurface},
      {"profile at its offset", Make(profile, Heights{150, -32768, 100, 199}), "1 0 4.5, 0.4 0 1"},
      {"largest height", Make(profile, Heights{32767}), "1 0 330.675, 0.1 0 0.01"},
      {"no height in a profile", Make(profile, Heights{-32768, -32768}), noProfile},
      {"other points in a profile", Make<z8u>(profile, {0}),
       "-996 GetProfileBoundingBox: Unsupported profile type"},
      {"points", Make(pointProfile, Trace{{-10, 300}, {-32768, 5000}, {9, 399}, {5, -32768}}),
       "1 0 6.5, 2 0 1"},
      {"no points", Make(pointProfile, Trace{{-32768, 0}, {0, -32768}}), noProfile},
  };
  for (const auto& row : rows) EXPECT_EQ(Text(row.scan), row.text) << row.what;
}

// Points are looked at in groups, where none of a group is invalid at once.
TEST(Box, HoldsThePointsAtAnyPlaceInACloud) {
  for (zSize at = 0; at < 100; ++at) {
    std::vector<zPoint3d16s> points(100 + at % 3, {100, 100, 100});
    points[at] = {-10, 20, 30};
    points[(at + 1) % 100] = {-30000, 30000, kInvalidRaw};
    points[(at + 29) % 100] = {109, 119, 149};
    EXPECT_EQ(Text(Make(ScanKind::cloud, points)), "6 16 3.9, 12 20 1.2") << at;
  }
}

// With vectors of every width, at every length, as a plain loop tells it.
TEST(HeightRange, IsTheSameForEveryWidthOfVectors) {
  std::mt19937 random(1);
  for (zSize size = 0; size < 200; ++size) {
    std::vector<z16s> heights(size), valid;
    for (z16s& height : heights) {
      constexpr z16s kEdges[] = {-32768, -32767, 32767, 32766, 0};
      height = size % 3 == 1 ? kInvalidRaw : kEdges[random() % 5];
      if (height != kInvalidRaw) valid.push_back(height);
    }
    for (const zVectors vectors : {zVectors::baseline, zVectors_Widest()}) {
      const HeightRange range = FindHeightRange(heights, vectors);
      EXPECT_EQ(range.lowest, valid.empty() ? 32767 : std::ranges::min(valid)) << size;
      EXPECT_EQ(range.highest, valid.empty() ? -32768 : std::ranges::max(valid)) << size;
      EXPECT_EQ(range.hasInvalid, valid.size() != size) << size;
    }
  }
}

}  // namespace
