// SPDX-License-Identifier: MIT
// Recordings that we write and read back.
#include <gmock/gmock.h>

#include "support/recordings.h"

namespace {

class Recording : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Layouts, Recording, testing::Values(false, true),
                         [](const auto& layout) { return layout.param ? "classic" : "segmented"; });

TEST_P(Recording, GivesBackFramesOfEveryKindOfMessage) {
  const std::vector<Frame> frames = {
      MakeFrame(1), MakeFrame(2), {}, {MakeSurface(0, 4, {}), MakeArrayOf({})}, MakeFrame(-3)};
  std::string expected = ReadRecording(SourceOf(WriteRecording(MakeScanner(), {}, true)));
  for (zSize i = 0; i < frames.size(); ++i) {
    expected += "frame " + std::to_string(40 + i) + "\n" + Describe(frames[i]);
  }
  const zBytes stream = WriteRecording(MakeScanner(), frames, GetParam());
  for (const zSize piece : {1U, 7U, 31U, 1U << 20}) {
    EXPECT_EQ(ReadRecording(SourceOf(stream, piece)), expected) << piece;
  }
  EXPECT_EQ(ReadRecording(std::make_shared<zMemorySource>(stream)), expected);
}

// An error of the device is told as it is, wherever it comes.
TEST_P(Recording, EndsWithWhatItsSourceThrows) {
  const Handle surface = MakeSurface(200, 1, {});
  const zBytes stream = WriteRecording(MakeScanner(), {{surface}, MakeFrame(1)}, GetParam());
  std::string thrown;
  for (zSize reads = 0; !thrown.empty() || reads == 0; ++reads) {
    thrown = Thrown([&] {
      const auto source = std::make_shared<PiecedSource>(stream, 100, reads);
      ReadRecording(source);
      Plovia::ReplaySerializer reader;
      reader.LoadHeads(source);
      MessageOf(*reader.OpenSurface(0));
    });
    EXPECT_TRUE(thrown.empty() || thrown == "-997 Read: Failed to read it") << thrown;
  }
}

TEST_P(Recording, GivesBackScannersAndSourcesInOrder) {
  const std::vector<Plovia::ReplayScannerInfo> scanners = {
      MakeScanner(), {"f", "Scanner-1", "n", {{"", "", 65535, 1, 7}}}, {}};
  const Handle stream = MakeStream();
  Plovia::ReplaySerializer writer;
  EXPECT_NE(Thrown([&] { writer.WriteScannerInfo(scanners); }), "");  // nothing has begun
  writer.BeginReplay(stream.Get(), GetParam());
  writer.WriteScannerInfo(scanners);
  writer.EndReplay();
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(SourceOf(BytesOf(stream.Get())));
  EXPECT_EQ(reader.ReadScannerInfo(), scanners);
  EXPECT_EQ(reader.GetReplayInfo().IsClassic(), GetParam());
  EXPECT_TRUE(reader.ReadIndexInfo().empty());
  EXPECT_EQ(reader.SegmentCount(), 0U);
}

TEST_P(Recording, EndsAfterItsLastFrameAndTakesNoMessageWithoutASource) {
  const zBytes stream = WriteRecording(MakeScanner(), {MakeFrame(1)}, GetParam());
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(SourceOf(stream));
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
  Handle surface = MakeSurfaceWithIntensity(9);
  const std::string expected = Describe(surface.Get());
  {
    Plovia::ReplaySerializer reader;
    reader.LoadBuffer(
        SourceOf(WriteRecording(MakeScanner(), {{surface}, MakeFrame(1)}, GetParam())));
    if (!GetParam()) reader.LoadDataIndexFiles();
    surface = reader.ReadMessage(reader.ReadData(0).firstMessage);
    EXPECT_NE(Describe(reader.ReadMessage(1).Get()), expected);
  }
  EXPECT_EQ(Describe(surface.Get()), expected);
  const auto intensities = ItemsOf<z8u>(MxSurfaceMsg_Intensities(surface.Get(), 0));
  std::ranges::fill(zArray_EditableItems<z16s>(MxSurfaceMsg_PointsArray(surface.Get(), 0)),
                    z16s{-1});
  EXPECT_EQ(ItemsOf<z8u>(MxSurfaceMsg_Intensities(surface.Get(), 0)), intensities);
}

