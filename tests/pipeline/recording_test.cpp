// SPDX-License-Identifier: MIT
// Recordings that we write and read back.
#include <gmock/gmock.h>

#include "support/recordings.h"

namespace {

class Recording : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Layouts, Recording, testing::Values(false, true),
                         [](const auto& layout) { return layout.param ? "classic" : "segmented"; });

TEST_P(Recording, GivesBackFramesOfEveryKindOfMessage) {
  const std::vector<Plovia::ReplayFrame> frames = {
      MakeFrame(1), MakeFrame(2), {}, {MakeSurface(0, 4, {}), MakeArrayOf({})}, MakeFrame(-3)};
  std::string expected = ReadRecording(WriteRecording(MakeScanner(), {}, true));
  for (zSize i = 0; i < frames.size(); ++i) {
    expected += "frame " + std::to_string(40 + i) + "\n" + Describe(frames[i]);
  }
  EXPECT_EQ(ReadRecording(WriteRecording(MakeScanner(), frames, GetParam())), expected);
}

// Arrays of several kilobytes stay where they are; a small one between them is copied.
TEST_P(Recording, IsTheSameInPiecesAsInOnePiece) {
  const Handle large = MakeSurface(64, 33, std::vector<z16s>(64 * 33, 7));
  Plovia::ReplaySerializer writer;
  writer.WriteScannerInfo({MakeScanner()});
  writer.WriteIndexInfo(40);
  for (const Handle& message : {large, MakeCloud(1), large}) writer.WriteData(message);
  const Plovia::ReplayStream pieces = writer.GetReplayStream(GetParam());
  const zBytes whole = writer.GetReplayFile(GetParam());
  const Handle stream = MakeStream();
  EXPECT_EQ(pieces.WriteTo(stream.Get()), zOK);
  EXPECT_EQ(BytesOf(stream.Get()), whole);
  EXPECT_EQ(pieces.Size(), whole.size());
  EXPECT_TRUE(CheckReplay(whole).empty());
}

TEST_P(Recording, GivesBackScannersAndSourcesInOrder) {
  const std::vector<Plovia::ReplayScannerInfo> scanners = {
      MakeScanner(), {"f", "Scanner-1", "n", {{"", "", 65535, 1, 7}}}, {}};
  Plovia::ReplaySerializer writer;
  writer.WriteScannerInfo(scanners);
  const zBytes stream = writer.GetReplayFile(GetParam());
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(stream);
  EXPECT_EQ(reader.ReadScannerInfo(), scanners);
  EXPECT_EQ(reader.GetReplayInfo().IsClassic(), GetParam());
  EXPECT_TRUE(reader.ReadIndexInfo().empty());
  EXPECT_EQ(reader.SegmentCount(), 0U);
}

TEST_P(Recording, EndsAfterItsLastFrameAndTakesNoMessageWithoutASource) {
  const zBytes stream = WriteRecording(MakeScanner(), {MakeFrame(1)}, GetParam());
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(stream);
  if (!GetParam()) {
    EXPECT_NE(Thrown([&] { reader.ReadData(0); }), "");  // before the first segment
    reader.LoadDataIndexFiles();
  }
  reader.ReadData(0);
  EXPECT_NE(Thrown([&] { reader.ReadData(1); }), "");
  EXPECT_NE(Thrown([&] { reader.LoadDataIndexFiles(); }), "");
  EXPECT_NE(Thrown([&] { WriteRecording({}, {MakeFrame(1)}, GetParam()); }), "");
}

TEST_P(Recording, ItsMessagesOutliveItAndKeepTheirArraysApart) {
  for (const bool owned : {false, true}) {
    SCOPED_TRACE(owned ? "owned" : "not owned");
    Handle surface = MakeSurfaceWithIntensity(9);
    const std::string expected = Describe(surface.Get());
    {
      const auto stream = std::make_shared<zBytes>(
          WriteRecording(MakeScanner(), {{surface}, MakeFrame(1)}, GetParam()));
      Plovia::ReplaySerializer reader;
      reader.LoadBuffer(*stream, owned ? stream : nullptr);
      if (!GetParam()) reader.LoadDataIndexFiles();
      surface = reader.ReadData(0).front();
      reader.ReadData(1);
      if (!owned) std::ranges::fill(*stream, z8u{0});
    }
    EXPECT_EQ(Describe(surface.Get()), expected);
    const auto intensities = ItemsOf<z8u>(MxSurfaceMsg_Intensities(surface.Get(), 0));
    std::ranges::fill(zArray_EditableItems<z16s>(MxSurfaceMsg_PointsArray(surface.Get(), 0)),
                      z16s{-1});
    EXPECT_EQ(ItemsOf<z8u>(MxSurfaceMsg_Intensities(surface.Get(), 0)), intensities);
  }
}

TEST(RecordingFile, ClosesASegmentOnceItHolds64MiB) {
  const Handle small = MakeSurface(0, 0, {});
  Handle large;
  MustBeOk(MxSurfaceMsg_ConstructSimple(large.Out(), 4096, 5120, DefaultAlloc()));  // 40 MiB
  const zBytes stream =
      WriteRecording(MakeScanner(), {{small}, {large}, {large}, {small}, {large}}, false);
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(stream);
  std::string found;
  ForEachFrame(reader, [&](z64u segment, z32u index, const Plovia::ReplayFrame& frame) {
    found += Orv::Format("%u/%u:%u ", segment, index, MxSurfaceMsg_Width(frame.front().Get()));
  });
  EXPECT_EQ(found, "0/40:0 0/41:4096 0/42:4096 1/43:0 1/44:4096 ");
}

TEST(RecordingFile, RefusesAMessageOf2GiB) {
  Handle huge;
  if (MxSurfaceMsg_ConstructSimple(huge.Out(), 1U << 15, 1U << 15, DefaultAlloc()) != zOK) {
    GTEST_SKIP() << "not enough memory";
  }
  for (const Handle& message : {huge, MakeArrayOf({huge})}) {
    EXPECT_THAT(Thrown([&] { WriteRecording(MakeScanner(), {{message}}, false); }),
                testing::HasSubstr("too large for a recording"));
  }
}

}  // namespace
