// SPDX-License-Identifier: MIT
#include "surfacefileconverter/filenames.h"

#include <gmock/gmock.h>

#include "support/scans.h"

namespace {

using testing::ElementsAre;

TEST(FileNames, OfFrames) {
  const struct {
    const char* base;
    int index;
    const char* tag;
    const char* name;
  } rows[] = {
      {"out.sur", 7, "", "out-Top-0007.sur"},
      {"out.sur", 7, "Scanner 0", "out-Top-0007_Scanner 0.sur"},
      {"a.b.sur", 10000, "", "a.b-Top-10000.sur"},
      {"out.sur", -5, "", "out-Top-00-5.sur"},
      {"data.7/scan", 1, "T", "data-Top-0001_T.7/scan"},
      {".", 0, "", "-Top-0000."},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(GetIndexFileName(row.base, "Top", row.index, row.tag), row.name);
  }
}

TEST(FileNames, OfItemsAndSources) {
  EXPECT_THAT(GetIncrementalIndexFileNames("o.sur", 2, "Array", "T"),
              ElementsAre("o-Array-0000_T.sur", "o-Array-0001_T.sur"));
  EXPECT_THAT(GetIncrementalIndexFileNames("no extension", 0, "Array", "T"),
              ElementsAre("no extension"));
  EXPECT_THAT(GetAppendedFileNames("o.csv", {"A", ""}), ElementsAre("o_A.csv", "o_.csv"));
  EXPECT_THAT(GetAppendedFileNames("no extension", {}), ElementsAre());
}

TEST(FileNames, NeedAnExtension) {
  const std::string message = ": Failed to parse the extension of the input filename";
  EXPECT_EQ(Thrown([] { GetIndexFileName("", "Top", 0, ""); }), "-997 GetIndexFileName" + message);
  EXPECT_EQ(Thrown([] { GetIncrementalIndexFileNames("out", 1, "Array", ""); }),
            "-997 GetIncrementalIndexFileNames" + message);
  EXPECT_EQ(Thrown([] { GetAppendedFileNames("out", {"A"}); }),
            "-997 GetAppendedFileNames" + message);
}

}  // namespace
