// SPDX-License-Identifier: MIT
// What is told about files of all kinds, and what is called wrong in them.
#include "inspect/inspect.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "inspect/report.h"
#include "support/archives.h"
#include "support/csv_export.h"
#include "support/mcap_file.h"
#include "support/payloads.h"
#include "support/run_program.h"
#include "support/sur_file.h"
#include "text.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

FileFacts Inspect(const std::string& path, bool check = false) {
  Progress progress(1, false);
  return InspectFile(path, check, nullptr, progress);
}

// "12: text" for each problem, "-: text" for one without an offset.
std::vector<std::string> Problems(const FileFacts& facts) {
  std::vector<std::string> texts;
  for (const Problem& problem : facts.problems) {
    texts.push_back((problem.offset ? std::to_string(*problem.offset) : "-") + ": " + problem.text);
  }
  return texts;
}

std::string Report(const FileFacts& facts) {
  std::ostringstream out;
  WriteReport(facts, out);
  return out.str();
}

// A surface file that tells all that a conversion takes from it.
zBytes PlainSurface(const SurFile& file = {}) {
  zBytes bytes = file.Bytes();
  sur::Set<z16s>(bytes, 18, 2);
  sur::Set<z32s>(bytes, sur::kTotal, file.width * file.length);
  for (const zSize unit : {180U, 196U, 212U}) std::memcpy(bytes.data() + unit, "mm", 2);
  return bytes;
}

class Inspection : public testing::Test {
 protected:
  FileFacts InspectBytes(const std::string& name, const zBytes& bytes, bool check = false) {
    WriteFile(name, bytes);
    return Inspect(name, check);
  }

  TempDirectory directory_;
};

TEST_F(Inspection, MeasuresTheScanOfAFile) {
  SurFile file;  // 3 x 2, scale 0.5, 0.25, 0.125, offset 1, 2, 3
  file.flag = 1;
  file.zMin = 11;
  const FileFacts facts = InspectBytes("a.sur", PlainSurface(file));
  EXPECT_EQ(facts.frames, 1U);
  ASSERT_EQ(facts.scans.size(), 1U);
  const ScanFacts& scan = facts.scans.front().facts;
  EXPECT_EQ(scan.width, 3U);
  EXPECT_EQ(scan.length, 2U);
  EXPECT_EQ(scan.validPoints, 5U);
  EXPECT_EQ(scan.heights->lowest, 11 * 0.125 + 3);
  EXPECT_EQ(scan.heights->highest, 22 * 0.125 + 3);
  EXPECT_EQ(scan.box->size.x, 1.5);
  EXPECT_FALSE(scan.stamp || scan.intensity);
  EXPECT_THAT(facts.notes, IsEmpty());
  EXPECT_THAT(facts.problems, IsEmpty());
}

TEST_F(Inspection, MeasuresEachKindOfRecordedScan) {
  const zBytes stream = WriteRecording(MakeScanner(), {MakeFrame(1), MakeFrame(2)}, false);
  const FileFacts facts = InspectBytes("a.rep", stream, true);
  EXPECT_THAT(Problems(facts), IsEmpty());
  EXPECT_EQ(facts.frames, 2U);
  EXPECT_EQ(facts.recording->segments, 1U);
  std::string places;
  for (const PlacedScan& scan : facts.scans) {
    places += Orv::Format("%zu/%u %s", scan.frame, scan.index, scan.source);
    if (scan.item) places += Orv::Format("[%zu]", *scan.item);
    places += scan.facts.kind == ScanKind::cloud          ? " cloud, "
              : scan.facts.kind == ScanKind::profile      ? " profile, "
              : scan.facts.kind == ScanKind::pointProfile ? " point profile, "
                                                          : " surface, ";
  }
  EXPECT_THAT(places, testing::StartsWith("0/40 "));
  EXPECT_THAT(places, HasSubstr("cloud, "));
  EXPECT_THAT(places, HasSubstr(" point profile, "));
  EXPECT_THAT(places, HasSubstr("[0]"));
  EXPECT_THAT(places, HasSubstr("1/41 "));
}

