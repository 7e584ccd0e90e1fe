// SPDX-License-Identifier: MIT
#include "loadfilestream/loadfilestream.h"
#include "loadfilestream/pcdsurface.h"

zStatus LoadPcdFileBuffer(const zBytes& bytes, SurfaceBuffer& record, bool swapXZ,
                          const zPoint3d64f* invalidPoint, const z64f* zoom, zAlloc alloc) {
  if (bytes.empty()) return kRefused;
  std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const std::optional<PcdCloud> cloud = ParsePcdHeader(rest);
  if (!cloud) return kMalformed;
  const std::span<const z8u> data = std::span(bytes).last(rest.size());
  if (cloud->binary && cloud->PointCount() > data.size() / cloud->stride) return kMalformed;
  return PcdPointsToSurface(data, *cloud, record, swapXZ, invalidPoint, zoom, alloc);
}
