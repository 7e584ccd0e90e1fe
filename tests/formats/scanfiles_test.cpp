// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "support/recordings.h"
#include "support/scan_files.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"

namespace {

TEST(ScanFiles, BecomeCompleteMessages) {
  EXPECT_EQ(Describe(ReadScan(SurFile{}.Bytes(), SUR).Get()),
            "surface 3x2 resampled 1 offset (1 2 3) scale (0.5 0.25 0.125)"
            " box (1.75 2.25 5.0625)(1.5 0.5 1.625) type 2: 10 0 11 0 12 0 20 0 21 0 22 0"
            " type 0: stamp 0 0 0 0 0 0 0 0");
  EXPECT_EQ(Describe(ReadScan(SurRow({10, 11, 30}).Bytes(), PRO).Get()),
            "profile 3 offset (1 2 3) scale (0.5 0.25 0.125) box (1 0 5.5625)(1.5 0 2.625)"
            " type 2: 10 0 11 0 30 0 type 0: stamp 0 0 0 0 0 0 0 0");
  const std::string cloud =
      "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 1\nHEIGHT 1\n"
      "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 1\nDATA binary\n" +
      std::string(12, '\0');
  EXPECT_THAT(Describe(ReadScan(ToBytes(cloud), PCD).Get()),
              testing::StartsWith("surface 1x1 resampled 0 offset (0 0 0) scale (0 0 0) "));
}

TEST(ScanFiles, AreRefusedWithTheStatusOfTheirLoader) {
  const std::string surface = " GenerateSurfaceMsgFromBuffer: Failed to load ";
  SurFile high, thin;
  high.flag = 1;
  high.zMin = 100;  // above every sample
  thin.width = 0;
  const struct {
    zBytes bytes;
    FileType fileType;
    std::string error;
  } rows[] = {
      {{}, SUR, "-999" + surface + "sur file buffer"},
      {high.Bytes(), SUR, "-997 GetSurfaceBoundingBox: The input surface is empty"},
      {thin.Bytes(), SUR, "-997 GetSurfaceBoundingBox: The input surface is empty"},
      {{}, SRF, "-999" + surface + "srf file buffer"},
      {{'#', '\n'}, PCD, "-984" + surface + "pcd file buffer"},
      {{}, PRO, "-999 GenerateProfileMsgFromBuffer: Failed to load pro file buffer"},
      {SurRow({}).Bytes(), PRO, "-997 GetProfileBoundingBox: The input profile is empty"},
      {{}, REP, "-996 GenerateSurfaceMsgFromBuffer: Unimplemented file extension"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Thrown([&] { ReadScan(row.bytes, row.fileType); }), row.error);
  }
  Handle message;
  EXPECT_EQ(
      Thrown([&] { GenerateProfileMsgFromBuffer(message, *SourceOf({}), SUR, DefaultAlloc()); }),
      "-996 GenerateProfileMsgFromBuffer: Unimplemented file extension");
}

// At once, in blocks, and through a recording, as one.
TEST(ScanFiles, BecomeTheSameFilesByAnyWay) {
  std::vector<z16s> heights(400 * 400);
  std::vector<z8u> levels(heights.size());
  for (zSize i = 0; i < heights.size(); ++i) {
    heights[i] = static_cast<z16s>(i % 9001 - 4000 - i / 10);
    levels[i] = static_cast<z8u>(i % 251);
  }
  heights.back() = -32768;  // in the last block alone
  const Handle surface = MakeSurface(400, 400, heights, {0.1, 0.2, 0.3}, {1, 2, 3});
  const zBytes plain = WriteScan(surface, SRF);
  MustBeOk(MxSurfaceMsg_AllocateIntensity(surface.Get(), zType::z8u));
  MustBeOk(MxSurfaceMsg_CopyIntensityArray(surface.Get(), MakeArray2(400, 400, levels).Get()));
  SurFile folded;
  folded.bits = 32;
  folded.samples = {-70000, 11, 12, 20, 21, 70000};
  const std::pair<FileType, zBytes> inputs[] = {
      {SRF, plain}, {SRF, WriteScan(surface, SRF)}, {SUR, folded.Bytes()}};
  for (const auto& [from, bytes] : inputs) {
    const auto source = std::make_shared<zMemorySource>(bytes);
    const Handle message = ReadScan(bytes, from);
    for (const FileType to : {SRF, SUR, PCD}) {
      const Handle stream = MakeStream();
      GetSurfaceDataFileStream(GenerateSurfaceMsgFromBuffer(*source, from, DefaultAlloc()), to,
                               stream.Get());
      EXPECT_TRUE(BytesOf(stream.Get()) == WriteScan(message, to)) << from << " to " << to;
      if (!zFile_Exists("/dev/full")) continue;
      Handle full;  // after the header
      MustBeOk(zFile_Construct(full.Out(), "/dev/full", zFILE_WRITE, DefaultAlloc()));
      EXPECT_THAT(
          Thrown([&] { GetMsgDataFileStream(surface.Get(), to, full.Get(), DefaultAlloc()); }),
          testing::StartsWith("-4 GetMsgDataFileStream: Failed to get "));
    }
  }
  EXPECT_EQ(Thrown([&] { GetSurfaceDataFileStream({}, PRO, MakeStream().Get()); }),
            "-996 GetMsgDataFileStream: Unimplemented file type");
}

TEST(ScanFiles, AreWrittenFromMessagesOfTheirKindToAStreamThatTakesThem) {
  const Handle surface = MakeSurface(1, 1, {0});
  const Handle profile = MakeProfile(zType::z16s, 1);
  const TempDirectory directory;
  Handle readOnly;
  WriteFile("file", "x");
  MustBeOk(zFile_Construct(readOnly.Out(), "file", zFILE_READ, DefaultAlloc()));
  const struct {
    FileType fileType;
    std::string name;
    Handle suitable, other;
  } rows[] = {
      {SUR, "sur", surface, MakeCloud(1)},
      {SRF, "srf", surface, profile},
      {PCD, "pcd", surface, profile},
      {PRO, "pro", profile, MakeProfile(zType::zPoint16s, 1)},
  };
  for (const auto& row : rows) {
    const auto expect = [&](zStatus status, const Handle& message, const Handle& stream) {
      EXPECT_EQ(Thrown([&] {
                  GetMsgDataFileStream(message.Get(), row.fileType, stream.Get(), DefaultAlloc());
                }),
                std::to_string(status) + " GetMsgDataFileStream: Failed to get " + row.name +
                    " file stream");
    };
    expect(0, row.other, MakeStream());
    expect(0, {}, MakeStream());
    expect(zERROR_STREAM, row.suitable, readOnly);
    expect(0, row.suitable, {});
  }
  for (const FileType fileType : {CSV, REC, REP, OVREC}) {
    EXPECT_EQ(Thrown([&] { WriteScan(surface, fileType); }),
              "-996 GetMsgDataFileStream: Unimplemented file type")
        << fileType;
  }
}

}  // namespace
