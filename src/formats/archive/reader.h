// SPDX-License-Identifier: MIT
// Tar archives: recording archives and the jobs in them. Failures are Orv::Exception with the
// status of the step that failed, and what a source throws.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sdk/object.h"

// A file in an archive, where it lies there.
struct ArchiveMember {
  std::string name;
  z64u offset = 0;       // of the content, in the archive
  z64u size = 0;         // as the archive claims it
  zStatus status = zOK;  // otherwise the content is not all there
  zSourcePtr content;    // null for none

  bool IsEmpty() const { return content == nullptr || content->Size() == 0; }
};

class ArchiveWalk {
 public:
  // Throws, as the operation, for what is no archive.
  ArchiveWalk(zSourcePtr archive, const Orv::Operation& operation);

  // The next file; nothing at the end and where the archive is damaged.
  std::optional<ArchiveMember> Next();
  // After the last file: -5 at the end of the archive, another status where it is damaged.
  zStatus End() const { return end_; }

 private:
  zSourcePtr archive_;
  Orv::Object<void*> tar_;
  zStatus end_ = zOK;
};

// Finds files by their names in one walk, in the order of the names; empty ones for those that are
// not there. Of several with one name the last one counts, unless an earlier one is not all there.
std::vector<ArchiveMember> FindMembers(zSourcePtr archive, std::span<const std::string> names,
                                       const Orv::Operation& operation);

// What a recording archive holds for a conversion, where it lies there.
struct RecordingArchive {
  zSourcePtr replay;  // the replay stream; never empty
  ArchiveMember job;
};

// No replay stream, or an empty one, is an error.
RecordingArchive OpenRecordingArchive(zSourcePtr archive);

// The content of a file that FindMembers found; null when there is none.
zSourcePtr GetResourceData(const ArchiveMember& member);

// The element "orv:scanner" of the configuration of the first of these scanners whose one is there
// and not empty; null when there is none. Errors of the JSON library pass through; ParseBounded
// says how large a configuration may be.
nlohmann::json GetScannerConfig(zSourcePtr job, std::span<const char* const> scannerIds);
