// SPDX-License-Identifier: MIT
// What all streams can do.
#pragma once

#include "core/object.h"

namespace sdk {

class Stream : public SharedObject {
 public:
  virtual zStatus Read(void* destination, zSize size) noexcept = 0;
  virtual zStatus Write(const void* source, zSize size) noexcept = 0;
  virtual zStatus Seek(z64s position) noexcept = 0;
};

}  // namespace sdk
