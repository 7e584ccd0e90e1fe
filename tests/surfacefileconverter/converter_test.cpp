// SPDX-License-Identifier: MIT
// State, settings and conversion matrix of the converter; whole files.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cmath>
#include <functional>

#include "support/recordings.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"
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
  const std::string notData = ": The imported data is not recording data";
  const std::string notRecording = " and it doesn't support this option ('-f/--frame')";
  const std::string onlyPcd = " is only valid for the pcd file imports";
  const struct {
    Operation operation;
    std::string fresh;  // where it fails before any import
    std::string sur;    // how it fails after the import of a surface; empty: it does not
  } rows[] = {
      {[](auto& c) { c.setFrameIndex(4); }, "418 setFrameIndex",
       "-997 419 setFrameIndex: Imported data isn't a recording" + notRecording},
      {[](auto& c) { c.getFrameIndex(); }, "427 getFrameIndex",
       "-997 428 getFrameIndex: Imported data isn't a recording data" + notRecording},
      {[](auto& c) { c.setPcdWidth(0); }, "434 setPcdWidth",
       "-988 435 setPcdWidth: Configuring surface width is only valid for pcd file imports"},
      {[](auto& c) { c.setPcdHeight(0); }, "442 setPcdHeight",
       "-988 443 setPcdHeight: Configuring surface height" + onlyPcd},
      {[](auto& c) { c.setPcdFlipXZEnabled(1); }, "450 setPcdFlipXZEnabled",
       "-988 451 setPcdFlipXZEnabled: Configuring surface height" + onlyPcd},
      {[](auto& c) {
         c.setInvalidPoint(zPoint3d64f{1, 2, 3});
       },
       "457 setInvalidPoint",
       "-988 458 setInvalidPoint: Configuring the invalid point" + onlyPcd + "."},
      {[](auto& c) { c.setPcdZoom(2); }, "468 setPcdZoom",
       "-988 469 setPcdZoom: Configuring the zooming factor" + onlyPcd},
      {[](auto& c) { c.isRecordingData(); }, "479 isRecordingData", ""},
      {[](auto& c) { c.getFrameNumber(); }, "490 getFrameNumber",
       "-988 491 getFrameNumber" + notData},
      {[](auto& c) { c.getDataSourceType(); }, "497 getDataSourceType",
       "-988 498 getDataSourceType" + notData},
      {[](auto& c) { c.getSensorCount(); }, "504 getSensorCount",
       "-988 505 getSensorCount" + notData},
  };
  for (const auto& row : rows) {
    SurfaceFileConverter fresh, sur;
    sur.importFile("a.sur");
    EXPECT_EQ(Failure(fresh, row.operation),
              "-988 " + row.fresh + ": No files have been imported yet" +
                  (row.fresh.ends_with("setInvalidPoint") ? "." : ""));
    EXPECT_EQ(Failure(sur, row.operation), row.sur);
  }
  SurfaceFileConverter cloud, recording;
  cloud.importFile("a.pcd");
  EXPECT_EQ(Failure(cloud, [](auto& c) { c.setPcdWidth(1); }), "");
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
  EXPECT_EQ(recording.getDataSourceType(), UNIFORM_SURFACE);
  EXPECT_EQ(recording.getSensorCount(), 0U);
}

TEST_F(Converter, TellsKindsByTheLastDot) {
  const std::string unknown =
      "-997 137 importFile: The extension of the input filename is not supported";
  for (const char* name :
       {"a.sur", "a.SUR", "a.srf", "a.pro", "a.PRO", "a.pcd", "surface.rep", "surface.rec"}) {
    SurfaceFileConverter converter;
    EXPECT_EQ(Failure(converter, [&](auto& c) { c.importFile(name); }), "") << name;
  }
  SurfaceFileConverter converter;
  for (const char* name : {"a.Sur", "a.SRF", "a.PCD", "a.REP", "a.REC", "a.OVREC", "a.csv", "a.",
                           "data.old/scan", "a.sur "}) {
    EXPECT_EQ(Failure(converter, [&](auto& c) { c.importFile(name); }), unknown) << name;
  }
  EXPECT_EQ(Failure(converter, [](auto& c) { c.importFile("scan"); }),
            "-997 120 importFile: Failed to parse the extension of the input filename");
  // A failed import forgets the one before.
  converter.importFile("a.sur");
  EXPECT_THROW(converter.importFile("missing.sur"), Orv::Exception);
  EXPECT_THROW(converter.isRecordingData(), Orv::Exception);
}

