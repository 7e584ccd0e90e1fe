// SPDX-License-Identifier: MIT
#include "getfilestream/digitalsurf_writer.h"
#include "getfilestream/getfilestream.h"

zStatus GetSurFileStream(MxMsg message, zMemory stream) {
  if (message == nullptr || stream == nullptr) return kRefused;
  if (MxSurfaceMsg_PointType(message) != zType::z16s) return kRefused;
  const DigitalSurfScan scan{
      .objectType = 2,
      .pointsPerLine = MxSurfaceMsg_Width(message),
      .lineCount = MxSurfaceMsg_Length(message),
      .scale = *MxSurfaceMsg_Scale(message),
      .offset = *MxSurfaceMsg_Offset(message),
      .points = MxSurfaceMsg_PointsArray(message, 0),
  };
  return WriteDigitalSurf(scan, stream);
}