TEST_F(Inspection, TellsWhatAConversionIgnores) {
  zBytes bytes = PlainSurface();
  sur::Set<z16s>(bytes, 14, 3);                     // objects
  sur::Set<z16s>(bytes, 18, 21);                    // type
  std::memcpy(bytes.data() + 180, "\xB5m\0\0", 4);  // x steps, Latin-1
  std::memcpy(bytes.data() + 212, "a.u.\0", 5);     // z steps
  std::memcpy(bytes.data() + 196, "mm  ", 4);       // y steps
  const z16s date[] = {56, 34, 12, 31, 5, 2024};    // seconds to year
  std::memcpy(bytes.data() + 306, date, sizeof date);
  bytes.insert(bytes.end(), 7, 0);
  const FileFacts facts = InspectBytes("a.sur", bytes);
  EXPECT_EQ(facts.digitalSurf->acquired, "2024-05-31 12:34:56");
  EXPECT_THAT(facts.notes,
              ElementsAre("x is told in \"µm\" and taken as if it were in mm: real lengths are "
                          "0.001 times as long",
                          "z is told in \"a.u.\" and taken as if it were in mm",
                          "the file holds 3 objects: only the first one is converted",
                          "the object is of type 21 and taken as a surface",
                          "a conversion drops the date of acquisition",
                          "7 bytes after the samples are ignored"));
}

TEST_F(Inspection, KnowsScansThatAConversionCallsEmpty) {
  SurFile file;
  for (const z32s height : {-32768, 32767}) {
    file.samples.assign(6, height);
    const FileFacts facts = InspectBytes("a.sur", PlainSurface(file));
    EXPECT_EQ(facts.scans.front().facts.validPoints, height == 32767 ? 6U : 0U);
    EXPECT_FALSE(facts.scans.front().facts.box);
    EXPECT_THAT(facts.notes, ElementsAre("1 of 1 scans are empty for a conversion"));
  }
}

TEST_F(Inspection, TellsWhereAFileIsWrong) {
  const zBytes surface = SurFile{}.Bytes();
  const auto changed = [](zBytes bytes, zSize offset, auto value) {
    sur::Set(bytes, offset, value);
    return bytes;
  };
  const std::string cloud =
      "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 2\nHEIGHT 1\n"
      "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 2\nDATA binary\n";
  const auto replaced = [&](const std::string& from, const std::string& to) {
    std::string text = cloud + std::string(24, '\0');
    return ToBytes(text.replace(text.find(from), from.size(), to));
  };
  zBytes srf(61 + 2 * 6, 0);
  srf[0] = 1;
  srf[4] = 3;
  srf[8] = 2;
  const struct {
    const char* name;
    zBytes bytes;
    const char* problem;
  } rows[] = {
      {"a.sur", First(surface, 511), "511: the file ends in its header of 512 bytes"},
      {"a.sur", ToBytes("DSCOMPRESSED"), "0: the file is in the compressed form"},
      {"a.sur", ToBytes("GIF89a"), "0: the file does not begin as"},
      {"a.sur", First(surface, surface.size() - 1),
       "523: 3 x 2 samples of 16 bits take 12 bytes, "},
      {"a.sur", changed(surface, sur::kBits, z16s{8}), "98: samples of 8 bits"},
      {"a.sur", changed(surface, sur::kWidth, z32s{-3}), "108: a line has -3 points"},
      {"a.sur", changed(surface, sur::kLength, z32s{-1}), "112: there are -1 lines"},
      {"a.sur", changed(surface, sur::kCommentSize, z16s{99}), "334: comment and private zone"},
      {"a.pro", surface, "112: there are 2 lines, a profile has one"},
      {"a.srf", changed(srf, 0, z32u{2}), "0: the file is of another version"},
      {"a.srf", First(srf, 59), "59: the file ends in its header"},
      {"a.srf", First(srf, 71), "71: 3 x 2 points do not fit"},
      {"a.srf", changed(srf, 72, z8u{2}), "72: the flag before the intensities"},
      {"a.srf", changed(srf, 72, z8u{1}), "73: 3 x 2 points do not fit"},
      {"a.pcd", replaced("VERSION .7", "VERSION .5"), "0: this is not the line that"},
      {"a.pcd", replaced("WIDTH 2", "WIDTH 0"), "46: this is not the line that"},
      {"a.pcd", replaced("x y z", "X y z"), "11: x, y and z are not among the fields: X y z"},
      {"a.pcd", replaced("DATA binary", "DATA ascii"), "107: the points are in text form"},
      {"a.pcd", ToBytes(cloud + std::string(23, '\0')), "131: the header tells of 2 points, 1 are"},
      {"a.pcd", ToBytes("VERSION"), "0: this is not the line that"},
      {"a.rep", ToBytes("no recording"), "0: the stream does not begin"},
      {"a.ovrec", ToBytes(std::string(1024, 'x')), "0: the file is no archive"},
      {"a.ovrec", MakeArchive({{"x", "y"}}), "-: there is no recording"},
      {"a.txt", ToBytes("x"), "-: the ending of the name"},
      {"a.sur", {}, "-: The inputted file is empty"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.problem);
    EXPECT_THAT(Problems(InspectBytes(row.name, row.bytes)), Contains(HasSubstr(row.problem)));
  }
  EXPECT_THAT(Problems(Inspect("none.sur")), ElementsAre(HasSubstr("-: Failed to open none.sur")));
}

