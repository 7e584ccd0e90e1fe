// SPDX-License-Identifier: MIT
#include <new>

#include "pipeline/payload.h"
#include "scan_message_generated.h"

namespace fb = trelvane;

namespace sdk::replay {

namespace {

constexpr Orv::Operation kOperation{"pipeline", "Plovia::ReplaySerializer"};

// Tables, tags and padding of one scan around its arrays, rounded up generously.
constexpr z64u kScanOverhead = 512;

z64u ScanSizeBound(const Scan& scan) {
  return kScanOverhead + scan.points->Size() +
         (scan.intensities == nullptr ? 0 : scan.intensities->Size());
}

fb::Vec3 ToVec3(const zPoint3d64f& point) { return {point.x, point.y, point.z}; }

fb::Box ToBox(const BoundingBox6& box) { return {ToVec3(box.center), ToVec3(box.size)}; }

fb::Stamp ToStamp(const MxStamp& stamp) {
  return {stamp.frame,  stamp.time,        stamp.encoder,     stamp.zEncoder,
          stamp.inputs, stamp.reserved[0], stamp.reserved[1], stamp.reserved[2]};
}

fb::PointType ToPointType(zType type) {
  return type == zType::zPoint3d16s ? fb::PointType::Point3d
         : type == zType::zPoint16s ? fb::PointType::Point2d
                                    : fb::PointType::Height;
}

// Bytes that the FlatBuffer of a message takes at most.
zSize CheckedSizeBound(const sdk::Message& message) {
  z64u bound = 0;
  if (message.Kind() == MxKind::array) {
    bound = kScanOverhead;
    for (const auto& item : static_cast<const ArrayMessage&>(message).items) {
      bound += ScanSizeBound(*item);
    }
  } else {
    bound = ScanSizeBound(static_cast<const Scan&>(message));
  }
  if (bound >= FLATBUFFERS_MAX_BUFFER_SIZE) {
    kOperation.Fail(zERROR_MEMORY, "A message of %llu bytes is too large for a recording", bound);
  }
  return static_cast<zSize>(bound);
}

template <class Kind, class... Args>
Owned<Kind> MakeOrThrow(Args&&... args) {
  auto made = Make<Kind>(std::forward<Args>(args)...);
  return made != nullptr ? std::move(made) : throw std::bad_alloc();
}

}  // namespace

Owned<Array> MakeHollowArray(zType type, z32u width, z32u length) {
  return MakeOrThrow<Array>(type, length, width, Block(), &zAllocator::Default());
}

Owned<Surface> MakeHollowSurface(zType pointType, z32u width, z32u length) {
  return MakeOrThrow<Surface>(MakeHollowArray(pointType, width, length), &zAllocator::Default());
}

PayloadBuilder::PayloadBuilder(const sdk::Message& message) : builder_(CheckedSizeBound(message)) {
  flatbuffers::Offset<fb::ScanMessage> root;
  if (message.Kind() == MxKind::array) {
    std::vector<flatbuffers::Offset<fb::ScanMessage>> items;
    for (const auto& item : static_cast<const ArrayMessage&>(message).items) {
      items.push_back(BuildScan(*item));
    }
    const auto array = fb::CreateArray(builder_, builder_.CreateVector(items));
    root = fb::CreateScanMessage(builder_, fb::ScanData::Array, array.Union());
  } else {
    root = BuildScan(static_cast<const Scan&>(message));
  }
  fb::FinishScanMessageBuffer(builder_, root);
}

template <class Item>
flatbuffers::Offset<flatbuffers::Vector<Item>> PayloadBuilder::LeaveHole(const Array& array) {
  // Points are runs of 16-bit coordinates.
  Item* items = nullptr;
  const flatbuffers::Offset<flatbuffers::Vector<Item>> vector =
      builder_.CreateUninitializedVector<Item>(array.Size() / sizeof(Item), &items);
  // The vector's offset, like all while building, counts from the end of the buffer to its length
  // field.
  holes_.push_back({vector.o - sizeof(flatbuffers::uoffset_t), &array});
  return vector;
}

flatbuffers::Offset<fb::ScanMessage> PayloadBuilder::BuildScan(const Scan& scan) {
  const auto points = LeaveHole<z16s>(*scan.points);
  flatbuffers::Offset<flatbuffers::Vector<z8u>> intensities;
  if (scan.intensities != nullptr) intensities = LeaveHole<z8u>(*scan.intensities);
  const fb::PointType type = ToPointType(scan.points->ItemType());
  const fb::Vec3 offset = ToVec3(scan.offset);
  const fb::Vec3 scale = ToVec3(scan.scale);
  const fb::Box box = ToBox(scan.box);
  const fb::Stamp stamp = ToStamp(scan.stamp);
  if (scan.Kind() == MxKind::profile) {
    const auto profile =
        fb::CreateProfile(builder_, static_cast<const Profile&>(scan).PointCount(), type, points,
                          intensities, &offset, &scale, &box, &stamp);
    return fb::CreateScanMessage(builder_, fb::ScanData::Profile, profile.Union());
  }
  const auto& grid = static_cast<const Surface&>(scan);
  const auto surface =
      fb::CreateSurface(builder_, grid.Width(), grid.Length(), type, points, intensities, &offset,
                        &scale, &box, grid.resampled, &stamp);
  return fb::CreateScanMessage(builder_, fb::ScanData::Surface, surface.Union());
}

Bytes PayloadBuilder::Head() const {
  return {builder_.GetBufferPointer(), Size() - (holes_.empty() ? 0 : holes_.back().fromEnd)};
}

void PayloadBuilder::AppendTo(StreamWriter& writer, const std::function<void()>& fill) const {
  const z8u* buffer = builder_.GetBufferPointer();
  zSize done = 0;
  for (auto hole = holes_.rbegin(); hole != holes_.rend(); ++hole) {
    const zSize start = Size() - hole->fromEnd;
    writer.Append(buffer + done, start - done);
    if (hole->array->Items() == nullptr) {
      fill();
    } else {
      writer.Append(hole->array->Items(), hole->array->Size());
    }
    done = start + hole->array->Size();
  }
  writer.Append(buffer + done, Size() - done);
}

}  // namespace sdk::replay
