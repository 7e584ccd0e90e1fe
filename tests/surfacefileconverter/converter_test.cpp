// SPDX-License-Identifier: MIT
// State, settings and conversion matrix of the converter; whole files.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cmath>
#include <functional>

#include "support/csv_export.h"
#include "support/sur_file.h"
#include "wholefile.h"

namespace {

using Operation = std::function<void(SurfaceFileConverter&)>;

// Status, line, function and message of what an operation throws; empty when it succeeds.
std::string Failure(SurfaceFileConverter& converter, const Operation& operation) {
  try {
    operation(converter);
  } catch (const Orv::Exception& failure) {
    return std::to_string(failure.Status()) + " " + std::to_string(failure.Line()) + " " +
           failure.Function().substr(std::string("SurfaceFileConverter::").size()) + ": " +
           failure.what();
  }
  return {};
}

zBytes RecordingOf(z16u dataType, const Handle& message) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources = {{"Top", "Top", dataType, 0, 0}};
  return WriteRecording(scanner, std::vector<Plovia::ReplayFrame>(5, {message}), true);
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

TEST_F(Converter, ChecksEverySettingInItsOrder) {
  const std::string isData = "Imported data isn't a recording";
  const std::string noFrame = " and it doesn't support this option ('-f/--frame')";
  const std::string notData = "The imported data is not recording data";
  const std::string configuring = "Configuring ";
  const std::string onlyPcd = " is only valid for the pcd file imports";
  const struct {
    Operation operation;
    int line;  // of the first check; the second follows it
    std::string name, message;
    std::string status = "-988";
  } rows[] = {
      {[](auto& c) { c.setFrameIndex(4); }, 418, "setFrameIndex", isData + noFrame, "-997"},
      {[](auto& c) { c.getFrameIndex(); }, 427, "getFrameIndex", isData + " data" + noFrame,
       "-997"},
      {[](auto& c) { c.setPcdWidth(0); }, 434, "setPcdWidth",
       "Configuring surface width is only valid for pcd file imports"},
      {[](auto& c) { c.setPcdHeight(0); }, 442, "setPcdHeight",
       configuring + "surface height" + onlyPcd},
      {[](auto& c) { c.setPcdFlipXZEnabled(1); }, 450, "setPcdFlipXZEnabled",
       configuring + "surface height" + onlyPcd},
      {[](auto& c) { c.setInvalidPoint({}); }, 457, "setInvalidPoint",
       configuring + "the invalid point" + onlyPcd + "."},
      {[](auto& c) { c.setPcdZoom(2); }, 468, "setPcdZoom",
       configuring + "the zooming factor" + onlyPcd},
      {[](auto& c) { c.getFrameNumber(); }, 490, "getFrameNumber", notData},
      {[](auto& c) { c.getDataSourceType(); }, 497, "getDataSourceType", notData},
      {[](auto& c) { c.getSensorCount(); }, 504, "getSensorCount", notData},
  };
  for (const auto& row : rows) {
    SurfaceFileConverter converter;
    const auto failure = [&](const std::string& status, int line) {
      return status + " " + std::to_string(line) + " " + row.name + ": ";
    };
    EXPECT_THAT(Failure(converter, row.operation),
                testing::StartsWith(failure("-988", row.line) + "No files have been imported yet"));
    converter.importFile("a.sur");
    EXPECT_EQ(Failure(converter, row.operation), failure(row.status, row.line + 1) + row.message);
  }
  SurfaceFileConverter cloud, recording;
  cloud.importFile("a.pcd");
  cloud.setPcdWidth(1);
  EXPECT_EQ(Failure(cloud, [](auto& c) { c.setPcdWidth(0); }),
            "-988 436 setPcdWidth: The input surface with can't be equal to 1");
  EXPECT_EQ(Failure(cloud, [](auto& c) { c.setPcdHeight(0); }),
            "-988 444 setPcdHeight: Input surface height can't be equal to 1");
  recording.importFile("surface.rep");
  recording.setFrameIndex(4);
  EXPECT_EQ(Failure(recording, [](auto& c) { c.setFrameIndex(5); }),
            "-997 421 setFrameIndex: The frame index should be less than 5");
  EXPECT_EQ(recording.getFrameIndex(), 4U);
  EXPECT_EQ(recording.getFrameNumber(), 5U);
}

TEST_F(Converter, TellsKindsByTheLastDot) {
  for (const char* name :
       {"a.sur", "a.SUR", "a.srf", "a.pro", "a.PRO", "a.pcd", "surface.rep", "surface.rec"}) {
    SurfaceFileConverter converter;
    EXPECT_EQ(Failure(converter, [&](auto& c) { c.importFile(name); }), "") << name;
  }
  SurfaceFileConverter converter;
  for (const char* name : {"a.Sur", "a.SRF", "a.PCD", "a.REP", "a.OVREC", "a.csv", "a.old/scan"}) {
    EXPECT_EQ(Failure(converter, [&](auto& c) { c.importFile(name); }),
              "-997 137 importFile: The extension of the input filename is not supported")
        << name;
  }
  EXPECT_EQ(Failure(converter, [](auto& c) { c.importFile("scan"); }),
            "-997 120 importFile: Failed to parse the extension of the input filename");
  // A failed import forgets the one before, unless the name alone was refused.
  WriteFile("a.rep", "no recording");
  for (const char* name : {"a.csv", "missing.sur", "a.rep"}) {
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

// Settings reach the cloud: a grid of 7 x 3, x and z exchanged and doubled, points with y = 0
// removed.
TEST_F(Converter, PutsACloudIntoTheGridThatWasSet) {
  std::string cloud =
      "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 2\nHEIGHT 2\n"
      "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 4\nDATA binary\n";
  const z32f points[] = {0, 1, 10, 1, 2, 20, 2, 0, 30, 3, 1, 40};
  WriteFile("grid.pcd", cloud.append(reinterpret_cast<const char*>(points), sizeof points));
  SurfaceFileConverter converter;
  converter.importFile("grid.pcd");
  converter.setPcdWidth(7);
  converter.setPcdHeight(3);
  converter.setPcdFlipXZEnabled(1);
  converter.setInvalidPoint({-1, 0, -1});
  converter.setPcdZoom(2);
  converter.exportFile("b.rep");
  converter.importFile("b.rep");
  converter.exportFile("b.pcd");
  const std::string written = ReadFile("b.pcd");
  EXPECT_THAT(written, testing::HasSubstr("WIDTH 7\nHEIGHT 3\n"));
  const zBytes data = ToBytes(written.substr(written.find("DATA binary\n") + 12));
  EXPECT_EQ(sur::Get<z32f>(data, 0), 20);
  EXPECT_TRUE(std::isnan(sur::Get<z32f>(data, 24)));
  EXPECT_EQ(sur::Get<z32f>(data, 36), 80);
  EXPECT_TRUE(std::isnan(sur::Get<z32f>(data, 48)));
}

TEST_F(Converter, KnowsWhichConversionsExist) {
  const std::string onlyRecordings = "Only .rep and .ovrec file extension are supported";
  const std::string same = "The import file type is same as the export file type";
  const std::string notOf = "The imported replay data doesn't belong to UNIFORM_";
  const std::string notTo = " type, which can't be exported to a file whose extension is ";
  const std::string notYet = "This conversion hasn't been implemented";
  const struct {
    const char* input;
    const char* output;
    std::string message;
    std::string status = "-997";
  } rows[] = {
      {nullptr, "b.rep", "No files have been imported yet", "-988"},
      {"a.sur", "b", "Failed to parse the extension of the export file name"},
      {"a.sur", "b.rec", "Extension .rec of the export file name is not supported"},
      {"a.sur", "b.SUR", same},
      {"a.pro", "b.PRO", same},
      {"surface.rep", "b.rep", same},
      {"a.sur", "b.srf", onlyRecordings},
      {"surface.rep", "", "No file was exported because the export file name isn't specified"},
      {"surface.rep", "b.ovrec", notYet, "-996"},
      {"surface.rec", "b.rep", notYet, "-996"},
      {"surface.rep", "b.pro", notOf + "PROFILE" + notTo + ".pro"},
      {"profile.rep", "b.sur", notOf + "SURFACE" + notTo + ".sur/.srf"},
      {"profile.rep", "b.srf", notOf + "SURFACE" + notTo + ".sur/.srf"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.input << " to " << row.output);
    SurfaceFileConverter converter;
    if (row.input != nullptr) converter.importFile(row.input);
    const std::string failure = Failure(converter, [&](auto& c) { c.exportFile(row.output); });
    EXPECT_THAT(failure, testing::EndsWith(": " + row.message));
    EXPECT_THAT(failure, testing::StartsWith(row.status + " "));
    EXPECT_FALSE(std::filesystem::exists(row.output));
  }
  SurfaceFileConverter recording;
  recording.importFile("surface.rep");
  EXPECT_EQ(Failure(recording, [](auto& c) { c.exportFile("b.rec", REC); }).substr(0, 5), "-1000");
}

TEST(WholeFile, IsReadAndWrittenWholeOrNotAtAll) {
  const TempDirectory directory;
  zBytes bytes = {1, 2};
  WriteFile("empty", "");
  EXPECT_EQ(Thrown([&] { ReadFileBuffer("empty", bytes); }),
            "-997 ReadFileBuffer: The inputted file is empty");
  EXPECT_EQ(bytes.size(), 2U);
  for (const char* path : {"missing", "."}) {
    EXPECT_EQ(Thrown([&] { ReadFileBuffer(path, bytes); }),
              std::string("-997 ReadFileBuffer: Failed to open ") + path);
  }
  ASSERT_EQ(mkfifo("pipe", 0600), 0);  // nobody writes into it
  EXPECT_EQ(Thrown([&] { ReadFileBuffer("pipe", bytes); }),
            "-997 ReadFileBuffer: Failed to read pipe");
  WriteFile("long", std::string(100, 'x'));
  WriteBuffer({'a', 'b'}, "long");
  EXPECT_EQ(ReadFile("long"), "ab");
  const Handle stream = MakeStream();
  MustBeOk(zStream_Write(stream.Get(), "whole", 5));  // leaves the position at the end
  WriteStream(stream.Get(), "stream");
  EXPECT_EQ(ReadFile("stream"), "whole");
  if (!zFile_Exists("/dev/full")) GTEST_SKIP() << "NOT TESTED: there is no full device";
  EXPECT_EQ(Thrown([&] { WriteStream(stream.Get(), "/dev/full"); }),
            "-997 WriteStream: Failed to write /dev/full");
}

}  // namespace
