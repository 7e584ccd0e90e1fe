// SPDX-License-Identifier: MIT
// Surfaces and profiles as CSV files.
#include <gmock/gmock.h>

#include <limits>

#include "support/csv_export.h"

namespace {

using testing::EndsWith;
using testing::StartsWith;

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

// The data section of out.csv, with "\n" for its line ends, which are all CR LF.
std::string DataSection(const std::string& name = "out.csv") {
  std::string text = ReadFile(name);
  text.erase(0, text.find("Any Data"));
  text.erase(0, text.find("End") + 7);
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; ++at) {
    EXPECT_TRUE(at > 0 && text[at - 1] == '\r');
    if (at > 0) text.erase(--at, 1);
  }
  return text;
}

// The sections that come before, as the scanner software writes them.
const std::string kSections =
    "Info\r\nCSV Version,Sensor Count,Trigger Mode,Trigger Rate,Trigger Delay Domain,Trigger "
    "Delay,Operation Mode,XResolution,YResolution,ZResolution,YSpeed,Layout\r\n"
    "2,1,1,250.5,4,2.25,3,0.5,2,0.1,100,0\r\nEnd\r\n\r\n"
    "DeviceInfo\r\nID,Model,Version,Exposure Mode,Exposure Count,Exposure 0,Exposure 1,Exposure "
    "2,Exposure 3,Exposure 4,Exposure Min,Exposure Max,FOV X,FOV Y,FOV Z,FOV Width,FOV Height,FOV "
    "Depth,Transform X,Transform Y,Transform Z,Transform X Angle,Transform Y Angle,Transform Z "
    "Angle\r\nS1,R4,6.1,2,2,10,20.5,-,-,-,-,-,-1,-2,-3,4,5,6,11,12,13,0.817645,-1.14794,-0.500655"
    "\r\nEnd\r\n\r\n"
    "RecordingFilter\r\nCondition Combination Type\r\nAny\r\n\r\n"
    "Type,Enabled,Result,Selection ID\r\nMeasurement,No,Pass,0\r\n\r\n"
    "Type,Enabled,Result\r\nAny Measurement,No,Pass\r\n\r\n"
    "Type,Enabled,Threshold Case,Range Count Threshold\r\nAny Data,No,At or Above, "
    "1\r\nEnd\r\n\r\n";

const std::string kPartHead =
    "Part\nFrame,Source,Time,Encoder,Z Encoder,Inputs,Row Count,Column Count,X Offset,Y Offset,Z "
    "Offset\n";

TEST(SurfaceCsv, WritesEveryByteOfAUniformSurface) {
  const TempDirectory directory;
  const Handle surface =
      Stamped(MakeSurface(3, 2, {-32768, 32767, -3, 0, 1, -32768}, {0.5, 2, 0.1}, {-1, 1, 0.25}),
              {~z64u{0}, ~z64u{0}, -3, -4, 0x1BEEF, {}});
  ASSERT_EQ(ExportCsv(kJob, {kTop}, {{surface}}), "out.csv ");
  EXPECT_THAT(ReadFile("out.csv"), StartsWith(kSections + "Part\r\n"));
  EXPECT_EQ(DataSection(), kPartHead +
                               "-1,0,18446744073709551615,-3,18446744073709551612,48879,2,3,-1,1,"
                               "0.25\nY\\X,-1,-0.5,0\n1,,3276.95,-0.05\n3,0.25,0.35,\nEnd\n");
}

TEST(SurfaceCsv, WritesEveryByteOfAPointCloud) {
  const TempDirectory directory;
  const Handle cloud = Stamped(MakeCloudOf(
      2, 3, {{1, 2, 3}, {-32768, 0, 0}, {0, -32768, 0}, {0, 0, -32768}, {5, 6, 7}, {-1, 0, 0}},
      {0.5, 1, 0.001}, {0, -1, 100000}));
  ASSERT_EQ(ExportCsv(kJob, {kCloud}, {{cloud}}), "out.csv ");
  EXPECT_EQ(
      DataSection(),
      "SurfacePointCloud\nFrame,Source,Time,Encoder,Z Encoder,Inputs,Row Count,Column Count,X "
      "Resolution,Y Resolution,Z Resolution,X Offset,Y Offset,Z Offset\n"
      "1,0,2,-3,18446744073709551612,48879,3,2,0.5,1,0.001,0,-1,100000\nX, Y, Z\n"
      "0.5,1,100000,,,\n,,,,,\n2.5,5,100000,-0.5,-1,100000\nEnd\n");
}

