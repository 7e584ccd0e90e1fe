// SPDX-License-Identifier: MIT
// The one way in which files are written: an output is there whole, or not at all.
//
// What is written goes into a new file beside the target, which takes the target's name in one step
// when it is whole. So a run that fails leaves the earlier file as it was. A symbolic link stays,
// and what it leads to is replaced; permissions and, where the system allows it, the owner stay.
// With TRELVANE_SYNC=1 in the environment the bytes are on the disk before the name is.
//
// Written in place, from a whole file in the folder for temporary files, are devices, pipes (for
// whose reader it waits a few seconds), files with several hard links, and files that may be
// written in a folder where no new one may be created.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outputfile/partialfile.h"
#include "outputfile/system.h"
#include "sdk/object.h"

// The error of a file that cannot be opened for writing or written.
class FileNotWritten : public Orv::Exception {
 public:
  explicit FileNotWritten(const Orv::Exception& failure) : Exception(failure) {}
};

class OutputFile {
 public:
  OutputFile() = default;
  // An output that is not finished goes, and the earlier file stays.
  ~OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Begins an output; once only. Anything but zOK where no file can be written under that name.
  zStatus Open(const std::string& path);
  // The stream to write to. It can be moved back, whatever the output is.
  zStream Stream() const { return stream_.Get(); }
  bool HasFailed() const { return zFile_HasFailed(stream_.Get()); }
  // Puts the output in its place. Anything but zOK when a byte of it could not be written. Where
  // that happens to a file that is written in place, it is removed.
  zStatus Finish();

 private:
  std::string target_;  // behind all links
  bool inPlace_ = false;
  std::optional<PipeReader> pipe_;  // keeps it open
  std::optional<PartialFile> partial_;
  Orv::Object<void*> stream_;  // into the partial file; ends before it
};

// Refuses outputs of one run of which two have one name, or one is an input, whatever names and
// links lead to it: by "Two outputs have the name <path>" and "Failed to write <path>", code -997.
void RequireSeparateFiles(const Orv::Operation& operation, const std::vector<std::string>& outputs,
                          const std::vector<std::string>& inputs);
