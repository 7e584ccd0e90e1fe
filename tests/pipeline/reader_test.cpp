// SPDX-License-Identifier: MIT
// What the reader accepts from other MCAP tools, and what it calls damage.
#include <gmock/gmock.h>

#include "support/mcap_file.h"
#include "support/payloads.h"
#include "support/recordings.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

const std::string kSurface = mcap::Message(1, payloads::Surface());

// The frames of a recording: "7:1" is the index entry 7 with one message.
std::string Frames(const zBytes& stream) {
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(stream);
  const bool classic = reader.GetReplayInfo().IsClassic();
  std::string text;
  for (z64u part = 0; part < (classic ? 1 : reader.SegmentCount()); ++part) {
    if (!classic) reader.LoadDataIndexFiles();
    text += '[';
    const std::vector<z32u> indexes = reader.ReadIndexInfo();
    for (zSize i = 0; i < indexes.size(); ++i) {
      text += " " + std::to_string(indexes[i]) + ":" + std::to_string(reader.ReadData(i).size());
    }
    text += " ]";
  }
  return text;
}

TEST(RecordingReader, AcceptsWhatOtherToolsWrite) {
  const std::string frame = mcap::FrameIndex() + kSurface;
  const std::string other = mcap::Channel(9, 0, "/diagnostics") + mcap::Message(9, "anything");
  const std::string unknown = mcap::Record(0x09, "attachment") + mcap::Record(0x80, "");
  const std::string described = mcap::Header() + mcap::Recording() + mcap::Scanner();
  const struct {
    const char* what;
    zBytes file;
    const char* frames;
  } rows[] = {
      {"no chunk at all", mcap::File(frame), ""},
      {"one chunk", mcap::File(mcap::Chunk(frame + frame)), "[ 7:1 7:1 ]"},
      {"lz4", mcap::File(mcap::Chunk(frame, "lz4") + mcap::Chunk(frame, "lz4")), "[ 7:1 ][ 7:1 ]"},
      {"zstd", mcap::File(mcap::Chunk(frame, "zstd")), "[ 7:1 ]"},
      {"an empty compressed chunk", mcap::File(mcap::Chunk("", "zstd")), ""},
      {"a frame across chunks of each kind",
       mcap::File(mcap::Chunk(frame) + mcap::Chunk(kSurface, "lz4") +
                  mcap::Chunk(kSurface + frame, "zstd")),
       "[ 7:3 ][ 7:1 ]"},
      {"a frame whose messages leave the chunk", mcap::File(mcap::Chunk(frame) + kSurface),
       "[ 7:2 ]"},
      {"a frame outside of chunks between segments",
       mcap::File(mcap::Chunk(frame) + frame + kSurface + mcap::Chunk(frame)), "[ 7:1 ][ 7:1 ]"},
      {"strange records everywhere",
       mcap::File(unknown + mcap::Chunk(unknown + other + frame) + unknown + other), "[ 7:1 ]"},
      {"other ids, told inside a chunk",
       mcap::Bare(described +
                  mcap::Chunk(mcap::Schema(1) + mcap::FrameChannel(500) +
                              mcap::SourceChannel(300, "Top") +
                              mcap::FrameIndex(" { \"index\" : 4294967295 } ", 500) +
                              mcap::Message(300, payloads::Surface())) +
                  mcap::DataEnd() + mcap::Footer()),
       "[ 4294967295:1 ]"},
      {"metadata at the end, channels told again",
       mcap::Bare(mcap::Header() + mcap::FrameChannel() + mcap::FrameChannel() + mcap::Schema() +
                  mcap::SourceChannel(1, "Top") + frame + mcap::SourceChannel(1, "Top") + frame +
                  mcap::Scanner() + mcap::Recording("classic") + mcap::DataEnd() + mcap::Footer()),
       "[ 7:1 7:1 ]"},
      {"a classic layout with chunks",
       mcap::Bare(mcap::Header() + mcap::Recording("classic") + mcap::Scanner() + mcap::Schema() +
                  mcap::FrameChannel() + mcap::SourceChannel(1, "Top") + mcap::Chunk(frame) +
                  frame + mcap::DataEnd() + mcap::Footer()),
       "[ 7:1 7:1 ]"},
      {"bytes after the fields",
       mcap::File(mcap::Record(0x0C, mcap::Text("x") + mcap::TextMap({}) + "more") +
                  mcap::Chunk(frame)),
       "[ 7:1 ]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(Frames(row.file), row.frames);
  }
}

TEST(RecordingReader, OrdersSourcesByChannel) {
  const zBytes file = mcap::File(mcap::SourceChannel(40, "D") + mcap::SourceChannel(2, "B") +
                                 mcap::Chunk(mcap::SourceChannel(30, "C"), "lz4"));
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(file);
  std::string names;
  const auto scanners = reader.ReadScannerInfo();
  for (const auto& source : scanners.front().sources) names += source.name + " ";
  EXPECT_EQ(names, "Top B C D ");
}

TEST(RecordingReader, TellsWhatIsDamagedAndWhere) {
  const std::string start = mcap::Header() + mcap::Recording() + mcap::Scanner() + mcap::Schema();
  const std::string end = mcap::DataEnd() + mcap::Footer();
  const std::string frame = mcap::FrameIndex() + kSurface;
  const auto index = [](const char* json) { return mcap::File(mcap::FrameIndex(json)); };
  const auto source = [](const char* key, const char* value) {
    return mcap::File(mcap::SourceChannel(2, "B", {{key, value}}));
  };
  const auto payload = [](const std::string& data) {
    return mcap::File(mcap::Chunk(mcap::FrameIndex() + mcap::Message(1, data)));
  };
  // A frame of no bytes that asks for a window of 128 MiB.
  const std::string greedy("\x28\xB5\x2F\xFD\x00\x88\x01\x00\x00", 9);
  const std::string half(std::string(mcap::Chunk(frame, "zstd")).substr(0, 60));
  const struct {
    const char* complaint;
    zBytes file;
  } rows[] = {
      {"does not begin", {}},
      {"there is no record", mcap::Bare("")},
      {"first record is no header", mcap::Bare(mcap::Recording() + mcap::Header() + end)},
      {"data section has no end", mcap::Bare(start)},
      {"there is no footer", mcap::Bare(start + mcap::DataEnd())},
      {"stand after the footer", mcap::Bare(start + end + mcap::Schema())},
      {"does not belong here", mcap::Bare(start + mcap::Footer())},
      {"does not belong here", mcap::Bare(start + mcap::Header() + end)},
      {"does not belong here", mcap::File(mcap::Chunk(mcap::Chunk("")))},
      {"does not belong here", mcap::File(mcap::Chunk(mcap::DataEnd(), "lz4"))},
      {"bytes follow the record", mcap::Bare(start + mcap::Record(0x0F, "12345") + mcap::Footer())},
      {"data_section_crc takes 4 bytes, 3 are left",
       mcap::Bare(start + mcap::Record(0x0F, "123") + mcap::Footer())},
      {"no metadata \"recording\"", mcap::Bare(mcap::Header() + end)},
      {"unknown layout \"\"", mcap::Bare(mcap::Header() + mcap::Recording("") + end)},
      {"unknown version \"2\"", mcap::Bare(mcap::Header() + mcap::Recording("classic", "2") + end)},
      {"layout is told twice", mcap::File(mcap::Recording("classic"))},
      {"checksum of the data section", mcap::Bare(start + mcap::DataEnd(1) + mcap::Footer())},
      {"checksum of the summary", mcap::Bare(start + mcap::DataEnd() + mcap::Footer(0, 1))},
      {"summary is said to start at 8", mcap::Bare(start + mcap::DataEnd() + mcap::Footer(8))},
      {"checksum of the chunk", mcap::File(mcap::Chunk(frame, "zstd", 0, 1))},
      {"chunk declares", mcap::File(mcap::Chunk(frame, "", 1))},
      {"chunk declares", mcap::File(mcap::Chunk(frame, "zstd", z64s{1} << 60))},
      {"longer than", mcap::File(mcap::Chunk(frame, "lz4", -1))},
      {"longer than", mcap::File(mcap::Chunk(std::string(3000000, 0), "zstd", -1))},
      {"too much memory",
       mcap::File(mcap::Record(0x06, mcap::Raw(z64u{0}) + mcap::Raw(z64u{0}) + mcap::Raw(z64u{0}) +
                                         mcap::Raw(z32u{0}) + mcap::Text("zstd") +
                                         mcap::Raw(z64u{9}) + greedy))},
      {"unknown compression \"bz2\"", mcap::File(mcap::Chunk(frame, "bz2"))},
      {"record content takes", mcap::File(half)},
      {"records of the compressed chunk", mcap::File(mcap::Chunk("\x05", "lz4"))},
      {"unknown channel 77", mcap::File(mcap::Message(77, ""))},
      {"unknown schema 5", mcap::File(mcap::Channel(5, 5, "/x"))},
      {"told twice, with different", mcap::File(mcap::SourceChannel(1, "Bottom"))},
      {"before the first frame index", mcap::File(kSurface)},
      {"belongs to scanner 1 of 1", source("scanner", "1")},
      {"\"scanner\" is \"\"", source("scanner", "")},
      {"\"data_type\" is \"65536\"", source("data_type", "65536")},
      {"\"arrayed\" is 2", source("arrayed", "2")},
      {"\"arrayed\" is \"0x\"", source("arrayed", "0x")},
      {"\"reserved\" is", source("reserved", "18446744073709551616")},
      {"frame index is not", index("{\"index\":")},
      {"frame index is not", index("{\"index\":-1}")},
      {"frame index is not", index("{\"index\":1.0}")},
      {"frame index is not", index("{\"index\":4294967296}")},
      {"frame index is not", index("{\"index\":1,\"more\":2}")},
      {"frame index is not", index("\xFF\xFE")},
      {"frame index is not", mcap::File(mcap::FrameIndex(std::string(100000, '[')))},
      {"no intact FlatBuffer", payload(std::string(64, '\xFF'))},
      {"no intact FlatBuffer", payload(payloads::Surface().substr(0, 40))},
      {"no surface or profile (union type 0)", payload(payloads::Union(0, false))},
      {"no surface or profile (union type 3)", payload(payloads::Union(3, false))},
      {"no surface or profile (union type 9)", payload(payloads::Union(9, true))},
      {"no surface or profile (union type 3)", payload(payloads::NestedArray())},
      {"array of 1 x 3 items", payload(payloads::Surface({.width = 3}))},
      {"array of 2 x 65537 items", payload(payloads::Surface({.width = 65537, .length = 2}))},
      // 2^31 x 2^31 heights wrap to none in 32 bits, and in 64 bits with their size.
      {"items of 2 bytes holds 0 bytes",
       payload(payloads::Surface({.width = 1U << 31, .length = 1U << 31, .points = {}}))},
      {"items of 6 bytes holds 4 bytes",
       payload(payloads::Surface({.pointType = trelvane::PointType::Point3d}))},
      {"array of 1 x 2 items of 1 bytes holds 1", payload(payloads::Surface({.intensities = {1}}))},
      {"point type 2", payload(payloads::Surface({.pointType = trelvane::PointType::Point2d}))},
      {"point type 1", payload(payloads::Profile(1, {1}, trelvane::PointType::Point3d))},
      {"items of 4 bytes holds 6",
       payload(payloads::Profile(2, {1, 2, 3}, trelvane::PointType::Point2d))},
      {"overlap",
       payload(payloads::RepeatedItem(2, {.width = 100, .points = std::vector<short>(100)}))},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.complaint);
    const std::string thrown = Thrown([&] { Frames(row.file); });
    EXPECT_THAT(thrown, AllOf(HasSubstr("damaged at byte offset"), HasSubstr(row.complaint)));
    // The check, which goes on after damage, finds the same.
    EXPECT_TRUE(std::ranges::any_of(
        CheckReplay(row.file),
        [&](const Plovia::ReplayProblem& problem) { return thrown.ends_with(problem.what); }));
  }
  const zBytes file = mcap::File(mcap::Message(77, ""));
  const zSize offset = file.size() - 8 - 29 - 13 - 31;  // magic, footer, data end, the message
  EXPECT_THAT(Thrown([&] { Frames(file); }),
              HasSubstr("at byte offset " + std::to_string(offset) + ":"));
}

