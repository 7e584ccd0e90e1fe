// SPDX-License-Identifier: MIT
// What can be written.
#pragma once

#include "core/object.h"

namespace sdk {

class Stream : public SharedObject {
 public:
  virtual zStatus Write(const void* source, zSize size) noexcept = 0;
  virtual zStatus Seek(z64u position) noexcept = 0;
};

}  // namespace sdk
