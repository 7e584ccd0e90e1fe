// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <regex>

#include "support/run_program.h"
#include "trelvane.h"

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

TEST(Library, ExportsWhatItsListAndItsHeaderName) {
  const TempDirectory directory;
  const Names listed = Find(ReadFile(LIBRARY_DIR "/libtrelvane.map"), R"(\n +(\w+);)");
  const Names declared =
      Find(ReadFile(LIBRARY_DIR "/trelvane.h"), R"(TRELVANE_API [^;]*?\b(trelvane_\w+)\()");
  const Outcome nm = RunProgram("/usr/bin/env", {"nm", "-D", "--defined-only", TRELVANE_LIBRARY});
  Names symbols{"TRELVANE_1"};  // the version itself
  for (const std::string& name : listed) symbols.insert(name + "@@TRELVANE_1");
  EXPECT_EQ(Find(nm.output, R"( \w (\S+)\n)"), symbols);
  EXPECT_EQ(declared, listed);
  EXPECT_EQ(trelvane_version_number(), TRELVANE_VERSION_NUMBER);
  EXPECT_STREQ(trelvane_version(), TRELVANE_VERSION);
}

}  // namespace
