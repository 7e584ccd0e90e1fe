// SPDX-License-Identifier: MIT
// Files that are being written, under names of their own.
#pragma once

#include <string>
#include <string_view>

#include "sdk/core.h"

// A new, empty file beside a target. It is removed with this object, unless it was given its place,
// and when a signal ends the process.
class PartialFile {
 public:
  // Nothing is there yet.
  explicit PartialFile(const std::string& target);
  ~PartialFile();
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;

  // Creates the file and opens it.
  zStatus Create(zFile* file);
  const std::string& Path() const { return path_; }
  // The file has its final name, or is gone.
  void Forget() { present_ = false; }

 private:
  std::string path_;
  zSize slot_;
  bool present_ = false;
};

// Whether a file is what a run that was killed left behind: no part of any folder of scans.
bool IsPartialFileName(std::string_view name);

// For the start of a program: interruptions remove what is being written before they end the
// process, and a file that grows beyond the system's limit is a failed write.
void GuardPartialFiles();

// Removes all files that are being written, for the end of the process: no other is created from
// then on. Takes no memory; safe in a signal handler.
void RemovePartialFiles() noexcept;
