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
const std::string kFrame = mcap::FrameIndex() + kSurface;

// The frames of a recording: "2/7:1" is the index entry 7, with one message, of the third segment.
std::string Frames(const zBytes& stream, zSize piece = 31) {
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(SourceOf(stream, piece));
  std::string text;
  ForEachFrame(reader, [&](z64u segment, z32u index, const Frame& messages) {
    text += Orv::Format("%u/%u:%u ", segment, index, messages.size());
  });
  return text;
}

TEST(RecordingReader, AcceptsWhatOtherToolsWrite) {
  using namespace mcap;
  const std::string other = Channel(9, 0, "/diagnostics") + Message(9, "anything");
  const std::string unknown = Record(0x09, "attachment") + Record(0x80, "");
  const std::string start = Header() + Recording() + Scanner();
  const std::string end = DataEnd() + Footer();
  const struct {
    const char* what;
    zBytes file;
    const char* frames;
  } rows[] = {
      {"no chunk at all", File(kFrame), ""},
      {"a frame across chunks of each kind",
       File(Chunk(kFrame) + Chunk(kSurface, "lz4") + Chunk(kSurface + kFrame, "zstd")),
       "0/7:3 1/7:1 "},
      {"a frame outside of chunks between segments",
       File(Chunk(kFrame) + kFrame + kSurface + Chunk(kFrame)), "0/7:1 1/7:1 "},
      {"strange records everywhere",
       File(unknown + Chunk(unknown + other + kFrame) + unknown + other), "0/7:1 "},
      {"other ids, told inside a chunk",
       Bare(start +
            Chunk(Schema(1) + FrameChannel(500) + SourceChannel(300, "Top") +
                  FrameIndex(" { \"index\" : 4294967295 } ", 500) +
                  Message(300, payloads::Surface())) +
            end),
       "0/4294967295:1 "},
      {"a classic layout with a chunk, metadata at the end, channels told again",
       Bare(Header() + FrameChannel() + FrameChannel() + Schema() + SourceChannel(1, "Top") +
            kFrame + SourceChannel(1, "Top") + Chunk(kFrame) + Scanner() + Recording("classic") +
            end),
       "0/7:1 0/7:1 "},
      {"bytes after the fields",
       File(Record(0x0C, Text("x") + TextMap({}) + "more") + Chunk(kFrame)), "0/7:1 "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    for (const zSize piece : {1U, 7U, 31U}) EXPECT_EQ(Frames(row.file, piece), row.frames) << piece;
  }

  const zBytes file =
      File(SourceChannel(40, "D") + SourceChannel(2, "B") + Chunk(SourceChannel(30, "C"), "lz4"));
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(SourceOf(file));
  std::string names;
  const auto scanner = reader.ReadScannerInfo().front();
  for (const auto& source : scanner.sources) names += source.name + " ";
  EXPECT_EQ(names, "Top B C D ");  // by channel
}

TEST(RecordingReader, TellsWhatIsDamagedAndWhere) {
  using namespace mcap;
  const std::string start = Header() + Recording() + Scanner() + Schema();
  const std::string end = DataEnd() + Footer();
  const auto index = [](const std::string& json) { return File(FrameIndex(json)); };
  const auto source = [](const char* key, const char* value) {
    return File(SourceChannel(2, "B", {{key, value}}));
  };
  const auto payload = [](const std::string& data) {
    return File(Chunk(FrameIndex() + Message(1, data)));
  };
  using trelvane::PointType;
  // A frame of no bytes that asks for a window of 64 MiB.
  const std::string greedy("\x28\xB5\x2F\xFD\x00\x80\x01\x00\x00", 9);
  const struct {
    const char* complaint;
    zBytes file;
  } rows[] = {
      {"does not begin", {}},
      {"there is no record", Bare("")},
      {"first record is no header", Bare(Recording() + Header() + end)},
      {"data section has no end", Bare(start)},
      {"there is no footer", Bare(start + DataEnd())},
      {"stand after the footer", Bare(start + end + Schema())},
      {"does not belong here", Bare(start + Footer())},
      {"does not belong here", File(Chunk(Chunk("")))},
      {"does not belong here", File(Chunk(DataEnd(), "lz4"))},
      {"bytes follow the record", Bare(start + Record(0x0F, "12345") + Footer())},
      {"data_section_crc takes 4 bytes, 3 are left", Bare(start + Record(0x0F, "123") + Footer())},
      {"unknown layout \"\"", Bare(Header() + Recording("") + end)},
      {"unknown version \"2\"", Bare(Header() + Recording("classic", "2") + end)},
      {"layout is told twice", File(Recording("classic"))},
      {"checksum of the data section", Bare(start + DataEnd(1) + Footer())},
      {"checksum of the summary", Bare(start + DataEnd() + Footer(0, 1))},
      {"summary is said to start at 8", Bare(start + DataEnd() + Footer(8))},
      {"checksum of the chunk", File(Chunk(kFrame, "zstd", 0, 1))},
      {"chunk declares", File(Chunk(kFrame, "zstd", z64s{1} << 60))},
      {"longer than", File(Chunk(kFrame, "lz4", -1))},
      {"longer than", File(Chunk(std::string(3000000, 0), "zstd", -1))},
      {"too much memory",
       File(Record(0x06, Raw(z64u{0}) + Raw(z64u{0}) + Raw(z64u{0}) + Raw(z32u{0}) + Text("zstd") +
                             Raw(z64u{9}) + greedy))},
      {"unknown compression \"bz2\"", File(Chunk(kFrame, "bz2"))},
      {"record content takes", File(Chunk(kFrame, "zstd").substr(0, 60))},
      {"records of the compressed chunk", File(Chunk("\x05", "lz4", 0, 0xA2681B02))},
      {"unknown channel 77", File(Message(77, ""))},
      {"unknown schema 5", File(Channel(5, 5, "/x"))},
      {"told twice, with different", File(SourceChannel(1, "Bottom"))},
      {"before the first frame index", File(kSurface)},
      {"belongs to scanner 1 of 1", source("scanner", "1")},
      {"\"data_type\" is \"65536\"", source("data_type", "65536")},
      {"\"arrayed\" is 2", source("arrayed", "2")},
      {"\"arrayed\" is \"0x\"", source("arrayed", "0x")},
      {"\"reserved\" is", source("reserved", "18446744073709551616")},
      {"frame index is not", index("{\"index\":-1}")},
      {"frame index is not", index("{\"index\":4294967296}")},
      {"frame index is not", index("{\"index\":1,\"more\":2}")},
      {"frame index is not", index(std::string(100000, '['))},
      {"no intact FlatBuffer", payload(std::string(64, '\xFF'))},
      {"no surface or profile (union type 0)", payload(payloads::Union(0, false))},
      {"no surface or profile (union type 3)", payload(payloads::Union(3, false))},
      {"no surface or profile (union type 3)", payload(payloads::NestedArray())},
      {"array of 2 x 65537 items",
       payload(payloads::Surface({.width = 65537, .length = 2, .own = true}))},
      // As many in 32 bits.
      {"array of 65536 x 65537 items",
       payload(payloads::Surface(
           {.width = 65537, .length = 65536, .points = std::vector<short>(65536), .own = true}))},
      // 2^31 x 2^31 heights wrap to none in 32 bits, and in 64 bits with their size.
      {"items of 2 bytes holds 0 bytes",
       payload(payloads::Surface({.width = 1U << 31, .length = 1U << 31, .points = {}}))},
      {"items of 6 bytes holds 4 bytes",
       payload(payloads::Surface({.pointType = PointType::Point3d}))},
      {"array of 1 x 2 items of 1 bytes holds 1", payload(payloads::Surface({.intensities = {1}}))},
      {"point type 2", payload(payloads::Surface({.pointType = PointType::Point2d}))},
      {"point type 1", payload(payloads::Profile(1, {1}, PointType::Point3d))},
      {"items of 4 bytes holds 6", payload(payloads::Profile(2, {1, 2, 3}, PointType::Point2d))},
      {"overlap",
       payload(payloads::RepeatedItem(2, {.width = 100, .points = std::vector<short>(100)}))},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows << ": " << row.complaint);
    const std::string thrown = Thrown([&] { Frames(row.file); });
    EXPECT_EQ(Thrown([&] { Frames(row.file, 1); }), thrown);
    EXPECT_THAT(thrown, AllOf(HasSubstr("damaged at byte offset"), HasSubstr(row.complaint)));
    // The check, which goes on after damage, finds the same.
    EXPECT_TRUE(std::ranges::any_of(
        CheckReplay(row.file),
        [&](const Plovia::ReplayProblem& problem) { return thrown.ends_with(problem.what); }));
  }
  const zBytes file = File(Message(77, ""));
  const zSize offset = file.size() - 8 - 29 - 13 - 31;  // magic, footer, data end, the message
  EXPECT_THAT(Thrown([&] { Frames(file); }),
              HasSubstr("at byte offset " + std::to_string(offset) + ":"));
}

