// SPDX-License-Identifier: MIT
#include "core/array.h"

#include <algorithm>
#include <cstring>
#include <iterator>

using sdk::Array;
using sdk::As;

namespace sdk {

std::byte* Array::EditableItems() noexcept {
  if (items_.use_count() > 1) {
    Block copy = AllocateBlock(alloc_, Size(), Fill::none);
    if (copy == nullptr) return nullptr;
    if (Size() > 0) std::memcpy(copy.get(), items_.get(), Size());
    items_ = std::move(copy);
  }
  return items_.get();
}

bool Array::SameShape(const Array& other) const noexcept {
  return itemType_ == other.itemType_ && std::ranges::equal(lengths_, other.lengths_);
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
  // In the order of zType.
  constexpr zSize kSizes[] = {0,
                              sizeof(z8u),
                              sizeof(z16s),
                              sizeof(z32s),
                              sizeof(z32u),
                              sizeof(z32f),
                              sizeof(z64f),
                              sizeof(zPoint16s),
                              sizeof(zPoint3d16s),
                              sizeof(zPoint3d32f)};
  const auto place = static_cast<zSize>(type);
  return place < std::size(kSizes) ? kSizes[place] : 0;
}

zStatus zArray1_Construct(zArray1* array, zType itemType, z64s length, zAlloc alloc) noexcept {
  return zArray2_Construct(array, itemType, length, 1, alloc);
}

zStatus zArray2_Construct(zArray2* array, zType itemType, z64s length0, z64s length1,
                          zAlloc alloc) noexcept {
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
