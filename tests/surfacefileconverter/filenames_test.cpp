// SPDX-License-Identifier: MIT
#include "surfacefileconverter/filenames.h"

#include <gmock/gmock.h>

#include "support/scans.h"

namespace {

using testing::ElementsAre;

TEST(FileNames, AreMadeFromTheStemOfABasePath) {
  EXPECT_EQ(GetIndexFileName("a.b.sur", "Top", 10000, "S 0"), "a.b-Top-10000_S 0.sur");
  EXPECT_EQ(GetIndexFileName("out.sur", "Top", -5, ""), "out-Top-00-5.sur");
  EXPECT_EQ(GetIndexFileName("data.7/scan", "Top", 1, "T"), "data-Top-0001_T.7/scan");
  EXPECT_THAT(GetIncrementalIndexFileNames("no dot", 0, "Array", "T"), ElementsAre("no dot"));
  EXPECT_THAT(GetAppendedFileNames("no dot", {}), ElementsAre());
  const std::string message = ": Failed to parse the extension of the input filename";
  EXPECT_EQ(Thrown([] { GetIndexFileName("", "T", 0, ""); }), "-997 GetIndexFileName" + message);
  EXPECT_EQ(Thrown([] { GetIncrementalIndexFileNames("out", 1, "Array", ""); }),
            "-997 GetIncrementalIndexFileNames" + message);
  EXPECT_EQ(Thrown([] { GetAppendedFileNames("out", {"A"}); }),
            "-997 GetAppendedFileNames" + message);
}

}  // namespace