// A stream is cut at every byte, and every byte of it takes several other values: it is read to the
// end or refused as a damaged stream, and never anything else.
TEST(RecordingReader, SurvivesEveryCutAndEveryChangedByte) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(2);
  const Plovia::ReplayFrame frame = {MakeArrayOf({MakeCloud(1)}), MakeProfile(zType::z16s, 2)};
  const zBytes checked = WriteRecording(scanner, {frame}, true);
  // Without checksums the changes reach what lies behind them.
  const std::string records = mcap::FrameIndex() + mcap::Message(1, payloads::Surface()) +
                              mcap::Message(1, payloads::RepeatedItem(2, {.points = {1, 2}}));
  const zBytes unchecked[] = {mcap::File(mcap::Chunk(records)),
                              mcap::File(mcap::Chunk(records, "lz4")),
                              mcap::File(mcap::Chunk(records, "zstd"))};

  for (zSize size = 0; size < checked.size(); ++size) {
    EXPECT_NE(Thrown([&] { Frames(First(checked, size)); }), "") << size;
  }
  for (const zBytes& sound : unchecked) {
    zBytes changed = sound;
    for (zSize i = 0; i < sound.size(); ++i) {
      for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF, sound[i] ^ 0x04}) {
        changed[i] = static_cast<z8u>(value);
        EXPECT_NO_THROW(Thrown([&] { Frames(changed); })) << i << " becomes " << value;
      }
      changed[i] = sound[i];
    }
  }
}

}  // namespace
