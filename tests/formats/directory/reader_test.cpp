// SPDX-License-Identifier: MIT
// Directories that become recordings.
#include "formats/directory/reader.h"

#include <gtest/gtest.h>

#include "support/recordings.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

// Imports a directory that holds files of these names, with the heights 0, 1 and so on, and makes a
// recording of it; gives its frames by their heights, or the error.
std::string Import(const std::vector<std::string>& names) {
  const TempDirectory directory;
  std::filesystem::create_directories("in/folder.sur");
  z32s height = 0;
  for (const std::string& name : names) WriteFile("in/" + name, SurRow({height++}).Bytes());
  SurfaceFileConverter converter;
  try {
    converter.importFiles("in");
    converter.exportFile("out.rep");
  } catch (const std::exception& failure) {
    EXPECT_NE(Thrown([&] { converter.isRecordingData(); }), "");  // nothing is imported
    return failure.what();
  }
  const zBytes stream = ToBytes(ReadFile("out.rep"));
  Plovia::ReplaySerializer made;
  made.LoadBuffer(stream);
  std::string text;
  const std::vector<Plovia::ReplayScannerInfo> scanners = made.ReadScannerInfo();
  for (const ReplaySourceInfo& source : scanners.at(0).sources) {
    EXPECT_EQ(source.dataType, UNIFORM_SURFACE);
    text += source.name + "=" + source.displayName + " ";
  }
  made.LoadDataIndexFiles();
  for (zSize frames = made.ReadIndexInfo().size(); frames > 0; --frames) {
    text += "|";
    for (const Handle& message : made.ReadData(0)) {
      text += " " + std::to_string(HeightsOf(message.Get())[0]);
    }
  }
  return text;
}

TEST(SurfaceDirectory, GivesFramesAndSources) {
  const std::string badNames = "Not all the files' names in the input directory are formated well.";
  const struct {
    std::vector<std::string> names;
    std::string outcome;
  } rows[] = {
      {{"a-Frame-0000_B.sur", "a-Frame-0000_T.sur", "a-Frame-0001_B.sur", "a-Frame-0001_T.sur"},
       "B=B T=T | 0 1| 2 3"},
      // The name of frame 0 is found in a file of frame 1 as well.
      {{"a-Frame-0000_T.sur", "a-Frame-0001_T-Frame-0000_T.sur"}, "T=T | 0 1| 1"},
      // Only "_" stands between index and tag; a tag that begins with another is found under that
      // one, in the order of the listing.
      {{"a-Frame-0000_T.sur", "a-Frame-0001xT.sur"}, "T=T | 0|"},
      {{"a-Frame-0000_T2.sur", "b-Frame-0000_T.sur"}, "T2=T2 T=T | 0 0 1"},
      {{}, "Fail to find any file in the input directory."},
      {{"a-Frame-0000_T"},
       "The file (a-Frame-0000_T) from the input directory has no an extension."},
      {{"a."}, "The file (a.) from the input directory has no an extension."},
      {{"a-Frame-0000_T.sur", "a-Frame-0001_T.SUR"},
       "Not all the files from the input directory belong to a file type."},
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
  for (const auto& row : rows) {
    EXPECT_EQ(Import(row.names), row.outcome) << testing::PrintToString(row.names);
  }
  SurfaceFileConverter converter;
  EXPECT_EQ(Thrown([&] { converter.importFiles("missing directory"); }),
            "-999 SurfaceFileConverter::importFiles: The input directory doesn't exist.");
}

// As trelvane-inspect looks at them.
TEST(SurfaceDirectory, HasNamesOfSeveralParts) {
  const auto parts = [](std::string_view name) {
    const auto found = ParseFrameFileName(name);
    if (!found) return std::string("none");
    return std::to_string(found->marker) + "|" + std::string(found->index) + "|" +
           std::string(found->behind) + "|" + std::string(found->tag);
  };
  EXPECT_EQ(parts("a.b-Frame-0012_T.2.sur"), "3|0012|_T.2.sur|T.2");
  EXPECT_EQ(parts("-Frame-12345.sur"), "0|1234|5.sur|");
  EXPECT_EQ(parts("-Frame-0001.sur"), "0|0001|.sur|sur");
  EXPECT_EQ(parts("-Frame-01"), "0|01||");
  EXPECT_EQ(parts("-frame-0001_T.sur"), "none");
}

}  // namespace
