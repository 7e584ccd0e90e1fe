// SPDX-License-Identifier: MIT
#include "formats/pcd/writer.h"

#include <algorithm>
#include <array>
#include <limits>

#include "formats/pcd/layout.h"
#include "scan/points.h"
#include "scan/surfacestream.h"
#include "statuses.h"

namespace {

// In the file: bits 0x7FC00000, a quiet not-a-number.
constexpr z32f kNaN = std::numeric_limits<z32f>::quiet_NaN();

template <class Raw>
zPoint3d32f RealPoint(const RealPoints& real, z32u row, z32u column, const Raw& raw) {
  const bool valid = IsValid(raw);
  const zPoint3d64f point = real(row, column, raw);
  return {valid ? static_cast<z32f>(point.x) : kNaN, valid ? static_cast<z32f>(point.y) : kNaN,
          valid ? static_cast<z32f>(point.z) : kNaN};
}

// Turns the raw points of a grid, which come row by row in spans of any size, into real ones, and
// gives them to `use` a block at a time.
template <class Use>
class Cells {
 public:
  Cells(const Scan& scan, Use use) : real_(scan), width_(scan.width), use_(std::move(use)) {}

  template <class Raw>
  void Append(std::span<const Raw> raws) {
    while (!raws.empty()) {
      const zSize count = std::min({raws.size(), zSize{width_ - column_}, block_.size() - count_});
      for (zSize i = 0; i < count; ++i) {
        block_[count_ + i] = RealPoint(real_, row_, column_ + static_cast<z32u>(i), raws[i]);
      }
      raws = raws.subspan(count);
      count_ += count;
      column_ += static_cast<z32u>(count);
      if (column_ == width_) {
        column_ = 0;
        ++row_;
      }
      if (count_ == block_.size()) Flush();
    }
  }

  void Flush() {
    use_(std::span<const zPoint3d32f>(block_.data(), count_));
    count_ = 0;
  }

 private:
  RealPoints real_;
  z32u width_;
  Use use_;
  z32u row_ = 0, column_ = 0;  // of the next point
  std::array<zPoint3d32f, 8192> block_;
  zSize count_ = 0;
};

// Gives the real points of all cells to `use`. `give` appends the raw ones.
template <class Give, class Use>
void ForEachBlock(const Scan& scan, const Give& give, Use use) {
  Cells<Use> cells(scan, std::move(use));
  give(cells);
  cells.Flush();
}

// Appends the points of a scan in memory.
auto PointsOf(const Scan& scan) {
  return [&scan](auto& cells) { WithPoints(scan, [&](auto points) { cells.Append(points); }); };
}

struct IntensePoint {
  zPoint3d32f point;
  z32f intensity;  // 0..1
};

template <class Give>
zStatus Write(const Scan& scan, zStream stream, const Give& give) {
  if (stream == nullptr) return kRefused;
  const bool hasIntensities = static_cast<bool>(scan.intensities);
  const std::string header = FormatPcdHeader(scan.width, scan.length, hasIntensities);
  zStatus status = zStream_Write(stream, header.data(), header.size());
  if (status != zOK) return status;
  // After a failure nothing more is written.
  const auto write = [&](auto records) {
    if (status == zOK) status = zStream_Write(stream, records.data(), records.size_bytes());
  };
  if (!hasIntensities) {
    ForEachBlock(scan, give, write);
    return status;
  }
  std::array<z32f, 256> intensities;
  for (zSize i = 0; i < intensities.size(); ++i) intensities[i] = static_cast<z32f>(i) / 255;
  const z8u* cell = zArray_Items<z8u>(scan.intensities.Get()).data();
  std::vector<IntensePoint> records;
  ForEachBlock(scan, give, [&](std::span<const zPoint3d32f> points) {
    records.resize(points.size());
    std::ranges::transform(points, records.begin(), [&](const zPoint3d32f& point) {
      return IntensePoint{point, intensities[*cell++]};
    });
    write(std::span(records));
  });
  return status;
}

}  // namespace

zStatus GetPcdFileStream(const Plovia::SurfaceStream& surface, zStream stream) {
  return Write(ScanOf(surface), stream, [&](auto& cells) {
    surface.heights([&](std::span<const z16s> heights) { cells.Append(heights); });
  });
}

zStatus GetPcdFileStream(MxMsg message, zStream stream, zAlloc) {
  if (MxMsg_Kind(message) != MxKind::surface) return kRefused;
  Scan scan;
  const zStatus status = GetScan(message, scan);
  return status == zOK ? Write(scan, stream, PointsOf(scan)) : status;
}

void GetAllPointsPcd(MxMsg message, Orv::Object<void*>& list, zAlloc alloc) {
  constexpr Orv::Operation kOperation{"getfilestream", "GetAllPointsPcd"};
  Scan scan;
  const zStatus found =
      MxMsg_Kind(message) == MxKind::surface ? GetScan(message, scan) : kNotImplemented;
  kOperation.Require(found, "");
  if (!list) {
    kOperation.Require(zArrayList_Construct(list.Out(), zType::zPoint3d32f, scan.Count(), alloc),
                       "");
  } else if (zArrayList_ItemType(list.Get()) != zType::zPoint3d32f) {
    kOperation.Fail(kMalformed, "");
  }
  ForEachBlock(scan, PointsOf(scan), [&](std::span<const zPoint3d32f> points) {
    for (const zPoint3d32f& point : points) {
      kOperation.Require(zArrayList_Add(list.Get(), &point), "");
    }
  });
}