// A few kilobytes can ask for any number of bytes, chunk after chunk.
TEST(RecordingReader, UnpacksNoMoreThanTheSizeOfTheFileAllows) {
  const std::string chunk =
      mcap::Chunk(mcap::Record(0x80, std::string(zSize{140} << 20, '\0')), "zstd");
  EXPECT_EQ(Frames(mcap::File(mcap::Chunk(kFrame) + chunk), 4096), "0/7:1 ");
  EXPECT_THAT(Thrown([&] { Frames(mcap::File(chunk + chunk), 4096); }),
              HasSubstr("hold more than a recording of this size may unpack to"));
}

// A stream is cut at every byte, and every byte of it takes several other values: it is read to the
// end or refused as a damaged stream, and never anything else.
TEST(RecordingReader, SurvivesEveryCutAndEveryChangedByte) {
  const zBytes checked = WriteRecording(MakeScanner(), {MakeFrame(1)}, true);
  for (zSize size = 0; size < checked.size(); ++size) {
    EXPECT_NE(Thrown([&] { Frames(First(checked, size)); }), "") << size;
  }
  // Without checksums the changes reach what lies behind them.
  const std::string records =
      kFrame + mcap::Message(1, payloads::RepeatedItem(2, {.points = {1, 2}}));
  for (const char* compression : {"", "lz4", "zstd"}) {
    const zBytes sound = mcap::File(mcap::Chunk(records, compression));
    zBytes changed = sound;
    for (zSize i = 0; i < sound.size(); ++i) {
      for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF, sound[i] ^ 0x04}) {
        changed[i] = static_cast<z8u>(value);
        EXPECT_NO_THROW(Thrown([&] { Frames(changed); }))
            << compression << i << " becomes " << value;
      }
      changed[i] = sound[i];
    }
  }
}

