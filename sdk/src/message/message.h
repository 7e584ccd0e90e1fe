// SPDX-License-Identifier: MIT
// The messages behind the handles.
#pragma once

#include <vector>

#include "core/array.h"
#include "sdk/message.h"

namespace sdk {

class Message : public SharedObject {
 public:
  virtual MxKind Kind() const noexcept = 0;
  virtual const MxStamp* Stamp() const noexcept = 0;
};

// What surfaces and profiles have in common.
class Scan : public Message {
 public:
  Scan(Owned<Array> pointsArray, zAlloc allocator) noexcept
      : points(std::move(pointsArray)), alloc(allocator) {}

  const MxStamp* Stamp() const noexcept override { return &stamp; }

  Owned<Array> points;       // never null
  Owned<Array> intensities;  // null, or z8u in the shape of the points
  zAlloc alloc;
  zPoint3d64f offset{};
  zPoint3d64f scale{1, 1, 1};
  BoundingBox6 box{};
  MxStamp stamp{};
};

class Surface final : public Scan {
 public:
  using Scan::Scan;
  MxKind Kind() const noexcept override { return MxKind::surface; }
  z32u Width() const noexcept { return static_cast<z32u>(points->Length(1)); }
  z32u Length() const noexcept { return static_cast<z32u>(points->Length(0)); }

  bool resampled = false;
};

class Profile final : public Scan {
 public:
  using Scan::Scan;
  MxKind Kind() const noexcept override { return MxKind::profile; }
  z32u PointCount() const noexcept { return static_cast<z32u>(points->Length(0)); }
};

class ArrayMessage final : public Message {
 public:
  MxKind Kind() const noexcept override { return MxKind::array; }
  const MxStamp* Stamp() const noexcept override {
    return items.empty() ? nullptr : items.front()->Stamp();
  }

  std::vector<Owned<Scan>> items;
};

// Setters and accessors of surfaces (Kind = Surface) and profiles (Kind = Profile).
template <class Kind, class Value>
zStatus SetValue(MxMsg message, Value Scan::*field, const Value* value) noexcept {
  Kind* scan = As<Kind>(message);
  if (scan == nullptr || value == nullptr) return zERROR_PARAMETER;
  scan->*field = *value;
  return zOK;
}

template <class Kind, class Value>
const Value* ValueOf(MxMsg message, Value Scan::*field) noexcept {
  const Kind* scan = As<Kind>(message);
  return scan == nullptr ? nullptr : &(scan->*field);
}

template <class Kind>
zObject ArrayOf(MxMsg message, Owned<Array> Scan::*field) noexcept {
  const Kind* scan = As<Kind>(message);
  if (scan == nullptr || scan->*field == nullptr) return nullptr;
  return ToHandle((scan->*field).get());
}

// The message's array takes the items of one of its own shape and type.
template <class Kind>
zStatus CopyArray(MxMsg message, Owned<Array> Scan::*field, zObject source) noexcept {
  const Kind* scan = As<Kind>(message);
  const Array* items = As<Array>(source);
  if (scan == nullptr || items == nullptr || scan->*field == nullptr) return zERROR_PARAMETER;
  if (!(scan->*field)->SameShape(*items)) return zERROR_PARAMETER;
  (scan->*field)->ShareItemsOf(*items);
  return zOK;
}

template <class Kind>
zStatus AllocateIntensity(MxMsg message, zType itemType) noexcept {
  Kind* scan = As<Kind>(message);
  if (scan == nullptr || itemType != zType::z8u) return zERROR_PARAMETER;
  const auto rows = static_cast<z64s>(scan->points->Length(0));
  const auto columns = static_cast<z64s>(scan->points->Length(1));
  return MakeArray(itemType, rows, columns, Fill::zeros, scan->alloc, scan->intensities);
}

}  // namespace sdk
