// SPDX-License-Identifier: MIT
#include "core/array.h"
#include "core/stream.h"

namespace {

class Serializer : public sdk::SharedObject {
 public:
  explicit Serializer(zStream underlying) noexcept : stream(underlying) {}

  const zStream stream;
};

// Whether `count` items of the type can stand at `items`.
bool Countable(zType type, const void* items, zSize count) noexcept {
  const zSize size = zType_Size(type);
  return size != 0 && count <= static_cast<zSize>(-1) / size && (items != nullptr || count == 0);
}

}  // namespace

zStatus zDat6Serializer_Construct(zSerializer* serializer, zStream stream, zAlloc alloc) noexcept {
  if (serializer == nullptr || alloc == nullptr || sdk::As<sdk::Stream>(stream) == nullptr) {
    return zERROR_PARAMETER;
  }
  return sdk::HandOut(serializer, sdk::Make<Serializer>(stream));
}

zStatus zSerializer_ReadPrimitives(zSerializer serializer, zObject array, zSize count,
                                   zSize step) noexcept {
  sdk::Array* items = sdk::As<sdk::Array>(array);
  if (items == nullptr || count > items->Count() || step != 1) return zERROR_PARAMETER;
  std::byte* destination = items->EditableItems();
  if (destination == nullptr) return zERROR_MEMORY;
  return zSerializer_Read(serializer, items->ItemType(), destination, count);
}

zStatus zSerializer_Read(zSerializer serializer, zType type, void* items, zSize count) noexcept {
  const Serializer* reader = sdk::As<Serializer>(serializer);
  if (reader == nullptr || !Countable(type, items, count)) return zERROR_PARAMETER;
  return zStream_Read(reader->stream, items, count * zType_Size(type));
}

zStatus zSerializer_Write(zSerializer serializer, zType type, const void* items,
                          zSize count) noexcept {
  const Serializer* writer = sdk::As<Serializer>(serializer);
  if (writer == nullptr || !Countable(type, items, count)) return zERROR_PARAMETER;
  return zStream_Write(writer->stream, items, count * zType_Size(type));
}
