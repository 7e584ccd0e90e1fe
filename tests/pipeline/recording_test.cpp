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
  const zBytes stream = WriteRecording(MakeScanner(), {MakeFrame(1)}, GetParam());
  std::string thrown;
  for (zSize reads = 0; !thrown.empty() || reads == 0; ++reads) {
    thrown = Thrown([&] { ReadRecording(std::make_shared<PiecedSource>(stream, 100, reads)); });
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

// A surface that is laid out as one before it is read without being held.
TEST_P(Recording, TellsEveryMessageHoweverItIsRead) {
  const auto surface = [](z32u width, z32u length, z16s first) {
    return MakeSurface(width, length, {first, -32768, 3, 4, 5, 6}, {1, 2, first / 8.0}, {3, 4, 5});
  };
  const MxStamp stamp{1, 2, 3, 4, 5, {6, 7, 8}};
  const BoundingBox6 box{{1, 2, 3}, {4, 5, 6}};
  const Handle stamped = surface(3, 2, 7);
  MustBeOk(MxDataMsg_SetStamp(stamped.Get(), 0, &stamp));
  MustBeOk(MxSurfaceMsg_SetBoundingBox(stamped.Get(), &box));
  const Handle cloud = MakeCloudOf(2, 1, {{1, 2, 3}, {4, 5, 6}});
  const Frame messages = {surface(3, 2, 1),
                          stamped,
                          surface(2, 3, 9),
                          surface(6, 1, 8),
                          stamped,
                          cloud,
                          cloud,
                          MakeSurfaceWithIntensity(1),
                          MakeSurfaceWithIntensity(2),
                          surface(3, 2, 2)};
  std::vector<Frame> frames;
  for (const Handle& message : messages) frames.push_back({message});
  const zBytes stream = WriteRecording(MakeScanner(), frames, GetParam());
  std::string held, streamed;
  std::vector<Plovia::ReplayProblem> problems;
  const auto take = [&](z64u number, zObject message) {
    EXPECT_EQ(Describe(message), Describe(messages[number].Get())) << number;
    held += std::to_string(number) + " ";
  };
  Plovia::ReplaySerializer reader;
  reader.LoadDamaged(
      SourceOf(stream), problems,
      {take, [&](z64u number, const Plovia::SurfaceStream& given) {
         Handle message = MakeSurface(given.width, given.length, {}, given.scale, given.offset);
         std::vector<z16s> heights;
         const BoundingBox6 found = given.heights([&](std::span<const z16s> some) {
           heights.insert(heights.end(), some.begin(), some.end());
         });
         std::ranges::copy(
             heights,
             zArray_EditableItems<z16s>(MxSurfaceMsg_PointsArray(message.Get(), 0)).begin());
         MustBeOk(MxDataMsg_SetStamp(message.Get(), 0, &given.stamp));
         MustBeOk(MxSurfaceMsg_SetBoundingBox(message.Get(), &found));
         EXPECT_EQ(Describe(message.Get()), Describe(messages[number].Get())) << number;
         streamed += std::to_string(number) + " ";
       }});
  EXPECT_THAT(problems, testing::IsEmpty());
  EXPECT_EQ(held + "| " + streamed, "0 2 3 5 6 7 8 | 1 4 9 ");
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
