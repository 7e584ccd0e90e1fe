// SPDX-License-Identifier: MIT
#include <algorithm>
#include <atomic>

#include "pipeline/payload.h"
#include "pipeline/payload_values.h"

namespace fb = trelvane;

namespace sdk::replay {

namespace {

[[noreturn]] void FailOfMemory() {
  constexpr Orv::Operation kOperation{"pipeline", "Plovia::ReplaySerializer"};
  kOperation.Fail(zERROR_MEMORY,
                  "There is not enough memory for the messages of the recording stream");
}

// Turns the aligned copy of one verified payload into messages, whose arrays lie in it.
class MessageReader {
 public:
  MessageReader(Block copy, zSize size, const Place& place)
      : copy_(std::move(copy)), bytesLeft_(size), place_(place) {}

  Owned<sdk::Message> Read(const fb::ScanMessage& message) {
    if (message.data_type() == fb::ScanData::Array && message.data() != nullptr) {
      return ReadArray(*message.data_as_Array());
    }
    return ReadScan(message);
  }

 private:
  Owned<ArrayMessage> ReadArray(const fb::Array& array) {
    auto message = Checked(Make<ArrayMessage>());
    if (array.items() == nullptr) return message;
    message->items.reserve(array.items()->size());
    for (const fb::ScanMessage* item : *array.items()) {
      message->items.push_back(ReadScan(*item));
    }
    return message;
  }

  Owned<Scan> ReadScan(const fb::ScanMessage& message) {
    if (message.data() != nullptr) {
      if (const fb::Surface* surface = message.data_as_Surface()) return ReadSurface(*surface);
      if (const fb::Profile* profile = message.data_as_Profile()) return ReadProfile(*profile);
    }
    ThrowDamage(place_, "the message holds no surface or profile (union type %u)",
                message.data_type());
  }

  Owned<Surface> ReadSurface(const fb::Surface& surface) {
    const bool cloud = surface.point_type() == fb::PointType::Point3d;
    if (!cloud && surface.point_type() != fb::PointType::Height) ThrowPointType(surface);
    auto points = ViewItems(surface.points(), cloud ? zType::zPoint3d16s : zType::z16s,
                            surface.length(), surface.width());
    auto message = Checked(Make<Surface>(std::move(points), &zAllocator::Default()));
    message->resampled = surface.resampled();
    ReadCommon(surface, *message);
    return message;
  }

  Owned<Profile> ReadProfile(const fb::Profile& profile) {
    const bool cloud = profile.point_type() == fb::PointType::Point2d;
    if (!cloud && profile.point_type() != fb::PointType::Height) ThrowPointType(profile);
    auto points = ViewItems(profile.points(), cloud ? zType::zPoint16s : zType::z16s,
                            profile.point_count(), 1);
    auto message = Checked(Make<Profile>(std::move(points), &zAllocator::Default()));
    ReadCommon(profile, *message);
    return message;
  }

  template <class Table>
  void ReadCommon(const Table& table, Scan& scan) {
    if (table.intensities() != nullptr) {
      scan.intensities = ViewItems(table.intensities(), zType::z8u, scan.points->Length(0),
                                   scan.points->Length(1));
    }
    scan.offset = ToPoint(table.offset(), {});
    scan.scale = ToPoint(table.scale(), {1, 1, 1});
    scan.box = ToBox(table.bounding_box());
    scan.stamp = ToStamp(table.stamp());
  }

  // An array of length0 x length1 items that looks into the payload; `vector` may be absent when
  // there are none.
  template <class Item>
  Owned<Array> ViewItems(const flatbuffers::Vector<Item>* vector, zType type, z64u length0,
                         z64u length1) {
    // Both lengths have 32 bits, so their product fits; the items' size is divided instead of
    // multiplied.
    const z64u items = vector == nullptr ? 0 : vector->size() * sizeof(Item);
    if (items % zType_Size(type) != 0 || items / zType_Size(type) != length0 * length1) {
      ThrowDamage(place_, "an array of %llu x %llu items of %zu bytes holds %llu bytes", length0,
                  length1, zType_Size(type), items);
    }
    Spend(items);
    zSize start = 0;
    if (vector != nullptr) {
      start = static_cast<zSize>(reinterpret_cast<const std::byte*>(vector->data()) - copy_.get());
    }
    return Checked(Make<Array>(type, length0, length1, Block(copy_, copy_.get() + start),
                               &zAllocator::Default()));
  }

  // A FlatBuffer may refer to the same table or vector many times. What the messages hold together
  // must not be more than the payload does, or a small stream could fill the memory.
  void Spend(z64u bytes) {
    constexpr z64u kLeastTableSize = 8;
    if (bytes + kLeastTableSize > bytesLeft_) {
      ThrowDamage(place_, "the items of the message overlap each other");
    }
    bytesLeft_ -= bytes + kLeastTableSize;
  }

  template <class Table>
  [[noreturn]] void ThrowPointType(const Table& table) const {
    ThrowDamage(place_, "point type %u does not belong to its message", table.point_type());
  }

  template <class Kind>
  static Owned<Kind> Checked(Owned<Kind> object) {
    if (object == nullptr) FailOfMemory();
    return object;
  }

  Block copy_;
  z64u bytesLeft_;
  Place place_;
};

}  // namespace

Orv::Object<void*> PayloadReader::Read(PieceReader& reader, z64u payloadSize, const Place& place) {
  if (payloadSize >= FLATBUFFERS_MAX_BUFFER_SIZE) {
    ThrowDamage(place, "a message of %llu bytes is larger than a FlatBuffer can be", payloadSize);
  }
  const auto size = static_cast<zSize>(payloadSize);
  if (copy_ == nullptr || copy_.use_count() > 1 || size > capacity_) {
    copy_.reset();
    copy_ = AllocateBlock(&zAllocator::Default(), size, Fill::none);
    if (copy_ == nullptr) FailOfMemory();
    capacity_ = size;
  }
  // Whoever held it may have been another thread.
  std::atomic_thread_fence(std::memory_order_acquire);
  reader.ReadInto(copy_.get(), size);

  constexpr flatbuffers::uoffset_t kMaxDepth = 8;  // message, array, item, scan
  const auto maxTables = static_cast<flatbuffers::uoffset_t>(size / 4 + 1);
  flatbuffers::Verifier verifier(reinterpret_cast<const z8u*>(copy_.get()), size, kMaxDepth,
                                 maxTables);
  if (!fb::VerifyScanMessageBuffer(verifier)) {
    ThrowDamage(place, "the message of %zu bytes is no intact FlatBuffer of a scan", size);
  }
  const fb::ScanMessage& payload = *fb::GetScanMessage(copy_.get());
  return Orv::Object<void*>(ToHandle(MessageReader(copy_, size, place).Read(payload).release()));
}

}  // namespace sdk::replay
