// SPDX-License-Identifier: MIT
#include "core/object.h"

namespace {

// Texts stand in a vector of their own, other items one behind the other as bytes.
class List : public sdk::SharedObject {
 public:
  explicit List(zType itemType) noexcept : itemType_(itemType) {}

  zStatus Reserve(zSize capacity) noexcept try {
    if (itemType_ == zType::zString) {
      texts_.reserve(capacity);
    } else if (capacity <= bytes_.max_size() / zType_Size(itemType_)) {
      bytes_.reserve(capacity * zType_Size(itemType_));
    } else {
      return zERROR_MEMORY;
    }
    return zOK;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }

  zStatus Add(const void* item) noexcept try {
    if (itemType_ == zType::zString) {
      texts_.push_back(*static_cast<const zString*>(item));
    } else {
      const auto* bytes = static_cast<const z8u*>(item);
      bytes_.insert(bytes_.end(), bytes, bytes + zType_Size(itemType_));
    }
    return zOK;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }

  zType ItemType() const noexcept { return itemType_; }
  zSize Count() const noexcept {
    return itemType_ == zType::zString ? texts_.size() : bytes_.size() / zType_Size(itemType_);
  }
  const void* At(zSize index) const noexcept {
    if (index >= Count()) return nullptr;
    if (itemType_ == zType::zString) return &texts_[index];
    return bytes_.data() + index * zType_Size(itemType_);
  }

 private:
  zType itemType_;
  zBytes bytes_;
  std::vector<zString> texts_;
};

}  // namespace

zStatus zArrayList_Construct(zArrayList* list, zType itemType, zSize capacity,
                             zAlloc alloc) noexcept {
  if (list == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  if (itemType != zType::zString && zType_Size(itemType) == 0) return zERROR_PARAMETER;
  auto made = sdk::Make<List>(itemType);
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
