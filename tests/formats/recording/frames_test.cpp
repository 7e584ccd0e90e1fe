// SPDX-License-Identifier: MIT
#include "formats/recording/recording.h"

#include <gtest/gtest.h>

#include "support/recordings.h"

namespace {

// What an import takes out of a recording, or its error: "type arrayed [sources] messages per
// frame".
std::string Extract(const std::vector<Plovia::ReplayScannerInfo>& scanners,
                    const std::vector<Frame>& written, bool classic) {
  const Handle stream = MakeStream();
  Plovia::ReplaySerializer writer;
  writer.BeginReplay(stream.Get(), classic);
  writer.WriteScannerInfo(scanners);
  for (const auto& frame : written) {
    writer.WriteIndexInfo(0);
    for (const Handle& message : frame) writer.WriteData(message);
  }
  writer.EndReplay();
  Recording read;
  std::string text = Thrown([&] { read = OpenRecording(REP, SourceOf(BytesOf(stream.Get()))); });
  if (!text.empty()) return text;
  text = std::to_string(read.dataType) + " " + std::to_string(read.arrayed) + " [";
  for (const auto& source : read.sources) text += source.name + " ";
  text += "]";
  for (zSize i = 0; i < read.frames.size(); ++i) {
    text += " " + std::to_string(read.MessageCount(i));
  }
  return text;
}

Plovia::ReplayScannerInfo Scanner(std::vector<ReplaySourceInfo> sources) {
  return {"f", "i", "n", std::move(sources)};
}

TEST(RecordingFrames, AreThoseThatCanBeExported) {
  const ReplaySourceInfo top{"Top", "", 14, 0, 0};
  const ReplaySourceInfo multi{"Top multi-exp", "", 14, 1, 0};
  const ReplaySourceInfo line{"Line", "multi-exp", 12, 1, 0};
  const ReplaySourceInfo raw{"Raw", "", 11, 0, 0};
  const ReplaySourceInfo cloud{"Cloud", "", 15, 0, 0};
  const ReplaySourceInfo next{"Next", "", 16, 0, 0};
  const Frame two = {MakeSurface(1, 1, {1}), MakeSurface(1, 1, {2})};
  const std::string error = "-997 GetCloudsInfoFromRecordingData: ";
  const std::string unsupported = error + "Unsupported data format";
  const std::string countDiffers =
      error + "The message count in the frame is not equal to the source count";
  const std::string noScanner =
      error + "The scanners' number is not equal to 1 in the inputted recording data";
  const std::string noSegments = error + "The current version doesn't support segments";
  const std::string noFrames = error + "There is no frame data in the recording data";
  const struct {
    std::vector<Plovia::ReplayScannerInfo> scanners;
    std::vector<Frame> frames;
    std::string segmented, classic;
  } rows[] = {
      {{Scanner({top, multi})}, {two, two}, "14 0 [Top ] 1 1", "14 0 [Top ] 2 2"},
      {{Scanner({raw, line})}, {two}, "12 1 [Line ] 1", "12 1 [Line ] 2"},
      {{Scanner({cloud, next})}, {two}, "15 0 [Cloud ] 1", "15 0 [Cloud ] 2"},
      {{Scanner({top})}, {two}, countDiffers, "14 0 [Top ] 2"},
      {{Scanner({top})}, {}, noSegments, noFrames},
      {{Scanner({raw, multi})}, {two}, unsupported, unsupported},
      {{}, {}, noScanner, noScanner},
      {{Scanner({top}), Scanner({top})}, {two}, noScanner, noScanner},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Extract(row.scanners, row.frames, false), row.segmented);
    EXPECT_EQ(Extract(row.scanners, row.frames, true), row.classic) << row.segmented;
  }
}

}  // namespace
