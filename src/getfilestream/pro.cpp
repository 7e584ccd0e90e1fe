// SPDX-License-Identifier: MIT
#include "getfilestream/digitalsurf_writer.h"
#include "getfilestream/getfilestream.h"

zStatus GetProFileStream(MxMsg message, zMemory stream) {
  if (message == nullptr || stream == nullptr) return kRefused;
  if (MxProfileMsg_PointType(message) != zType::z16s) return kRefused;
  const DigitalSurfScan scan{
      .objectType = 1,
      .pointsPerLine = MxProfileMsg_PointCount(message),
      .lineCount = 1,
      .scale = *MxProfileMsg_Scale(message),
      .offset = *MxProfileMsg_Offset(message),
      .points = MxProfileMsg_PointsArray(message, 0),
  };
  return WriteDigitalSurf(scan, stream);
}
