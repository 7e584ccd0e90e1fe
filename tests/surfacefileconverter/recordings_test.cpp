// SPDX-License-Identifier: MIT
// Recordings that the converter imports, frames that it exports, directories that become
// recordings.
#include <gmock/gmock.h>

#include "formats/recording/recording.h"
#include "support/recordings.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const Handle kTop = MakeSurface(2, 1, {1, 2});
const Handle kBottom = MakeSurface(2, 1, {3, 4});

Plovia::ReplayScannerInfo Scanner(std::vector<ReplaySourceInfo> sources) {
  return {"r4xxx", "Scanner-0", "Scanner 0", std::move(sources)};
}

const ReplaySourceInfo kTopSource{"Top", "T/o*p", 14, 0, 0};
const ReplaySourceInfo kBottomSource{"Bottom", "Bot", 14, 0, 0};

// What an import takes out of a recording, or its error: "type arrayed [sources] messages per
// frame".
std::string Extract(const std::vector<Plovia::ReplayScannerInfo>& scanners,
                    const std::vector<Plovia::ReplayFrame>& written, bool classic) {
  Plovia::ReplaySerializer writer;
  writer.WriteScannerInfo(scanners);
  for (const auto& frame : written) {
    writer.WriteIndexInfo(0);
    for (const Handle& message : frame) writer.WriteData(message);
  }
  const zBytes stream = writer.GetReplayFile(classic);
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(stream);
  std::vector<ReplaySourceInfo> sources;
  std::vector<Plovia::ReplayFrame> frames{{}};
  DataSourceType dataType = UNKNOWN_DATA_SOURCE;
  z8u arrayed = 0;
  std::string text =
      Thrown([&] { GetCloudsInfoFromRecordingData(reader, sources, dataType, arrayed, frames); });
  if (!text.empty()) return text;
  text = std::to_string(dataType) + " " + std::to_string(arrayed) + " [";
  for (const auto& source : sources) text += source.name + " ";
  text += "]";
  for (const auto& frame : frames) text += " " + std::to_string(frame.size());
  return text;
}

TEST(RecordingImport, KeepsWhatCanBeExported) {
  const ReplaySourceInfo multi{"Top multi-exp", "Top", 14, 1, 0};
  const ReplaySourceInfo shown{"Line", "multi-exp", 12, 1, 0};
  const ReplaySourceInfo other{"Raw", "Raw", 11, 0, 0};
  const Plovia::ReplayFrame two = {kTop, kBottom};
  const std::string error = "-997 GetCloudsInfoFromRecordingData: ";
  const char* countDiffers = "The message count in the frame is not equal to the source count";
  const char* noSegments = "The current version doesn't support segments";
  const char* noFrames = "There is no frame data in the recording data";
  const char* unsupported = "Unsupported data format";
  const char* noScanner = "The scanners' number is not equal to 1 in the inputted recording data";
  const struct {
    std::vector<Plovia::ReplayScannerInfo> scanners;
    std::vector<Plovia::ReplayFrame> frames;
    std::string segmented, classic;
  } rows[] = {
      {{Scanner({kTopSource, multi})}, {two, two}, "14 0 [Top ] 1 1", "14 0 [Top ] 2 2"},
      {{Scanner({other, shown})}, {two}, "12 1 [Line ] 1", "12 1 [Line ] 2"},
      {{Scanner({shown, kTopSource})}, {two}, "14 0 [Line Top ] 2", "14 0 [Line Top ] 2"},
      {{Scanner({kTopSource})}, {two}, error + countDiffers, "14 0 [Top ] 2"},
      {{Scanner({kTopSource})}, {}, error + noSegments, error + noFrames},
      {{Scanner({other, multi})}, {two}, error + unsupported, error + unsupported},
      {{Scanner({})}, {}, error + unsupported, error + unsupported},
      {{}, {}, error + noScanner, error + noScanner},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Extract(row.scanners, row.frames, false), row.segmented);
    EXPECT_EQ(Extract(row.scanners, row.frames, true), row.classic);
  }
}

