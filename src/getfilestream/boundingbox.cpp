// SPDX-License-Identifier: MIT
#include <algorithm>

#include "getfilestream/getfilestream.h"
#include "getfilestream/heightrange.h"

namespace {

constexpr const char* kFunction = "GetSurfaceBoundingBox";
constexpr const char* kFile = "getfilestream";

Orv::Exception EmptySurface(int line) {
  return {line, kFile, -997, kFunction, "The input surface is empty"};
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
  zPoint3d16s lowest{32767, 32767, 32767};
  zPoint3d16s highest{-32768, -32768, -32768};
  for (const zPoint3d16s& point : zArray_Items<zPoint3d16s>(record.points.Get())) {
    if (point.x == kInvalidRaw || point.y == kInvalidRaw || point.z == kInvalidRaw) continue;
    lowest.x = std::min(lowest.x, point.x);
    lowest.y = std::min(lowest.y, point.y);
    lowest.z = std::min(lowest.z, point.z);
    highest.x = std::max(highest.x, point.x);
    highest.y = std::max(highest.y, point.y);
    highest.z = std::max(highest.z, point.z);
  }
  if (lowest.x == 32767 || lowest.y == 32767 || lowest.z == 32767) throw EmptySurface(__LINE__);
  const zPoint3d64f& scale = record.scale;
  const zPoint3d64f& offset = record.offset;
  return MakeBox(RawExtent(lowest.x, highest.x, scale.x, offset.x),
                 RawExtent(lowest.y, highest.y, scale.y, offset.y),
                 RawExtent(lowest.z, highest.z, scale.z, offset.z));
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
      throw Orv::Exception(__LINE__, kFile, -996, kFunction, "Unsupported surface type");
  }
}
