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
const std::string kOptions = kLongOptions + "|-[a-z]";

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

TEST(Manuals, TellTheOptionsOfTheHelp) {
  const TempDirectory folder;
  const std::pair<const char*, const char*> programs[] = {{TRELVANE_PROGRAM, "Trelvane.1"},
                                                          {TRELVANE_INSPECT, "trelvane-inspect.1"}};
  for (const auto& [program, manual] : programs) {
    SCOPED_TRACE(manual);
    const Names options = OptionsIn(RunProgram(program, {"--help"}).output, kOptions);
    EXPECT_TRUE(options.contains("--help"));
    EXPECT_EQ(OptionsIn(OptionHeads(ReadFile(kProject + "/man/" + manual)), kOptions), options);
  }
}

TEST(Completion, OffersTheOptionsOfTheHelp) {
  const TempDirectory folder;
  const Names options = OptionsIn(RunProgram(TRELVANE_INSPECT, {"--help"}).output, kLongOptions);
  for (const char* file : {"/share/bash-completion/completions/trelvane-inspect",
                           "/share/zsh/site-functions/_trelvane-inspect"}) {
    SCOPED_TRACE(file);
    EXPECT_EQ(OptionsIn(ReadFile(kProject + file), kLongOptions), options);
  }
}

// A key's path with all that it lies in: for "a[].b" also "a".
void AddKey(std::string path, Names& keys) {
  for (;;) {
    if (path.ends_with("[]")) path.resize(path.size() - 2);
    keys.insert(path);
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos) return;
    path.resize(dot);
  }
}

void AddKeysOf(const nlohmann::json& document, Names& keys) {
  const nlohmann::json leaves = document.flatten();
  for (const auto& [pointer, value] : leaves.items()) {  // "/a/0/b"
    const std::string marked = std::regex_replace(pointer, std::regex(R"(/\d+(?=/|$))"), "[]");
    AddKey(std::regex_replace(marked.substr(1), std::regex("/"), "."), keys);
  }
}

// As the guide writes it: "a[].{b,c}" stands for two keys.
void AddWrittenKey(const std::string& key, Names& keys) {
  const std::size_t brace = key.find('{');
  if (brace == std::string::npos) return AddKey(key, keys);
  for (const std::string& last : FindAll(key.substr(brace), R"((\w+))")) {
    AddKey(key.substr(0, brace) + last, keys);
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
    AddKeysOf(nlohmann::json::parse(line), keys);
  }

  const std::string guide = ReadFile(kProject + "/docs/inspect.md");
  const std::size_t start = guide.find("\n## JSON");
  std::istringstream lines(guide.substr(start, guide.find("\n## ", start + 1) - start));
  Names written;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("| `")) continue;
    for (const auto& key : FindAll(line.substr(0, line.find('|', 1)), "`([^`]+)`")) {
      AddWrittenKey(key, written);
    }
  }
  EXPECT_EQ(written, keys);
}

}  // namespace