TEST_F(Converter, DeclaresTheTypeOfAScan) {
  for (const auto& [scan, dataType] : {std::pair{"part.sur", UNIFORM_SURFACE},
                                       {"part.srf", UNIFORM_SURFACE},
                                       {"part.pro", UNIFORM_PROFILE},
                                       {"part.pcd", SURFACE_POINT_CLOUD}}) {
    SurfaceFileConverter converter;
    converter.importFile(std::string(EXAMPLES_DIR "/") + scan);
    converter.exportFile("b.rep");
    converter.importFile("b.rep");
    EXPECT_EQ(converter.getDataSourceType(), dataType) << scan;
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
  testing::internal::CaptureStdout();
  converter.importFile("grid.pcd");
  converter.setPcdWidth(7);
  converter.setPcdHeight(3);
  converter.setPcdFlipXZEnabled(1);
  converter.setInvalidPoint({-1, 0, -1});
  converter.setPcdZoom(2);
  converter.exportFile("b.rep");
  converter.importFile("b.rep");
  converter.exportFile("b.pcd");
  testing::internal::GetCapturedStdout();
  const std::string written = ReadFile("b.pcd");
  EXPECT_THAT(written, testing::HasSubstr("WIDTH 7\nHEIGHT 3\n"));
  const zBytes data = ToBytes(written.substr(written.find("DATA binary\n") + 12));
  EXPECT_EQ(sur::Get<z32f>(data, 0), 20);
  EXPECT_EQ(sur::Get<z32f>(data, 8), 0);
  EXPECT_TRUE(std::isnan(sur::Get<z32f>(data, 24)));
  EXPECT_EQ(sur::Get<z32f>(data, 36), 80);
  EXPECT_TRUE(std::isnan(sur::Get<z32f>(data, 48)));
}

TEST_F(Converter, KnowsWhichConversionsExist) {
  const std::string onlyRecordings = "Only .rep and .ovrec file extension are supported";
  const std::string same = "The import file type is same as the export file type";
  const std::string notSurface =
      "The imported replay data doesn't belong to UNIFORM_SURFACE type, which can't be exported to "
      "a file whose extension is .sur/.srf";
  const std::string notProfile =
      "The imported replay data doesn't belong to UNIFORM_PROFILE type, which can't be exported to "
      "a file whose extension is .pro";
  const struct {
    const char* input;
    const char* output;
    std::string message;
  } rows[] = {
      {nullptr, "", "No files have been imported yet"},
      {nullptr, "b.rep", "No files have been imported yet"},
      {"a.sur", "b", "Failed to parse the extension of the export file name"},
      {"a.sur", "b.SRF", "Extension .SRF of the export file name is not supported"},
      {"a.sur", "b.rec", "Extension .rec of the export file name is not supported"},
      {"a.sur", "b.SUR", same},
      {"a.srf", "b.srf", same},
      {"a.pro", "b.PRO", same},
      {"a.pcd", "b.pcd", same},
      {"surface.rep", "b.rep", same},
      {"a.sur", "b.srf", onlyRecordings},
      {"a.sur", "b.pro", onlyRecordings},
      {"a.pcd", "b.csv", onlyRecordings},
      {"a.pro", "b.CSV", onlyRecordings},
      {"a.sur", "b.rep", "Failed to load sur file buffer"},
      {"surface.rep", "", "No file was exported because the export file name isn't specified"},
      {"surface.rep", "b.ovrec", "This conversion hasn't been implemented"},
      {"surface.rec", "b.rep", "This conversion hasn't been implemented"},
      {"surface.rep", "b.pro", notProfile},
      {"profile.rep", "b.sur", notSurface},
      {"profile.rep", "b.srf", notSurface},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.output);
    SurfaceFileConverter converter;
    if (row.input != nullptr) converter.importFile(row.input);
    EXPECT_THAT(Failure(converter, [&](auto& c) { c.exportFile(row.output); }),
                testing::EndsWith(": " + row.message));
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
  for (const char* path : {"missing", ".", "no/file"}) {
    EXPECT_EQ(Thrown([&] { ReadFileBuffer(path, bytes); }),
              std::string("-997 ReadFileBuffer: Failed to open ") + path);
  }
  ASSERT_EQ(mkfifo("pipe", 0600), 0);  // nobody writes into it
  EXPECT_EQ(Thrown([&] { ReadFileBuffer("pipe", bytes); }),
            "-997 ReadFileBuffer: Failed to read pipe");
  EXPECT_EQ(Thrown([&] { WriteBuffer(bytes, "no/file"); }),
            "-997 WriteBuffer: Failed to open no/file");
  WriteFile("long", std::string(100, 'x'));
  WriteBuffer({'a', 'b'}, "long");
  EXPECT_EQ(ReadFile("long"), "ab");
  WriteBuffer({}, "long");
  EXPECT_EQ(ReadFile("long"), "");
  const Handle stream = MakeStream();
  WriteStream(stream.Get(), "stream");
  EXPECT_EQ(ReadFile("stream"), "");
  MustBeOk(zStream_Write(stream.Get(), "whole", 5));  // leaves the position at the end
  WriteStream(stream.Get(), "stream");
  EXPECT_EQ(ReadFile("stream"), "whole");
  if (!zFile_Exists("/dev/full")) GTEST_SKIP() << "no full device";
  EXPECT_EQ(Thrown([&] { WriteStream(stream.Get(), "/dev/full"); }),
            "-997 WriteStream: Failed to write /dev/full");
  EXPECT_TRUE(zFile_Exists("/dev/full"));
}

}  // namespace
