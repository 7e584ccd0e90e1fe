// SPDX-License-Identifier: MIT
#include "loadfilestream/pcdsurface.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

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
    z32f value = 0;
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

bool Matches(const zPoint3d32f& point, const zPoint3d64f& invalid) {
  return static_cast<z64f>(point.x) == invalid.x || static_cast<z64f>(point.y) == invalid.y ||
         static_cast<z64f>(point.z) == invalid.z;
}

struct Extremes {
  z32f lowest = std::numeric_limits<z32f>::max();
  z32f highest = -std::numeric_limits<z32f>::max();

  void Include(z32f value) {
    lowest = std::min(lowest, value);
    highest = std::max(highest, value);
  }
};

// Points are quantised a block at a time, axis by axis, in loops that compilers turn into vector
// instructions.
constexpr zSize kBlock = 512;

// Between extremes in 32 bits; the rest in 64.
class Axis {
 public:
  Axis(const Extremes& extremes, z32f zoom) : zoom_(zoom) {
    const z32f lowest = extremes.lowest * zoom;
    const z32f highest = extremes.highest * zoom;
    offset_ = static_cast<z64f>(highest + lowest) * 0.5;
    scale_ = static_cast<z64f>(highest - lowest) * 0.5 / 32767;
  }

  z64f Offset() const { return offset_; }
  z64f Scale() const { return scale_; }

  // 0 on a flat axis, whose offset is the value itself.
  void Quantize(const std::array<z32f, kBlock>& values, std::array<z16s, kBlock>& raws) const {
    constexpr z64f kNarrow = 0x1p31 - 1;  // beyond it the fast loop's 32-bit integers end
    std::array<z64f, kBlock> steps;
    for (zSize i = 0; i < kBlock; ++i) {
      steps[i] = (static_cast<z64f>(values[i] * zoom_) - offset_) / scale_;
    }
    z64s wide = 0;
    for (const z64f step : steps) wide |= std::abs(step) < kNarrow ? 0 : 1;
    if (wide != 0) {
      std::ranges::transform(steps, raws.begin(), RoundToRaw);
      return;
    }
    for (zSize i = 0; i < kBlock; ++i) {
      const z64f rounded = steps[i] + std::copysign(0.5, steps[i]);
      raws[i] = static_cast<z16s>(static_cast<z32s>(rounded));
    }
  }

 private:
  z32f zoom_;
  z64f offset_ = 0;
  z64f scale_ = 0;
};

// One block of points, by axis.
struct PointBlock {
  std::array<z32f, kBlock> x{}, y{}, z{};
  std::array<z16s, kBlock> rawX{}, rawY{}, rawZ{};
  std::array<bool, kBlock> valid{};
};

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
  record.scale = {x.Scale(), y.Scale(), z.Scale()};
  record.offset = {x.Offset(), y.Offset(), z.Offset()};

  // What is not valid, or past the end of the last block, is quantised as a point that is.
  const zPoint3d32f anyPoint{xRange.lowest, yRange.lowest, zRange.lowest};
  const auto block = std::make_unique<PointBlock>();
  for (zSize start = 0; start < cells.size(); start += kBlock) {
    const zSize count = std::min(kBlock, cells.size() - start);
    for (zSize i = 0; i < count; ++i) {
      const zPoint3d32f point = points[start + i];
      block->valid[i] =
          IsFinite(point) && (invalidPoint == nullptr || !Matches(point, *invalidPoint));
      const zPoint3d32f& used = block->valid[i] ? point : anyPoint;
      block->x[i] = used.x;
      block->y[i] = used.y;
      block->z[i] = used.z;
    }
    x.Quantize(block->x, block->rawX);
    y.Quantize(block->y, block->rawY);
    z.Quantize(block->z, block->rawZ);
    for (zSize i = 0; i < count; ++i) {
      cells[start + i] = block->valid[i]
                             ? zPoint3d16s{block->rawX[i], block->rawY[i], block->rawZ[i]}
                             : kInvalidPoint;
    }
  }
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
