// SPDX-License-Identifier: MIT
#include "loadfilestream/pcdsurface.h"

#include <algorithm>
#include <cmath>

#include "console.h"
#include "loadfilestream/pcdpoints.h"
#include "loadfilestream/rounding.h"

namespace {

constexpr z8u kPaddingIntensity = 255;

// A message of a recording holds 2 GiB. A larger surface fails here, before anything is filled.
constexpr z64u kLargestSurface = (z64u{1} << 31) - 4096;  // bytes

// Appends one byte for each kind of intensity that a record has, as far as there is room.
class IntensityWriter {
 public:
  explicit IntensityWriter(std::span<z8u> bytes) : left_(bytes) {}

  void AppendRecord(const z8u* bytes, const PcdCloud& cloud) {
    if (cloud.intensity) {
      const z32f intensity = PcdRecords::Float(bytes + *cloud.intensity) * 255;
      Append(static_cast<z8u>(Truncate(static_cast<z64f>(intensity))));
    }
    if (cloud.color) {
      const z8u* color = bytes + *cloud.color;
      Append(static_cast<z8u>(0.299 * color[0] + 0.587 * color[1] + 0.114 * color[2]));
    }
  }

  void FillUp() { std::ranges::fill(left_, kPaddingIntensity); }

 private:
  void Append(z8u intensity) {
    if (left_.empty()) return;
    left_.front() = intensity;
    left_ = left_.subspan(1);
  }

  std::span<z8u> left_;
};

// The wished size, or the cloud's own, as a square for a cloud of one row or column.
void ChooseSize(const PcdCloud& cloud, SurfaceBuffer& record) {
  if (record.width != 0 && record.length != 0) return;
  record.width = cloud.width;
  record.length = cloud.height;
  if ((cloud.width >= 2 && cloud.height == 1) || (cloud.width == 1 && cloud.height > 1)) {
    record.width = static_cast<z32u>(std::ceil(std::sqrt(cloud.PointCount())));
    record.length = record.width;
  }
}

}  // namespace

zStatus PcdPointsToSurface(std::span<const z8u> data, const PcdCloud& cloud, SurfaceBuffer& record,
                           bool swapXZ, const zPoint3d64f* invalidPoint, const z64f* zoom,
                           zAlloc alloc) {
  record.hasIntensity = cloud.intensity || cloud.color ? 1 : 0;
  ChooseSize(cloud, record);
  const z64u cellCount = z64u{record.width} * record.length;
  if (cellCount != cloud.PointCount()) {
    consoleStatus("[WARNING] ",
                  "The export surface's size is [%d, %d] and the input surface's size is [%d, %d]",
                  record.width, record.length, cloud.width, cloud.height);
  }
  if (!cloud.binary) return kNotImplemented;
  const zSize cellSize = sizeof(zPoint3d16s) + (record.hasIntensity != 0 ? sizeof(z8u) : 0);
  if (cellCount > kLargestSurface / cellSize) return zERROR_MEMORY;
  zStatus status = zArray2_Construct(record.points.Out(), zType::zPoint3d16s, record.length,
                                     record.width, alloc);
  if (status != zOK) return status;

  const PcdRecords records(data.data(), cloud, swapXZ);
  const std::span<zPoint3d16s> cells = zArray_EditableItems<zPoint3d16s>(record.points.Get());
  const auto pointCount = static_cast<zSize>(std::min(cellCount, cloud.PointCount()));
  QuantizePoints(cells.first(pointCount), records, record, invalidPoint, zoom);
  std::ranges::fill(cells.subspan(pointCount), kInvalidPoint);
  if (record.hasIntensity == 0) return zOK;

  status =
      zArray2_Construct(record.intensities.Out(), zType::z8u, record.length, record.width, alloc);
  if (status != zOK) return status;
  IntensityWriter intensities(zArray_EditableItems<z8u>(record.intensities.Get()));
  for (zSize i = 0; i < pointCount; ++i) intensities.AppendRecord(records[i], cloud);
  intensities.FillUp();
  return zOK;
}