TEST_F(Inspection, ChecksTheDocumentsAndTheStreamOfAnArchive) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  std::string stream = ToText(WriteRecording(scanner, {{MakeSurfaceWithIntensity(1)}}, false));
  const zSize inPayload = stream.rfind("TSCN") + 40;
  stream[inPayload] = static_cast<char>(stream[inPayload] ^ 4);
  // Only a scanner's document has bounds.
  const std::string deep = std::string(200, '[') + std::string(200, ']');
  const zBytes bytes = MakeArchive({{"config.json", "{\"a\": }"},
                                    {"jobs/config.json", deep},
                                    MakeJob("{"),
                                    {"replay/buffer", stream}});
  EXPECT_THAT(
      Problems(InspectBytes("a.ovrec", bytes, true)),
      ElementsAre("518: \"config.json\" is no JSON document",
                  HasSubstr("config.json\" is no JSON document"), HasSubstr("checksum of the")));
  // Reading it meets the damage of the stream alone.
  EXPECT_THAT(Problems(Inspect("a.ovrec")), ElementsAre(HasSubstr("checksum of the")));
}

TEST_F(Inspection, NamesFramesAndSourcesOfADirectory) {
  std::filesystem::create_directory("d");
  const zBytes surface = PlainSurface();
  for (const char* name : {"a-Frame-0000_L.sur", "a-Frame-0000_R.sur", "a-Frame-0001_L.sur"}) {
    WriteFile(std::string("d/") + name, surface);
  }
  WriteFile("d/a-Frame-0001_R.sur", surface);
  FileFacts facts = Inspect("d/");
  EXPECT_EQ(facts.frames, 2U);
  EXPECT_EQ(facts.scans.size(), 4U);
  EXPECT_EQ(facts.scans[3].frame, 1U);
  EXPECT_EQ(facts.scans[3].source, "R");
  EXPECT_THAT(facts.notes, IsEmpty());
  WriteFile("d/a-Frame-0001_R.sur", First(surface, 500));
  std::filesystem::remove("d/a-Frame-0001_L.sur");
  facts = Inspect("d");
  EXPECT_THAT(facts.notes, Contains(HasSubstr("a conversion refuses the directory: Not all")));
  EXPECT_THAT(Problems(facts), ElementsAre(HasSubstr("500: a-Frame-0001_R.sur: the file ends")));
}

// Otherwise a small recording of many frames would take gigabytes.
TEST_F(Inspection, CutsLongNamesOfSources) {
  const std::string longName(300, 'n');
  const zBytes bytes =
      mcap::Bare(mcap::Header() + mcap::Recording("classic") + mcap::Scanner() + mcap::Schema() +
                 mcap::FrameChannel() +
                 mcap::SourceChannel(1, "Top", {{"display_name", longName}}) + mcap::FrameIndex() +
                 mcap::Message(1, payloads::Surface()) + mcap::DataEnd() + mcap::Footer());
  const FileFacts facts = InspectBytes("a.rep", bytes, true);
  EXPECT_THAT(Problems(facts), IsEmpty());
  EXPECT_EQ(facts.scans.at(0).source, longName.substr(0, 256) + "...");
  EXPECT_EQ(facts.recording->scanners.at(0).sources.at(0).displayName, longName);
}

