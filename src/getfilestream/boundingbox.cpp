// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cstring>

#include "getfilestream/getfilestream.h"
#include "getfilestream/heightrange.h"

namespace {

constexpr const char* kSurface = "GetSurfaceBoundingBox";
constexpr const char* kProfile = "GetProfileBoundingBox";
constexpr const char* kFile = "getfilestream";

Orv::Exception EmptySurface(int line) {
  return {line, kFile, kBadInput, kSurface, "The input surface is empty"};
}
Orv::Exception EmptyProfile(int line) {
  return {line, kFile, kBadInput, kProfile, "The input profile is empty"};
}

struct Extent {
  double center, size;
};

// Of raw values, each of which stands for a cell of one step.
Extent RawExtent(z16s lowest, z16s highest, double scale, double offset) {
  const double size = (highest - lowest + 1) * scale;
  return {lowest * scale + offset + size / 2, size};
}

// Of the columns or rows of a grid.
Extent GridExtent(z32u count, double scale, double offset) {
  const double size = count * scale;
  return {offset + size / 2, size};
}

// Smallest and largest raw value of one axis.
struct RawRange {
  z16s lowest = 32767;
  z16s highest = -32768;

  void Include(z16s raw) {
    lowest = std::min(lowest, raw);
    highest = std::max(highest, raw);
  }
};

// The ranges of a cloud's axes. Groups without an invalid point, which are most, are taken as runs
// of coordinates, so that compilers make vector instructions of them.
class CloudRange {
 public:
  static constexpr zSize kGroup = 16;  // points

  void Include(const zPoint3d16s& point) {
    if (point.x == kInvalidRaw || point.y == kInvalidRaw || point.z == kInvalidRaw) return;
    single_[0].Include(point.x);
    single_[1].Include(point.y);
    single_[2].Include(point.z);
  }

  void IncludeGroup(std::span<const zPoint3d16s, kGroup> points) {
    std::array<z16s, kLanes> raws;
    static_assert(sizeof raws == kGroup * sizeof(zPoint3d16s));
    std::memcpy(raws.data(), points.data(), sizeof raws);
    z16s least = 32767;
    for (const z16s raw : raws) least = std::min(least, raw);
    if (least == kInvalidRaw) {
      for (const zPoint3d16s& point : points) Include(point);
      return;
    }
    for (zSize i = 0; i < kLanes; ++i) {
      lowest_[i] = std::min(lowest_[i], raws[i]);
      highest_[i] = std::max(highest_[i], raws[i]);
    }
  }

  std::array<RawRange, 3> Ranges() const {
    std::array<RawRange, 3> ranges = single_;
    for (zSize i = 0; i < kLanes; ++i) {
      RawRange& range = ranges[i % 3];
      range.lowest = std::min(range.lowest, lowest_[i]);
      range.highest = std::max(range.highest, highest_[i]);
    }
    return ranges;
  }

 private:
  static constexpr zSize kLanes = 3 * kGroup;  // x, y, z of each point in turn

  template <z16s Value>
  static constexpr std::array<z16s, kLanes> Filled() {
    std::array<z16s, kLanes> lanes{};
    lanes.fill(Value);
    return lanes;
  }

  std::array<RawRange, 3> single_{};
  std::array<z16s, kLanes> lowest_ = Filled<32767>();
  std::array<z16s, kLanes> highest_ = Filled<-32768>();
};

BoundingBox6 MakeBox(const Extent& x, const Extent& y, const Extent& z) {
  return {{x.center, y.center, z.center}, {x.size, y.size, z.size}};
}

BoundingBox6 UniformBox(const SurfaceBuffer& record) {
  const HeightRange range = FindHeightRange(zArray_Items<z16s>(record.points.Get()));
  if (range.lowest == 32767 || range.highest == -32768) throw EmptySurface(__LINE__);
  const zPoint3d64f& scale = record.scale;
  const zPoint3d64f& offset = record.offset;
  return MakeBox(GridExtent(record.width, scale.x, offset.x),
                 GridExtent(record.length, scale.y, offset.y),
                 RawExtent(range.lowest, range.highest, scale.z, offset.z));
}

BoundingBox6 PointCloudBox(const SurfaceBuffer& record) {
  CloudRange cloud;
  std::span<const zPoint3d16s> points = zArray_Items<zPoint3d16s>(record.points.Get());
  for (; points.size() >= CloudRange::kGroup; points = points.subspan(CloudRange::kGroup)) {
    cloud.IncludeGroup(points.first<CloudRange::kGroup>());
  }
  for (const zPoint3d16s& point : points) cloud.Include(point);
  const auto [x, y, z] = cloud.Ranges();
  if (x.lowest == 32767 || y.lowest == 32767 || z.lowest == 32767) throw EmptySurface(__LINE__);
  const zPoint3d64f& scale = record.scale;
  const zPoint3d64f& offset = record.offset;
  return MakeBox(RawExtent(x.lowest, x.highest, scale.x, offset.x),
                 RawExtent(y.lowest, y.highest, scale.y, offset.y),
                 RawExtent(z.lowest, z.highest, scale.z, offset.z));
}

BoundingBox6 UniformProfileBox(const ProfileBuffer& record) {
  const HeightRange range = FindHeightRange(zArray_Items<z16s>(record.points.Get()));
  if (range.highest == kInvalidRaw) throw EmptyProfile(__LINE__);
  // The centre of x is the offset alone, unlike a surface's.
  return MakeBox({record.offset.x, record.count * record.scale.x}, {},
                 RawExtent(range.lowest, range.highest, record.scale.z, record.offset.z));
}

BoundingBox6 PointProfileBox(const ProfileBuffer& record) {
  RawRange x, z;
  for (const zPoint16s& point : zArray_Items<zPoint16s>(record.points.Get())) {
    if (point.x == kInvalidRaw || point.z == kInvalidRaw) continue;
    x.Include(point.x);
    z.Include(point.z);
  }
  // Only x is asked: one without any valid point has the same z.
  if (x.lowest == 32767) throw EmptyProfile(__LINE__);
  return MakeBox(RawExtent(x.lowest, x.highest, record.scale.x, record.offset.x), {},
                 RawExtent(z.lowest, z.highest, record.scale.z, record.offset.z));
}

}  // namespace

BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record) {
  if (record.width == 0 || record.length == 0) throw EmptySurface(__LINE__);
  switch (zArray_ItemType(record.points.Get())) {
    case zType::z16s:
      return UniformBox(record);
    case zType::zPoint3d16s:
      return PointCloudBox(record);
    default:
      throw Orv::Exception(__LINE__, kFile, kNotImplemented, kSurface, "Unsupported surface type");
  }
}

BoundingBox6 GetProfileBoundingBox(const ProfileBuffer& record) {
  if (record.count == 0) throw EmptyProfile(__LINE__);
  switch (zArray_ItemType(record.points.Get())) {
    case zType::z16s:
      return UniformProfileBox(record);
    case zType::zPoint16s:
      return PointProfileBox(record);
    default:
      throw Orv::Exception(__LINE__, kFile, kNotImplemented, kProfile, "Unsupported profile type");
  }
}
