// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>

#include "handles.h"
#include "support/temp_directory.h"

namespace {

using Names = std::set<std::string>;

Names Find(const std::string& text, const char* pattern) {
  const std::regex name(pattern);
  Names found;
  for (std::sregex_iterator match(text.begin(), text.end(), name), end; match != end; ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
  pclose(pipe);
  return output;
}

TEST(Library, ExportsWhatItsListAndItsHeaderName) {
  const Names listed = Find(ReadFile(LIBRARY_DIR "/libtrelvane.map"), R"(\n +(\w+);)");
  const Names declared =
      Find(ReadFile(LIBRARY_DIR "/trelvane.h"), R"(TRELVANE_API [^;]*?\b(trelvane_\w+)\()");
  const std::string exported = OutputOf("nm --dynamic --defined-only " TRELVANE_LIBRARY);
  Names symbols{"TRELVANE_1"};  // the version itself
  for (const std::string& name : listed) symbols.insert(name + "@@TRELVANE_1");
  EXPECT_EQ(Find(exported, R"( \w (\S+)\n)"), symbols);
  EXPECT_EQ(declared, listed);
  EXPECT_EQ(trelvane_version_number(), TRELVANE_VERSION_NUMBER);
  EXPECT_STREQ(trelvane_version(), TRELVANE_VERSION);
}

}  // namespace