// Uniform surfaces without intensities are told, and opened, without being held.
TEST_P(Recording, TellsEveryMessageHoweverItIsRead) {
  const auto surface = [](z32u width, z32u length) {
    std::vector<z16s> heights(zSize{width} * length, static_cast<z16s>(100 * width));
    for (zSize i = 0; i < heights.size(); i += 7) heights[i] = i % 2 == 0 ? -32768 : 5;
    return MakeSurface(width, length, heights, {1, 2, 0.125}, {3, 4, width / 8.0});
  };
  const MxStamp stamp{1, 2, 3, 4, 5, {6, 7, 8}};
  const BoundingBox6 box{{1, 2, 3}, {4, 5, 6}};
  const Handle stamped = surface(3, 2), unresampled = surface(3, 3);
  MustBeOk(MxDataMsg_SetStamp(stamped.Get(), 0, &stamp));
  MustBeOk(MxSurfaceMsg_SetBoundingBox(stamped.Get(), &box));
  MustBeOk(MxSurfaceMsg_SetIsResampled(unresampled.Get(), false));
  const std::vector<Handle> messages = {surface(3, 2),
                                        stamped,
                                        surface(1, 1),
                                        MakeCloudOf(2, 1, {{1, 2, 3}, {4, 5, 6}}),
                                        surface(1, 3),
                                        surface(400, 400),
                                        MakeSurfaceWithIntensity(1),
                                        surface(2, 4),
                                        MakeCloudOf(1, 3, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}),
                                        MakeSurface(0, 2, {}),
                                        unresampled,
                                        MakeArrayOf({stamped})};
  std::vector<Frame> frames;
  for (const Handle& message : messages) frames.push_back({message});
  const zBytes stream = WriteRecording(MakeScanner(), frames, GetParam());
  const auto expect = [&](z64u number, const Handle& found) {
    const bool resampled = MxSurfaceMsg_IsResampled(messages[number].Get());
    static_cast<void>(MxSurfaceMsg_SetIsResampled(found.Get(), resampled));
    EXPECT_EQ(Describe(found.Get()), Describe(messages[number].Get())) << number;
  };
  std::string held, streamed, opened;
  std::vector<Plovia::ReplayProblem> problems;
  Plovia::ReplaySerializer reader;
  reader.LoadDamaged(SourceOf(stream), problems,
                     {[&](z64u number, zObject message) {
                        expect(number, Handle::Share(message));
                        held += std::to_string(number) + " ";
                      },
                      [&](z64u number, const Plovia::SurfaceStream& given) {
                        expect(number, MessageOf(given));
                        streamed += std::to_string(number) + " ";
                      }});
  EXPECT_THAT(problems, testing::IsEmpty());
  EXPECT_EQ(held + "| " + streamed, "3 6 8 9 11 | 0 1 2 4 5 7 10 ");
  for (z64u number = messages.size(); number-- > 0;) {
    const auto given = reader.OpenSurface(number);
    for (int times = 0; times < 2; ++times) {
      if (given) expect(number, MessageOf(*given));
      expect(number, reader.ReadMessage(number));
    }
    if (given) opened += std::to_string(number) + " ";
  }
  EXPECT_EQ(opened, "10 7 5 4 2 1 0 ");
}

TEST_P(Recording, TakesAsManyHeightsAsASurfaceHas) {
  for (const zSize count : {5U, 6U, 7U}) {
    const Handle stream = MakeStream();
    Plovia::ReplaySerializer writer;
    writer.BeginReplay(stream.Get(), GetParam());
    writer.WriteScannerInfo({MakeScanner()});
    writer.WriteIndexInfo(0);
    const Plovia::SurfaceStream surface{3, 2, {}, {}, {}, {}, [&](const auto& put) {
                                          put(std::vector<z16s>(count));
                                          return BoundingBox6{};
                                        }};
    EXPECT_EQ(Thrown([&] { writer.WriteData(surface); }).empty(), count == 6) << count;
  }
}

TEST(RecordingFile, ClosesASegmentOnceItHolds64MiB) {
  const Handle small = MakeSurface(0, 0, {});
  Handle large;
  MustBeOk(MxSurfaceMsg_ConstructSimple(large.Out(), 4096, 5120, DefaultAlloc()));  // 40 MiB
  const zBytes stream =
      WriteRecording(MakeScanner(), {{small}, {large}, {large}, {small}, {large}}, false);
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(SourceOf(stream, 1 << 20));
  std::string found;
  ForEachFrame(reader, [&](z64u segment, z32u index, const Frame& frame) {
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
