// SPDX-License-Identifier: MIT
// Recordings that we write and read back.
#include <gmock/gmock.h>

#include "support/recordings.h"

namespace {

std::string Expected(const std::vector<Plovia::ReplayFrame>& frames) {
  std::string text = ReadRecording(WriteRecording(MakeScanner(), {}, true));
  z32u index = 40;
  for (const auto& frame : frames) {
    text += "frame " + std::to_string(index++) + "\n" + Describe(frame);
  }
  return text;
}

class Recording : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Layouts, Recording, testing::Values(false, true),
                         [](const auto& layout) { return layout.param ? "classic" : "segmented"; });

TEST_P(Recording, GivesBackEveryKindOfMessage) {
  const std::vector<Plovia::ReplayFrame> frames = {MakeFrame(1), MakeFrame(2), MakeFrame(-3)};
  const zBytes stream = WriteRecording(MakeScanner(), frames, GetParam());
  EXPECT_EQ(ReadRecording(stream), Expected(frames));
  EXPECT_EQ(WriteRecording(MakeScanner(), frames, GetParam()), stream);
}

// Arrays of several kilobytes stay where they are; a small one between them is copied.
TEST_P(Recording, IsTheSameInPiecesAsInOnePiece) {
  std::vector<z16s> heights(64 * 33);
  std::ranges::generate(heights, [next = z16s{0}]() mutable { return next++; });
  Plovia::ReplaySerializer writer;
  writer.WriteScannerInfo({MakeScanner()});
  for (z32u frame = 0; frame < 3; ++frame) {
    writer.WriteIndexInfo(frame);
    writer.WriteData(MakeSurface(64, 33, heights));
    writer.WriteData(MakeCloud(1));
    writer.WriteData(MakeArrayOf({MakeSurface(33, 64, heights), MakeSurface(64, 33, heights)}));
  }
  const Plovia::ReplayStream pieces = writer.GetReplayStream(GetParam());
  const zBytes whole = writer.GetReplayFile(GetParam());
  const Handle stream = MakeStream();
  EXPECT_EQ(pieces.Size(), whole.size());
  EXPECT_EQ(pieces.WriteTo(stream.Get()), zOK);
  EXPECT_EQ(BytesOf(stream.Get()), whole);
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(whole);  // verifies the checksums
  EXPECT_EQ(pieces.WriteTo(nullptr), zERROR_PARAMETER);
}

TEST_P(Recording, GivesBackScannersAndSourcesInOrder) {
  Plovia::ReplayScannerInfo second = MakeScanner();
  second.id = "Scanner-1";
  second.sources = {{"", "", 65535, 1, 7}};
  const std::vector<Plovia::ReplayScannerInfo> scanners = {MakeScanner(), second, {}};
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

TEST_P(Recording, HoldsEmptyFramesEmptyScansAndSurplusMessages) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  const std::vector<Plovia::ReplayFrame> frames = {
      {}, {MakeSurface(0, 4, {}), MakeSurface(3, 0, {}), MakeArrayOf({})}, {}};
  const std::string text = ReadRecording(WriteRecording(scanner, frames, GetParam()));
  EXPECT_TRUE(text.ends_with("frame 40\nframe 41\n" + Describe(frames[1]) + "frame 42\n")) << text;
}

TEST_P(Recording, RefusesUseOutOfOrder) {
  Plovia::ReplaySerializer fresh;
  EXPECT_NE(Thrown([&] { fresh.GetReplayInfo(); }), "");
  EXPECT_NE(Thrown([&] { fresh.ReadData(0); }), "");
  EXPECT_NE(Thrown([&] { fresh.WriteData(MakeCloud(1)); }), "");  // no frame
  fresh.WriteIndexInfo(0);
  EXPECT_NE(Thrown([&] { fresh.WriteData(Handle()); }), "");
  EXPECT_NE(Thrown([&] { fresh.WriteData(MakeStream()); }), "");
  fresh.WriteData(MakeCloud(1));
  EXPECT_NE(Thrown([&] { fresh.GetReplayFile(GetParam()); }), "");  // no source

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
}

TEST(RecordingFile, MessagesOutliveStreamAndSerializerAndKeepTheirArraysApart) {
  Handle surface = MakeSurfaceWithIntensity(9);
  const std::string expected = Describe(surface.Get());
  {
    const zBytes stream = WriteRecording(MakeScanner(), {{surface}}, true);
    Plovia::ReplaySerializer reader;
    reader.LoadBuffer(stream);
    surface = reader.ReadData(0).front();
  }
  EXPECT_EQ(Describe(surface.Get()), expected);
  const auto intensities = ItemsOf<z8u>(MxSurfaceMsg_Intensities(surface.Get(), 0));
  std::ranges::fill(zArray_EditableItems<z16s>(MxSurfaceMsg_PointsArray(surface.Get(), 0)),
                    z16s{-1});
  EXPECT_EQ(ItemsOf<z8u>(MxSurfaceMsg_Intensities(surface.Get(), 0)), intensities);
}

TEST(RecordingFile, ClosesASegmentOnceItHolds64MiB) {
  const Handle surface = MakeSurface(0, 0, {});
  Handle large;
  MustBeOk(MxSurfaceMsg_ConstructSimple(large.Out(), 4096, 5120, DefaultAlloc()));  // 40 MiB
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  const zBytes stream =
      WriteRecording(scanner, {{surface}, {large}, {large}, {surface}, {large}}, false);
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(stream);
  ASSERT_EQ(reader.SegmentCount(), 2U);
  reader.LoadDataIndexFiles();
  EXPECT_EQ(reader.ReadIndexInfo(), (std::vector<z32u>{40, 41, 42}));
  reader.LoadDataIndexFiles();
  EXPECT_EQ(reader.ReadIndexInfo(), (std::vector<z32u>{43, 44}));
  EXPECT_EQ(MxSurfaceMsg_Width(reader.ReadData(1).front().Get()), 0U);
  EXPECT_EQ(MxSurfaceMsg_Width(reader.ReadData(1).front().Get()), 4096U);
}

TEST(RecordingFile, RefusesAMessageOf2GiB) {
  Handle huge;
  if (MxSurfaceMsg_ConstructSimple(huge.Out(), 1U << 15, 1U << 15, DefaultAlloc()) != zOK) {
    GTEST_SKIP() << "not enough memory";
  }
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  EXPECT_THAT(Thrown([&] { WriteRecording(scanner, {{huge}}, false); }),
              testing::HasSubstr("too large for a recording"));
}

}  // namespace
