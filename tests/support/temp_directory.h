// SPDX-License-Identifier: MIT
// A fresh directory that is the current one until the test ends, and is removed then.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

#include "sdk/core.h"

class TempDirectory {
 public:
  TempDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "trelvane-XXXXXX").string();
    std::filesystem::current_path(path_ = mkdtemp(name.data()));
  }
  TempDirectory(const TempDirectory&) = delete;
  ~TempDirectory() {
    std::filesystem::current_path(before_);
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  // Names of the files in it, without those in folders.
  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      if (!entry.is_directory()) names.insert(entry.path().filename().string());
    }
    return names;
  }

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
  std::filesystem::path path_;
};

inline void WriteFile(const std::string& name, std::string_view text) {
  std::ofstream(name, std::ios::binary) << text;
}

inline void WriteFile(const std::string& name, const zBytes& bytes) {
  WriteFile(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

inline std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}
