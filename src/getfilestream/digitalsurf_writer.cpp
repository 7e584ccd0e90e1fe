// SPDX-License-Identifier: MIT
#include "getfilestream/digitalsurf_writer.h"

#include "getfilestream/heightrange.h"
#include "loadfilestream/loadfilestream.h"
#include "loadfilestream/surheader.h"

namespace {

// Heights that leave room for the value of invalid points, which is the smallest height - 2.
constexpr z16s kLowestWritable = -32765;
constexpr z16s kHighestWritable = 32766;

SurHeader MakeHeader(const DigitalSurfScan& scan, const HeightRange& range) {
  SurHeader header;
  InitSurHeader(header);
  header.objectType = scan.objectType;
  header.zMin = range.lowest;
  header.zMax = range.highest;
  header.pointsPerLine = static_cast<z32s>(scan.pointsPerLine);
  header.lineCount = static_cast<z32s>(scan.lineCount);
  header.totalPoints = static_cast<z32s>(scan.pointsPerLine * scan.lineCount);
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

zStatus Write(const SurHeader& header, std::span<const z16s> heights, zMemory stream) {
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

}  // namespace

zStatus WriteDigitalSurf(const DigitalSurfScan& scan, zMemory stream) {
  const HeightRange range = FindHeightRange(zArray_Items<z16s>(scan.points));
  if (range.lowest < kLowestWritable || range.highest > kHighestWritable) return kRefused;
  if (range.hasInvalid) {
    const zStatus status = MarkInvalidPoints(scan.points, static_cast<z16s>(range.lowest - 2));
    if (status != zOK) return status;
  }
  return Write(MakeHeader(scan, range), zArray_Items<z16s>(scan.points), stream);
}
