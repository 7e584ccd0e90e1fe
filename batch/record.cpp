// SPDX-License-Identifier: MIT
#include "batch/record.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace fs = std::filesystem;

std::string Entry::ToLine() const {
  nlohmann::ordered_json line{{"input", input},
                              {"input_bytes", state.bytes},
                              {"input_mtime", state.changed},
                              {"outputs", outputs},
                              {"output_bytes", outputBytes},
                              {"output_mtimes", outputTimes},
                              {"status", done ? "done" : "failed"},
                              {"messages", messages},
                              {"seconds", seconds}};
  // A name that is no UTF-8 loses what is none; it is not known again, and converted again.
  return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::optional<Entry> Entry::Parse(std::string_view line) try {
  const auto json = nlohmann::json::parse(line);
  // A fraction or a negative number would be taken for another one.
  for (const char* size : {"input_bytes", "output_bytes"}) {
    if (!json.at(size).is_number_unsigned()) return std::nullopt;
  }
  Entry entry{json.at("input"),         {json.at("input_bytes"), json.at("input_mtime")},
              json.at("outputs"),       json.at("output_bytes"),
              json.at("output_mtimes"), json.at("status") == "done",
              json.at("messages"),      json.at("seconds")};
  return entry;
} catch (const nlohmann::json::exception&) {
  return std::nullopt;
}

void Entry::LookAtOutputs() {
  outputBytes = 0;
  outputTimes.clear();
  for (const std::string& output : outputs) {
    outputBytes += fs::file_size(output);
    outputTimes.push_back(SecondsOf(fs::last_write_time(output)));
  }
}

bool Entry::Holds(const InputState& inputState) const {
  if (!done || state != inputState) return false;
  Entry now{.input = {}, .state = {}, .outputs = outputs};
  try {
    now.LookAtOutputs();
  } catch (const fs::filesystem_error&) {
    return false;
  }
  return now.outputBytes == outputBytes && now.outputTimes == outputTimes;
}

std::map<std::string, Entry> ReadRecord(const std::string& path) {
  std::map<std::string, Entry> last;
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    if (auto entry = Entry::Parse(line)) last[entry->input] = std::move(*entry);
  }
  return last;
}

Record::Record(std::string path) : path_(std::move(path)) {
  if (path_.empty()) return;
  // What a run that was killed left of a line gets an end.
  std::ifstream old(path_, std::ios::binary | std::ios::ate);
  const bool cut =
      old.is_open() && old.tellg() > 0 && (old.seekg(-1, std::ios::end), old.get() != '\n');
  file_.open(path_, std::ios::binary | std::ios::app);
  Write(cut ? "\n" : "");
}

void Record::Append(const Entry& entry) {
  if (!path_.empty()) Write(entry.ToLine());
}

void Record::Write(std::string_view text) {
  if (!(file_ << text << std::flush)) throw std::runtime_error("Failed to write " + path_);
}
