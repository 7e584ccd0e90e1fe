// SPDX-License-Identifier: MIT
#include <utility>

#include "getfilestream/getfilestream.h"
#include "loadfilestream/srfheader.h"

zStatus GetSrfFileStream(MxMsg message, zMemory stream) {
  if (MxMsg_Kind(message) != MxKind::surface || stream == nullptr) return kRefused;
  SurfaceBuffer record;
  record.width = MxSurfaceMsg_Width(message);
  record.length = MxSurfaceMsg_Length(message);
  record.scale = *MxSurfaceMsg_Scale(message);
  record.offset = *MxSurfaceMsg_Offset(message);
  const zSize cells = zSize{record.width} * record.length;
  const bool hasIntensity = MxSurfaceMsg_HasIntensity(message);

  zStatus status =
      zMemory_Reserve(stream, zMemory_Position(stream) + kSrfHeaderSize + cells * sizeof(z16s) +
                                  sizeof(z8u) + (hasIntensity ? cells : 0));
  if (status != zOK) return status;
  Orv::Object<void*> serializer;
  status = zDat6Serializer_Construct(serializer.Out(), stream, &zAllocator::Default());
  if (status != zOK) return status;
  const auto write = [&](zType type, const void* items, zSize count) {
    return zSerializer_Write(serializer.Get(), type, items, count);
  };
  status = write(zType::z32u, &kSrfVersion, 1);
  if (status == zOK) status = ForEachSrfField(std::as_const(record), write);
  // Two bytes a point, whatever the points are.
  if (status == zOK) {
    status = write(zType::z16s, zArray_Data(MxSurfaceMsg_PointsArray(message, 0)), cells);
  }
  const z8u flag = hasIntensity ? 1 : 0;
  if (status == zOK) status = write(zType::z8u, &flag, 1);
  if (status != zOK || !hasIntensity) return status;
  return write(zType::z8u, zArray_Data(MxSurfaceMsg_Intensities(message, 0)), cells);
}
