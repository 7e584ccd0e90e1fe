// SPDX-License-Identifier: MIT
// State, settings and conversion matrix of the converter; whole files.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <functional>

#include "filesource.h"
#include "outputfile/writefile.h"
#include "support/csv_export.h"

namespace {

using Operation = std::function<z64u(SurfaceFileConverter&)>;

// What an operation gives; or status, function and message of what it throws, with the line where
// that is part of the interface.
std::string Answer(SurfaceFileConverter& converter, const Operation& operation, bool line = true) {
  try {
    return std::to_string(operation(converter));
  } catch (const Orv::Exception& failure) {
    return std::to_string(failure.Status()) + " " + failure.Function() +
           (line ? ":" + std::to_string(failure.Line()) : "") + ": " + failure.what();
  }
}

zBytes RecordingOf(z16u dataType, const Handle& message) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources = {{"Top", "Top", dataType, 0, 0}};
  return WriteRecording(scanner, std::vector<Frame>(5, {message}), true);
}

class Converter : public testing::Test {
 protected:
  Converter() {
    for (const char* name : {"a.sur", "a.SUR", "a.srf", "a.pro", "a.PRO", "a.pcd", "scan"}) {
      WriteFile(name, "?");
    }
    WriteFile("surface.rep", RecordingOf(14, MakeSurface(1, 1, {5})));
    WriteFile("surface.rec", RecordingOf(14, MakeSurface(1, 1, {5})));
    WriteFile("profile.rep", RecordingOf(12, MakeProfile(zType::z16s, 1)));
  }
  TempDirectory directory_;
};

// As a file in the folder of data lists it.
TEST_F(Converter, AnswersEveryOperationOnEveryImport) {
  using C = SurfaceFileConverter;
  const std::pair<const char*, Operation> operations[] = {
      {"setFrameIndex 5", [](C& c) { return c.setFrameIndex(5), 0; }},
      {"setFrameIndex 4", [](C& c) { return c.setFrameIndex(4), 0; }},
      {"getFrameIndex", [](C& c) { return c.getFrameIndex(); }},
      {"getFrameNumber", [](C& c) { return c.getFrameNumber(); }},
      {"getDataSourceType", [](C& c) { return c.getDataSourceType(); }},
      {"getSensorCount", [](C& c) { return c.getSensorCount(); }},
      {"isRecordingData", [](C& c) { return c.isRecordingData(); }},
      {"setPcdWidth 0", [](C& c) { return c.setPcdWidth(0), 0; }},
      {"setPcdWidth 1", [](C& c) { return c.setPcdWidth(1), 0; }},
      {"setPcdHeight 0", [](C& c) { return c.setPcdHeight(0), 0; }},
      {"setPcdHeight 1", [](C& c) { return c.setPcdHeight(1), 0; }},
      {"setPcdFlipXZEnabled", [](C& c) { return c.setPcdFlipXZEnabled(1), 0; }},
      {"setInvalidPoint", [](C& c) { return c.setInvalidPoint(zPoint3d64f()), 0; }},
      {"setPcdZoom", [](C& c) { return c.setPcdZoom(2), 0; }},
  };
  std::string told;
  const auto importTo = [&](C& converter, const std::string& name) {
    told += "import of " + name + ": ";
    told += Answer(converter, [&](C& c) { return c.importFile(name), 0; }) + "\n";
  };
  for (const char* name : {"a.SUR", "a.srf", "a.PRO", "surface.rec", "a.Sur", "a.SRF", "a.PCD",
                           "a.REP", "a.OVREC", "a.csv", "a.old/scan", "scan"}) {
    C converter;
    importTo(converter, name);
  }
  for (const char* input : {"", "a.sur", "a.pro", "a.pcd", "surface.rep", "profile.rep"}) {
    C converter;
    importTo(converter, input);
    for (const auto& [name, operation] : operations) {
      told += std::string("  ") + name + ": " + Answer(converter, operation) + "\n";
    }
    for (const std::string output : {"", "b", "b.rec", "b.rep", "b.ovrec", "b.sur", "b.SUR",
                                     "b.srf", "b.pro", "b.PRO", "b.csv"}) {
      told += "  to " + output + ": ";
      told += Answer(
          converter, [&](C& c) { return c.exportFile(output), 0; }, false);
      told += std::filesystem::remove(output) ? ", written\n" : "\n";
    }
  }
  EXPECT_EQ(told, ReadFile(TEST_DATA_DIR "/answers.txt"));
  C recording;
  recording.importFile("surface.rep");
  EXPECT_THROW(recording.exportFile("b.rec", REC), Orv::Exception);
}

