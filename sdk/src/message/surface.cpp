// SPDX-License-Identifier: MIT
#include "message/message.h"

using sdk::As;
using sdk::Scan;
using sdk::Surface;

namespace {

zStatus ConstructSurface(MxMsg* message, zType pointType, bool resampled, z32u width, z32u length,
                         zAlloc alloc) noexcept {
  sdk::Owned<sdk::Array> points;
  const zStatus status = sdk::MakeArray(pointType, length, width, sdk::Fill::zeros, alloc, points);
  if (status != zOK) return status;
  auto surface = sdk::Make<Surface>(std::move(points), alloc);
  if (surface != nullptr) surface->resampled = resampled;
  return sdk::HandOut(message, std::move(surface));
}

}  // namespace

zStatus MxSurfaceMsg_ConstructSimple(MxMsg* message, z32u width, z32u length,
                                     zAlloc alloc) noexcept {
  return ConstructSurface(message, zType::z16s, true, width, length, alloc);
}

zStatus MxSurfaceMsg_ConstructUnresampledSimple(MxMsg* message, z32u width, z32u length,
                                                zAlloc alloc) noexcept {
  return ConstructSurface(message, zType::zPoint3d16s, false, width, length, alloc);
}

z32u MxSurfaceMsg_Width(MxMsg message) noexcept {
  const Surface* surface = As<Surface>(message);
  return surface == nullptr ? 0 : surface->Width();
}

z32u MxSurfaceMsg_Length(MxMsg message) noexcept {
  const Surface* surface = As<Surface>(message);
  return surface == nullptr ? 0 : surface->Length();
}

zType MxSurfaceMsg_PointType(MxMsg message) noexcept {
  return zArray_ItemType(MxSurfaceMsg_PointsArray(message, 0));
}

zArray2 MxSurfaceMsg_PointsArray(MxMsg message, z64u /*index*/) noexcept {
  return sdk::ArrayOf<Surface>(message, &Scan::points);
}

const void* MxSurfaceMsg_Points(MxMsg message, zSize row) noexcept {
  const Surface* surface = As<Surface>(message);
  if (surface == nullptr || row >= surface->Length()) return nullptr;
  return surface->points->Items() +
         row * surface->Width() * zType_Size(surface->points->ItemType());
}

const zPoint3d64f* MxSurfaceMsg_Offset(MxMsg message) noexcept {
  return sdk::ValueOf<Surface>(message, &Scan::offset);
}

const zPoint3d64f* MxSurfaceMsg_Scale(MxMsg message) noexcept {
  return sdk::ValueOf<Surface>(message, &Scan::scale);
}

const BoundingBox6* MxSurfaceMsg_BoundingBox(MxMsg message) noexcept {
  return sdk::ValueOf<Surface>(message, &Scan::box);
}

bool MxSurfaceMsg_IsResampled(MxMsg message) noexcept {
  const Surface* surface = As<Surface>(message);
  return surface != nullptr && surface->resampled;
}

bool MxSurfaceMsg_HasIntensity(MxMsg message) noexcept {
  const Surface* surface = As<Surface>(message);
  return surface != nullptr && surface->intensities != nullptr;
}

zArray2 MxSurfaceMsg_Intensities(MxMsg message, z64u /*index*/) noexcept {
  return sdk::ArrayOf<Surface>(message, &Scan::intensities);
}

const z8u* MxSurfaceMsg_IntensityAt(MxMsg message, zSize row, zSize column) noexcept {
  const Surface* surface = As<Surface>(message);
  if (surface == nullptr || surface->intensities == nullptr) return nullptr;
  if (row >= surface->Length() || column >= surface->Width()) return nullptr;
  return reinterpret_cast<const z8u*>(surface->intensities->Items()) + row * surface->Width() +
         column;
}

zStatus MxSurfaceMsg_SetOffset(MxMsg message, const zPoint3d64f* offset) noexcept {
  return sdk::SetValue<Surface>(message, &Scan::offset, offset);
}

zStatus MxSurfaceMsg_SetScale(MxMsg message, const zPoint3d64f* scale) noexcept {
  return sdk::SetValue<Surface>(message, &Scan::scale, scale);
}

zStatus MxSurfaceMsg_SetBoundingBox(MxMsg message, const BoundingBox6* box) noexcept {
  return sdk::SetValue<Surface>(message, &Scan::box, box);
}

zStatus MxSurfaceMsg_SetIsResampled(MxMsg message, bool resampled) noexcept {
  Surface* surface = As<Surface>(message);
  if (surface == nullptr) return zERROR_PARAMETER;
  surface->resampled = resampled;
  return zOK;
}

zStatus MxSurfaceMsg_CopyPointsArray(MxMsg message, zArray2 points) noexcept {
  return sdk::CopyArray<Surface>(message, &Scan::points, points);
}

zStatus MxSurfaceMsg_AllocateIntensity(MxMsg message, zType itemType) noexcept {
  return sdk::AllocateIntensity<Surface>(message, itemType);
}

zStatus MxSurfaceMsg_CopyIntensityArray(MxMsg message, zArray2 intensities) noexcept {
  return sdk::CopyArray<Surface>(message, &Scan::intensities, intensities);
}
