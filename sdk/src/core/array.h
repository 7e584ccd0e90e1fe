// SPDX-License-Identifier: MIT
// One- and two-dimensional arrays. The items may be shared with other arrays, or lie in a larger
// block; they are copied before the first edit.
#pragma once

#include "core/block.h"
#include "core/object.h"

namespace sdk {

class Array : public SharedObject {
 public:
  // `items` holds length0 * length1 items of the type; a one-dimensional array has a length1 of 1.
  Array(zType itemType, z64u length0, z64u length1, Block items, zAlloc alloc) noexcept
      : itemType_(itemType), lengths_{length0, length1}, items_(std::move(items)), alloc_(alloc) {}

  zType ItemType() const noexcept { return itemType_; }
  z64u Length(zSize dimension) const noexcept { return dimension < 2 ? lengths_[dimension] : 0; }
  zSize Count() const noexcept { return static_cast<zSize>(lengths_[0] * lengths_[1]); }
  zSize Size() const noexcept { return Count() * zType_Size(itemType_); }  // bytes
  const std::byte* Items() const noexcept { return items_.get(); }
  // Null when shared items cannot be copied.
  std::byte* EditableItems() noexcept;

  bool SameShape(const Array& other) const noexcept;
  void ShareItemsOf(const Array& other) noexcept { items_ = other.items_; }

 private:
  zType itemType_;
  z64u lengths_[2];
  Block items_;
  zAlloc alloc_;
};

// Fails like zArray2_Construct.
zStatus MakeArray(zType itemType, z64s length0, z64s length1, Fill fill, zAlloc alloc,
                  Owned<Array>& array) noexcept;

}  // namespace sdk
