// SPDX-License-Identifier: MIT
// What is told about files of all kinds, and what is called wrong in them.
#include "inspect/inspect.h"

#include <gmock/gmock.h>

#include <cmath>
#include <sstream>

#include "inspect/report.h"
#include "support/archives.h"
#include "support/csv_export.h"
#include "support/mcap_file.h"
#include "support/sur_file.h"
#include "text.h"

namespace {

FileFacts Inspect(const std::string& path, bool check = false) {
  Progress progress(1, false);
  return InspectFile(path, check ? Depth::check : Depth::reading, {}, progress);
}

void WriteAll(const FileFacts& facts, std::ostream& out) {
  WriteReport(facts, ScanDetails::all, out);
}
void WriteTable(const FileFacts& facts, std::ostream& out) {
  WriteReport(facts, ScanDetails::ofFew, out);
}

std::string Text(const FileFacts& facts, void (*write)(const FileFacts&, std::ostream&)) {
  std::ostringstream out;
  write(facts, out);
  return out.str();
}

template <class Value>
zBytes With(zBytes bytes, zSize offset, Value value) {
  sur::Set(bytes, offset, value);
  return bytes;
}

// A surface file that tells all that a conversion takes from it.
zBytes PlainSurface(const SurFile& file = {}) {
  zBytes bytes = file.Bytes();
  sur::Set<z16s>(bytes, 18, file.length == 1 ? 1 : 2);
  sur::Set<z32s>(bytes, sur::kTotal, file.width * file.length);
  for (const zSize unit : {180U, 196U, 212U}) std::memcpy(bytes.data() + unit, "mm", 2);
  return bytes;
}

// A compact surface of 3 x 2 points.
zBytes CompactSurface() {
  zBytes bytes = With(With(With(zBytes(73, 0), 0, 1), 4, 3), 8, 2);
  for (zSize i = 0; i < 6; ++i) {
    sur::Set(bytes, 12 + 8 * i, 0.5 * static_cast<z64f>(i + 1));  // scale, offset
    sur::Set(bytes, 60 + 2 * i, static_cast<z16s>(i * 10));
  }
  return bytes;
}

// Compares the report and the JSON document of each with those in a file of the folder of data.
void ExpectTexts(const std::vector<FileFacts>& all, const std::string& name) {
  std::istringstream expected(ReadFile(TEST_DATA_DIR "/inspection/" + name));
  for (FileFacts facts : all) {
    if (facts.recording) {  // sizes are up to the writer
      facts.size = 0;
      for (StoredFile& member : facts.members) member.size = 0;
    }
    std::string wanted;
    std::string line;
    while (!line.starts_with('{') && std::getline(expected, line)) wanted += line + "\n";
    EXPECT_EQ(Text(facts, WriteAll) + Text(facts, WriteJson), wanted) << facts.path;
  }
}

struct Inspection : testing::Test {
  static FileFacts InspectBytes(const std::string& name, const zBytes& bytes, bool check = false) {
    WriteFile(name, bytes);
    return Inspect(name, check);
  }
  static std::vector<FileFacts> InspectAll(
      const std::vector<std::pair<const char*, zBytes>>& files) {
    std::vector<FileFacts> all;
    for (const auto& [name, bytes] : files) all.push_back(InspectBytes(name, bytes, true));
    return all;
  }
  const TempDirectory directory_;
};

TEST_F(Inspection, TellsAllFacts) {
  const std::array<std::string, 3> axes{"a", "b", "c"}, steps{"d", "e", "f"}, ends{"g", "h", "i"};
  const std::string comment = "one\r\n\n3\n4\n5\n6\n7\neight\x1B\n9\n";
  const DigitalSurfFacts surface{"object", "operator", comment, "2024-05-31", 21, 3, 32,
                                 true,     axes,       steps,   ends,         4,  5};
  const FileFacts odd{"a\x1B.sur",
                      FileKind::sur,
                      1'234'567,
                      surface,
                      CloudFacts{"x y z", "1 2 3 4 5 6 7", true},
                      {},
                      {{"first", 6}, {"second", 7000}},
                      8,
                      {},
                      {"one note", "another"},
                      {{"a-key", "of the file"}, {"another", "too"}},
                      {{9, "wrong"}, {{}, "damaged"}}};
  std::vector<FileFacts> all = {odd};
  for (const z64u size : {z64u{0}, z64u{999}, z64u{1000}, z64u{2'345'678}, z64u{1} << 30,
                          z64u{5} << 40, z64u{1} << 60, z64u{1}}) {
    FileFacts& facts = all.emplace_back();
    facts.kind = static_cast<FileKind>(all.size() - 2);
    facts.size = size;
  }
  for (const auto& [valid, points] : {std::pair(7U, 7U),
                                      {1U, 3000U},
                                      {0U, 7U},
                                      {0U, 0U},
                                      {99'957U, 100'000U},
                                      {9'999'999U, 10'000'000U}}) {
    std::vector<PlacedScan>& scans = all[1].scans;
    const auto kind = static_cast<ScanKind>(scans.size() % 4);
    scans.emplace_back().facts = {kind, 0, 0, points, valid, {}, {}, {}, {}, {}, {}, {}, {}};
  }
  all[1].scans[0].facts.cautions = {{"a-key", "of the scan"}};
  ExpectTexts(all, "facts.txt");
  EXPECT_EQ(Text(odd, WriteVerdict), "a\\x1b.sur: at byte 9: wrong\na\\x1b.sur: damaged\n");
}

TEST_F(Inspection, TellsManyScansAsATableOfTheirSources) {
  const std::string name(41, 'n');
  FileFacts facts;
  const auto add = [&](zSize frame, const char* source, ScanKind kind, z32u width, z32u length,
                       zSize valid) -> ScanFacts& {
    const ScanFacts scan{kind, width, length, width * length, valid, {}, {}, {}, {}, {},
                         {},   {},    {}};
    return facts.scans.emplace_back(PlacedScan{frame, 0, source, {}, scan}).facts;
  };
  add(0, "\xC3\x84\x1B", ScanKind::pointProfile, 7, 1, 7);
  add(0, "Left", ScanKind::surface, 80, 60, 4800).heights = {-1.5, 2};
  add(1, "Left", ScanKind::cloud, 70, 60, 4199).intensity = {3, 9};
  add(1, "Left", ScanKind::profile, 75, 40, 1).heights = {-0.5, 2.25};
  EXPECT_EQ(Text(facts, WriteTable), Text(facts, WriteAll));
  add(2, "Left", ScanKind::surface, 80, 60, 2400).intensity = {0, 4};
  add(0, name.c_str(), ScanKind::surface, 0, 0, 0);
  for (zSize i = 0; i < 6; ++i) {
    ScanFacts& scan = facts.scans[i].facts;
    scan.cautions = {{"each", "text " + std::to_string(i)}};
    if (i % 2 == 0) scan.cautions.push_back({"some", "two"});
  }
  facts.scans[0].facts.cautions.clear();
  EXPECT_EQ(Text(facts, WriteTable), ReadFile(TEST_DATA_DIR "/inspection/table.txt"));
}

TEST_F(Inspection, KnowsHowLongAUnitIs) {
  const std::pair<const char*, const char*> rows[] = {
      {"m", "1000"},      {"dm", "100"},   {"cm", "10"},    {"um", "0.001"},
      {"\xB5m", "0.001"}, {"µm", "0.001"}, {"μm", "0.001"}, {"nm", "1e-06"},
      {"pm", "1e-09"},    {"in", "25.4"},  {"inch", "25.4"}};
  zBytes bytes = PlainSurface();
  for (const auto& [unit, mm] : rows) {
    std::snprintf(reinterpret_cast<char*>(&bytes[180]), 16, "%s", unit);
    const FileFacts facts = InspectBytes("a.sur", bytes);
    EXPECT_THAT(facts.scans.at(0).facts.cautions.at(0).text,
                testing::EndsWith(std::string(" mm: real lengths are ") + mm + " times as long"));
  }
}

// Whatever stands behind the first frame.
TEST_F(Inspection, LooksQuicklyAtTheFirstFrameAndTheSummaryAlone) {
  const auto quick = [](const zBytes& replay) {
    std::string told;
    WriteFile("a.rep", replay);
    WriteFile("a.ovrec", MakeArchive({{"replay/buffer", ToText(replay)}}));
    for (const char* name : {"a.rep", "a.ovrec"}) {
      Progress progress(1, false);
      const FileFacts facts = InspectFile(name, Depth::quick, {}, progress);
      told += Orv::Format("%zu frames, %zu scans, %zu problems; ", facts.frames, facts.scans.size(),
                          facts.problems.size());
    }
    return told;
  };
  for (const bool classic : {false, true}) {
    const zBytes sound = WriteRecording(MakeScanner(), {MakeFrame(1), MakeFrame(2), {}}, classic);
    // The array holds two scans.
    EXPECT_EQ(quick(sound), "3 frames, 6 scans, 0 problems; 3 frames, 6 scans, 0 problems; ");
    zBytes damaged = sound;
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(sound.size() * 2 / 3), 100, z8u{1});
    EXPECT_EQ(quick(damaged), quick(sound));
    EXPECT_EQ(quick(First(sound, sound.size() * 2 / 3)),  // it has no end
              "0 frames, 0 scans, 1 problems; 0 frames, 0 scans, 1 problems; ");
    EXPECT_EQ(quick(WriteRecording(MakeScanner(), {}, classic)),
              "0 frames, 0 scans, 0 problems; 0 frames, 0 scans, 0 problems; ");
  }
}

