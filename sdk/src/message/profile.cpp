// SPDX-License-Identifier: MIT
#include "message/message.h"

using sdk::As;
using sdk::Profile;
using sdk::Scan;

zStatus MxProfileMsg_Construct(MxMsg* message, zType pointType, z32u profiles, z32u count,
                               zAlloc alloc) noexcept {
  const bool knownType = pointType == zType::z16s || pointType == zType::zPoint16s;
  if (message == nullptr || !knownType || profiles != 1) return zERROR_PARAMETER;
  sdk::Owned<sdk::Array> points;
  const zStatus status = sdk::MakeArray(pointType, count, 1, sdk::Fill::zeros, alloc, points);
  if (status != zOK) return status;
  return sdk::HandOut(message, sdk::Make<Profile>(std::move(points), alloc));
}

z32u MxProfileMsg_PointCount(MxMsg message) noexcept {
  const Profile* profile = As<Profile>(message);
  return profile == nullptr ? 0 : profile->PointCount();
}

zType MxProfileMsg_PointType(MxMsg message) noexcept {
  return zArray_ItemType(MxProfileMsg_PointsArray(message, 0));
}

zArray1 MxProfileMsg_PointsArray(MxMsg message, z64u /*index*/) noexcept {
  return sdk::ArrayOf<Profile>(message, &Scan::points);
}

bool MxProfileMsg_HasIntensity(MxMsg message) noexcept {
  const Profile* profile = As<Profile>(message);
  return profile != nullptr && profile->intensities != nullptr;
}

zArray1 MxProfileMsg_IntensityArray(MxMsg message, z64u /*index*/) noexcept {
  return sdk::ArrayOf<Profile>(message, &Scan::intensities);
}

const zPoint3d64f* MxProfileMsg_Offset(MxMsg message) noexcept {
  return sdk::ValueOf<Profile>(message, &Scan::offset);
}

const zPoint3d64f* MxProfileMsg_Scale(MxMsg message) noexcept {
  return sdk::ValueOf<Profile>(message, &Scan::scale);
}

const BoundingBox6* MxProfileMsg_BoundingBox(MxMsg message) noexcept {
  return sdk::ValueOf<Profile>(message, &Scan::box);
}

zStatus MxProfileMsg_SetOffset(MxMsg message, const zPoint3d64f* offset) noexcept {
  return sdk::SetValue<Profile>(message, &Scan::offset, offset);
}

zStatus MxProfileMsg_SetScale(MxMsg message, const zPoint3d64f* scale) noexcept {
  return sdk::SetValue<Profile>(message, &Scan::scale, scale);
}

zStatus MxProfileMsg_SetBoundingBox(MxMsg message, const BoundingBox6* box) noexcept {
  return sdk::SetValue<Profile>(message, &Scan::box, box);
}

zStatus MxProfileMsg_CopyPointsArray(MxMsg message, zArray1 points) noexcept {
  return sdk::CopyArray<Profile>(message, &Scan::points, points);
}

zStatus MxProfileMsg_AllocateIntensity(MxMsg message, zType itemType) noexcept {
  return sdk::AllocateIntensity<Profile>(message, itemType);
}

zStatus MxProfileMsg_CopyIntensityArray(MxMsg message, zArray1 intensities) noexcept {
  return sdk::CopyArray<Profile>(message, &Scan::intensities, intensities);
}
