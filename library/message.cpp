// SPDX-License-Identifier: MIT
#include "message.h"

#include "getfilestream/getfilestream.h"

namespace {

constexpr Orv::Operation kOperation{"library", "MakeMessage"};

void Require(zStatus status) { kOperation.Require(status, "Failed to make a message of the scan"); }

zStatus Construct(const Scan& scan, MxMsg* message) {
  zAlloc alloc = &zAllocator::Default();
  switch (scan.kind) {
    case ScanKind::surface:
      return MxSurfaceMsg_ConstructSimple(message, scan.width, scan.length, alloc);
    case ScanKind::cloud:
      return MxSurfaceMsg_ConstructUnresampledSimple(message, scan.width, scan.length, alloc);
    default:
      return MxProfileMsg_Construct(message, zArray_ItemType(scan.points.Get()), 1, scan.width,
                                    alloc);
  }
}

}  // namespace

Orv::Object<void*> MakeMessage(const Scan& scan) {
  Orv::Object<void*> message;
  Require(Construct(scan, message.Out()));
  SetScan(kOperation, message.Get(), scan);
  if (!scan.IsProfile()) Require(MxSurfaceMsg_SetIsResampled(message.Get(), scan.resampled));
  const auto setBox = scan.IsProfile() ? MxProfileMsg_SetBoundingBox : MxSurfaceMsg_SetBoundingBox;
  if (scan.box) Require(setBox(message.Get(), &*scan.box));
  if (scan.stamp) Require(MxDataMsg_SetStamp(message.Get(), 0, &*scan.stamp));
  return message;
}
