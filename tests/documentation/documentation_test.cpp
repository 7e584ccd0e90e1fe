// SPDX-License-Identifier: MIT
// What is written about the programs beside their sources: manuals, completion, guides.
#include <gmock/gmock.h>

#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>

#include "support/run_program.h"

namespace {

using Names = std::set<std::string>;

const std::string kProject = PROJECT_DIR;
const std::string kLongOptions = "--[a-z][a-z-]*";

// The first group of each match.
Names FindAll(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  Names names;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    names.insert((*match)[1]);
  }
  return names;
}

Names OptionsIn(const std::string& text, const std::string& options) {
  return FindAll(text, "(?:^|[^\\w-])(" + options + ")(?![\\w-])");
}

// The heads of the paragraphs in a manual's section of options.
std::string OptionHeads(const std::string& manual) {
  const std::size_t start = manual.find(".SH OPTIONS");
  std::string heads;
  std::istringstream lines(manual.substr(start, manual.find(".SH", start + 1) - start));
  for (std::string line; std::getline(lines, line);) {
    if (line == ".TP" && std::getline(lines, line)) heads += line + "\n";
  }
  return std::regex_replace(heads, std::regex(R"(\\-)"), "-");
}

TEST(Options, AreToldByManualsAndCompletionAsByTheHelp) {
  const TempDirectory folder;
  const struct {
    const char* program;
    const char* file;
    std::string options;
  } rows[] = {
      {TRELVANE_PROGRAM, "/man/Trelvane.1", kLongOptions + "|-[a-z]"},
      {TRELVANE_INSPECT, "/man/trelvane-inspect.1", kLongOptions + "|-[a-z]"},
      {TRELVANE_INSPECT, "/share/bash-completion/completions/trelvane-inspect", kLongOptions},
      {TRELVANE_INSPECT, "/share/zsh/site-functions/_trelvane-inspect", kLongOptions},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.file);
    const Names told = OptionsIn(RunProgram(row.program, {"--help"}).output, row.options);
    const std::string text = ReadFile(kProject + row.file);
    EXPECT_TRUE(told.contains("--help"));
    EXPECT_EQ(OptionsIn(std::string_view(row.file).starts_with("/man") ? OptionHeads(text) : text,
                        row.options),
              told);
  }
}

TEST(PageOnRecordings, ShowsTheExampleProgramsAsTheyAre) {
  const auto unindented = [](const std::string& text) {
    return std::regex_replace(text, std::regex("\n +"), "\n");
  };
  const std::string page = ReadFile(kProject + "/docs/formats/recording.md");
  for (const auto& [fence, example] :
       {std::pair("```python", "/read_recording.py"), std::pair("```js", "/read_recording.mjs")}) {
    SCOPED_TRACE(example);
    const std::size_t start = page.find('\n', page.find(fence));
    const std::string excerpt = page.substr(start, page.find("```", start) - start);
    EXPECT_GT(excerpt.size(), 100U);
    EXPECT_THAT(unindented(ReadFile(std::string(EXAMPLES_DIR) + example)),
                testing::HasSubstr(unindented(excerpt)));
  }
}

TEST(GuideToInspection, TellsTheKeysOfTheJsonDocument) {
  const TempDirectory folder;
  WriteFile("cut.sur", "DIGITAL SURF");
  std::vector<std::string> args = {"--json", "cut.sur"};
  for (const char* name : {"part.sur", "part.srf", "part.pcd", "recording.ovrec"}) {
    args.push_back(EXAMPLES_DIR "/" + std::string(name));
  }
  Names keys;
  std::istringstream documents(RunProgram(TRELVANE_INSPECT, args).output);
  for (std::string line; std::getline(documents, line);) {
    const nlohmann::json leaves = nlohmann::json::parse(line).flatten();
    for (const auto& [pointer, value] : leaves.items()) {  // "/a/0/b"
      keys.merge(FindAll(pointer, "/([a-z]\\w*)"));
    }
  }

  const std::string guide = ReadFile(kProject + "/docs/inspect.md");
  const std::size_t start = guide.find("\n## JSON");
  std::istringstream lines(guide.substr(start, guide.find("\n## ", start + 1) - start));
  Names written;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("| `")) continue;
    written.merge(FindAll(line.substr(0, line.find('|', 1)), "([a-z]\\w*)"));
  }
  EXPECT_EQ(written, keys);
}

}  // namespace
