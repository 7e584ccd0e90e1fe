// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "getfilestream/getfilestream.h"
#include "support/scans.h"
#include "support/sur_file.h"

namespace {

Handle Generate(const zBytes& bytes, FileType fileType = SUR) {
  Handle message;
  GenerateSurfaceMsgFromBuffer(message, bytes, fileType, &zAllocator::Default());
  return message;
}

Handle GenerateProfile(const zBytes& bytes, FileType fileType = PRO) {
  Handle message;
  GenerateProfileMsgFromBuffer(message, bytes, fileType, &zAllocator::Default());
  return message;
}

std::string GenerateError(const zBytes& bytes, FileType fileType = SUR) {
  return Thrown([&] { Generate(bytes, fileType); });
}

TEST(GenerateSurfaceMsg, BuildsACompleteMessage) {
  const Handle message = Generate(SurFile{}.Bytes());
  const MxMsg surface = message.Get();
  EXPECT_EQ(MxSurfaceMsg_Width(surface), 3U);
  EXPECT_EQ(MxSurfaceMsg_Length(surface), 2U);
  EXPECT_EQ(HeightsOf(surface), (std::vector<z16s>{10, 11, 12, 20, 21, 22}));
  EXPECT_EQ(MxSurfaceMsg_Scale(surface)->z, 0.125);
  EXPECT_EQ(MxSurfaceMsg_Offset(surface)->z, 3);
  EXPECT_TRUE(MxSurfaceMsg_IsResampled(surface));
  EXPECT_FALSE(MxSurfaceMsg_HasIntensity(surface));
  EXPECT_EQ(MxDataMsg_Stamp(surface)->time, 0U);
  EXPECT_EQ(MxDataMsg_Stamp(surface)->encoder, 0);
  const BoundingBox6& box = *MxSurfaceMsg_BoundingBox(surface);
  EXPECT_EQ(box.size.x, 1.5);
  EXPECT_EQ(box.center.x, 1.75);
  EXPECT_EQ(box.size.z, 13 * 0.125);
  EXPECT_EQ(box.center.z, 10 * 0.125 + 3 + 13 * 0.125 / 2);
}

TEST(GenerateSurfaceMsg, ReportsALoaderThatFails) {
  const std::string text = " GenerateSurfaceMsgFromBuffer: Failed to load sur file buffer";
  zBytes bytes = SurFile{}.Bytes();
  EXPECT_EQ(GenerateError({}), "-999" + text);
  bytes.pop_back();
  EXPECT_EQ(GenerateError(bytes), std::to_string(zERROR_STREAM) + text);
  bytes[0] = 'd';
  EXPECT_EQ(GenerateError(bytes), "0" + text);
}

TEST(GenerateSurfaceMsg, RefusesASurfaceOfNoPoints) {
  const std::string text = "-997 GetSurfaceBoundingBox: The input surface is empty";
  SurFile file;
  file.flag = 1;
  file.zMin = 100;  // above every sample
  EXPECT_EQ(GenerateError(file.Bytes()), text);
  file.width = 0;
  EXPECT_EQ(GenerateError(file.Bytes()), text);
}

TEST(GenerateSurfaceMsg, RefusesKindsThatAreNoUniformSurface) {
  for (const FileType fileType : {PRO, PCD, CSV, REC, REP, OVREC}) {
    EXPECT_EQ(GenerateError(SurFile{}.Bytes(), fileType),
              "-996 GenerateSurfaceMsgFromBuffer: Unimplemented file extension");
  }
}

TEST(GenerateProfileMsg, BuildsACompleteMessage) {
  const Handle message = GenerateProfile(SurRow({10, 11, 30}).Bytes());
  const MxMsg profile = message.Get();
  EXPECT_EQ(MxProfileMsg_PointCount(profile), 3U);
  EXPECT_EQ(ItemsOf<z16s>(MxProfileMsg_PointsArray(profile, 0)), (std::vector<z16s>{10, 11, 30}));
  EXPECT_EQ(MxProfileMsg_Scale(profile)->x, 0.5);
  EXPECT_EQ(MxProfileMsg_Offset(profile)->z, 3);
  EXPECT_EQ(MxDataMsg_Stamp(profile)->time, 0U);
  const BoundingBox6& box = *MxProfileMsg_BoundingBox(profile);
  EXPECT_EQ(box.center.x, 1);
  EXPECT_EQ(box.size.x, 1.5);
  EXPECT_EQ(box.size.z, 21 * 0.125);
}

TEST(GenerateProfileMsg, RefusesWhatIsNoProfile) {
  const std::string generator = " GenerateProfileMsgFromBuffer: ";
  EXPECT_EQ(Thrown([] { GenerateProfile(SurRow({1}).Bytes(), SUR); }),
            "-996" + generator + "Unimplemented file extension");
  EXPECT_EQ(Thrown([] { GenerateProfile({}); }),
            "-999" + generator + "Failed to load pro file buffer");
  EXPECT_EQ(Thrown([] { GenerateProfile(SurRow({}).Bytes()); }),
            "-997 GetProfileBoundingBox: The input profile is empty");
}

TEST(GenerateSurfaceMsg, ReportsACloudThatFails) {
  const auto error = [](const zBytes& bytes) {
    return Thrown([&] {
      Handle message;
      GenerateSurfaceMsgFromBuffer(message, bytes, 0, 0, false, nullptr, nullptr,
                                   &zAllocator::Default());
    });
  };
  const std::string text = " GenerateSurfaceMsgFromBuffer: Failed to load pcd file buffer";
  EXPECT_EQ(error({}), "0" + text);
  EXPECT_EQ(error({'#', '\n'}), "-984" + text);
}

TEST(WriteMsg, WritesASurface) {
  const Handle message = Generate(SurFile{}.Bytes());
  for (const FileType fileType : {SUR, SRF}) {
    const Handle stream = MakeStream();
    GetMsgDataFileStream(message.Get(), fileType, stream.Get(), &zAllocator::Default());
    const Handle again = Generate(BytesOf(stream.Get()), fileType);
    EXPECT_EQ(HeightsOf(again.Get()), HeightsOf(message.Get()));
  }
}

TEST(WriteMsg, ReportsWhatCannotBeWritten) {
  const auto error = [](const Handle& message, FileType fileType) {
    return Thrown([&] {
      const Handle stream = MakeStream();
      GetMsgDataFileStream(message.Get(), fileType, stream.Get(), &zAllocator::Default());
    });
  };
  EXPECT_EQ(error(MakeSurface(1, 1, {32767}), SUR),
            "0 GetMsgDataFileStream: Failed to get sur file stream");
  for (const auto& [fileType, name] :
       {std::pair{SRF, "srf"}, {SUR, "sur"}, {PRO, "pro"}, {PCD, "pcd"}}) {
    EXPECT_EQ(error(Handle(), fileType),
              std::string("0 GetMsgDataFileStream: Failed to get ") + name + " file stream");
  }
  for (const FileType fileType : {CSV, REC, REP, OVREC}) {
    EXPECT_EQ(error(MakeSurface(1, 1, {0}), fileType),
              "-996 GetMsgDataFileStream: Unimplemented file type");
  }
}

}  // namespace
