// SPDX-License-Identifier: MIT
// How outputs are named after their inputs.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// What can be filled in.
struct NameParts {
  std::string folder;  // of the input, as a path below the outputs; empty for none
  std::string stem;    // of the input's name
  std::string frame;   // number of a frame, four digits or more; "all" for all in one file
  std::string source;  // tag of a source
};

// A frame's number as it stands in names.
std::string FrameText(std::uint32_t frame);

// A name that cannot be an output's.
class BadName : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class NameTemplate {
 public:
  // A text with {folder}, {stem}, {frame} and {source}; {{ and }} stand for braces. Throws BadName
  // for other words in braces.
  explicit NameTemplate(std::string_view text);

  bool Has(std::string NameParts::*part) const;
  // Whether it tells frames or sources apart.
  bool NamesScans() const { return Has(&NameParts::frame) || Has(&NameParts::source); }
  // A path below the folder of outputs. Throws BadName where it would lead out of there, as what a
  // recording calls its source might do, or names no file.
  std::string Fill(const NameParts& parts) const;

 private:
  struct Piece {
    std::string text;              // as it stands,
    std::string NameParts::*part;  // if this is null
  };
  std::vector<Piece> pieces_;
};
