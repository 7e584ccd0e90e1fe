// SPDX-License-Identifier: MIT
// What there is to convert.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "formats/filetypes.h"

// Size and time of change of an input, by which it is known again.
struct InputState {
  z64u bytes = 0;      // of all files in a folder
  double changed = 0;  // seconds since 1970; of a folder the latest of its own and its files'

  bool operator==(const InputState&) const = default;
};

// Of a file, or of a folder that is one recording. Throws std::filesystem::filesystem_error where
// nothing is there.
InputState StateOf(const std::string& path);

double SecondsOf(std::filesystem::file_time_type time);

struct Input {
  std::string path;              // as it was named, or found below what was named
  std::filesystem::path below;   // what of the path is kept below the outputs
  std::optional<FileType> type;  // nothing for a folder that is one recording
  InputState state;
  std::string refusal;  // why it cannot be converted; empty: it can, as far as its name tells
};

struct Search {
  bool foldersAreRecordings = false;  // those that hold .sur files
  std::filesystem::path leaveOut;     // the folder of outputs, unless it is named; may be empty
};

// Files and folders by their names. Folders are searched with all below them, by the extensions
// that can be imported and in the order of their names; what a link to a folder leads to is left
// out. A name comes once. What cannot be read is an input with a refusal.
//
// Below the outputs, paths are kept as they are named, without what would lead elsewhere: a root,
// "." and "..". A folder that has one of these keeps its own name alone.
std::vector<Input> FindInputs(const std::vector<std::string>& names, const Search& search);
