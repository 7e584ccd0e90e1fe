// SPDX-License-Identifier: MIT
#include "formats/srf/srf.h"

#include "formats/srf/layout.h"
#include "scan/scan.h"
#include "statuses.h"

zStatus GetSrfFileStream(MxMsg message, zStream stream) {
  if (MxMsg_Kind(message) != MxKind::surface || stream == nullptr) return kRefused;
  Scan scan;
  zStatus status = GetScan(message, scan);
  if (status != zOK) return status;
  const SrfHeader header{kSrfVersion, scan.width, scan.length, scan.scale, scan.offset};
  const zSize cells = scan.Count();
  const z8u hasIntensities = scan.intensities ? 1 : 0;

  const auto write = [&](zType type, const void* items, zSize count) {
    return zStream_WritePrimitives(stream, type, items, count);
  };
  status = ForEachSrfField(header, write);
  // Two bytes a point, whatever the points are.
  if (status == zOK) status = write(zType::z16s, zArray_Data(scan.points.Get()), cells);
  if (status == zOK) status = write(zType::z8u, &hasIntensities, 1);
  if (status != zOK || hasIntensities == 0) return status;
  return write(zType::z8u, zArray_Data(scan.intensities.Get()), cells);
}
