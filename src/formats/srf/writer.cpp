// SPDX-License-Identifier: MIT
#include "formats/srf/srf.h"

#include "formats/srf/layout.h"
#include "scan/surfacestream.h"
#include "statuses.h"

zStatus GetSrfFileStream(const Plovia::SurfaceStream& surface, zStream stream) {
  if (stream == nullptr) return kRefused;
  const SrfHeader header{kSrfVersion, surface.width, surface.length, surface.scale, surface.offset};
  const auto write = [&](zType type, const void* items, zSize count) {
    return zStream_WritePrimitives(stream, type, items, count);
  };
  zStatus status = ForEachSrfField(header, write);
  if (status != zOK) return status;
  surface.heights([&](std::span<const z16s> heights) {
    if (status == zOK) status = write(zType::z16s, heights.data(), heights.size());
  });
  const z8u hasIntensities = surface.intensities ? 1 : 0;
  if (status == zOK) status = write(zType::z8u, &hasIntensities, 1);
  if (status != zOK || hasIntensities == 0) return status;
  const auto intensities = zArray_Items<z8u>(surface.intensities.Get());
  return write(zType::z8u, intensities.data(), intensities.size());
}

zStatus GetSrfFileStream(MxMsg message, zStream stream) {
  if (MxMsg_Kind(message) != MxKind::surface) return kRefused;
  Scan scan;
  const zStatus status = GetScan(message, scan);
  return status == zOK ? GetSrfFileStream(StreamOf(scan), stream) : status;
}
