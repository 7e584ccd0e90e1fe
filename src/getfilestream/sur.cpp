// SPDX-License-Identifier: MIT
#include <algorithm>

#include "getfilestream/getfilestream.h"
#include "getfilestream/heightrange.h"
#include "loadfilestream/surheader.h"

namespace {

// Heights that leave room for the value of invalid points, which is the smallest height - 2.
constexpr z16s kLowestWritable = -32765;
constexpr z16s kHighestWritable = 32766;

SurHeader MakeHeader(MxMsg message, const HeightRange& range) {
  const z32u width = MxSurfaceMsg_Width(message);
  const z32u length = MxSurfaceMsg_Length(message);
  const zPoint3d64f& scale = *MxSurfaceMsg_Scale(message);
  const zPoint3d64f& offset = *MxSurfaceMsg_Offset(message);

  SurHeader header;
  InitSurHeader(header);
  header.zMin = range.lowest;
  header.zMax = range.highest;
  header.pointsPerLine = static_cast<z32s>(width);
  header.lineCount = static_cast<z32s>(length);
  header.totalPoints = static_cast<z32s>(width * length);
  header.xSpacing = static_cast<z32f>(scale.x);
  header.ySpacing = static_cast<z32f>(scale.y);
  header.zSpacing = static_cast<z32f>(scale.z);
  header.xOffset = static_cast<z32f>(offset.x);
  header.yOffset = static_cast<z32f>(offset.y);
  header.zOffset = static_cast<z32f>(offset.z);
  return header;
}

zStatus MarkInvalidPoints(zArray2 points, z16s mark) {
  const std::span<z16s> heights = zArray_EditableItems<z16s>(points);
  if (heights.empty()) return zERROR_MEMORY;
  std::ranges::replace(heights, kInvalidRaw, mark);
  return zOK;
}

zStatus WriteSurface(const SurHeader& header, std::span<const z16s> heights, zMemory stream) {
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

zStatus GetSurFileStream(MxMsg message, zMemory stream) {
  if (message == nullptr || stream == nullptr) return kRefused;
  if (MxSurfaceMsg_PointType(message) != zType::z16s) return kRefused;

  const zArray2 points = MxSurfaceMsg_PointsArray(message, 0);
  const HeightRange range = FindHeightRange(zArray_Items<z16s>(points));
  if (range.lowest < kLowestWritable || range.highest > kHighestWritable) return kRefused;
  if (range.hasInvalid) {
    const zStatus status = MarkInvalidPoints(points, static_cast<z16s>(range.lowest - 2));
    if (status != zOK) return status;
  }
  return WriteSurface(MakeHeader(message, range), zArray_Items<z16s>(points), stream);
}
