// SPDX-License-Identifier: MIT
// Scan files from the field, which are no part of the project.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>

#include "sdk/core.h"

// The bytes of a file; nothing where the files are not there at all. A test then skips:
//   if (!bytes) GTEST_SKIP() << "no field data";
inline std::optional<zBytes> ReadFieldFile(const std::string& name) {
  const std::filesystem::path folder(FIELD_DATA_DIR);
  if (!std::filesystem::is_directory(folder)) return std::nullopt;
  std::ifstream file(folder / name, std::ios::binary);
  zBytes bytes(std::filesystem::file_size(folder / name));
  if (!file.read(reinterpret_cast<char*>(bytes.data()), std::ssize(bytes))) {
    throw std::runtime_error("cannot read " + name);
  }
  return bytes;
}
