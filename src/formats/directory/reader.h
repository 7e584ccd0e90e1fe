// SPDX-License-Identifier: MIT
// A directory of surfaces, one file for each frame and source, as one recording. The files are
// named <prefix>-Frame-<four digits>_<source tag>.sur.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/object.h"

// The parts of a name, which they look into.
struct FrameFileName {
  std::size_t marker;       // where the frame marker begins
  std::string_view index;   // up to four characters behind it, which may be no digits
  std::string_view behind;  // all that follows the index
  // What follows the index and one separator, up to the dot of the extension; to the end of a name
  // whose separator is that dot.
  std::string_view tag;
};

// Nothing for a name without the frame marker.
std::optional<FrameFileName> ParseFrameFileName(std::string_view name);

struct SurfaceDirectory {
  std::string path;
  z32s frameCount = 0;             // the highest index found, and one
  std::vector<std::string> tags;   // of the sources, in the order of the files of frame 0
  std::vector<std::string> files;  // names, in ascending order of their bytes
};

// Looks at the names alone. Throws Orv::Exception for a directory whose names do not tell frames
// and sources of surfaces, and what parseInteger throws for an index that is no number.
SurfaceDirectory OpenSurfaceDirectory(const std::string& path, zAlloc alloc);

// The paths of each frame's files, source by source. A source whose tag begins with another
// source's tag is also found under that one.
std::vector<std::vector<std::string>> FilesByFrame(const SurfaceDirectory& directory);

// The names of the files in a directory, but for what an interrupted run left; failures are those
// of the operation.
std::vector<std::string> ListFileNames(const std::string& directory,
                                       const Orv::Operation& operation, zAlloc alloc);

// The paths of all its files.
std::vector<std::string> PathsOf(const SurfaceDirectory& directory);

std::string PathInDirectory(const std::string& directory, const std::string& name);