TEST_F(Inspection, TellsWhatIsInFilesAndWhatAConversionIgnores) {
  const Plovia::ReplayScannerInfo scanner = MakeScanner();
  const Frame frame = {MakeSurfaceWithIntensity(1), MakeCloud(2), MakeProfile(zType::z16s, 3),
                       MakeProfile(zType::zPoint16s, 4),
                       MakeArrayOf({MakeSurface(2, 1, {-32766, kInvalidRaw}),
                                    MakeCloudOf(1, 1, {{1, 2, kInvalidRaw}})})};
  Plovia::ReplayScannerInfo odd = scanner;
  odd.sources.resize(3);
  odd.sources[0].dataType = 11;
  odd.sources[1].name = "a multi-exp b";
  // Two of one name in files, and some that are not written, as the last one, which tells the type.
  Plovia::ReplayScannerInfo many = scanner;
  std::swap(many.sources[2], many.sources[4]);
  many.sources[0].displayName = "Li/ne";
  zBytes profile = PlainSurface(
      {.width = 2, .length = 1, .samples = {1, 2}, .bits = 32, .commentSize = 3, .privateSize = 4});
  std::memcpy(profile.data() + 196, "km", 2);  // a profile has no y
  zBytes surface = PlainSurface();
  // Objects, type, number of points; seconds to year.
  const z16s fields[][2] = {{14, 3},   {18, 21},  {116, 7}, {306, 56},  {308, 34},
                            {310, 12}, {312, 31}, {314, 5}, {316, 2024}};
  for (const auto& [offset, value] : fields) sur::Set(surface, static_cast<zSize>(offset), value);
  std::memcpy(surface.data() + 180, "\xB5m", 2);  // x steps, Latin-1
  std::memcpy(surface.data() + 212, "a.u.", 4);   // z steps
  surface.insert(surface.end(), 7, 0);
  std::string cloud =
      "VERSION .7\nFIELDS x y z normal rgb\nSIZE 4 4 4 4 4\nTYPE F F F F U\nWIDTH 5\nHEIGHT 1\n"
      "VIEWPOINT 1 0 0 1 0 0 0\nPOINTS 5\nDATA binary\n";
  for (int i = 0; i < 25; ++i) cloud += mcap::Raw(static_cast<float>(i * i));
  std::string types =
      "VERSION .7\nFIELDS x y z intensity rgba\nSIZE 8 4 4 4 4\nTYPE F I F F F\nWIDTH 2\nHEIGHT 2\n"
      "VIEWPOINT 0.0  -0 0e3 1.00 0 0 0\nPOINTS 4\nDATA binary\n";
  for (const float intensity : {1.0F, 1.004F, -0.5F, 0.0F}) {
    types += std::string(16, '\0') + mcap::Raw(intensity) + std::string(4, '\0');
  }
  // Two points, of which a coordinate is given: 0 elsewhere.
  const auto twoPoints = [](zSize place, float one, float other) {
    std::string points(24, '\0');
    points.replace(place, 4, mcap::Raw(one));
    points.replace(place + 12, 4, mcap::Raw(other));
    return ToBytes(
        "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 2\nHEIGHT 1\n"
        "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 2\nDATA binary\n" +
        points);
  };
  ExpectTexts(
      InspectAll({
          {"special.sur", PlainSurface({.flag = 1, .zMin = 11})},
          {"highest.SUR", PlainSurface({.samples = std::vector<z32s>(6, 32767)})},
          {"wraps.sur", PlainSurface({.samples = {-32769, -32768, -32767, 0, 32763, -40000},
                                      .bits = 32,
                                      .flag = 1,
                                      .zMin = -32769,
                                      .zMax = 32763})},
          {"lost.sur", PlainSurface({.samples = {0, 1, 32766, 32767, 32768, 3}, .bits = 32})},
          {"ignored.sur", surface},
          {"profile.pro", With(profile, 18, z16s{2})},
          {"compact.srf", CompactSurface()},
          {"cloud.pcd", ToBytes(cloud + "!")},
          {"types.pcd", ToBytes(types)},
          {"wide.pcd", twoPoints(8, -3e38F, 3e38F)},
          {"far.pcd", twoPoints(0, 3e38F, 3.1e38F)},
          {"nowhere.pcd", twoPoints(4, NAN, HUGE_VALF)},
          {"recording.rep", WriteRecording(scanner, {frame}, false)},
          {"uneven.rec", WriteRecording(odd, {{frame[0], frame[2], frame[3]}, {frame[0]}}, true)},
          {"many.rep",
           WriteRecording(many, {{frame[0], frame[1], frame[4], frame[3], frame[2]}}, true)},
          {"empty.ovrec",
           MakeArchive({{"replay/buffer", ToText(WriteRecording(scanner, {}, true))}})},
      }),
      "files.txt");
}

