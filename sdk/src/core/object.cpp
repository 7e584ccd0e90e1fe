// SPDX-License-Identifier: MIT
#include "core/object.h"

zStatus zCoreLib_Construct(zCoreLib* library) noexcept { return sdk::StartLibrary(library); }

zStatus zObject_Share(zObject object) noexcept {
  if (object == nullptr) return zERROR_PARAMETER;
  static_cast<sdk::SharedObject*>(object)->references.fetch_add(1, std::memory_order_relaxed);
  return zOK;
}

zStatus zObject_DestroyImpl(zObject object, z32s /*mode*/) noexcept {
  if (object == nullptr) return zERROR_PARAMETER;
  auto* shared = static_cast<sdk::SharedObject*>(object);
  if (shared->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return zOK;
  const zStatus status = shared->Finish();
  delete shared;
  return status;
}