// What is told of our own layout without a look at the whole payload is what such a look tells.
TEST(RecordingReader, KnowsItsOwnLayoutFromAnyOther) {
  using namespace mcap;
  const auto expectOneOpinion = [](const std::string& payload, const char* compression) {
    const zBytes file = File(Chunk(kFrame, "lz4") +
                             Chunk(FrameIndex() + Message(1, payload) + kSurface, compression));
    Plovia::ReplaySerializer heads, checked;
    std::string text;
    heads.LoadHeads(SourceOf(file));
    const std::string first = Describe(heads.ReadMessage(0).Get());  // of another chunk
    const std::string damage = Thrown([&] { text = Describe(heads.ReadMessage(1).Get()); });
    checked.LoadBuffer(SourceOf(file));
    checked.LoadDataIndexFiles();
    checked.LoadDataIndexFiles();
    EXPECT_EQ(Thrown([&] { checked.ReadData(1); }), damage);
    const auto surface = heads.OpenSurface(1);
    EXPECT_EQ(Describe(heads.ReadMessage(0).Get()), first);
    EXPECT_EQ(surface ? Describe(MessageOf(*surface).Get()) : text, text);
    return surface.has_value();
  };
  using trelvane::PointType;
  const payloads::Shape shapes[] = {
      {.own = true},
      {.width = 1, .length = 3, .points = {1, 2, 3}, .own = true},
      {.width = 1, .points = {1, 2, 3}, .pointType = PointType::Point3d, .own = true}};
  for (const auto& shape : shapes) {
    const std::string sound = payloads::Surface(shape);
    const bool heights = shape.pointType == PointType::Height;
    for (const char* compression : {"", "lz4"}) {
      SCOPED_TRACE(testing::Message() << &shape - shapes << compression);
      EXPECT_EQ(expectOneOpinion(sound, compression), heights);
      for (zSize i = 0; i < sound.size(); ++i) {
        for (const int value : {0x00, 0x01, 0x04, 0x80, 0xFF, sound[i] ^ 0x02}) {
          std::string changed = sound;
          changed[i] = static_cast<char>(value);
          expectOneOpinion(changed, compression);
        }
        EXPECT_FALSE(expectOneOpinion(sound.substr(0, i), compression)) << i;
      }
      EXPECT_FALSE(expectOneOpinion(sound + std::string(4, '\0'), compression));
    }
  }
  EXPECT_FALSE(expectOneOpinion(payloads::Surface(), ""));
  EXPECT_FALSE(expectOneOpinion(payloads::Surface({.intensities = {1, 2}, .own = true}), ""));
}

// A file with 2 GiB of zeros at one place.
class HollowSource final : public zSource {
 public:
  HollowSource(zBytes bytes, zSize place) : bytes_(std::move(bytes)), place_(place) {}
  z64u Size() const noexcept override { return bytes_.size() + kHole; }
  void Read(z64u offset, void* destination, zSize size) const override {
    auto* to = static_cast<z8u*>(destination);
    for (const z64u end = offset + size; offset < end; ++offset) {
      const bool isHole = offset >= place_ && offset < place_ + kHole;
      *to++ = isHole ? z8u{0} : bytes_.at(offset < place_ ? offset : offset - kHole);
    }
  }
  zSize Piece() const noexcept override { return 512; }

  static constexpr z64u kHole = z64u{1} << 31;

 private:
  zBytes bytes_;
  zSize place_;
};

TEST(RecordingReader, RefusesAMessageThatIsLargerThanAFlatBuffer) {
  using namespace mcap;
  std::string payload =
      payloads::Surface({.width = 1U << 15, .length = 1U << 15, .points = {}, .own = true});
  payload.replace(payload.size() - 4, 4, Raw(z32u{1} << 30));
  std::string message = Message(1, payload);
  message.replace(1, 8, Raw(message.size() - 9 + HollowSource::kHole));
  const zBytes file = File(FrameIndex() + message);
  const zSize behind = (DataEnd() + Footer()).size() + 8;
  Plovia::ReplaySerializer reader;
  reader.LoadHeads(std::make_shared<HollowSource>(file, file.size() - behind));
  EXPECT_FALSE(reader.OpenSurface(0));
  EXPECT_THAT(Thrown([&] { reader.ReadMessage(0); }), HasSubstr("larger than a FlatBuffer"));
}

}  // namespace
