// SPDX-License-Identifier: MIT
// Start-up calls: each fills a handle that stands for its library.
#pragma once

#include "core/object.h"

namespace sdk {

class Library : public SharedObject {};

inline zStatus StartLibrary(zObject* library) noexcept {
  if (library == nullptr) return zERROR_PARAMETER;
  return HandOut(library, Make<Library>());
}

}  // namespace sdk