// Exports a recording to out.sur; gives the names told and written, or the error.
std::string Export(const Plovia::ReplayScannerInfo& scanner,
                   const std::vector<Plovia::ReplayFrame>& frames, int frame, bool all,
                   bool classic = false) {
  const TempDirectory directory;
  WriteFile("in.rep", WriteRecording(scanner, frames, classic));
  SurfaceFileConverter converter;
  converter.importFile("in.rep");
  converter.exportAll = all;
  converter.setFrameIndex(static_cast<z32u>(frame));
  const std::string error = Thrown([&] { converter.exportFile("out.sur"); });
  std::string names;
  for (const std::string& name : converter.getExportedFileNames()) {
    EXPECT_TRUE(std::filesystem::exists(name)) << name;
    names += name + " ";
  }
  EXPECT_EQ(directory.Files().size(), converter.getExportedFileNames().size() + 1);
  return names + error;
}

TEST(FrameExport, NamesOneFileForEachSourceAndItem) {
  ReplaySourceInfo many = kTopSource;
  many.arrayed = 1;
  const ReplaySourceInfo dropped{"x multi-exp", "x", 14, 0, 0};
  const ReplaySourceInfo trace{"Trace", "Trace", 13, 1, 0};
  const Handle array = MakeArrayOf({kTop, kBottom});
  const auto one = Scanner({kTopSource});
  const auto two = Scanner({kTopSource, kBottomSource});
  EXPECT_EQ(Export(one, {{kTop}, {kTop}}, 1, false), "out.sur ");
  EXPECT_EQ(Export(Scanner({dropped, kTopSource}), {{kTop, kTop}}, 0, false), "out.sur ");
  EXPECT_EQ(Export(one, {{kTop}, {kTop}}, 1, true),
            "out-Frame-0000_Top.sur out-Frame-0001_Top.sur ");
  EXPECT_EQ(Export(two, {{kTop, kBottom}}, 0, false),
            "out-Frame-0000_Top.sur out-Frame-0000_Bot.sur ");
  EXPECT_EQ(Export(Scanner({trace, kTopSource}), {{kTop, kBottom}}, 0, false),
            "out-Frame-0000_Top.sur ");
  EXPECT_EQ(Export(Scanner({many}), {{MakeArrayOf({kTop})}}, 0, false), "out.sur ");
  EXPECT_EQ(Export(Scanner({many}), {{MakeArrayOf({kTop})}}, 0, true),
            "out-Frame-0000-Array-0000_Top.sur ");
  EXPECT_EQ(Export(Scanner({many, kBottomSource}), {{array, kBottom}}, 0, false),
            "out-Frame-0000-Array-0000_Top.sur out-Frame-0000-Array-0001_Top.sur ");
}

TEST(FrameExport, FailsForFramesThatDoNotFitTheirSources) {
  ReplaySourceInfo many = kTopSource;
  many.arrayed = 1;
  const auto one = Scanner({kTopSource});
  const auto two = Scanner({kTopSource, kBottomSource});
  const Handle array = MakeArrayOf({kTop});
  const std::string writer = "-997 SurfaceFileConverter::writeMsgs: ";
  EXPECT_EQ(Export(one, {{array}}, 0, false),
            "0 GetMsgDataFileStream: Failed to get sur file stream");
  EXPECT_EQ(Export(Scanner({many}), {{kTop}}, 0, false), writer + "The array message count is 0.");
  EXPECT_EQ(Export(Scanner({many}), {{MakeArrayOf({})}}, 0, true),
            writer + "The array message count is 0.");
  EXPECT_EQ(Export(one, {{kTop, kTop}}, 0, false, true),
            writer + "The data source count is not equal to the message count in the first frame.");
  EXPECT_EQ(Export(two, {{kTop, kTop}, {kTop}}, 1, false, true),
            "out-Frame-0001_Top.sur -997 WriteMsg: The inputted msg is Null");
}

