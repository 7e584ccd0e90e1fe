// SPDX-License-Identifier: MIT
#include "getfilestream/getfilestream.h"
#include "scan/box.h"
#include "statuses.h"

namespace {

constexpr Orv::Operation kSurface{"getfilestream", "GetSurfaceBoundingBox"};

BoundingBox6 RequireBox(const std::optional<BoundingBox6>& box) {
  if (!box) kSurface.Fail(kBadInput, "The input surface is empty");
  return *box;
}

}  // namespace

BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record) {
  const zType type = zArray_ItemType(record.points.Get());
  if (record.width != 0 && record.length != 0 && type != zType::z16s &&
      type != zType::zPoint3d16s) {
    kSurface.Fail(kNotImplemented, "Unsupported surface type");
  }
  return RequireBox(FindBox(record));
}

BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record, const HeightRange& heights) {
  return RequireBox(FindBox(record, heights));
}

BoundingBox6 GetProfileBoundingBox(const Scan& record) {
  constexpr Orv::Operation kOperation{"getfilestream", "GetProfileBoundingBox"};
  const zType type = zArray_ItemType(record.points.Get());
  if (record.width != 0 && type != zType::z16s && type != zType::zPoint16s) {
    kOperation.Fail(kNotImplemented, "Unsupported profile type");
  }
  const std::optional<BoundingBox6> box = FindBox(record);
  if (!box) kOperation.Fail(kBadInput, "The input profile is empty");
  return *box;
}
