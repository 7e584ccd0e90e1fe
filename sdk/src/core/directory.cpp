// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>

#include "sdk/core.h"

namespace fs = std::filesystem;

zStatus zDirectory_ListFiles(const char* path, zArrayList names) noexcept {
  if (path == nullptr || zArrayList_ItemType(names) != zType::zString) return zERROR_PARAMETER;
  if (!zDirectory_Exists(path)) return zERROR_NOT_FOUND;
  try {
    std::vector<zString> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
      std::error_code vanished;
      if (!entry.is_directory(vanished)) found.push_back(entry.path().filename().string());
    }
    // The system's own order differs from machine to machine.
    std::ranges::sort(found);
    for (const zString& name : found) {
      const zStatus status = zArrayList_Add(names, &name);
      if (status != zOK) return status;
    }
    return zOK;
  } catch (const std::bad_alloc&) {
    return zERROR_MEMORY;
  } catch (const std::exception&) {
    return zERROR_STREAM;
  }
}
