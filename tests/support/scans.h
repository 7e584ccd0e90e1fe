// SPDX-License-Identifier: MIT
// Scan messages and arrays, and what comes out of them.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/message.h"
#include "sdk/object.h"

using Handle = Orv::Object<void*>;

inline zAlloc DefaultAlloc() { return &zAllocator::Default(); }

inline void MustBeOk(zStatus status) {
  if (status != zOK) throw std::runtime_error("status " + std::to_string(status));
}

template <class Item>
Handle MakeArray2(z64s length, z64s width, const std::vector<Item>& items) {
  Handle array;
  MustBeOk(zArray2_Construct(array.Out(), zTypeOf<Item>, length, width, DefaultAlloc()));
  std::ranges::copy(items, zArray_EditableItems<Item>(array.Get()).begin());
  return array;
}

template <class Item>
std::vector<Item> ItemsOf(zObject array) {
  const auto items = zArray_Items<Item>(array);
  return {items.begin(), items.end()};
}

// A uniform surface of any number of rows.
inline Handle MakeSurface(z32u width, z32u length, const std::vector<z16s>& heights,
                          zPoint3d64f scale = {1, 1, 1}, zPoint3d64f offset = {0, 0, 0}) {
  Handle surface;
  MustBeOk(MxSurfaceMsg_ConstructSimple(surface.Out(), width, length, DefaultAlloc()));
  MustBeOk(MxSurfaceMsg_CopyPointsArray(surface.Get(), MakeArray2(length, width, heights).Get()));
  MustBeOk(MxSurfaceMsg_SetScale(surface.Get(), &scale));
  MustBeOk(MxSurfaceMsg_SetOffset(surface.Get(), &offset));
  return surface;
}

// A point cloud in rows.
inline Handle MakeCloudOf(z32u width, z32u length, const std::vector<zPoint3d16s>& points,
                          zPoint3d64f scale = {1, 1, 1}, zPoint3d64f offset = {0, 0, 0}) {
  Handle cloud;
  MustBeOk(MxSurfaceMsg_ConstructUnresampledSimple(cloud.Out(), width, length, DefaultAlloc()));
  MustBeOk(MxSurfaceMsg_CopyPointsArray(cloud.Get(), MakeArray2(length, width, points).Get()));
  MustBeOk(MxSurfaceMsg_SetScale(cloud.Get(), &scale));
  MustBeOk(MxSurfaceMsg_SetOffset(cloud.Get(), &offset));
  return cloud;
}

inline std::vector<z16s> HeightsOf(MxMsg surface) {
  return ItemsOf<z16s>(MxSurfaceMsg_PointsArray(surface, 0));
}

inline Handle MakeStream() {
  Handle stream;
  MustBeOk(zMemory_Construct(stream.Out(), DefaultAlloc()));
  return stream;
}

inline zBytes ToBytes(std::string_view text) {
  const auto* bytes = reinterpret_cast<const z8u*>(text.data());
  return {bytes, bytes + text.size()};
}

inline zBytes First(const zBytes& bytes, zSize size) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

inline zBytes BytesOf(zMemory stream) {
  const auto bytes = zMemory_Bytes(stream);
  return {bytes.begin(), bytes.end()};
}

// Bytes that are read as those of a file are: not in memory, a few at a time, and perhaps only so
// many times.
class PiecedSource final : public zSource {
 public:
  explicit PiecedSource(zBytes bytes, zSize piece = 31, zSize reads = ~zSize{0})
      : bytes_(std::move(bytes)), piece_(piece), readsLeft_(reads) {}

  z64u Size() const noexcept override { return bytes_.size(); }
  void Read(z64u offset, void* destination, zSize size) const override {
    if (offset > bytes_.size() || size > bytes_.size() - offset) throw std::logic_error("outside");
    if (readsLeft_-- == 0) throw Orv::Exception(0, "test", -997, "Read", "Failed to read it");
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), size,
                static_cast<z8u*>(destination));
  }
  zSize Piece() const noexcept override { return piece_; }

 private:
  zBytes bytes_;
  zSize piece_;
  mutable zSize readsLeft_;
};

inline zSourcePtr SourceOf(const zBytes& bytes, zSize piece = 31) {
  return std::make_shared<PiecedSource>(bytes, piece);
}

// What an operation throws, as "status function: message"; empty when it does not throw.
template <class Operation>
std::string Thrown(Operation operation) {
  try {
    operation();
  } catch (const Orv::Exception& error) {
    return std::to_string(error.Status()) + " " + error.Function() + ": " + error.what();
  }
  return {};
}
