// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/writer.h"

#include <algorithm>
#include <vector>

#include "formats/digitalsurf/layout.h"
#include "scan/surfacestream.h"
#include "statuses.h"

namespace {

SurHeader MakeHeader(const Plovia::SurfaceStream& surface, z16s objectType,
                     const HeightRange& range) {
  SurHeader header;
  InitSurHeader(header);
  header.objectType = objectType;
  header.zMin = range.lowest;
  header.zMax = range.highest;
  header.pointsPerLine = static_cast<z32s>(surface.width);
  header.lineCount = static_cast<z32s>(surface.length);
  header.totalPoints = static_cast<z32s>(surface.width * surface.length);
  header.xSpacing = static_cast<z32f>(surface.scale.x);
  header.ySpacing = static_cast<z32f>(surface.scale.y);
  header.zSpacing = static_cast<z32f>(surface.scale.z);
  header.xOffset = static_cast<z32f>(surface.offset.x);
  header.yOffset = static_cast<z32f>(surface.offset.y);
  header.zOffset = static_cast<z32f>(surface.offset.z);
  return header;
}

// With invalid points marked, which takes a copy: a block that is used again.
zStatus WriteMarked(std::span<const z16s> heights, z16s mark, std::vector<z16s>& block,
                    zStream stream) {
  constexpr zSize kBlock = zSize{128} << 10;  // stays in the cache
  zStatus status = zOK;
  while (status == zOK && !heights.empty()) {
    block.resize(std::min(heights.size(), kBlock));
    std::ranges::transform(heights.first(block.size()), block.begin(),
                           [mark](z16s height) { return height == kInvalidRaw ? mark : height; });
    heights = heights.subspan(block.size());
    status = zStream_WritePrimitives(stream, zType::z16s, block.data(), block.size());
  }
  return status;
}

// The heights are passed twice: their range stands in front of them, and marks invalid points.
zStatus Write(const Plovia::SurfaceStream& surface, z16s objectType, zStream stream) {
  if (stream == nullptr) return kRefused;
  HeightRange range;
  surface.heights([&](std::span<const z16s> heights) { range.Include(FindHeightRange(heights)); });
  if (!IsWritableAsDigitalSurf(range)) return kRefused;
  zStatus status = WriteSurHeader(stream, MakeHeader(surface, objectType, range));
  if (status != zOK) return status;
  const auto mark = static_cast<z16s>(range.lowest - 2);
  std::vector<z16s> block;
  surface.heights([&](std::span<const z16s> heights) {
    if (status == zOK) status = WriteMarked(heights, mark, block, stream);
  });
  return status;
}

zStatus Write(MxMsg message, ScanKind kind, z16s objectType, zStream stream) {
  Scan scan;
  const zStatus status = GetScan(message, scan);
  if (status == zERROR_PARAMETER) return kRefused;
  if (status != zOK) return status;
  return scan.kind == kind ? Write(StreamOf(scan), objectType, stream) : kRefused;
}

}  // namespace

zStatus GetSurFileStream(const Plovia::SurfaceStream& surface, zStream stream) {
  return Write(surface, kSurfaceObject, stream);
}

zStatus GetSurFileStream(MxMsg message, zStream stream) {
  return Write(message, ScanKind::surface, kSurfaceObject, stream);
}

zStatus GetProFileStream(MxMsg message, zStream stream) {
  return Write(message, ScanKind::profile, kProfileObject, stream);
}