TEST_F(Inspection, TellsWhereAFileIsWrong) {
  // A document of a scanner has bounds, others do not.
  const std::string deep = std::string(200, '[') + std::string(200, ']');
  const zBytes stream = WriteRecording(MakeScanner(), {MakeFrame(1)}, false);
  const zBytes archive = MakeArchive({{"config.json", "{\"a\": }"},
                                      {"jobs/config.json", deep},
                                      MakeJob({{"scan/a/config.json", deep}, {"scan/b.json", "{"}}),
                                      {"replay/buffer", ToText(stream)}});
  const zBytes pair = MakeArchive({{"x", "y"}, {"z", std::string(600, 'z')}});
  const zBytes plain = PlainSurface(), compact = CompactSurface();
  const auto pcd = [](const std::string& from, const std::string& to) {
    std::string text =
        "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 2\nHEIGHT 1\n"
        "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 2\nDATA binary\n" +
        std::string(24, '\0');
    return ToBytes(text.replace(text.find(from), from.size(), to));
  };
  std::vector<FileFacts> facts = InspectAll({
      {"header.sur", First(plain, 511)},
      {"compressed.sur", ToBytes("DSCOMPRESSED")},
      {"other.sur", ToBytes("GIF89a")},
      {"cut.sur", First(plain, plain.size() - 1)},
      {"bits.sur", With(plain, sur::kBits, z16s{8})},
      {"width.sur", With(plain, sur::kWidth, z32s{-3})},
      {"length.sur", With(plain, sur::kLength, z32s{-1})},
      {"comment.sur", With(plain, sur::kCommentSize, z16s{99})},
      {"surface.PRO", plain},
      {"version.srf", With(compact, 0, z32u{2})},
      {"header.srf", First(compact, 59)},
      {"points.srf", First(compact, 71)},
      {"flag.srf", With(compact, 72, z8u{2})},
      {"intensities.srf", With(compact, 72, z8u{1})},
      {"version.pcd", pcd("VERSION .7", "VERSION .5")},
      {"width.pcd", pcd("WIDTH 2", "WIDTH 0")},
      {"fields.pcd", pcd("x y z", "X y z")},
      {"ascii.pcd", pcd("DATA binary", "DATA ascii")},
      {"capitals.pcd", pcd("x y z", "X Y Z")},
      {"compressed.pcd", pcd("DATA binary\n", "DATA binary_compressed\r\n")},
      {"cut.pcd", First(pcd("x", "x"), 131)},
      {"short.pcd", ToBytes("VERSION")},
      {"other.rep", ToBytes("no recording")},
      {"other.ovrec", ToBytes(std::string(1024, 'x'))},
      {"none.ovrec", MakeArchive({{"x", "y"}})},
      {"cut.ovrec", First(pair, 1600)},
      {"damaged.ovrec", With(pair, 1030, z32u{7})},
      {"documents.ovrec", archive},
      {"a.txt", ToBytes("x")},
      {"a", ToBytes("x")},
      {"empty.sur", {}},
  });
  facts.push_back(Inspect("documents.ovrec"));  // only a check reads documents
  facts.push_back(Inspect("none.sur"));
  ExpectTexts(facts, "problems.txt");
  // A wrong byte in the stream is met in any case.
  const zBytes damaged = With(stream, ToText(stream).rfind("TSCN") + 40, z8u{0xFF});
  for (const bool check : {false, true}) {
    const std::string report = Text(InspectBytes("damaged.rep", damaged, check), WriteVerdict);
    EXPECT_THAT(report, testing::HasSubstr("checksum of the")) << check;
  }
}

