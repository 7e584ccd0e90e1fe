// SPDX-License-Identifier: MIT
// Directories that become recordings.
#include "formats/directory/reader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "filesource.h"
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
  Plovia::ReplaySerializer made;
  made.LoadBuffer(OpenFile("out.rep"));
  std::string text;
  const std::vector<Plovia::ReplayScannerInfo> scanners = made.ReadScannerInfo();
  for (const ReplaySourceInfo& source : scanners.at(0).sources) {
    EXPECT_EQ(source.dataType, UNIFORM_SURFACE);
    text += source.name + "=" + source.displayName + " ";
  }
  made.LoadDataIndexFiles();
  for (const z32u index : made.ReadIndexInfo()) {
    EXPECT_EQ(index, 0U);
    text += "|";
    for (const Handle& message : MessagesOf(made, made.ReadData(0))) {
      text += " " + std::to_string(HeightsOf(message.Get())[0]);
    }
  }
  return text;
}

// Each row of a file in the folder of data. The name of frame 0 is found in a file of frame 1 as
// well; only "_" stands between index and tag; a tag that begins with another is found under that
// one, in the order of the listing.
TEST(SurfaceDirectory, GivesFramesAndSources) {
  std::istringstream rows(ReadFile(TEST_DATA_DIR "/directories.txt"));
  int count = 0;
  for (std::string row; std::getline(rows, row); ++count) {
    const std::size_t arrow = row.find(" => ");
    std::istringstream words(row.substr(0, arrow));
    EXPECT_EQ(Import({std::istream_iterator<std::string>(words), {}}), row.substr(arrow + 4))
        << row;
  }
  EXPECT_EQ(count, 15);
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
