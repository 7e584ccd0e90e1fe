// SPDX-License-Identifier: MIT
#include "sdk/object.h"

namespace Orv {

Object<void*> Object<void*>::Share(void* borrowed) noexcept {
  if (borrowed != nullptr) static_cast<void>(zObject_Share(borrowed));
  return Object(borrowed);
}

Object<void*>& Object<void*>::operator=(Object&& other) {
  if (this != &other) Reset(std::exchange(other.handle_, nullptr));
  return *this;
}

Object<void*>::~Object() {
  if (handle_ != nullptr) static_cast<void>(zObject_DestroyImpl(handle_, 1));
}

zStatus Object<void*>::Release() noexcept {
  void* const released = std::exchange(handle_, nullptr);
  return released == nullptr ? zOK : zObject_DestroyImpl(released, 0);
}

void Object<void*>::Reset(void* handle) {
  const zStatus status = Release();
  handle_ = handle;
  if (status != zOK) {
    throw Exception(__LINE__, "object", status, "Orv::Object<void *>::Reset",
                    "Failed to release an object");
  }
}

}  // namespace Orv
