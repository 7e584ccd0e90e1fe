// SPDX-License-Identifier: MIT
// One- and two-dimensional arrays. The items may be shared with other arrays, or be a view into a
// recording's payload; they are copied before the first edit.
#pragma once

#include "core/block.h"
#include "core/object.h"

namespace sdk {

class Array : public SharedObject {
 public:
  // `items` holds length0 * length1 items of the type; a one-dimensional array has a length1 of 1.
  Array(zType itemType, z64u length0, z64u length1, Block items, zAlloc alloc) noexcept
      : itemType_(itemType), lengths_{length0, length1}, items_(std::move(items)), alloc_(alloc) {}
  // Items that stand anywhere in memory, aligned or not, and are copied when they are first needed.
  Array(zType itemType, z64u length0, z64u length1, std::shared_ptr<const z8u> source,
        zAlloc alloc) noexcept
      : itemType_(itemType),
        lengths_{length0, length1},
        source_(std::move(source)),
        alloc_(alloc) {}

  zType ItemType() const noexcept { return itemType_; }
  z64u Length(zSize dimension) const noexcept { return dimension < 2 ? lengths_[dimension] : 0; }
  zSize Count() const noexcept { return static_cast<zSize>(lengths_[0] * lengths_[1]); }
  zSize Size() const noexcept { return Count() * zType_Size(itemType_); }  // bytes
  // Whether the items are there, after copying them where that is due; false when there is no
  // memory for them, and then Items and EditableItems are null.
  bool Load() const noexcept;
  const std::byte* Items() const noexcept { return Load() ? items_.get() : nullptr; }
  // Null when shared items cannot be copied.
  std::byte* EditableItems() noexcept;

  bool SameShape(const Array& other) const noexcept;
  // `other` has been loaded.
  void ShareItemsOf(const Array& other) noexcept { items_ = other.items_; }

 private:
  zType itemType_;
  z64u lengths_[2];
  mutable Block items_;                        // null until the source is copied
  mutable std::shared_ptr<const z8u> source_;  // null once it has been copied
  zAlloc alloc_;
};

// Fails like zArray2_Construct.
zStatus MakeArray(zType itemType, z64s length0, z64s length1, Fill fill, zAlloc alloc,
                  Owned<Array>& array) noexcept;

}  // namespace sdk