TEST_F(Inspection, LetsNoControlCharacterThrough) {
  const struct {
    std::string text;
    const char* shown;
  } rows[] = {
      {"plain \xC2\xB5m \xE2\x82\xAC \xF0\x9F\x98\x80",
       "plain \xC2\xB5m \xE2\x82\xAC \xF0\x9F\x98\x80"},
      {"\x1B[31m\r\n\x7F", "\\x1b[31m\\x0d\\x0a\\x7f"},
      {"\xC2\x9B"
       "31m",
       "\\x9b31m"},
      {"a\xE2\x80\xAE"
       "b\xE2\x80\xA8"
       "c",
       "a\\u202eb\\u2028c"},
      {"\xFF\xC0\x80\xED\xA0\x80\xE2\x82", "\\xff\\xc0\\x80\\xed\\xa0\\x80\\xe2\\x82"},
      {"\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
  };
  for (const auto& row : rows) EXPECT_EQ(Printable(row.text), row.shown);
  EXPECT_EQ(ToUtf8({"\xB5m  \0zz", 7}), "\xC2\xB5m");

  zBytes bytes = SurFile{}.Bytes();
  std::memcpy(bytes.data() + 20, "\x1B]0;x\x07\"\xFF", 8);
  const FileFacts facts = InspectBytes("a.sur", bytes);
  EXPECT_THAT(Report(facts), HasSubstr("\"\\x1b]0;x\\x07\"\xC3\xBF\""));
  std::ostringstream json;
  WriteJson(facts, json);
  EXPECT_EQ(nlohmann::json::parse(json.str())["digital_surf"]["object_name"],
            "\x1B]0;x\x07\"\xC3\xBF");
}

TEST_F(Inspection, EndsWithAnExitCodeThatTells) {
  WriteFile("good.sur", SurFile{}.Bytes());
  WriteFile("bad.sur", First(SurFile{}.Bytes(), 515));
  WriteFile("-x.sur", SurFile{}.Bytes());
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    const char* output;
    const char* errors;
  } rows[] = {
      {{"good.sur"}, 0, "good.sur\n  kind        Digital Surf surface\n", ""},
      {{"--check", "good.sur", "bad.sur"}, 1, "good.sur: whole\nbad.sur: at byte 515: ", ""},
      {{"--json", "bad.sur", "good.sur"}, 1, "\n{\"file\":\"good.sur\"", ""},
      {{"--", "-x.sur"}, 0, "-x.sur\n", ""},
      {{"--help"}, 0, "--check", ""},
      {{"--version"}, 0, "trelvane-inspect 1.0.0.4\n", ""},
      {{}, 2, "", "FILE"},
      {{"--frobnicate", "good.sur"}, 2, "", "--frobnicate"},
      {{"--\x1B[31m", "good.sur"}, 2, "", "--\\x1b[31m"},
      {{"--frame", "-1", "--png", "x.png", "good.sur"}, 2, "", "--frame"},
      {{"--frame", "0", "good.sur"}, 2, "", "--frame requires --png or --html"},
      {{"--png", "x.png", "good.sur", "bad.sur"}, 2, "", "FILE"},
      {{"--png", "x.png", "--frame", "1", "good.sur"}, 1, "", "good.sur: There is no such scan"},
      {{"--png", "x.png", "bad.sur"}, 1, "", "bad.sur: 3 x 2 samples"},
      {{"--png", "none/x.png", "good.sur"}, 1, "", "Failed to open none/x.png"},
      {{"--png", "./good.sur", "good.sur"}, 1, "", "./good.sur is what should be looked at"},
      {{"--png", "x.png", "good.sur"}, 0, "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    const Outcome run = RunProgram(TRELVANE_INSPECT, row.arguments);
    EXPECT_EQ(run.exitCode, row.exitCode);
    EXPECT_THAT(run.output, HasSubstr(row.output));
    EXPECT_THAT(run.errors, HasSubstr(row.errors));
    EXPECT_EQ(run.errors.empty(), std::string_view(row.errors).empty());
  }
  EXPECT_EQ(ReadFile("x.png").substr(1, 3), "PNG");
}

// Every file from the field that a conversion takes is whole, and what it refuses has a problem.
TEST(InspectionOfFieldFiles, AgreesWithTheConversion) {
  const std::filesystem::path folder(FIELD_DATA_DIR);
  if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << "no field data";
  for (const char* part : {"accepted", "made", "refused"}) {
    for (const auto& entry : std::filesystem::directory_iterator(folder / part)) {
      SCOPED_TRACE(entry.path());
      EXPECT_EQ(Inspect(entry.path().string(), true).problems.empty(),
                std::string_view(part) != "refused");
    }
  }
}

}  // namespace
