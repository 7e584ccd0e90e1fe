// SPDX-License-Identifier: MIT
#pragma once

#include "outputfile/outputfile.h"
#include "outputfile/writefile.h"

// A recording archive: copies of three configuration files from a folder, in which they lie as in
// the archive, and the replay stream. Throws Orv::Exception with the status of the step that
// failed; nothing is left then.
class ArchiveWriter {
 public:
  // Writes all that stands before the replay stream.
  ArchiveWriter(const std::string& path, const std::string& configFolder, zAlloc alloc);

  // Where the replay stream is written to.
  zStream Stream() const { return tar_.Get(); }
  bool HasFailed() const { return output_.HasFailed(); }
  // Puts the archive in its place.
  void Finish();

 private:
  void CopyMember(const char* member, const std::string& folder);
  void Begin(const char* member, z32s type, const char* failure);
  [[noreturn]] void FailToWrite() const;

  std::string path_;
  zAlloc alloc_;
  OutputFile output_;
  Orv::Object<void*> tar_;  // over the output; ends before it
};

// Writes a recording archive, whose replay stream `fill` writes. What is wrong with the stream
// itself is told first. Throws Orv::Exception with the status of the step that failed; nothing is
// left then.
void WriteReplayData(const FillStream& fill, const std::string& configFolder,
                     const std::string& outputPath, zAlloc alloc);
