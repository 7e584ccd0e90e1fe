// SPDX-License-Identifier: MIT
#include "getfilestream/getfilestream.h"
#include "scan/box.h"
#include "statuses.h"

BoundingBox6 GetSurfaceBoundingBox(const SurfaceBuffer& record) {
  constexpr Orv::Operation kOperation{"getfilestream", "GetSurfaceBoundingBox"};
  const zType type = zArray_ItemType(record.points.Get());
  if (record.width != 0 && record.length != 0 && type != zType::z16s &&
      type != zType::zPoint3d16s) {
    kOperation.Fail(kNotImplemented, "Unsupported surface type");
  }
  const std::optional<BoundingBox6> box = FindBox(record);
  if (!box) kOperation.Fail(kBadInput, "The input surface is empty");
  return *box;
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
