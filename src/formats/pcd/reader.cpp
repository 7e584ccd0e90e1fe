// SPDX-License-Identifier: MIT
#include "formats/pcd/reader.h"

#include <algorithm>

#include "formats/pcd/quantize.h"
#include "formats/pcd/validation.h"
#include "scan/points.h"
#include "statuses.h"

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
      Append(static_cast<z8u>(WholeIntensity(bytes + *cloud.intensity)));
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

void ChooseSize(const PcdCloud& cloud, const PcdOptions& options, Scan& record) {
  if (options.width != 0 && options.height != 0) {
    record.width = options.width;
    record.length = options.height;
  } else if (cloud.IsLine()) {
    record.width = record.length = cloud.SquareSide();
  } else {
    record.width = cloud.width;
    record.length = cloud.height;
  }
}

zStatus FillSurface(const zSource& file, const PcdFile& pcd, const PcdOptions& options,
                    Scan& record, zAlloc alloc) {
  const PcdCloud& cloud = pcd.cloud;
  const bool hasIntensities = cloud.intensity || cloud.color;
  const z64u cellCount = z64u{record.width} * record.length;
  const zSize cellSize = sizeof(zPoint3d16s) + (hasIntensities ? sizeof(z8u) : 0);
  if (cellCount > kLargestSurface / cellSize) return zERROR_MEMORY;
  zStatus status = zArray2_Construct(record.points.Out(), zType::zPoint3d16s, record.length,
                                     record.width, alloc);
  if (status != zOK) return status;

  record.intensities.Reset();
  if (hasIntensities) {
    status =
        zArray2_Construct(record.intensities.Out(), zType::z8u, record.length, record.width, alloc);
    if (status != zOK) return status;
  }
  IntensityWriter intensities(zArray_EditableItems<z8u>(record.intensities.Get()));
  RecordVisitor visit;
  if (hasIntensities) {
    visit = [&](const z8u* bytes, zSize count) {
      for (zSize i = 0; i < count; ++i) intensities.AppendRecord(bytes + i * cloud.stride, cloud);
    };
  }

  PcdRecords records(file, pcd.dataStart, cloud);
  const std::span<zPoint3d16s> cells = zArray_EditableItems<zPoint3d16s>(record.points.Get());
  const auto pointCount = static_cast<zSize>(std::min(cellCount, cloud.PointCount()));
  QuantizePoints(cells.first(pointCount), records, cloud, options, record, visit);
  std::ranges::fill(cells.subspan(pointCount), kInvalidPoint);
  intensities.FillUp();
  return zOK;
}

}  // namespace

zStatus LoadPcdFileBuffer(const zSource& file, Scan& record, const PcdOptions& options,
                          zAlloc alloc, const Listener& listener) {
  if (file.Size() == 0) return kRefused;
  PcdFile pcd;
  const Complaints complaints = ValidatePcd(file, pcd);
  if (!complaints.empty() && complaints.front().status == kMalformed) return kMalformed;
  record.kind = ScanKind::cloud;
  ChooseSize(pcd.cloud, options, record);
  if (z64u{record.width} * record.length != pcd.cloud.PointCount()) {
    Tell(listener, NoticeKind::warning,
         "The export surface's size is [%d, %d] and the input surface's size is [%d, %d]",
         record.width, record.length, pcd.cloud.width, pcd.cloud.height);
  }
  if (!complaints.empty()) return complaints.front().status;
  return FillSurface(file, pcd, options, record, alloc);
}
