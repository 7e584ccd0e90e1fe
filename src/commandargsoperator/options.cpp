// SPDX-License-Identifier: MIT
#include <map>

#include "commandargsoperator/commandargsoperator.h"
#include "console.h"

namespace {

bool StandsAsWord(const std::string& line, std::size_t position, std::size_t length) {
  const std::size_t end = position + length;
  return (position == 0 || line[position - 1] == ' ') && (end == line.size() || line[end] == ' ');
}

std::string Strip(const std::string& text) {
  constexpr const char* kStripped = " \"";
  const std::size_t first = text.find_first_not_of(kStripped);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kStripped) - first + 1);
}

}  // namespace

CommandArgsOperator::CommandArgsOperator()
    : knownOptions{"-i",      "--input", "-o",       "--output", "-f",     "--frame", "-w",
                   "--width", "-h",      "--height", "-s",       "--swap", "-r",      "--remove",
                   "-z",      "--zoom",  "-a",       "--all",    "--help"} {
  converter.setListener([](NoticeKind kind, const std::string& text) {
    consoleLine(kind == NoticeKind::info ? "[INFO] " : "[WARNING] ", text);
  });
}

ParsedArgs parseCommandLine(const std::string& line, const std::vector<std::string>& knownOptions) {
  std::map<std::size_t, const std::string*> found;
  for (const std::string& option : knownOptions) {
    const std::size_t position = line.find(option);
    if (position != std::string::npos && StandsAsWord(line, position, option.size())) {
      found[position] = &option;
    }
  }
  ParsedArgs args;
  for (auto entry = found.begin(); entry != found.end(); ++entry) {
    const auto& [position, option] = *entry;
    const auto following = std::next(entry);
    const std::size_t begin = position + option->size();
    const std::size_t end = following == found.end() ? line.size() : following->first;
    args[*option] = Strip(line.substr(begin, end - begin));
  }
  return args;
}
