// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/writer.h"

#include "formats/digitalsurf/layout.h"
#include "scan/scan.h"
#include "statuses.h"

namespace {

SurHeader MakeHeader(const Scan& scan, const HeightRange& range) {
  SurHeader header;
  InitSurHeader(header);
  header.objectType = scan.IsProfile() ? kProfileObject : kSurfaceObject;
  header.zMin = range.lowest;
  header.zMax = range.highest;
  header.pointsPerLine = static_cast<z32s>(scan.width);
  header.lineCount = static_cast<z32s>(scan.length);
  header.totalPoints = static_cast<z32s>(scan.width * scan.length);
  header.xSpacing = static_cast<z32f>(scan.scale.x);
  header.ySpacing = static_cast<z32f>(scan.scale.y);
  header.zSpacing = static_cast<z32f>(scan.scale.z);
  header.xOffset = static_cast<z32f>(scan.offset.x);
  header.yOffset = static_cast<z32f>(scan.offset.y);
  header.zOffset = static_cast<z32f>(scan.offset.z);
  return header;
}

zStatus MarkInvalidPoints(zObject points, z16s mark) {
  const std::span<z16s> heights = zArray_EditableItems<z16s>(points);
  if (heights.empty()) return zERROR_MEMORY;
  // Storing each of them is what compilers put into vector instructions.
  for (z16s& height : heights) height = height == kInvalidRaw ? mark : height;
  return zOK;
}

zStatus WriteFile(const SurHeader& header, std::span<const z16s> heights, zMemory stream) {
  zStatus status =
      zMemory_Reserve(stream, zMemory_Position(stream) + kSurHeaderSize + heights.size_bytes());
  if (status != zOK) return status;
  Orv::Object<void*> serializer;
  status = zDat6Serializer_Construct(serializer.Out(), stream, &zAllocator::Default());
  if (status != zOK) return status;
  status = WriteSurHeader(serializer.Get(), header);
  if (status != zOK) return status;
  return zSerializer_Write(serializer.Get(), zType::z16s, heights.data(), heights.size());
}

zStatus Write(MxMsg message, ScanKind kind, zMemory stream) {
  Scan scan;
  const zStatus status = GetScan(message, scan);
  if (status == zERROR_PARAMETER || stream == nullptr) return kRefused;
  if (status != zOK) return status;
  if (scan.kind != kind) return kRefused;
  zObject points = scan.points.Get();
  const HeightRange range = FindHeightRange(zArray_Items<z16s>(points));
  if (!IsWritableAsDigitalSurf(range)) return kRefused;
  if (range.hasInvalid) {
    const zStatus marked = MarkInvalidPoints(points, static_cast<z16s>(range.lowest - 2));
    if (marked != zOK) return marked;
  }
  return WriteFile(MakeHeader(scan, range), zArray_Items<z16s>(points), stream);
}

}  // namespace

zStatus GetSurFileStream(MxMsg message, zMemory stream) {
  return Write(message, ScanKind::surface, stream);
}

zStatus GetProFileStream(MxMsg message, zMemory stream) {
  return Write(message, ScanKind::profile, stream);
}
