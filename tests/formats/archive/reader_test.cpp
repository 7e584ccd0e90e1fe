// SPDX-License-Identifier: MIT
#include "formats/archive/reader.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "filesource.h"
#include "support/archives.h"

namespace {

// The replay stream of an archive, or the error.
std::string Replay(const zBytes& archive) {
  std::string replay;
  const std::string error = Thrown([&] {
    const zBytes bytes = ReadAll(*OpenRecordingArchive(SourceOf(archive)).replay);
    replay.assign(bytes.begin(), bytes.end());
  });
  return error.empty() ? replay : error;
}

TEST(RecordingArchive, GivesTheLastReplayStream) {
  const std::string empty = "-997 GetReplayData: The replay buffer is empty";
  const struct {
    std::vector<Member> members;
    std::string expected;
  } rows[] = {
      {{{"replay", "", zTAR_DIRECTORY}, {"replay/buffer", "abc"}}, "abc"},
      {{{"replay/buffer", "first"}, {"x", ""}, {"replay/buffer", "second"}}, "second"},
      {{{"replay/buffer", "full"}, {"replay/buffer", ""}}, empty},
      {{{"replay/buffer", "", zTAR_DIRECTORY}}, empty},
      {{{"config.json", "{}"}}, empty},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Replay(MakeArchive(row.members)), row.expected) << row.members[0].name;
  }
  EXPECT_EQ(Replay({}), empty);
  EXPECT_EQ(Replay(ToBytes("no archive")),
            std::to_string(zERROR_FORMAT) + " GetReplayData: Failed to construct zTar");
}

TEST(RecordingArchive, SaysWhatIsNotAllThere) {
  const std::string content(5000, 'r');
  const zBytes archive = MakeArchive({{"replay/buffer", content}});
  for (zSize size = 1; size < archive.size(); size += 100) {
    EXPECT_EQ(Replay(First(archive, size)) == content, size >= 512 + 5000) << size;
  }
  EXPECT_EQ(Replay(First(archive, 1000)),
            std::to_string(zERROR_STREAM) + " GetReplayData: Failed to read the replay buffer");
}

TEST(ScannerConfig, IsThatOfTheFirstScannerThatHasOne) {
  const struct {
    std::string first, second, outcome;
  } rows[] = {
      {R"({"orv:scanner": {"a": 1}})", R"({"orv:scanner": 2})", R"({"a":1})"},
      {"", R"({"orv:scanner": [0]})", "[0]"},
      {R"({"other": 1})", R"({"orv:scanner": 7})", "7"},
      {R"({"orv:scanner": {}})", R"({"orv:scanner": null})", "null"},
  };
  constexpr const char* kIds[] = {"r1xxx", "r4xxx"};
  for (const auto& row : rows) {
    const zBytes job = MakeArchive(
        {{"scan/r4xxx/config.json", row.second}, {"scan/r1xxx/config.json", row.first}});
    EXPECT_EQ(GetScannerConfig(SourceOf(job), kIds).dump(), row.outcome) << row.first;
  }
  EXPECT_EQ(GetScannerConfig(nullptr, kIds), nullptr);
  zBytes cut = MakeArchive({{"scan/r1xxx/config.json", std::string(600, ' ')}});
  cut.resize(1000);
  EXPECT_EQ(Thrown([&] { GetScannerConfig(SourceOf(cut), kIds); }),
            std::to_string(zERROR_STREAM) +
                " GetResourceData: Failed to read the resource buffer (scan/r1xxx/config.json)");
}

}  // namespace
