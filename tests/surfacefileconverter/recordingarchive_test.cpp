// SPDX-License-Identifier: MIT
#include "surfacefileconverter/recordingarchive.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/archives.h"

namespace {

using testing::HasSubstr;

TEST(RecordingArchive, GivesTheLastReplayStream) {
  const struct {
    std::vector<Member> members;
    std::string expected;  // or what is thrown
  } rows[] = {
      {{{"replay", "", zTAR_DIRECTORY}, {"replay/buffer", "abc"}}, "abc"},
      {{{"replay/buffer", "first"}, {"x", ""}, {"replay/buffer", "second"}}, "second"},
      {{{"replay/buffer", "full"}, {"replay/buffer", ""}}, "The replay buffer is empty"},
      {{{"replay/buffer", "", zTAR_DIRECTORY}}, "The replay buffer is empty"},
      {{{"./replay/buffer", "other name"}}, "The replay buffer is empty"},
      {{{"config.json", "{}"}}, "The replay buffer is empty"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.expected);
    const zBytes archive = MakeArchive(row.members);
    std::span<const z8u> replay;
    const std::string thrown = Thrown([&] { replay = GetReplayData(archive, DefaultAlloc()); });
    if (thrown.empty()) {
      EXPECT_EQ(zBytes(replay.begin(), replay.end()), ToBytes(row.expected));
    } else {
      EXPECT_EQ(thrown, "-997 GetReplayData: " + row.expected);
    }
  }
}

TEST(RecordingArchive, SaysWhatIsWrongWithADamagedArchive) {
  const zBytes archive = MakeArchive({{"replay/buffer", std::string(5000, 'r')}});
  for (zSize size = 1; size < archive.size(); size += 100) {
    const std::string thrown = Thrown([&] { GetReplayData(First(archive, size), DefaultAlloc()); });
    EXPECT_EQ(thrown.empty(), size >= 512 + 5000) << size << ' ' << thrown;
  }
  EXPECT_EQ(Thrown([] { GetReplayData(ToBytes("no archive"), DefaultAlloc()); }),
            std::to_string(zERROR_FORMAT) + " GetReplayData: Failed to construct zTar");
  EXPECT_EQ(Thrown([] { GetReplayData(zBytes(), DefaultAlloc()); }),
            "-997 GetReplayData: The replay buffer is empty");
}

TEST(RecordingArchive, DoesNotTakeMemoryForAnAbsurdSize) {
  zBytes archive = MakeArchive({{"replay/buffer", "abc"}});
  std::string header(archive.begin(), archive.begin() + 512);
  header.replace(124, 11, "77777777777");  // 8 GiB
  header.replace(148, 8, 8, ' ');
  unsigned sum = 0;
  for (const char c : header) sum += static_cast<unsigned char>(c);
  header.replace(148, 8, Orv::Format("%06o", sum) + std::string("\0 ", 2));
  std::ranges::copy(header, archive.begin());
  zBytes content;
  EXPECT_THAT(Thrown([&] { GetReplayData(archive, DefaultAlloc()); }),
              HasSubstr("Failed to read the replay buffer"));
  EXPECT_THAT(Thrown([&] { GetResourceData(archive, "replay/buffer", content, DefaultAlloc()); }),
              HasSubstr("Failed to read the resource buffer (replay/buffer)"));
}

TEST(RecordingArchive, FindsAScannersConfiguration) {
  const struct {
    const char* document;
    const char* outcome;  // "false", or the element that was found
  } rows[] = {
      {R"({"orv:scanner": {"a": 1}})", R"({"a":1})"},
      {R"({"orv:scanner": [0]})", "[0]"},
      {R"({"orv:scanner": 7})", "7"},
      {R"({"orv:scanner": null})", "false"},
      {R"({"orv:scanner": {}})", "false"},
      {R"({"other": 1})", "false"},
      {"[1]", "cannot use operator[] with a string argument with array"},
      {"{", "parse error"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.document);
    const zBytes job = MakeArchive({{"scan/r4xxx/config.json", row.document}});
    nlohmann::json scanner = "untouched";
    try {
      const bool found = GetScannerConfig(job, "r4xxx", scanner, DefaultAlloc());
      EXPECT_EQ(found ? scanner.dump() : "false", row.outcome);
    } catch (const nlohmann::json::exception& failure) {
      EXPECT_THAT(failure.what(), HasSubstr(row.outcome));
    }
  }
  nlohmann::json scanner = "untouched";
  EXPECT_FALSE(GetScannerConfig(MakeArchive({{"a", ""}}), "r4xxx", scanner, DefaultAlloc()));
  EXPECT_FALSE(GetScannerConfig(zBytes(), "r4xxx", scanner, DefaultAlloc()));
  EXPECT_EQ(scanner, "untouched");
  for (const zBytes& archive : {MakeArchive({{"a", ""}}), zBytes()}) {
    zBytes content = ToBytes("old");
    GetResourceData(archive, "b", content, DefaultAlloc());
    EXPECT_TRUE(content.empty());
  }
}

}  // namespace
