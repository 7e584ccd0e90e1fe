// SPDX-License-Identifier: MIT
// Frames of a recording as files.
#include <gtest/gtest.h>

#include "support/recordings.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

Handle Height(z16s height) { return MakeSurface(1, 1, {height}); }
const Handle k1 = Height(1), k2 = Height(2), k3 = Height(3);

// Exports to a .sur; gives the names told, with the height in each file, and the error.
std::string Export(SurfaceFileConverter& converter) {
  const std::string error = Thrown([&] { converter.exportFile("o.sur"); });
  std::string told;
  for (const std::string& file : converter.getExportedFileNames()) {
    told += file + "=" + std::to_string(sur::Get<z16s>(ToBytes(ReadFile(file)), 512)) + " ";
  }
  return told + error;
}

// The same for a frame, or for all, of a recording.
constexpr int kAll = -1;
std::string Export(const std::vector<ReplaySourceInfo>& sources, const std::vector<Frame>& frames,
                   int frame, bool classic = false) {
  const TempDirectory directory;
  WriteFile("in.rep", WriteRecording({"f", "i", "n", sources}, frames, classic));
  SurfaceFileConverter converter;
  converter.importFile("in.rep");
  converter.exportAll = frame == kAll;
  converter.setFrameIndex(frame == kAll ? 0 : static_cast<z32u>(frame));
  const std::string told = Export(converter);
  EXPECT_EQ(directory.Files().size(), converter.getExportedFileNames().size() + 1) << told;
  return told;
}

TEST(FrameExport, NamesOneFileForEachSourceAndItem) {
  const ReplaySourceInfo top{"Top", "T", 14, 0, 0}, bottom{"Bottom", "B", 14, 0, 0};
  const ReplaySourceInfo many{"Top", "T", 14, 1, 0}, trace{"Trace", "Trace", 13, 1, 0};
  const ReplaySourceInfo odd{"Top", "*a/b:c<d>e?f\\g|h\"", 14, 0, 0};
  const ReplaySourceInfo zero{"Top", std::string("a\0b", 3), 14, 0, 0};
  const Handle both = MakeArrayOf({k1, k2});
  EXPECT_EQ(Export({top, bottom}, {{k1, k2}, {k3, k1}}, 1),
            "o-Frame-0001_T.sur=3 o-Frame-0001_B.sur=1 ");
  EXPECT_EQ(Export({trace, top}, {{k1, k2}}, 0), "o-Frame-0000_T.sur=2 ");
  EXPECT_EQ(Export({many}, {{MakeArrayOf({k3})}}, 0), "o.sur=3 ");
  EXPECT_EQ(Export({many}, {{MakeArrayOf({k3})}}, kAll), "o-Frame-0000-Array-0000_T.sur=3 ");
  EXPECT_EQ(Export({many, bottom}, {{both, k3}}, 0),
            "o-Frame-0000-Array-0000_T.sur=1 o-Frame-0000-Array-0001_T.sur=2 ");
  EXPECT_EQ(Export({odd, top}, {{k1, k2}}, 0),
            "o-Frame-0000_abcdefgh\".sur=1 o-Frame-0000_T.sur=2 ");
  EXPECT_EQ(Export({zero}, {{k1}}, kAll), "-997 WriteStream: Failed to open o-Frame-0000_a");

  EXPECT_EQ(Export({top, bottom, {"Other", "T", 14, 0, 0}}, {{k1, k2, k3}}, 0),
            "-997 SurfaceFileConverter::writeMsgs: Two outputs have the name o-Frame-0000_T.sur");

  const std::string writer = "-997 SurfaceFileConverter::writeMsgs: ";
  EXPECT_EQ(Export({many}, {{MakeArrayOf({})}}, kAll), writer + "The array message count is 0.");
  EXPECT_EQ(Export({top}, {{k1, k2}}, 0, true),
            writer + "The data source count is not equal to the message count in the first frame.");
  EXPECT_EQ(Export({top, bottom}, {{k1, k2}, {k3}}, 1, true),
            "o-Frame-0001_T.sur=3 -997 WriteMsg: The inputted msg is Null");
}

TEST(FrameExport, ReadsFramesAsOftenAsTheyAreAskedFor) {
  const TempDirectory directory;
  const auto write = [](const std::vector<Frame>& frames) {
    WriteFile("in.rep", WriteRecording({"f", "i", "n", {{"Top", "T", 14, 0, 0}}}, frames, false));
  };
  write({{k1}, {k2}});
  SurfaceFileConverter converter;
  converter.importFile("in.rep");
  converter.setFrameIndex(1);
  const std::string all = "o-Frame-0000_T.sur=1 o-Frame-0001_T.sur=2 ";
  for (const bool every : {true, false, true}) {
    converter.exportAll = every;
    EXPECT_EQ(Export(converter), every ? all : all + "o.sur=2 ");
  }
  write({{k3}, {k1}});  // by somebody else
  EXPECT_EQ(Export(converter), "-997 ReadFileBuffer: Failed to read in.rep");
  converter.importFile("in.rep");
  EXPECT_EQ(converter.getFrameIndex(), 0U);
}

}  // namespace