TEST_F(Inspection, NamesFramesAndSourcesOfADirectory) {
  const zBytes plain = PlainSurface();
  std::filesystem::create_directory("d");
  for (const std::string name : {"0000_L", "0000_R", "0012_L.b", "012_R"}) {
    WriteFile("d/a-Frame-" + name + ".sur", plain);
  }
  WriteFile("d/b-Frame-0001_L.sur", First(plain, 500));
  WriteFile("d/c.sur", SurFile{}.Bytes());
  // Files that a conversion takes twice, or not at all.
  std::filesystem::create_directory("e");
  for (const std::string name : {"0000_T", "0000_T2", "00001_T", "0001_T", "000b_R", "0001_X"}) {
    WriteFile("e/a-Frame-" + name + ".sur", plain);
  }
  std::filesystem::create_directory("empty");
  WriteFile("empty/a-Frame-0000_T.sur", PlainSurface({.flag = 1, .zMin = 99}));
  ExpectTexts({Inspect("d/"), Inspect("e", true), Inspect("empty", true)}, "directory.txt");
}

// Otherwise a small recording of many frames would take gigabytes.
TEST_F(Inspection, CutsLongNamesOfSources) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  for (const zSize size : {256U, 257U}) {
    const std::string name(size, 'n');
    scanner.sources[0].displayName = name;
    const FileFacts facts =
        InspectBytes("a.rep", WriteRecording(scanner, {{MakeSurfaceWithIntensity(1)}}, true));
    EXPECT_EQ(facts.scans.at(0).source, size == 256 ? name : name.substr(1) + "...");
    EXPECT_EQ(facts.recording->scanners.at(0).sources.at(0).displayName, name);
  }
}

