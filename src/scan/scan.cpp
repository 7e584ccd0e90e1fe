// SPDX-License-Identifier: MIT
#include "scan/scan.h"

zStatus GetScan(MxMsg message, Scan& scan) {
  zObject points = nullptr;
  zObject intensities = nullptr;
  bool hasIntensities = false;
  switch (MxMsg_Kind(message)) {
    case MxKind::surface:
      scan.kind =
          MxSurfaceMsg_PointType(message) == zType::z16s ? ScanKind::surface : ScanKind::cloud;
      scan.width = MxSurfaceMsg_Width(message);
      scan.length = MxSurfaceMsg_Length(message);
      scan.scale = *MxSurfaceMsg_Scale(message);
      scan.offset = *MxSurfaceMsg_Offset(message);
      scan.box = *MxSurfaceMsg_BoundingBox(message);
      scan.resampled = MxSurfaceMsg_IsResampled(message);
      points = MxSurfaceMsg_PointsArray(message, 0);
      hasIntensities = MxSurfaceMsg_HasIntensity(message);
      intensities = MxSurfaceMsg_Intensities(message, 0);
      break;
    case MxKind::profile:
      scan.kind = MxProfileMsg_PointType(message) == zType::z16s ? ScanKind::profile
                                                                 : ScanKind::pointProfile;
      scan.width = MxProfileMsg_PointCount(message);
      scan.length = 1;
      scan.scale = *MxProfileMsg_Scale(message);
      scan.offset = *MxProfileMsg_Offset(message);
      scan.box = *MxProfileMsg_BoundingBox(message);
      points = MxProfileMsg_PointsArray(message, 0);
      hasIntensities = MxProfileMsg_HasIntensity(message);
      intensities = MxProfileMsg_IntensityArray(message, 0);
      break;
    default:
      return zERROR_PARAMETER;
  }
  if (points == nullptr || (hasIntensities && intensities == nullptr)) return zERROR_MEMORY;
  scan.points = Orv::Object<void*>::Share(points);
  scan.intensities = Orv::Object<void*>::Share(intensities);
  scan.stamp = *MxDataMsg_Stamp(message);
  return zOK;
}
