// SPDX-License-Identifier: MIT
#include "inspect/scan.h"

namespace {

[[noreturn]] void Fail(zStatus status, const char* message) {
  throw Orv::Exception(__LINE__, "inspection", status, "ToScan", message);
}

Orv::Object<void*> Shared(zObject array) {
  if (array == nullptr || (zArray_Count(array) > 0 && zArray_Data(array) == nullptr)) {
    Fail(zERROR_MEMORY, "There is not enough memory for the points of a scan");
  }
  return Orv::Object<void*>::Share(array);
}

template <class Record>
Scan FromRecord(const Record& record, z32u width, z32u length) {
  Scan scan;
  scan.width = width;
  scan.length = length;
  scan.scale = record.scale;
  scan.offset = record.offset;
  scan.points = record.points;
  if (record.hasIntensity != 0) scan.intensities = record.intensities;
  return scan;
}

}  // namespace

Scan ToScan(const SurfaceBuffer& record) {
  Scan scan = FromRecord(record, record.width, record.length);
  const bool cloud = zArray_ItemType(record.points.Get()) == zType::zPoint3d16s;
  scan.kind = cloud ? ScanKind::cloud : ScanKind::surface;
  return scan;
}

Scan ToScan(const ProfileBuffer& record) {
  Scan scan = FromRecord(record, record.count, 1);
  const bool points = zArray_ItemType(record.points.Get()) == zType::zPoint16s;
  scan.kind = points ? ScanKind::pointProfile : ScanKind::profile;
  return scan;
}

Scan ToScan(MxMsg message) {
  Scan scan;
  switch (MxMsg_Kind(message)) {
    case MxKind::surface:
      scan.kind = MxSurfaceMsg_PointType(message) == zType::zPoint3d16s ? ScanKind::cloud
                                                                        : ScanKind::surface;
      scan.width = MxSurfaceMsg_Width(message);
      scan.length = MxSurfaceMsg_Length(message);
      scan.scale = *MxSurfaceMsg_Scale(message);
      scan.offset = *MxSurfaceMsg_Offset(message);
      scan.box = *MxSurfaceMsg_BoundingBox(message);
      scan.points = Shared(MxSurfaceMsg_PointsArray(message, 0));
      if (MxSurfaceMsg_HasIntensity(message)) {
        scan.intensities = Shared(MxSurfaceMsg_Intensities(message, 0));
      }
      break;
    case MxKind::profile:
      scan.kind = MxProfileMsg_PointType(message) == zType::zPoint16s ? ScanKind::pointProfile
                                                                      : ScanKind::profile;
      scan.width = MxProfileMsg_PointCount(message);
      scan.length = 1;
      scan.scale = *MxProfileMsg_Scale(message);
      scan.offset = *MxProfileMsg_Offset(message);
      scan.box = *MxProfileMsg_BoundingBox(message);
      scan.points = Shared(MxProfileMsg_PointsArray(message, 0));
      if (MxProfileMsg_HasIntensity(message)) {
        scan.intensities = Shared(MxProfileMsg_IntensityArray(message, 0));
      }
      break;
    default:
      Fail(zERROR_PARAMETER, "The message is no surface and no profile");
  }
  scan.stamp = *MxDataMsg_Stamp(message);
  return scan;
}
