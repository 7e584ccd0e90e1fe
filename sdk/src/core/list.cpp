// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "core/block.h"
#include "core/object.h"

namespace {

// Items are bytes in a block that doubles, texts stand in a vector.
class List : public sdk::SharedObject {
 public:
  List(zType itemType, zAlloc alloc) noexcept : itemType_(itemType), alloc_(alloc) {}

  zStatus Reserve(zSize capacity) noexcept {
    if (itemType_ == zType::zString) return ReserveTexts(capacity);
    if (capacity <= capacity_) return zOK;
    z64u bytes = 0;
    if (!sdk::Multiply(capacity, zType_Size(itemType_), bytes)) return zERROR_MEMORY;
    sdk::Block grown = sdk::AllocateBlock(alloc_, bytes, sdk::Fill::none);
    if (grown == nullptr) return zERROR_MEMORY;
    if (count_ > 0) std::memcpy(grown.get(), items_.get(), count_ * zType_Size(itemType_));
    items_ = std::move(grown);
    capacity_ = capacity;
    return zOK;
  }

  zStatus Add(const void* item) noexcept {
    if (itemType_ == zType::zString) return AddText(*static_cast<const zString*>(item));
    if (count_ == capacity_) {
      const zStatus status = Reserve(std::max<zSize>(16, 2 * capacity_));
      if (status != zOK) return status;
    }
    const zSize size = zType_Size(itemType_);
    std::memcpy(items_.get() + count_ * size, item, size);
    ++count_;
    return zOK;
  }

  zType ItemType() const noexcept { return itemType_; }
  zSize Count() const noexcept { return itemType_ == zType::zString ? texts_.size() : count_; }
  const void* At(zSize index) const noexcept {
    if (index >= Count()) return nullptr;
    if (itemType_ == zType::zString) return &texts_[index];
    return items_.get() + index * zType_Size(itemType_);
  }

 private:
  zStatus ReserveTexts(zSize capacity) noexcept {
    try {
      texts_.reserve(capacity);
      return zOK;
    } catch (const std::exception&) {
      return zERROR_MEMORY;
    }
  }

  zStatus AddText(const zString& text) noexcept {
    try {
      texts_.push_back(text);
      return zOK;
    } catch (const std::exception&) {
      return zERROR_MEMORY;
    }
  }

  zType itemType_;
  zAlloc alloc_;
  sdk::Block items_;
  zSize count_ = 0;
  zSize capacity_ = 0;
  std::vector<zString> texts_;
};

}  // namespace

zStatus zArrayList_Construct(zArrayList* list, zType itemType, zSize capacity,
                             zAlloc alloc) noexcept {
  if (list == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  if (itemType != zType::zString && zType_Size(itemType) == 0) return zERROR_PARAMETER;
  auto made = sdk::Make<List>(itemType, alloc);
  if (made == nullptr) return zERROR_MEMORY;
  const zStatus status = made->Reserve(capacity);
  return status == zOK ? sdk::HandOut(list, std::move(made)) : status;
}

zStatus zArrayList_Add(zArrayList list, const void* item) noexcept {
  List* items = sdk::As<List>(list);
  return items == nullptr || item == nullptr ? zERROR_PARAMETER : items->Add(item);
}

zType zArrayList_ItemType(zArrayList list) noexcept {
  const List* items = sdk::As<List>(list);
  return items == nullptr ? zType::none : items->ItemType();
}

zSize zArrayList_Count(zArrayList list) noexcept {
  const List* items = sdk::As<List>(list);
  return items == nullptr ? 0 : items->Count();
}

const void* zArrayList_At(zArrayList list, zSize index) noexcept {
  const List* items = sdk::As<List>(list);
  return items == nullptr ? nullptr : items->At(index);
}
