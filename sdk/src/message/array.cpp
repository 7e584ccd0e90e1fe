// SPDX-License-Identifier: MIT
#include "message/message.h"

using sdk::ArrayMessage;
using sdk::As;
using sdk::Scan;

zStatus MxArrayMsg_Construct(MxMsg* message, zAlloc alloc) noexcept {
  if (message == nullptr || alloc == nullptr) return zERROR_PARAMETER;
  return sdk::HandOut(message, sdk::Make<ArrayMessage>());
}

zStatus MxArrayMsg_Add(MxMsg message, MxMsg item) noexcept {
  ArrayMessage* array = As<ArrayMessage>(message);
  Scan* scan = As<Scan>(item);
  if (array == nullptr || scan == nullptr) return zERROR_PARAMETER;
  static_cast<void>(zObject_Share(item));
  sdk::Owned<Scan> shared(scan);
  try {
    array->items.push_back(std::move(shared));
    return zOK;
  } catch (const std::exception&) {
    return zERROR_MEMORY;
  }
}

zSize MxArrayMsg_Count(MxMsg message) noexcept {
  const ArrayMessage* array = As<ArrayMessage>(message);
  return array == nullptr ? 0 : array->items.size();
}

MxMsg MxArrayMsg_At(MxMsg message, zSize index) noexcept {
  const ArrayMessage* array = As<ArrayMessage>(message);
  if (array == nullptr || index >= array->items.size()) return nullptr;
  return sdk::ToHandle(array->items[index].get());
}
