// SPDX-License-Identifier: MIT
// The record of a batch: what became of each input, one JSON line each.
#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "batch/inputs.h"

struct Entry {
  std::string input;
  InputState state;                    // when its conversion began
  std::vector<std::string> outputs{};  // that were written
  z64u outputBytes = 0;
  std::vector<double> outputTimes{};  // of their last change, seconds since 1970
  bool done = false;
  std::vector<std::string> messages{};
  double seconds = 0;

  // One line, with its end.
  std::string ToLine() const;
  // Nothing for a line that is none, such as one that was cut.
  static std::optional<Entry> Parse(std::string_view line);

  // Takes size and times of the outputs as they are now. Throws std::filesystem::filesystem_error.
  void LookAtOutputs();
  // Whether it is done, and input and outputs are still as it says.
  bool Holds(const InputState& input) const;
};

// The last entry of each input in a record; none where there is no such file.
std::map<std::string, Entry> ReadRecord(const std::string& path);

// A record that grows, by one thread at a time. Each entry is in the file when Append returns.
class Record {
 public:
  // Throws std::runtime_error where the file cannot be written, as Append does. Nothing is written
  // for an empty path.
  explicit Record(std::string path);
  void Append(const Entry& entry);

 private:
  void Write(std::string_view text);

  std::string path_;
  std::ofstream file_;
};
