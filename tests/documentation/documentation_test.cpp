// SPDX-License-Identifier: MIT
// What is written about the programs beside their sources: manuals, completion, guides.
#include <gmock/gmock.h>

#include <algorithm>
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

// What stands between a head and the next one, without both.
std::string Section(const std::string& text, const std::string& head, const std::string& next) {
  const std::size_t start = text.find(head) + head.size();
  return text.substr(start, text.find(next, start) - start);
}

TEST(Options, AreToldByManualsAndCompletionAsByTheHelp) {
  const TempDirectory folder;
  const struct {
    const char* program;
    const char* file;
  } rows[] = {
      {TRELVANE_PROGRAM, "/man/Trelvane.1"},
      {TRELVANE_PROGRAM, "/share/bash-completion/completions/Trelvane"},
      {TRELVANE_PROGRAM, "/share/zsh/site-functions/_Trelvane"},
      {TRELVANE_BATCH, "/man/trelvane-batch.1"},
      {TRELVANE_BATCH, "/share/bash-completion/completions/trelvane-batch"},
      {TRELVANE_BATCH, "/share/zsh/site-functions/_trelvane-batch"},
      {TRELVANE_INSPECT, "/man/trelvane-inspect.1"},
      {TRELVANE_INSPECT, "/share/bash-completion/completions/trelvane-inspect"},
      {TRELVANE_INSPECT, "/share/zsh/site-functions/_trelvane-inspect"},
  };
  for (const auto& row : rows) {
    const bool manual = std::string_view(row.file).starts_with("/man");
    const std::string options = manual ? kLongOptions + "|-[a-z]" : kLongOptions;
    const std::string text = ReadFile(kProject + row.file);
    Names written = OptionsIn(manual ? "" : text, options);
    for (const auto& head : FindAll(Section(text, ".SH OPTIONS", ".SH"), "\\.TP\n(.*)")) {
      if (manual)
        written.merge(OptionsIn(std::regex_replace(head, std::regex(R"(\\-)"), "-"), options));
    }
    EXPECT_TRUE(written.contains("--help"));
    EXPECT_EQ(written, OptionsIn(RunProgram(row.program, {"--help"}).output, options)) << row.file;
  }
}

TEST(Pages, ShowTheExampleProgramsAsTheyAre) {
  const auto unindented = [](const std::string& text) {
    return std::regex_replace(text, std::regex("\n +"), "\n");
  };
  const struct {
    const char *page, *fence, *example;
  } rows[] = {
      {"/docs/formats/recording.md", "```python", "/read_recording.py"},
      {"/docs/formats/recording.md", "```js", "/read_recording.mjs"},
      {"/docs/library.md", "```c\n", "/heights.c"},
  };
  for (const auto& [page, fence, example] : rows) {
    const std::string excerpt = Section(ReadFile(kProject + page), fence, "```");
    EXPECT_GT(excerpt.size(), 100U);
    EXPECT_THAT(unindented(ReadFile(std::string(EXAMPLES_DIR) + example)),
                testing::HasSubstr(unindented(excerpt)));
  }
}

// String literals, of which the compiler makes one where they stand in lines one below the other.
Names LiteralsIn(const std::string& folder) {
  Names literals;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kProject + folder)) {
    if (!entry.is_regular_file()) continue;
    std::string text = std::regex_replace(ReadFile(entry.path()), std::regex("//.*"), "");
    text = std::regex_replace(text, std::regex(R"("\s*\n\s*")"), "");
    for (const std::string& literal : FindAll(text, R"re("((?:[^"\\\n]|\\.)*)")re")) {
      literals.insert(std::regex_replace(literal, std::regex(R"(\\")"), "\""));
    }
  }
  return literals;
}

// What stands between the values in texts, without what has no letter.
Names PiecesOf(const Names& texts, const std::string& value) {
  const std::regex regex(value);
  Names pieces;
  for (const std::string& text : texts) {
    for (std::sregex_token_iterator piece(text.begin(), text.end(), regex, -1), end; piece != end;
         ++piece) {
      pieces.merge(FindAll(*piece, "^ *(.*[A-Za-z].*?) *$"));
    }
  }
  return pieces;
}

TEST(GuideToMessages, TellsEachMessageOfTheSourcesAndNoOther) {
  Names literals = LiteralsIn("/src");
  literals.merge(LiteralsIn("/sdk"));
  Names messages;
  for (const std::string& literal : literals) {  // but names, and heads of tables
    const bool told =
        std::regex_match(literal, std::regex("(?:[A-Z][a-z]*|invalid|sto[id]) (?:[^0-9].*)?"));
    if (told && !std::regex_search(literal, std::regex("\\w,\\w|^Trelvane"))) {
      messages.insert(literal);
    }
  }
  EXPECT_GT(messages.size(), 130U);

  Names written;
  const std::string page = "\n" + ReadFile(kProject + "/docs/messages.md");
  for (const std::string& cell : FindAll(page, "\n\\| (`.*?) \\| ")) {
    written.merge(FindAll(cell, "`([^`]+)`"));
  }
  const Names told = PiecesOf(written, "\\.\\.\\.");
  const std::string value = "%(?:%|[0-9.l]*[a-z]+)";
  const auto without = [](const Names& all, const Names& some) {
    Names left;
    std::ranges::set_difference(all, some, std::inserter(left, left.end()));
    return left;
  };
  EXPECT_EQ(without(PiecesOf(messages, value), told), Names());
  EXPECT_EQ(without(told, PiecesOf(literals, value)), Names());
}

TEST(GuideToInspection, TellsTheKeysOfTheJsonDocument) {
  const TempDirectory folder;
  WriteFile("cut.sur", "DIGITAL SURF");
  std::filesystem::create_directory("refused");
  std::vector<std::string> args = {"--json", "--figures", "cut.sur", "refused"};
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

  Names written;
  const std::string section =
      Section(ReadFile(kProject + "/docs/inspect.md"), "\n## JSON", "\n## ");
  for (const auto& cell : FindAll(section, "\n\\| (`[^|]*)")) {
    written.merge(FindAll(cell, "([a-z]\\w*)"));
  }
  EXPECT_EQ(written, keys);
}

}  // namespace
