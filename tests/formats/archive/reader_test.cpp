// SPDX-License-Identifier: MIT
#include "formats/archive/reader.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/archives.h"

namespace {

// The replay stream of an archive, or the error.
std::string Replay(const zBytes& archive) {
  std::span<const z8u> replay;
  const std::string error = Thrown([&] { replay = OpenRecordingArchive(archive).replay; });
  return error.empty() ? std::string(replay.begin(), replay.end()) : error;
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
      {{{"./replay/buffer", "other name"}}, empty},
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
  zBytes first = First(archive, 1000);
  const std::string cut = std::to_string(zERROR_STREAM) + " GetReplayData: Failed to read the ";
  EXPECT_EQ(Replay(first), cut + "replay buffer");
  std::string header(archive.begin(), archive.begin() + 512);
  header.replace(124, 11, "77777777777");  // 8 GiB
  header.replace(148, 8, 8, ' ');
  unsigned sum = 0;
  for (const char c : header) sum += static_cast<unsigned char>(c);
  header.replace(148, 8, Orv::Format("%06o", sum) + std::string("\0 ", 2));
  std::ranges::copy(header, first.begin());
  EXPECT_EQ(Replay(first), cut + "replay buffer");
}

TEST(ScannerConfig, IsThatOfTheFirstScannerThatHasOne) {
  const struct {
    std::string first, second;
    std::string outcome;
  } rows[] = {
      {R"({"orv:scanner": {"a": 1}})", R"({"orv:scanner": 2})", R"({"a":1})"},
      {"", R"({"orv:scanner": [0]})", "[0]"},
      {R"({"other": 1})", R"({"orv:scanner": 7})", "7"},
      {R"({"orv:scanner": {}})", R"({"orv:scanner": null})", "null"},
      {"[1]", "", "cannot use operator[] with a string argument with array"},
      {"{", "", "parse error"},
  };
  constexpr const char* kIds[] = {"r1xxx", "r4xxx"};
  for (const auto& row : rows) {
    const zBytes job = MakeArchive(
        {{"scan/r4xxx/config.json", row.second}, {"scan/r1xxx/config.json", row.first}});
    try {
      EXPECT_EQ(GetScannerConfig(job, kIds).dump(), row.outcome) << row.first;
    } catch (const nlohmann::json::exception& failure) {
      EXPECT_THAT(failure.what(), testing::HasSubstr(row.outcome)) << row.first;
    }
  }
  EXPECT_EQ(GetScannerConfig(MakeArchive({{"a", ""}}), kIds), nullptr);
  EXPECT_EQ(GetScannerConfig(zBytes(), kIds), nullptr);
  zBytes cut = MakeArchive({{"scan/r1xxx/config.json", std::string(600, ' ')}});
  cut.resize(1000);
  EXPECT_EQ(Thrown([&] { GetScannerConfig(cut, kIds); }),
            std::to_string(zERROR_STREAM) +
                " GetResourceData: Failed to read the resource buffer (scan/r1xxx/config.json)");
}

}  // namespace
