// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/writer.h"

#include <algorithm>
#include <vector>

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

// With invalid points marked, which takes a copy.
zStatus WriteMarked(std::span<const z16s> heights, z16s mark, zStream stream) {
  std::vector<z16s> block(std::min(heights.size(), zSize{128} << 10));
  zStatus status = zOK;
  for (zSize count = 0; status == zOK && !heights.empty(); heights = heights.subspan(count)) {
    count = std::min(heights.size(), block.size());
    std::ranges::transform(heights.first(count), block.begin(),
                           [mark](z16s height) { return height == kInvalidRaw ? mark : height; });
    status = zStream_WritePrimitives(stream, zType::z16s, block.data(), count);
  }
  return status;
}

zStatus Write(MxMsg message, ScanKind kind, zStream stream) {
  Scan scan;
  const zStatus status = GetScan(message, scan);
  if (status == zERROR_PARAMETER || stream == nullptr) return kRefused;
  if (status != zOK) return status;
  if (scan.kind != kind) return kRefused;
  const auto heights = zArray_Items<z16s>(scan.points.Get());
  const HeightRange range = FindHeightRange(heights);
  if (!IsWritableAsDigitalSurf(range)) return kRefused;
  const zStatus written = WriteSurHeader(stream, MakeHeader(scan, range));
  if (written != zOK) return written;
  if (range.hasInvalid) return WriteMarked(heights, static_cast<z16s>(range.lowest - 2), stream);
  return zStream_WritePrimitives(stream, zType::z16s, heights.data(), heights.size());
}

}  // namespace

zStatus GetSurFileStream(MxMsg message, zStream stream) {
  return Write(message, ScanKind::surface, stream);
}

zStatus GetProFileStream(MxMsg message, zStream stream) {
  return Write(message, ScanKind::profile, stream);
}
