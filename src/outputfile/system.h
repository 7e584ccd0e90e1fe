// SPDX-License-Identifier: MIT
// What writing files whole asks of the operating system, each in its own source.
#pragma once

#include <string>
#include <vector>

// Signals by which somebody ends a run.
extern const std::vector<int> kInterruptions;
// Lets a write beyond the system's limit on a file's size fail, instead of ending the run.
void IgnoreFileSizeSignal();

// Whether this user may write to a file, or create one in a folder, that is there.
bool MayWrite(const std::string& path);

// Gives the new file the permissions and, where that is allowed, the owner of the old one.
void CopyOwnership(const std::string& oldFile, const std::string& newFile);

enum class Replaced {
  done,
  notHere,  // the name cannot be given to another file, though the file itself may be written
  failed
};
// Gives a file the name of another one, or a new name, in one step.
Replaced Replace(const std::string& newFile, const std::string& target);

// Waits until the bytes of a file are on the disk, or the names in a folder.
bool SyncFile(const std::string& path);
bool SyncFolder(const std::string& path);

// Waits a few seconds for somebody who reads a pipe, and holds the pipe open.
class PipeReader {
 public:
  explicit PipeReader(const std::string& path);
  ~PipeReader();
  PipeReader(const PipeReader&) = delete;
  PipeReader& operator=(const PipeReader&) = delete;
  bool IsThere() const { return descriptor_ >= 0; }

 private:
  int descriptor_ = -1;
};
