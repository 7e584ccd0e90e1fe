// SPDX-License-Identifier: MIT
#include "formats/archive/reader.h"

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
    const std::string thrown = Thrown([&] { replay = OpenRecordingArchive(archive).replay; });
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
    const std::string thrown = Thrown([&] { OpenRecordingArchive(First(archive, size)); });
    EXPECT_EQ(thrown.empty(), size >= 512 + 5000) << size << ' ' << thrown;
  }
  EXPECT_EQ(Thrown([] { OpenRecordingArchive(ToBytes("no archive")); }),
            std::to_string(zERROR_FORMAT) + " GetReplayData: Failed to construct zTar");
  EXPECT_EQ(Thrown([] { OpenRecordingArchive(zBytes()); }),
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
  EXPECT_THAT(Thrown([&] { OpenRecordingArchive(archive); }),
              HasSubstr("Failed to read the replay buffer"));
}

constexpr const char* kFamilies[] = {"r1xxx", "r4xxx"};

TEST(RecordingArchive, FindsAScannersConfiguration) {
  const struct {
    const char* document;
    const char* outcome;  // the element that was found
  } rows[] = {
      {R"({"orv:scanner": {"a": 1}})", R"({"a":1})"},
      {R"({"orv:scanner": [0]})", "[0]"},
      {R"({"orv:scanner": 7})", "7"},
      {R"({"orv:scanner": null})", "null"},
      {R"({"orv:scanner": {}})", "null"},
      {R"({"other": 1})", "null"},
      {"[1]", "cannot use operator[] with a string argument with array"},
      {"{", "parse error"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.document);
    const zBytes job = MakeArchive({{"scan/r4xxx/config.json", row.document}});
    try {
      EXPECT_EQ(GetScannerConfig(job, kFamilies).dump(), row.outcome);
    } catch (const nlohmann::json::exception& failure) {
      EXPECT_THAT(failure.what(), HasSubstr(row.outcome));
    }
  }
  EXPECT_EQ(GetScannerConfig(MakeArchive({{"a", ""}}), kFamilies), nullptr);
  EXPECT_EQ(GetScannerConfig(zBytes(), kFamilies), nullptr);
}

}  // namespace
