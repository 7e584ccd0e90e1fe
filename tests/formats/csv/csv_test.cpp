// SPDX-License-Identifier: MIT
// Surfaces and profiles as CSV files.
#include <gmock/gmock.h>

#include <limits>
#include <regex>

#include "support/csv_export.h"

namespace {

using testing::EndsWith;

const Member kJob = MakeJob(MakeScannerConfig().dump());
const ReplaySourceInfo kTop{"Top", "Top", 14, 0, 0};
const ReplaySourceInfo kCloud{"Cloud", "Cl:oud", 15, 0, 0};
const ReplaySourceInfo kLine{"Line", "Line", 12, 0, 0};
const ReplaySourceInfo kTrace{"Trace", "Trace", 13, 0, 0};
const ReplaySourceInfo kMany{"Many", "Many", 12, 1, 0};

Handle Stamped(Handle message, MxStamp stamp = {1, 2, -3, -4, 0x1BEEF, {}}) {
  MustBeOk(MxDataMsg_SetStamp(message.Get(), 0, &stamp));
  return message;
}

template <class Item>
Handle MakeProfileOf(const std::vector<Item>& points, const std::vector<z8u>& intensities = {},
                     zPoint3d64f scale = {0.5, 1, 0.25}, zPoint3d64f offset = {1, 0, -1}) {
  Handle profile;
  const auto count = static_cast<z32u>(points.size());
  MustBeOk(MxProfileMsg_Construct(profile.Out(), zTypeOf<Item>, 1, count, DefaultAlloc()));
  MustBeOk(MxProfileMsg_CopyPointsArray(profile.Get(), MakeArray2(count, 1, points).Get()));
  MustBeOk(MxProfileMsg_SetScale(profile.Get(), &scale));
  MustBeOk(MxProfileMsg_SetOffset(profile.Get(), &offset));
  if (!intensities.empty()) {
    MustBeOk(MxProfileMsg_AllocateIntensity(profile.Get(), zType::z8u));
    MustBeOk(
        MxProfileMsg_CopyIntensityArray(profile.Get(), MakeArray2(count, 1, intensities).Get()));
  }
  return Stamped(profile);
}

// With the line ends of CSV files.
std::string Lines(const std::string& text) {
  return std::regex_replace(text, std::regex("\n"), "\r\n");
}
std::string Expected(const std::string& name) { return Lines(ReadFile(TEST_DATA_DIR "/" + name)); }

// Each source is shown as what it is, whatever the last one is.
TEST(SurfaceCsv, IsWrittenToTheByte) {
  const TempDirectory directory;
  const Handle surface =
      Stamped(MakeSurface(3, 2, {-32768, 32767, -3, 0, 1, -32768}, {0.5, 2, 0.1}, {-1, 1, 0.25}),
              {~z64u{0}, ~z64u{0}, -3, -4, 0x1BEEF, {}});
  const Handle cloud = Stamped(MakeCloudOf(
      2, 3, {{1, 2, 3}, {-32768, 0, 0}, {0, -32768, 0}, {0, 0, -32768}, {5, 6, 7}, {-1, 0, 0}},
      {0.5, 1, 0.001}, {0, -1, 100000}));
  ASSERT_EQ(ExportCsv(kJob, {kTop, kCloud}, {{surface, cloud}}),
            "out-Frame-0000_Top.csv out-Frame-0000_Cloud.csv ");
  EXPECT_EQ(ReadFile("out-Frame-0000_Top.csv"), Expected("surface.csv"));
  EXPECT_EQ(ReadFile("out-Frame-0000_Cloud.csv"), Expected("cloud.csv"));
}

TEST(SurfaceCsv, WritesOddSizes) {
  const TempDirectory directory;
  const auto expect = [](const Handle& surface, const char* end) {
    EXPECT_EQ(ExportCsv(kJob, {kTop}, {{surface}}), "out.csv ");
    EXPECT_THAT(ReadFile("out.csv"), EndsWith(Lines(end)));
  };
  expect(MakeSurface(0, 2, {}), ",2,0,0,0,0\nY\\X,0,1,End\n");  // a line without columns has no end
  expect(MakeSurface(2, 0, {}), ",0,2,0,0,0\nY\\X,0,1\nEnd\n");
  // A scale that makes 0 x infinity: no sign is shown.
  constexpr z64f kInfinity = std::numeric_limits<z64f>::infinity();
  expect(MakeSurface(2, 1, {1, 2}, {kInfinity, 1, 1}), "Y\\X,nan,inf\n0,1,2\nEnd\n");
  expect(MakeSurface(65536, 0, {}), ",65535\nEnd\n");
  for (const Handle& surface : {MakeSurface(65537, 0, {}), MakeSurface(0, ~z32u{0}, {})}) {
    EXPECT_EQ(ExportCsv(kJob, {kTop}, {{surface}}),
              "-997 SurfaceFileConverter::writeMsgToCsv: The surface has too many rows or columns "
              "without points");
  }
}

// Every raw value: texts of all lengths, and nothing but the longest ones there are.
TEST(SurfaceCsv, WritesEachRawValueAsItsOwnText) {
  for (const double scale : {0.0123, -1.23456e-300, 3.7e304, 4.1e-9, 1.0, 0.5}) {
    const TempDirectory directory;
    std::vector<z16s> heights;
    std::string expected;
    for (int i = 0; i < 2 * 65536; ++i) {
      const auto raw = static_cast<z16s>(i * 7);
      heights.push_back(raw);
      if (i % 512 == 0) expected += Orv::Format("%.6g,", i / 512 * scale + 0.0);
      if (raw != -32768) expected += Orv::Format("%.6g", raw * scale + 0.0);
      expected += i % 512 == 511 ? "\r\n" : ",";
    }
    const Handle surface = MakeSurface(512, 256, heights, {scale, scale, scale});
    ASSERT_EQ(ExportCsv(kJob, {kTop}, {{surface}}), "out.csv ");
    EXPECT_TRUE(ReadFile("out.csv").ends_with("\n" + expected + "End\r\n")) << scale;
  }
}

TEST(ProfileCsv, IsWrittenToTheByte) {
  const TempDirectory directory;
  const Handle first = MakeProfileOf<z16s>({4, -32768, 0}, {7, 255, 0});
  const Handle other = MakeProfileOf<z16s>({8}, {9}, {9, 9, 9}, {9, 9, 9});
  const Handle longer =
      Stamped(MakeProfileOf<z16s>({1, 2, 3, 4}), {~z64u{0}, ~z64u{0}, -1, -1, ~z64u{0}, {}});
  ASSERT_EQ(ExportCsv(kJob, {kLine}, {{first}, {other}, {longer}}), "out.csv ");
  EXPECT_EQ(ReadFile("out.csv"), Expected("profile.csv"));
  const Handle trace = MakeProfileOf<zPoint16s>({{1, 2}, {-32768, 0}, {3, -32768}, {-2, 4}});
  const Handle shorter = MakeProfileOf<zPoint16s>({{2, 0}}, {200});
  const Handle surface = MakeSurface(1, 1, {1});
  const Handle many = MakeArrayOf({MakeProfileOf<z16s>({8}), first});
  // A file for each source of profiles; one without points has no line with an end.
  ASSERT_EQ(ExportCsv(kJob, {kLine, kTop, kMany, kTrace},
                      {{MakeProfileOf<z16s>({}), surface, many, trace},
                       {MakeProfileOf<z16s>({}), surface, many, shorter}}),
            "out_Line.csv out_Many.csv out_Trace.csv ");
  EXPECT_THAT(ReadFile("out_Line.csv"), EndsWith(Lines(",Axis,1,0,2,-3,-4,48879,10,0,Z,"
                                                       "1,0,2,-3,-4,48879,10,0,Z,End\n\n\n")));
  EXPECT_THAT(ReadFile("out_Many.csv"), EndsWith(Lines("Z,1\nEnd\n\n\n")));
  EXPECT_EQ(ReadFile("out_Trace.csv"), Expected("trace.csv"));
}

TEST(CsvExport, FailsForMessagesThatAreMissingOrOfAnotherKind) {
  const std::string profiles = " SurfaceFileConverter::writeProfileMsgsToCsv: ";
  const std::string wrongType = "-997" + profiles + "The message's type is not right";
  const Handle surface = MakeSurface(1, 1, {1});
  const Handle line = MakeProfileOf<z16s>({4});
  // Half a megabyte that asks for 600 million empty cells.
  std::vector<Frame> bomb(2401, {MakeProfileOf<z16s>({})});
  bomb[0] = {MakeProfileOf(std::vector<z16s>(1 << 18))};
  const struct {
    ReplaySourceInfo source;
    std::vector<Frame> frames;
    std::string error;
  } rows[] = {
      {kTop, {{line}}, "-996 SurfaceFileConverter::writeMsgToCsv: Unimplemented conversion"},
      {kLine, {{surface}}, wrongType},
      {kLine, {{line}, {MakeProfileOf<zPoint16s>({{1, 2}})}}, wrongType},
      {kLine, {{line}, {}}, "-997" + profiles + "The input msg is empty"},
      {kMany, {{MakeArrayOf({line})}, {line}}, "0" + profiles + "The arrayed message is empty"},
      {kLine, bomb,
       "-997" + profiles + "The first profile has too many points more than the others"},
  };
  for (const auto& row : rows) {
    const TempDirectory directory;
    EXPECT_EQ(ExportCsv(kJob, {row.source}, row.frames, true), row.error);
    EXPECT_EQ(directory.Files(), std::set<std::string>{"in.ovrec"}) << row.error;
  }
  const TempDirectory directory;
  std::filesystem::create_directory("out.csv");
  EXPECT_EQ(ExportCsv(kJob, {kTop}, {{surface}}),
            "0 SurfaceFileConverter::writeMsgToCsv: Failed to create the file - out.csv");
  EXPECT_EQ(ExportCsv(kJob, {kLine}, {{line}}),
            "0" + profiles + "Failed to create the file - out.csv");
}

}  // namespace
