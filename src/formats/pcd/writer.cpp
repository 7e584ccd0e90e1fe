// SPDX-License-Identifier: MIT
#include "formats/pcd/writer.h"

#include <array>
#include <limits>

#include "formats/pcd/layout.h"
#include "scan/points.h"
#include "statuses.h"

namespace {

// In the file: bits 0x7FC00000, a quiet not-a-number.
constexpr z32f kNaN = std::numeric_limits<z32f>::quiet_NaN();

// Gives the real point of each cell to `use`, row by row.
template <class Use>
void ForEachCell(const Scan& scan, Use use) {
  const RealPoints real(scan);
  ForEachPoint(scan, [&](z32u row, z32u column, const auto& raw) {
    if (!IsValid(raw)) return use(zPoint3d32f{kNaN, kNaN, kNaN});
    const zPoint3d64f point = real(row, column, raw);
    use(zPoint3d32f{static_cast<z32f>(point.x), static_cast<z32f>(point.y),
                    static_cast<z32f>(point.z)});
  });
}

// Collects records in a block, which is written when it is full. After a failure nothing more is
// written.
template <class Record>
class RecordWriter {
 public:
  explicit RecordWriter(zStream stream) : stream_(stream) {}

  void Append(const Record& record) {
    block_[count_++] = record;
    if (count_ == block_.size()) Flush();
  }

  zStatus Finish() {
    Flush();
    return status_;
  }

 private:
  void Flush() {
    if (status_ == zOK) status_ = zStream_Write(stream_, block_.data(), count_ * sizeof(Record));
    count_ = 0;
  }

  zStream stream_;
  std::array<Record, 8192> block_;
  zSize count_ = 0;
  zStatus status_ = zOK;
};

struct IntensePoint {
  zPoint3d32f point;
  z32f intensity;  // 0..1
};

zStatus WritePoints(const Scan& scan, zStream stream) {
  RecordWriter<zPoint3d32f> writer(stream);
  ForEachCell(scan, [&](const zPoint3d32f& point) { writer.Append(point); });
  return writer.Finish();
}

zStatus WriteIntensePoints(const Scan& scan, zStream stream) {
  std::array<z32f, 256> intensities;
  for (zSize i = 0; i < intensities.size(); ++i) intensities[i] = static_cast<z32f>(i) / 255;
  const z8u* cell = zArray_Items<z8u>(scan.intensities.Get()).data();
  RecordWriter<IntensePoint> writer(stream);
  ForEachCell(scan, [&](const zPoint3d32f& point) {
    writer.Append({point, intensities[*cell++]});
  });
  return writer.Finish();
}

}  // namespace

zStatus GetPcdFileStream(MxMsg message, zStream stream, zAlloc) {
  if (MxMsg_Kind(message) != MxKind::surface || stream == nullptr) return kRefused;
  Scan scan;
  zStatus status = GetScan(message, scan);
  if (status != zOK) return status;
  const bool hasIntensities = static_cast<bool>(scan.intensities);
  const std::string header = FormatPcdHeader(scan.width, scan.length, hasIntensities);
  status = zStream_Write(stream, header.data(), header.size());
  if (status != zOK) return status;
  return hasIntensities ? WriteIntensePoints(scan, stream) : WritePoints(scan, stream);
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
  ForEachCell(scan, [&](const zPoint3d32f& point) {
    kOperation.Require(zArrayList_Add(list.Get(), &point), "");
  });
}
