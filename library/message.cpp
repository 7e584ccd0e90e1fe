// SPDX-License-Identifier: MIT
#include "message.h"

using Handle = Orv::Object<void*>;

namespace {

void Require(zStatus status) {
  constexpr Orv::Operation kOperation{"library", "MakeMessage"};
  kOperation.Require(status, "Failed to make a message of the scan");
}

Handle MakeSurface(const Scan& scan) {
  Handle message;
  const auto construct = scan.kind == ScanKind::surface ? MxSurfaceMsg_ConstructSimple
                                                        : MxSurfaceMsg_ConstructUnresampledSimple;
  Require(construct(message.Out(), scan.width, scan.length, &zAllocator::Default()));
  Require(MxSurfaceMsg_SetOffset(message.Get(), &scan.offset));
  Require(MxSurfaceMsg_SetScale(message.Get(), &scan.scale));
  Require(MxSurfaceMsg_CopyPointsArray(message.Get(), scan.points.Get()));
  Require(MxSurfaceMsg_SetIsResampled(message.Get(), scan.resampled));
  if (scan.box) Require(MxSurfaceMsg_SetBoundingBox(message.Get(), &*scan.box));
  if (scan.intensities) {
    Require(MxSurfaceMsg_AllocateIntensity(message.Get(), zType::z8u));
    Require(MxSurfaceMsg_CopyIntensityArray(message.Get(), scan.intensities.Get()));
  }
  return message;
}

Handle MakeProfile(const Scan& scan) {
  Handle message;
  Require(MxProfileMsg_Construct(message.Out(), zArray_ItemType(scan.points.Get()), 1, scan.width,
                                 &zAllocator::Default()));
  Require(MxProfileMsg_SetOffset(message.Get(), &scan.offset));
  Require(MxProfileMsg_SetScale(message.Get(), &scan.scale));
  Require(MxProfileMsg_CopyPointsArray(message.Get(), scan.points.Get()));
  if (scan.box) Require(MxProfileMsg_SetBoundingBox(message.Get(), &*scan.box));
  if (scan.intensities) {
    Require(MxProfileMsg_AllocateIntensity(message.Get(), zType::z8u));
    Require(MxProfileMsg_CopyIntensityArray(message.Get(), scan.intensities.Get()));
  }
  return message;
}

}  // namespace

Handle MakeMessage(const Scan& scan) {
  Handle message = scan.IsProfile() ? MakeProfile(scan) : MakeSurface(scan);
  if (scan.stamp) Require(MxDataMsg_SetStamp(message.Get(), 0, &*scan.stamp));
  return message;
}
