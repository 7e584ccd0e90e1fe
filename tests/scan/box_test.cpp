// SPDX-License-Identifier: MIT
#include "scan/box.h"

#include <gmock/gmock.h>

#include <array>
#include <random>

#include "getfilestream/getfilestream.h"
#include "scan/heightrange.h"
#include "support/scans.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

template <class Item>
Scan Make(ScanKind kind, z32u width, z32u length, const std::vector<Item>& items) {
  Scan scan;
  scan.kind = kind;
  scan.width = width;
  scan.length = length;
  scan.scale = {0.1, 0.2, 0.01};
  scan.offset = {1, 2, 3};
  scan.points = MakeArray2(length, width, items);
  return scan;
}
Scan Surface(z32u width, z32u length, const std::vector<z16s>& heights) {
  return Make(ScanKind::surface, width, length, heights);
}
Scan Cloud(const std::vector<zPoint3d16s>& points) {
  return Make(ScanKind::cloud, 1, static_cast<z32u>(points.size()), points);
}
Scan Profile(const std::vector<z16s>& heights) {
  return Make(ScanKind::profile, static_cast<z32u>(heights.size()), 1, heights);
}
Scan Trace(const std::vector<zPoint16s>& points) {
  return Make(ScanKind::pointProfile, static_cast<z32u>(points.size()), 1, points);
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
  std::vector<z16s> heights(50, 150);
  heights[3] = 100;
  heights[7] = -32768;
  heights[49] = 199;
  const struct {
    const char* what;
    Scan scan;
    std::string text;
  } rows[] = {
      {"whole cells", Surface(10, 5, heights), "1.5 2.5 4.5, 1 1 1"},
      {"one height", Surface(1, 1, {-32767}), "1.05 2.1 -324.665, 0.1 0.2 0.01"},
      {"no height", Surface(2, 1, {-32768, -32768}), noSurface},
      {"nothing below the largest height", Surface(2, 1, {-32768, 32767}), noSurface},
      {"no columns", Surface(0, 3, {}), noSurface},
      {"no rows", Surface(3, 0, {}), noSurface},
      {"no surface", {}, noSurface},
      {"other points", Make<z8u>(ScanKind::surface, 1, 1, {0}),
       "-996 GetSurfaceBoundingBox: Unsupported surface type"},
      {"each axis",
       Cloud({{-10, 20, 300},
              {-32768, 5000, 5000},
              {9, 69, 399},
              {5000, -32768, 5000},
              {-5000, -5000, -32768},
              {0, 30, 350}}),
       "1 11 6.5, 2 10 1"},
      {"no point", Cloud({{0, -32768, 0}, {0, 0, -32768}}), noSurface},
      {"x at the largest", Cloud({{32767, 0, 0}}), noSurface},
      {"y at the largest", Cloud({{0, 32767, 0}}), noSurface},
      {"z at the largest", Cloud({{0, 0, 32767}}), noSurface},
      {"profile at its offset", Profile({150, -32768, 100, 199}), "1 0 4.5, 0.4 0 1"},
      {"largest height", Profile({32767}), "1 0 330.675, 0.1 0 0.01"},
      {"no height in a profile", Profile({-32768, -32768}), noProfile},
      {"no profile", Profile({}), noProfile},
      {"other points in a profile", Make<z8u>(ScanKind::profile, 1, 1, {0}),
       "-996 GetProfileBoundingBox: Unsupported profile type"},
      {"points", Trace({{-10, 300}, {-32768, 5000}, {9, 399}, {5000, -32768}, {0, 350}}),
       "1 0 6.5, 2 0 1"},
      {"no points", Trace({{-32768, 0}, {0, -32768}}), noProfile},
      {"point at the largest", Trace({{32767, 0}}), noProfile},
  };
  for (const auto& row : rows) EXPECT_EQ(Text(row.scan), row.text) << row.what;
}

// Points are looked at in groups, where none of a group is invalid at once.
TEST(Box, IsThatOfAPlainLoopForACloudOfAnyLength) {
  std::mt19937 random(1);
  const auto draw = [&] { return static_cast<z16s>(random() % 20000 - 10000); };
  for (zSize count = 1; count < 300; ++count) {
    std::vector<zPoint3d16s> points(count);
    z64f low[] = {1e5, 1e5, 1e5}, high[] = {-1e5, -1e5, -1e5};
    for (zPoint3d16s& point : points) {
      point = {draw(), draw(), draw()};
      const bool valid = &point == &points[0] || random() % 20 != 0;
      if (valid) {
        const z64f raws[] = {1.0 * point.x, 1.0 * point.y, 1.0 * point.z};
        for (int axis = 0; axis < 3; ++axis) {
          low[axis] = std::min(low[axis], raws[axis]);
          high[axis] = std::max(high[axis], raws[axis]);
        }
      } else {
        (count % 3 == 0 ? point.x : count % 3 == 1 ? point.y : point.z) = kInvalidRaw;
      }
    }
    Scan scan = Cloud(points);
    scan.scale = {1, 1, 1};
    scan.offset = {};
    const auto [c, s] = FindBox(scan).value_or(BoundingBox6{});
    EXPECT_THAT((std::array{c.x - s.x / 2, c.y - s.y / 2, c.z - s.z / 2}), ElementsAreArray(low));
    EXPECT_THAT((std::array{s.x, s.y, s.z}),
                ElementsAre(high[0] - low[0] + 1, high[1] - low[1] + 1, high[2] - low[2] + 1))
        << count << " points";
  }
}

// With vectors of every width, at every length, as a plain loop tells it.
TEST(HeightRange, IsTheSameForEveryWidthOfVectors) {
  std::mt19937 random(1);
  for (zSize size = 0; size < 200; ++size) {
    std::vector<z16s> heights(size, kInvalidRaw);
    std::vector<z16s> valid;
    for (z16s& height : heights) {
      if (size % 3 == 1) break;
      constexpr z16s kEdges[] = {-32768, -32767, 32767, 32766, 0};
      const auto draw = static_cast<z32u>(random());
      height = draw % 8 < std::size(kEdges) ? kEdges[draw % 8] : static_cast<z16s>(draw >> 16);
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