TEST(SurfaceCsv, WritesOddSizes) {
  const struct {
    z32u width, length;
    std::string lines;
  } rows[] = {
      {0, 2, "2,0,0,0,0\nY\\X,0,1,End\n"},  // a line without columns has no end
      {2, 0, "0,2,0,0,0\nY\\X,0,1\nEnd\n"},
      {1, 1, "1,1,0,0,0\nY\\X,0\n0,7\nEnd\n"},
  };
  for (const auto& row : rows) {
    const TempDirectory directory;
    const std::vector<z16s> heights(row.width * row.length, 7);
    const Handle surface = Stamped(MakeSurface(row.width, row.length, heights));
    EXPECT_EQ(ExportCsv(kJob, {kTop}, {{surface}}), "out.csv ");
    EXPECT_EQ(DataSection(), kPartHead + "1,0,2,-3,18446744073709551612,48879," + row.lines);
  }
  const TempDirectory directory;
  for (const Handle& surface : {MakeSurface(~z32u{0}, 0, {}), MakeSurface(0, ~z32u{0}, {})}) {
    EXPECT_EQ(ExportCsv(kJob, {kTop}, {{surface}}),
              "-997 SurfaceFileConverter::writeMsgToCsv: The surface has too many rows or columns "
              "without points");
  }
  // A scale that makes 0 x infinity: no sign is shown.
  ASSERT_EQ(ExportCsv(kJob, {kTop},
                      {{MakeSurface(2, 1, {1, 2}, {std::numeric_limits<z64f>::infinity(), 1, 1})}}),
            "out.csv ");
  EXPECT_THAT(DataSection(), testing::HasSubstr("Y\\X,nan,inf\n"));
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
      expected += i % 512 == 511 ? "\n" : ",";
    }
    const Handle surface = MakeSurface(512, 256, heights, {scale, scale, scale});
    ASSERT_EQ(ExportCsv(kJob, {kTop}, {{surface}}), "out.csv ");
    EXPECT_TRUE(DataSection().ends_with("\n" + expected + "End\n"));
  }
}

TEST(SurfaceCsv, ShowsEachSourceAsWhatItIs) {
  const TempDirectory directory;
  EXPECT_EQ(
      ExportCsv(kJob, {kTop, kCloud}, {{MakeSurface(1, 1, {1}), MakeCloudOf(1, 1, {{0, 0, 0}})}}),
      "out-Frame-0000_Top.csv out-Frame-0000_Cloud.csv ");
  EXPECT_THAT(DataSection("out-Frame-0000_Top.csv"), StartsWith("Part\n"));
  EXPECT_THAT(DataSection("out-Frame-0000_Cloud.csv"), StartsWith("SurfacePointCloud\n"));
}

const std::string kStampCells = "1,0,2,-3,-4,48879,10,0,";

TEST(ProfileCsv, WritesALineForEachFrameOfAUniformProfile) {
  const TempDirectory directory;
  const Handle first = MakeProfileOf<z16s>({4, -32768, 0}, {7, 255, 0});
  const Handle other = MakeProfileOf<z16s>({8}, {9}, {9, 9, 9}, {9, 9, 9});
  const Handle longer =
      Stamped(MakeProfileOf<z16s>({1, 2, 3, 4}), {~z64u{0}, ~z64u{0}, -1, -1, ~z64u{0}, {}});
  ASSERT_EQ(ExportCsv(kJob, {kLine}, {{first}, {other}, {longer}}), "out.csv ");
  EXPECT_THAT(ReadFile("out.csv"), testing::HasSubstr(",3,0.5,1,0.25,100,0\r\n"));
  EXPECT_EQ(DataSection(),
            "Profile\nFrame Count,Column Count,X Offset,Y Offset,Z Offset\n"
            "3,3,1,0,-1\n"
            "Frame,Source,Time,Encoder,Z Encoder,Inputs,Exposure,Y,Axis,1,1.5,2\n" +
                kStampCells + "Z,0,,-1\n" + kStampCells + "I,7,255,0\n" + kStampCells + "Z,1,,\n" +
                kStampCells + "I,9,,\n" +
                "18446744073709551615,0,18446744073709551615,-1,-1,65535,10,0,Z,-0.75,-0.5,-0.25\n"
                "End\n\n\n");
}

TEST(ProfileCsv, WritesTwoLinesForEachFrameOfAPointCloud) {
  const TempDirectory directory;
  const Handle first = MakeProfileOf<zPoint16s>({{1, 2}, {-32768, 0}, {3, -32768}, {-2, 4}});
  const Handle other = MakeProfileOf<zPoint16s>({{2, 0}}, {200});
  ASSERT_EQ(ExportCsv(kJob, {kTrace}, {{first}, {other}}), "out.csv ");
  EXPECT_EQ(DataSection(),
            "RawProfile\nFrame Count,Column Count,X Offset,Y Offset,Z Offset\n"
            "2,4,1,0,-1\n"
            "Frame,Source,Time,Encoder,Z Encoder,Inputs,Exposure,Y,Axis,0,1,2,3\n" +
                kStampCells + "X,1.5,,,0\n" + kStampCells + "Z,-0.5,,,0\n" + kStampCells +
                "X,2,,,\n" + kStampCells + "Z,-1,,,\n" + kStampCells + "I,200,,,\nEnd\n\n\n");
  // No points at all: no line has an end.
  ASSERT_EQ(ExportCsv(kJob, {kTrace}, {{MakeProfileOf<zPoint16s>({})}}), "out.csv ");
  EXPECT_THAT(DataSection(), EndsWith(",Axis," + kStampCells + "X," + kStampCells + "Z,End\n\n\n"));
}

