// SPDX-License-Identifier: MIT
// The one way in which files are written: an output is there whole, or not at all.
//
// What is written goes into a new file beside the target, which takes the target's name in one step
// when it is whole. So a run that fails leaves the earlier file as it was. A symbolic link stays,
// and what it leads to is replaced; permissions and, where the system allows it, the owner stay.
// With TRELVANE_SYNC=1 in the environment the bytes are on the disk before the name is.
//
// Written in place are devices, pipes (for whose reader it waits a few seconds), files with several
// hard links, and files that may be written in a folder where no new one may be created.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outputfile/partialfile.h"
#include "sdk/object.h"

class OutputFile {
 public:
  OutputFile() = default;
  // An output that is not finished goes: the earlier file stays, and a file that had to be written
  // in place is removed.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Begins an output; once only. Anything but zOK where no file can be written under that name.
  zStatus Open(const std::string& path);
  // The stream to write to.
  zStream Stream() const { return stream_.Get(); }
  // Puts the output in its place. Anything but zOK when a byte of it could not be written.
  zStatus Finish();

 private:
  zStatus OpenInPlace();

  std::string target_;  // behind all links
  std::optional<PartialFile> partial_;
  Orv::Object<void*> stream_;
  bool unfinishedInPlace_ = false;
};

// Refuses outputs of one run of which two have one name, or one is an input, whatever names and
// links lead to it: by "Two outputs have the name <path>" and "Failed to write <path>", code -997.
void RequireSeparateFiles(const Orv::Operation& operation, const std::vector<std::string>& outputs,
                          const std::vector<std::string>& inputs);
