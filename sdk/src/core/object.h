// SPDX-License-Identifier: MIT
// What every handle points to.
#pragma once

#include <atomic>
#include <memory>
#include <new>
#include <utility>

#include "sdk/core.h"

namespace sdk {

class SharedObject {
 public:
  SharedObject() = default;
  SharedObject(const SharedObject&) = delete;
  SharedObject& operator=(const SharedObject&) = delete;
  virtual ~SharedObject() = default;

  // Ends the work that can still fail, once, before the destruction.
  virtual zStatus Finish() noexcept { return zOK; }

  std::atomic<z32u> references = 1;
};

// The object behind a handle; null for a null handle and for another kind of object.
template <class Kind>
Kind* As(zObject handle) noexcept {
  return dynamic_cast<Kind*>(static_cast<SharedObject*>(handle));
}

inline zObject ToHandle(SharedObject* object) noexcept { return object; }

struct Release {
  void operator()(SharedObject* object) const noexcept {
    static_cast<void>(zObject_DestroyImpl(ToHandle(object), 1));
  }
};
template <class Kind>
using Owned = std::unique_ptr<Kind, Release>;

// Hands a new object out through a construct operation's output handle; a null object means that
// there was no memory for it.
template <class Kind>
zStatus HandOut(zObject* output, Owned<Kind> object) noexcept {
  if (output == nullptr) return zERROR_PARAMETER;
  if (object == nullptr) return zERROR_MEMORY;
  *output = ToHandle(object.release());
  return zOK;
}

template <class Kind, class... Args>
Owned<Kind> Make(Args&&... args) noexcept {
  return Owned<Kind>(new (std::nothrow) Kind(std::forward<Args>(args)...));
}

// A handle that stands for a library.
inline zStatus StartLibrary(zObject* library) noexcept {
  return HandOut(library, Make<SharedObject>());
}

}  // namespace sdk