TEST_F(Converter, ForgetsAnImportWithTheNextOneUnlessTheNameAloneIsRefused) {
  WriteFile("a.rep", "no recording");
  for (const char* name : {"a.csv", "missing.sur", "a.rep"}) {
    SurfaceFileConverter converter;
    converter.importFile("a.sur");
    EXPECT_THROW(converter.importFile(name), Orv::Exception);
    EXPECT_EQ(Thrown([&] { converter.isRecordingData(); }).empty(), name == std::string("a.csv"));
  }
}

// The smaller number of those that the job and the recording tell, after an export to CSV.
TEST_F(Converter, CountsSensors) {
  for (const zSize sources : {1U, 2U}) {
    nlohmann::json config = MakeScannerConfig();
    nlohmann::json& sensors = config["orv:scanner"]["scanner-0"]["orv:sensor"];
    if (sources == 1) sensors.push_back(0);
    std::vector<ReplaySourceInfo> tops = {{"T", "T", 14, 0, 0}, {"U", "U", 14, 0, 0}};
    tops.resize(sources);
    ExportCsv(MakeJob(config.dump()), tops, {{sources, MakeSurface(1, 1, {5})}});
    SurfaceFileConverter converter;
    converter.importFile("in.ovrec");
    EXPECT_EQ(converter.getSensorCount(), 0U);
    converter.exportFile("b.csv");
    EXPECT_EQ(converter.getSensorCount(), 1U) << sources;
  }
}

TEST(WholeFile, IsReadAndWrittenWholeOrNotAtAll) {
  const TempDirectory directory;
  WriteFile("empty", "");
  EXPECT_EQ(Thrown([&] { OpenFile("empty"); }), "-997 ReadFileBuffer: The inputted file is empty");
  for (const char* path : {"missing", "."}) {
    EXPECT_EQ(Thrown([&] { OpenFile(path); }),
              std::string("-997 ReadFileBuffer: Failed to open ") + path);
  }
  ASSERT_EQ(mkfifo("pipe", 0600), 0);  // nobody writes into it
  EXPECT_EQ(Thrown([&] { OpenFile("pipe"); }), "-997 ReadFileBuffer: Failed to read pipe");
  WriteFile("long", std::string(100, 'x'));
  WriteBuffer({'a', 'b'}, "long");
  EXPECT_EQ(ReadFile("long"), "ab");
  const zSourcePtr changed = OpenFile("long");
  EXPECT_EQ(ReadAll(*changed), (zBytes{'a', 'b'}));
  WriteFile("long", "other");  // by somebody else, in the middle of a run
  EXPECT_EQ(Thrown([&] { ReadAll(*changed); }), "-997 ReadFileBuffer: Failed to read long");
  const Orv::Operation write{"test", "Write"};
  const auto refuse = [&](zStream stream) {
    MustBeOk(zStream_Write(stream, "half", 4));
    write.Fail(-1, "refused");
  };
  for (const char* path : {"long", "none/a"}) {  // the content's error comes first
    EXPECT_EQ(Thrown([&] { WriteFile(write, path, refuse); }), "-1 Write: refused") << path;
  }
  EXPECT_EQ(ReadFile("long"), "other");
  EXPECT_EQ(directory.Files(), (std::set<std::string>{"empty", "long", "pipe"}));
  if (!zFile_Exists("/dev/full")) GTEST_SKIP() << "NOT TESTED: there is no full device";
  EXPECT_EQ(Thrown([&] { WriteBuffer({'a'}, "/dev/full"); }),
            "-997 WriteBuffer: Failed to write /dev/full");
}

}  // namespace
