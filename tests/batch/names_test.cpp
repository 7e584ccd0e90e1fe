// SPDX-License-Identifier: MIT
// Lists of names, templates of names, and shards.
#include <gmock/gmock.h>

#include "batch/namelist.h"
#include "batch/plan.h"
#include "support/scans.h"

namespace {

TEST(NameList, EndsNamesByLinesOrZeros) {
  using Names = std::vector<std::string>;
  const std::string zeros("a b\nc\0\0d\r\0", 10);
  const struct {
    std::string list;
    NameEnd end;
    Names names;
  } kRows[] = {
      {"", NameEnd::line, {}},
      {"a\r\n\n b c\n-d", NameEnd::line, {"a", " b c", "-d"}},
      {"\r\nä\n", NameEnd::line, {"ä"}},
      {zeros, NameEnd::line, {"a b\nc", "d\r"}},
      {zeros, NameEnd::nul, {"a b\nc", "d\r"}},
      {"a\nb", NameEnd::nul, {"a\nb"}},
  };
  for (const auto& row : kRows) EXPECT_EQ(ParseNameList(row.list, row.end), row.names) << row.list;
}

TEST(NameTemplate, FillsPartsInAndStaysBelowTheOutputs) {
  const NameParts parts{"mon/day", "a.b", "0007", "Top"};
  const struct {
    const char* text;
    const char* name;  // or what is refused
  } kRows[] = {
      {"{folder}/{stem}", "mon/day/a.b"},
      {"/{stem}_{frame}{{{source}}}", "a.b_0007{Top}"},
      {"./x//{stem}", "x/a.b"},
      {"{stem}/", "the output would have no name"},
      {"x/../{stem}", "the output would have the name x/../a.b"},
      {"", "the output would have no name"},
      {"{Stem}", "\"{Stem}\" is no template of {folder}, {stem}, {frame} and {source}"},
      {"{stem", "\"{stem\" is no template of {folder}, {stem}, {frame} and {source}"},
      {"stem}", "\"stem}\" is no template of {folder}, {stem}, {frame} and {source}"},
  };
  for (const auto& row : kRows) {
    std::string told;
    try {
      told = NameTemplate(row.text).Fill(parts);
    } catch (const BadName& failure) {
      told = failure.what();
    }
    EXPECT_EQ(told, row.name) << row.text;
  }
  // What a recording calls its source.
  for (const std::string& source : {std::string(".."), std::string("a\0b", 3)}) {
    EXPECT_THROW(NameTemplate("{source}/{stem}").Fill({"", "a", "0", source}), BadName);
  }
  EXPECT_EQ(NameTemplate("{folder}/{stem}").Fill({"", "a", "", ""}), "a");
}

TEST(Shard, PartsAreFixedDisjointCompleteAndAlike) {
  std::vector<Task> plan;
  for (z64u i = 0; i < 100; ++i) {
    const std::string path = std::to_string(i);
    plan.push_back({{path, path, SUR, {i < 60 ? (i * i * 7919) % 1000 : 500, 0}, ""}, {}, path});
  }
  std::vector<Task> turned(plan.rbegin(), plan.rend());
  for (const z32u count : {1U, 2U, 7U, 100U, 103U}) {
    std::multiset<std::string> all;
    std::vector<z64u> sizes;
    for (z32u number = 1; number <= count; ++number) {
      std::set<std::string> own, again;
      z64u bytes = 0;
      for (const Task& task : TakeShard(plan, {number, count})) {
        own.insert(task.input.path);
        bytes += task.input.state.bytes;
      }
      for (const Task& task : TakeShard(turned, {number, count})) again.insert(task.input.path);
      EXPECT_EQ(own, again) << number << "/" << count;
      all.insert(own.begin(), own.end());
      sizes.push_back(bytes);
    }
    EXPECT_EQ(all.size(), 100U);
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 100U);
    const auto [least, most] = std::ranges::minmax(sizes);
    EXPECT_LE(most - least, count < 10 ? 60U : 1000U) << count;
  }
  for (const char* text : {"", "0/4", "5/4", "1", "/", "1/", "-1/4", "1/4 ", "1/10000000"}) {
    EXPECT_THROW(Shard::Parse(text), std::invalid_argument) << text;
  }
  EXPECT_EQ(Shard::Parse("3/4").number * 10 + Shard::Parse("3/4").count, 34U);
}

}  // namespace
