// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <stdexcept>

#include "commandargsoperator/commandargsoperator.h"
#include "numbers.h"
#include "support/scans.h"
#include "support/temp_directory.h"

namespace {

// What is read of a text: options with their values, a number, or the error.
std::string Read(const std::string& kind, const std::string& text) {
  try {
    if (kind == "integer") return std::to_string(parseInteger(text));
    if (kind == "real") return Orv::Format("%g", parseReal(text));
  } catch (const std::logic_error& failure) {
    return failure.what();
  }
  const ParsedArgs args = parseCommandLine(text, CommandArgsOperator().getKnownOptions());
  std::string told;
  for (const auto& [option, value] : std::map(args.begin(), args.end())) {
    told += option + "[" + value + "] ";
  }
  return told;
}

// Each line of a file in the folder of data: "kind |text| => what is read of it".
TEST(CommandLine, IsReadAsTheExamplesSay) {
  std::istringstream examples(ReadFile(TEST_DATA_DIR "/command_lines.txt"));
  int count = 0;
  for (std::string line; std::getline(examples, line); ++count) {
    const std::size_t text = line.find('|') + 1, end = line.rfind("| => ");
    EXPECT_EQ(Read(line.substr(0, text - 2), line.substr(text, end - text)), line.substr(end + 5))
        << line;
  }
  EXPECT_GT(count, 40);
}

}  // namespace