TEST(Text, LetsNoControlCharacterThrough) {
  const std::pair<std::string, std::string> rows[] = {
      {" ~\xC2\xA0\xE2\x80\xA7\xE2\x80\xAF\xF0\x9F\x98\x80", " ~\u00A0\u2027\u202F\U0001F600"},
      {"\x1B[\n\x1F\x7F\xC2\x80\xC2\x9F", "\\x1b[\\x0a\\x1f\\x7f\\x80\\x9f"},
      {"\u061C\u200E\u200F\u2028\u2029", "\\u061c\\u200e\\u200f\\u2028\\u2029"},
      {"\xC2\xAC\xC2\xAD\u200A\u200B\uFEFF", "\u00AC\\xad\u200A\\u200b\\ufeff"},
      {"\u202A\u202E\u2066\u2069", "\\u202a\\u202e\\u2066\\u2069"},
      {"\xC0\x80\xC1\xBF\xE2\x82\xF5\x80", "\\xc0\\x80\\xc1\\xbf\\xe2\\x82\\xf5\\x80"},
      {"\xE0\x9F\xBF\xED\xA0\x80\xC3(", "\\xe0\\x9f\\xbf\\xed\\xa0\\x80\\xc3("},
      {"\xF4\x90\x80\x80\xF0\x8F\xBF\xBF", "\\xf4\\x90\\x80\\x80\\xf0\\x8f\\xbf\\xbf"},
  };
  for (const auto& [text, shown] : rows) EXPECT_EQ(Printable(text), shown);
  EXPECT_EQ(ToUtf8({"\x80\xB5m \t\r\n\0zz", 9}), "\xC2\x80\xC2\xB5m");
  EXPECT_EQ(ToUtf8("\xC3\xBF"), "\xC3\xBF");
}

// Every file from the field that a conversion takes is whole, and what it refuses has a problem.
TEST(InspectionOfFieldFiles, AgreesWithTheConversion) {
  const std::filesystem::path folder(FIELD_DATA_DIR);
  if (!std::filesystem::is_directory(folder)) {
    GTEST_SKIP() << "NOT TESTED: there are no files from the field in " << folder;
  }
  for (const char* part : {"accepted", "made", "refused"}) {
    for (const auto& entry : std::filesystem::directory_iterator(folder / part)) {
      const bool whole = Inspect(entry.path().string(), true).problems.empty();
      EXPECT_EQ(whole, std::string_view(part) != "refused") << entry.path();
    }
  }
}

}  // namespace
