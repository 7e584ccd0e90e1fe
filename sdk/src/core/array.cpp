// SPDX-License-Identifier: MIT
#include "core/array.h"

#include <cstring>

using sdk::Array;
using sdk::As;

namespace sdk {

bool Array::Load() const noexcept {
  if (items_ != nullptr) return true;
  items_ = AllocateBlock(alloc_, Size(), Fill::none);
  if (items_ == nullptr) return false;
  if (Size() > 0) std::memcpy(items_.get(), source_.get(), Size());
  source_.reset();
  return true;
}

std::byte* Array::EditableItems() noexcept {
  if (!Load()) return nullptr;
  if (items_.use_count() > 1) {
    Block copy = AllocateBlock(alloc_, Size(), Fill::none);
    if (copy == nullptr) return nullptr;
    if (Size() > 0) std::memcpy(copy.get(), items_.get(), Size());
    items_ = std::move(copy);
  }
  return items_.get();
}

bool Array::SameShape(const Array& other) const noexcept {
  return itemType_ == other.itemType_ && lengths_[0] == other.lengths_[0] &&
         lengths_[1] == other.lengths_[1];
}

zStatus MakeArray(zType itemType, z64s length0, z64s length1, Fill fill, zAlloc alloc,
                  Owned<Array>& array) noexcept {
  if (alloc == nullptr || zType_Size(itemType) == 0 || length0 < 0 || length1 < 0) {
    return zERROR_PARAMETER;
  }
  const auto rows = static_cast<z64u>(length0);
  const auto columns = static_cast<z64u>(length1);
  z64u count = 0;
  z64u bytes = 0;
  if (!Multiply(rows, columns, count) || !Multiply(count, zType_Size(itemType), bytes)) {
    return zERROR_MEMORY;
  }
  Block items = AllocateBlock(alloc, bytes, fill);
  if (items == nullptr) return zERROR_MEMORY;
  array = Make<Array>(itemType, rows, columns, std::move(items), alloc);
  return array == nullptr ? zERROR_MEMORY : zOK;
}

}  // namespace sdk

zSize zType_Size(zType type) noexcept {
  switch (type) {
    case zType::z8u:
      return sizeof(z8u);
    case zType::z16s:
      return sizeof(z16s);
    case zType::z32s:
      return sizeof(z32s);
    case zType::z32u:
      return sizeof(z32u);
    case zType::z32f:
      return sizeof(z32f);
    case zType::z64f:
      return sizeof(z64f);
    case zType::zPoint16s:
      return sizeof(zPoint16s);
    case zType::zPoint3d16s:
      return sizeof(zPoint3d16s);
    case zType::zPoint3d32f:
      return sizeof(zPoint3d32f);
    case zType::none:
    case zType::zString:
      break;
  }
  return 0;
}

zStatus zArray1_Construct(zArray1* array, zType itemType, z64s length, zAlloc alloc) noexcept {
  return zArray2_Construct(array, itemType, length, 1, alloc);
}

zStatus zArray2_Construct(zArray2* array, zType itemType, z64s length0, z64s length1,
                          zAlloc alloc) noexcept {
  if (array == nullptr) return zERROR_PARAMETER;
  sdk::Owned<Array> made;
  const zStatus status = sdk::MakeArray(itemType, length0, length1, sdk::Fill::none, alloc, made);
  return status == zOK ? sdk::HandOut(array, std::move(made)) : status;
}

zType zArray_ItemType(zObject array) noexcept {
  const Array* items = As<Array>(array);
  return items == nullptr ? zType::none : items->ItemType();
}

zSize zArray_Count(zObject array) noexcept {
  const Array* items = As<Array>(array);
  return items == nullptr ? 0 : items->Count();
}

const void* zArray_Data(zObject array) noexcept {
  const Array* items = As<Array>(array);
  return items == nullptr ? nullptr : items->Items();
}

void* zArray_EditableData(zObject array) noexcept {
  Array* items = As<Array>(array);
  return items == nullptr ? nullptr : items->EditableItems();
}
