// SPDX-License-Identifier: MIT
// A folder for the files of one process, removed at its end. It is the working directory, so that
// what a run writes stays in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "sdk/core.h"

class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "trelvane-fuzz-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    std::filesystem::current_path(folder_);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  // Removes every file, those in sub-folders excepted.
  void Clear() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      if (!entry.is_directory()) std::filesystem::remove(entry.path());
    }
  }

  static void Write(const std::string& name, const std::uint8_t* data, std::size_t size) {
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }

  // Makes a file of any kind of at least two bytes: the first chooses the kind, the second is for
  // options, the rest is the file.
  struct Input {
    std::string name;
    z8u options;
  };
  static Input WriteInput(const std::uint8_t* data, std::size_t size) {
    constexpr const char* kNames[] = {"a.srf", "a.sur", "a.pro",  "a.pcd",
                                      "a.rec", "a.rep", "a.ovrec"};
    const std::string name = kNames[data[0] % std::size(kNames)];
    Write(name, data + 2, size - 2);
    return {name, data[1]};
  }

 private:
  std::filesystem::path folder_;
};