// Imports a directory that holds files of these names and makes a recording of it; gives its frames
// by the heights of their first points, or the error.
std::string ImportDirectory(const std::vector<std::string>& names) {
  const TempDirectory directory;
  std::filesystem::create_directories("in/folder.sur");
  z32s height = 0;
  for (const std::string& name : names) WriteFile("in/" + name, SurRow({height++}).Bytes());
  SurfaceFileConverter converter;
  try {
    converter.importFiles("in");
    converter.exportFile("out.rep");
  } catch (const std::exception& failure) {
    return failure.what();
  }
  const zBytes stream = ToBytes(ReadFile("out.rep"));
  Plovia::ReplaySerializer made;
  made.LoadBuffer(stream);
  made.LoadDataIndexFiles();
  std::string text;
  for (zSize frames = made.ReadIndexInfo().size(); frames > 0; --frames) {
    for (const Handle& message : made.ReadData(0)) {
      text += std::to_string(HeightsOf(message.Get())[0]) + " ";
    }
    text += "| ";
  }
  return text;
}

TEST(DirectoryImport, SortsFilesIntoFramesAndSources) {
  EXPECT_EQ(ImportDirectory({"a-Frame-0000_Bot.sur", "a-Frame-0000_Top.sur", "a-Frame-0001_Bot.sur",
                             "a-Frame-0001_Top.sur"}),
            "0 1 | 2 3 | ");
  EXPECT_EQ(ImportDirectory({"a-Frame-0001_T.sur", "b-Frame-0000_T.sur"}), "1 | 0 | ");
  // The name of frame 0 is found in a file of frame 1 as well.
  EXPECT_EQ(ImportDirectory({"a-Frame-0000_T.sur", "a-Frame-0001_T-Frame-0000_T.sur"}),
            "0 1 | 1 | ");
  // Only "_" stands between index and tag; a tag that begins with another is found under that one,
  // in the order of the listing.
  EXPECT_EQ(ImportDirectory({"a-Frame-0000_T.sur", "a-Frame-0001xT.sur"}), "0 | | ");
  EXPECT_EQ(ImportDirectory({"a-Frame-0000_T2.sur", "b-Frame-0000_T.sur"}), "0 0 1 | ");
}

TEST(DirectoryImport, SaysWhichNameIsWrong) {
  const std::string kinds = "Not all the files from the input directory belong to a file type.";
  const std::string badNames = "Not all the files' names in the input directory are formated well.";
  const struct {
    std::vector<std::string> names;
    std::string message;
  } rows[] = {
      {{}, "Fail to find any file in the input directory."},
      {{"a-Frame-0000_T"},
       "The file (a-Frame-0000_T) from the input directory has no an extension."},
      {{"a."}, "The file (a.) from the input directory has no an extension."},
      {{"a-Frame-0000_T.sur", "b.txt"}, kinds},
      {{"a-Frame-0000_T.sur", "a-Frame-0001_T.SUR"}, kinds},
      {{"a-Frame-0000-Array-0000_T.sur"},
       "The conversion from multiple files to arrayed messages hasn't been supported yet."},
      {{"a%s.sur"}, "Fail to find the frame index in the input file (a%s.sur)."},
      {{"a-Frame-0000_T.sur", "bb-Frame-0001_T.sur"}, "The input files' names are not correct."},
      {{"a-Frame-x000_T.sur"}, "invalid stoi argument"},
      {{"a-Frame-0000_T.sur", "a-Frame-0001_T.sur", "a-Frame-0003_T.sur"}, badNames},
      {{"a-Frame--001_T.sur"}, badNames},
      {{"a-Frame-0000_T.SUR"},
       "The multi-files conversion supports only the .sur files importing."},
  };
  for (const auto& row : rows) EXPECT_EQ(ImportDirectory(row.names), row.message);
  SurfaceFileConverter converter;
  EXPECT_EQ(Thrown([&] { converter.importFiles("missing directory"); }),
            "-999 SurfaceFileConverter::importFiles: The input directory doesn't exist.");
}

}  // namespace
