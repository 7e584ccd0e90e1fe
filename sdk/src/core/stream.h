// SPDX-License-Identifier: MIT
// What all streams can do; one that cannot fails.
#pragma once

#include "core/object.h"

namespace sdk {

class Stream : public SharedObject {
 public:
  virtual zStatus Read(void* /*destination*/, zSize /*size*/) noexcept { return zERROR_STREAM; }
  virtual zStatus Write(const void* /*source*/, zSize /*size*/) noexcept { return zERROR_STREAM; }
  virtual zStatus Seek(z64s /*position*/) noexcept { return zERROR_PARAMETER; }
};

}  // namespace sdk
