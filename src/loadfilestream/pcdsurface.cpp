// SPDX-License-Identifier: MIT
#include "loadfilestream/pcdsurface.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "console.h"
#include "loadfilestream/rounding.h"

namespace {

constexpr zPoint3d16s kInvalidPoint{kInvalidRaw, kInvalidRaw, kInvalidRaw};
constexpr z8u kPaddingIntensity = 255;

// A message of a recording holds 2 GiB. A larger surface fails here, before anything is filled.
constexpr z64u kLargestSurface = (z64u{1} << 31) - 4096;  // bytes

// The points as the file has them, after the swap.
class PointReader {
 public:
  PointReader(const z8u* data, const PcdCloud& cloud, bool swapXZ)
      : data_(data),
        stride_(cloud.stride),
        x_(swapXZ ? cloud.z : cloud.x),
        y_(cloud.y),
        z_(swapXZ ? cloud.x : cloud.z) {}

  const z8u* Record(zSize point) const { return data_ + point * stride_; }

  zPoint3d32f operator[](zSize point) const {
    const z8u* record = Record(point);
    return {Float(record + x_), Float(record + y_), Float(record + z_)};
  }

  static z32f Float(const z8u* bytes) {
    z32f value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }

 private:
  const z8u* data_;
  zSize stride_, x_, y_, z_;
};

bool IsFinite(const zPoint3d32f& point) {
  return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

struct Extremes {
  z32f lowest = std::numeric_limits<z32f>::max();
  z32f highest = -std::numeric_limits<z32f>::max();

  void Include(z32f value) {
    lowest = std::min(lowest, value);
    highest = std::max(highest, value);
  }
};

// Between extremes in 32 bits; the rest in 64.
struct Axis {
  z64f offset = 0;
  z64f scale = 0;

  Axis(const Extremes& extremes, z32f zoom) {
    const z32f lowest = extremes.lowest * zoom;
    const z32f highest = extremes.highest * zoom;
    offset = static_cast<z64f>(highest + lowest) * 0.5;
    scale = static_cast<z64f>(highest - lowest) * 0.5 / 32767;
  }

  // 0 on a flat axis, whose offset is the value itself.
  z16s Quantize(z32f value) const {
    return RoundToRaw((static_cast<z64f>(value) - offset) / scale);
  }
};

bool Matches(const zPoint3d32f& point, const zPoint3d64f& invalid) {
  return static_cast<z64f>(point.x) == invalid.x || static_cast<z64f>(point.y) == invalid.y ||
         static_cast<z64f>(point.z) == invalid.z;
}

// Quantises the first points of a cloud into as many cells and tells the record's scale and offset.
void FillPoints(std::span<zPoint3d16s> cells, const PointReader& points, SurfaceBuffer& record,
                const zPoint3d64f* invalidPoint, const z64f* zoom) {
  Extremes xRange, yRange, zRange;
  for (zSize i = 0; i < cells.size(); ++i) {
    const zPoint3d32f point = points[i];
    if (!IsFinite(point)) continue;
    xRange.Include(point.x);
    yRange.Include(point.y);
    zRange.Include(point.z);
  }
  const z32f factor = zoom == nullptr ? 1 : static_cast<z32f>(*zoom);
  const Axis x(xRange, factor), y(yRange, factor), z(zRange, factor);
  for (zSize i = 0; i < cells.size(); ++i) {
    const zPoint3d32f point = points[i];
    const bool invalid =
        !IsFinite(point) || (invalidPoint != nullptr && Matches(point, *invalidPoint));
    cells[i] = invalid ? kInvalidPoint
                       : zPoint3d16s{x.Quantize(point.x * factor), y.Quantize(point.y * factor),
                                     z.Quantize(point.z * factor)};
  }
  record.scale = {x.scale, y.scale, z.scale};
  record.offset = {x.offset, y.offset, z.offset};
}

// Appends one byte for each kind of intensity that a record has, as far as there is room.
class IntensityWriter {
 public:
  explicit IntensityWriter(std::span<z8u> bytes) : left_(bytes) {}

  void AppendRecord(const z8u* bytes, const PcdCloud& cloud) {
    if (cloud.intensity) {
      const z32f intensity = PointReader::Float(bytes + *cloud.intensity) * 255;
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

  const PointReader points(data.data(), cloud, swapXZ);
  const std::span<zPoint3d16s> cells = zArray_EditableItems<zPoint3d16s>(record.points.Get());
  const auto pointCount = static_cast<zSize>(std::min(cellCount, cloud.PointCount()));
  FillPoints(cells.first(pointCount), points, record, invalidPoint, zoom);
  std::ranges::fill(cells.subspan(pointCount), kInvalidPoint);
  if (record.hasIntensity == 0) return zOK;

  status =
      zArray2_Construct(record.intensities.Out(), zType::z8u, record.length, record.width, alloc);
  if (status != zOK) return status;
  IntensityWriter intensities(zArray_EditableItems<z8u>(record.intensities.Get()));
  for (zSize i = 0; i < pointCount; ++i) intensities.AppendRecord(points.Record(i), cloud);
  intensities.FillUp();
  return zOK;
}