TEST(ProfileCsv, WritesAFileForEachSource) {
  const TempDirectory directory;
  const Handle line = MakeProfileOf<z16s>({4});
  const Handle item = MakeProfileOf<z16s>({8});
  const Handle trace = MakeProfileOf<zPoint16s>({{1, 2}});
  const Handle surface = MakeSurface(1, 1, {1});
  EXPECT_EQ(ExportCsv(kJob, {kLine, kTop, kMany, kTrace},
                      {{line, surface, MakeArrayOf({item, line}), trace}}),
            "out_Line.csv out_Many.csv out_Trace.csv ");
  EXPECT_THAT(DataSection("out_Line.csv"), EndsWith("Z,0\nEnd\n\n\n"));
  EXPECT_THAT(DataSection("out_Many.csv"), EndsWith("Z,1\nEnd\n\n\n"));
  EXPECT_THAT(DataSection("out_Trace.csv"), StartsWith("RawProfile\n"));
}

TEST(CsvExport, FailsForMessagesThatAreMissingOrOfAnotherKind) {
  const std::string surfaces = " SurfaceFileConverter::writeMsgToCsv: ";
  const std::string profiles = " SurfaceFileConverter::writeProfileMsgsToCsv: ";
  const Handle surface = MakeSurface(1, 1, {1});
  const Handle line = MakeProfileOf<z16s>({4});
  const Handle trace = MakeProfileOf<zPoint16s>({{1, 2}});
  // Half a megabyte that asks for 600 million empty cells.
  std::vector<Plovia::ReplayFrame> bomb(2401, {MakeProfileOf<z16s>({})});
  bomb[0] = {MakeProfileOf(std::vector<z16s>(1 << 18))};
  const struct {
    std::vector<ReplaySourceInfo> sources;
    std::vector<Plovia::ReplayFrame> frames;
    std::string error;
  } rows[] = {
      {{kLine},
       bomb,
       "-997" + profiles + "The first profile has too many points more than the others"},
      {{kTop}, {{line}}, "-996" + surfaces + "Unimplemented conversion"},
      {{kTop}, {{MakeArrayOf({surface})}}, "-996" + surfaces + "Unimplemented conversion"},
      {{kLine}, {{surface}}, "-997" + profiles + "The message's type is not right"},
      {{kLine}, {{MakeArrayOf({line})}}, "-997" + profiles + "The message's type is not right"},
      {{kLine}, {{line}, {trace}}, "-997" + profiles + "The message's type is not right"},
      {{kLine}, {{line}, {}}, "-997" + profiles + "The input msg is empty"},
      {{kMany}, {{MakeArrayOf({})}}, "0" + profiles + "The arrayed message is empty"},
      {{kMany}, {{MakeArrayOf({line})}, {line}}, "0" + profiles + "The arrayed message is empty"},
      {{kMany}, {{MakeArrayOf({surface})}}, "-997" + profiles + "The message's type is not right"},
  };
  for (const auto& row : rows) {
    const TempDirectory directory;
    EXPECT_EQ(ExportCsv(kJob, row.sources, row.frames, false, true), row.error);
    EXPECT_EQ(directory.Files(), std::set<std::string>{"in.ovrec"});
  }
  // Only an archive has a job.
  const TempDirectory directory;
  WriteFile("in.rep", WriteRecording(MakeScanner(), {MakeFrame(1)}, false));
  SurfaceFileConverter converter;
  converter.importFile("in.rep");
  EXPECT_EQ(Thrown([&] { converter.exportFile("out.csv"); }),
            "-997 SurfaceFileConverter::parseCSVInfoFields: The import file type is not OVREC");
}

TEST(CsvExport, SaysWhichFileCannotBeWritten) {
  const TempDirectory directory;
  std::filesystem::create_directory("out.csv");
  EXPECT_EQ(ExportCsv(kJob, {kTop}, {{MakeSurface(1, 1, {1})}}),
            "0 SurfaceFileConverter::writeMsgToCsv: Failed to create the file - out.csv");
  EXPECT_EQ(ExportCsv(kJob, {kLine}, {{MakeProfileOf<z16s>({4})}}),
            "0 SurfaceFileConverter::writeProfileMsgsToCsv: Failed to create the file - out.csv");
  std::filesystem::remove("out.csv");
  if (std::filesystem::is_character_file("/dev/full")) {
    std::filesystem::create_symlink("/dev/full", "out.csv");
    EXPECT_EQ(ExportCsv(kJob, {kTop}, {{MakeSurface(1, 1, {1})}}),
              "-997 WriteBuffer: Failed to write out.csv");
  }
}

}  // namespace
