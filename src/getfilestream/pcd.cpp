// SPDX-License-Identifier: MIT
// Point clouds of PCD version 0.7, organised and binary.
// Format: https://pointclouds.org/documentation/tutorials/pcd_file_format.html
#include <array>
#include <limits>
#include <string>

#include "getfilestream/getfilestream.h"

namespace {

// In the file: bits 0x7FC00000, a quiet not-a-number.
constexpr z32f kNaN = std::numeric_limits<z32f>::quiet_NaN();
constexpr zPoint3d32f kInvalidPoint{kNaN, kNaN, kNaN};

z32f ToReal(z64f raw, z64f scale, z64f offset) { return static_cast<z32f>(raw * scale + offset); }

// Throws an exception without a text unless the status is 1.
void Require(int line, zStatus status) {
  if (status != zOK) throw Orv::Exception(line, "getfilestream", status, "GetAllPointsPcd", "");
}

// The type of a surface's points. Throws for one that is not known.
zType RequirePointType(MxMsg message) {
  const zType type = MxSurfaceMsg_PointType(message);
  const bool known = type == zType::z16s || type == zType::zPoint3d16s;
  Require(__LINE__, known ? zOK : kNotImplemented);
  return type;
}

// Gives the point of each cell to `use`, row by row.
template <class Use>
void ForEachPoint(MxMsg message, Use use) {
  const zType type = RequirePointType(message);
  const z32u width = MxSurfaceMsg_Width(message);
  const z32u length = width == 0 ? 0 : MxSurfaceMsg_Length(message);  // rows of nothing are many
  const zPoint3d64f scale = *MxSurfaceMsg_Scale(message);
  const zPoint3d64f offset = *MxSurfaceMsg_Offset(message);
  for (z32u row = 0; row < length; ++row) {
    const void* const points = MxSurfaceMsg_Points(message, row);
    if (type == zType::z16s) {
      const auto* heights = static_cast<const z16s*>(points);
      const z32f y = ToReal(row, scale.y, offset.y);
      for (z32u column = 0; column < width; ++column) {
        const z16s height = heights[column];
        use(height == kInvalidRaw ? kInvalidPoint
                                  : zPoint3d32f{ToReal(column, scale.x, offset.x), y,
                                                ToReal(height, scale.z, offset.z)});
      }
    } else {
      const auto* raws = static_cast<const zPoint3d16s*>(points);
      for (z32u column = 0; column < width; ++column) {
        const zPoint3d16s raw = raws[column];
        const bool invalid = raw.x == kInvalidRaw || raw.y == kInvalidRaw || raw.z == kInvalidRaw;
        use(invalid
                ? kInvalidPoint
                : zPoint3d32f{ToReal(raw.x, scale.x, offset.x), ToReal(raw.y, scale.y, offset.y),
                              ToReal(raw.z, scale.z, offset.z)});
      }
    }
  }
}

// Collects records in a block, which is written when it is full. After a failure nothing more is
// written.
template <class Record>
class RecordWriter {
 public:
  explicit RecordWriter(zMemory stream) : stream_(stream) {}

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

  zMemory stream_;
  std::array<Record, 1024> block_;
  zSize count_ = 0;
  zStatus status_ = zOK;
};

struct IntensePoint {
  zPoint3d32f point;
  z32f intensity;  // 0..1
};

std::string MakeHeader(MxMsg message) {
  const z32u width = MxSurfaceMsg_Width(message);
  const z32u length = MxSurfaceMsg_Length(message);
  std::string header =
      "# .PCD v0.7 - Point Cloud Data file format\n"
      "# Saved by Brenlow\n"
      "VERSION 0.7\n";
  header += MxSurfaceMsg_HasIntensity(message)
                ? "FIELDS x y z intensity\nSIZE 4 4 4 4\nTYPE F F F F\nCOUNT 1 1 1 1\n"
                : "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\n";
  header += "WIDTH " + std::to_string(width) + "\nHEIGHT " + std::to_string(length) + "\n";
  header += "VIEWPOINT 0 0 0 1 0 0 0\n";
  header += "POINTS " + std::to_string(z64u{width} * length) + "\nDATA binary\n";
  return header;
}

zStatus WritePoints(MxMsg message, zMemory stream) {
  RecordWriter<zPoint3d32f> writer(stream);
  ForEachPoint(message, [&](const zPoint3d32f& point) { writer.Append(point); });
  return writer.Finish();
}

zStatus WriteIntensePoints(MxMsg message, zMemory stream) {
  std::array<z32f, 256> intensities;
  for (zSize i = 0; i < intensities.size(); ++i) intensities[i] = static_cast<z32f>(i) / 255;
  const z8u* cell = zArray_Items<z8u>(MxSurfaceMsg_Intensities(message, 0)).data();
  RecordWriter<IntensePoint> writer(stream);
  ForEachPoint(message, [&](const zPoint3d32f& point) {
    writer.Append({point, intensities[*cell++]});
  });
  return writer.Finish();
}

}  // namespace

zStatus GetPcdFileStream(MxMsg message, zMemory stream, zAlloc) {
  if (MxMsg_Kind(message) != MxKind::surface || stream == nullptr) return kRefused;
  const std::string header = MakeHeader(message);
  const bool hasIntensity = MxSurfaceMsg_HasIntensity(message);
  if (hasIntensity && MxSurfaceMsg_Intensities(message, 0) == nullptr) return zERROR_MEMORY;
  const zSize cells = zArray_Count(MxSurfaceMsg_PointsArray(message, 0));
  const zSize size = cells * (hasIntensity ? sizeof(IntensePoint) : sizeof(zPoint3d32f));
  zStatus status = zMemory_Reserve(stream, zMemory_Position(stream) + header.size() + size);
  if (status == zOK) status = zStream_Write(stream, header.data(), header.size());
  if (status != zOK) return status;
  return hasIntensity ? WriteIntensePoints(message, stream) : WritePoints(message, stream);
}

void GetAllPointsPcd(MxMsg message, Orv::Object<void*>& list, zAlloc alloc) {
  RequirePointType(message);
  if (!list) {
    const zSize cells = zArray_Count(MxSurfaceMsg_PointsArray(message, 0));
    Require(__LINE__, zArrayList_Construct(list.Out(), zType::zPoint3d32f, cells, alloc));
  } else if (zArrayList_ItemType(list.Get()) != zType::zPoint3d32f) {
    Require(__LINE__, kMalformed);
  }
  ForEachPoint(message, [&](const zPoint3d32f& point) {
    Require(__LINE__, zArrayList_Add(list.Get(), &point));
  });
}
