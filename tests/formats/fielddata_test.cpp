// SPDX-License-Identifier: MIT
// Scan files from the field, which are no part of the project: imported, put into a recording, read
// back and written again. The expected values come from another decoder.
#include <gtest/gtest.h>
#include <libdeflate.h>

#include "filesource.h"
#include "support/recordings.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

// Tells the error, if any.
std::string Convert(const std::string& input, const std::string& output) {
  SurfaceFileConverter converter;
  return Thrown([&] {
    converter.importFile(input);
    converter.exportFile(output);
  });
}

template <class Bytes>
std::string Crc32(const Bytes& bytes) {
  return Orv::Format("%08X", libdeflate_crc32(0, bytes.data(), bytes.size() * sizeof bytes[0]));
}

// Of the raw points in a recording; then scale and offset, to nine digits, enough to tell any
// 32-bit float.
std::string ProfileOf(const std::string& recording) {
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(OpenFile(recording));
  reader.LoadDataIndexFiles();
  const Handle profile = reader.ReadMessage(reader.ReadData(0).firstMessage);
  const zPoint3d64f& scale = *MxProfileMsg_Scale(profile.Get());
  const zPoint3d64f& offset = *MxProfileMsg_Offset(profile.Get());
  return Crc32(ItemsOf<z16s>(MxProfileMsg_PointsArray(profile.Get(), 0))) +
         Orv::Format(" %.9g %.9g %.9g, %.9g %.9g %.9g ", scale.x, scale.y, scale.z, offset.x,
                     offset.y, offset.z);
}

const std::string kNoSurface = " GenerateSurfaceMsgFromBuffer: Failed to load ";

const struct {
  std::string name;
  std::string outcome;  // of the .srf, or of the .pcd for a cloud, that the recording gives
} kFiles[] = {
    {"accepted/nm_steps_special_points.sur", "440B58F2"},
    {"accepted/dvd_comment21.sur", "0576FA36"},
    {"accepted/gwyddion_export.sur", "07B1CCB5"},
    {"accepted/hyperspectral_16bit.sur", "922EA2E5"},
    {"made/rsciio_surface_int16.sur", "85965BE4"},
    {"accepted/kinect_320x240_rgba.pcd", "79BC946C"},
    {"accepted/column_rgb_normals.pcd", "127CDD14"},
    {"accepted/keypoints_intensity.pcd", "2EECE081"},
    {"accepted/flat_curve.pcd", "74D2DAA6"},
    {"accepted/lidar_ros_padded.pcd", "7A3FA2FD"},
    // A range that fills 16 bits leaves the writer no room for invalid points.
    {"accepted/spectrum_32bit.pro",
     "7CE4E7C6 1.08400025e-06 1 0.0748320222, 0.000172842818 0 2295.73584 "
     "0 GetMsgDataFileStream: Failed to get pro file stream"},
    {"made/rsciio_profile_int16.pro", "26B9E2F5 1.08400002e-06 0 1, 0.000172842818 0 -151 "},
    {"refused/compressed_surface.sur", "0" + kNoSurface + "sur file buffer"},
    {"refused/version_5.pcd", "-984" + kNoSurface + "pcd file buffer"},
    {"refused/binary_compressed.pcd", "-984" + kNoSurface + "pcd file buffer"},
    {"refused/ascii_crlf.pcd", "-996" + kNoSurface + "pcd file buffer"},
    {"refused/upper_case_doubles.pcd", "-984" + kNoSurface + "pcd file buffer"},
    {"refused/width_0.pcd", "-984" + kNoSurface + "pcd file buffer"},
};

std::string Outcome(const std::string& input, const std::string& kind) {
  std::string outcome = Convert(input, "a.rep");
  EXPECT_EQ(std::filesystem::exists("a.rep"), outcome.empty());
  if (!outcome.empty()) return outcome;
  const std::string written = kind == ".sur" ? "b.srf" : "b" + kind;
  if (kind == ".pro") outcome = ProfileOf("a.rep");
  const std::string error = Convert("a.rep", written);
  if (kind != ".pcd" && error.empty()) {
    EXPECT_EQ(Convert(written, "c.rep"), "");
    EXPECT_EQ(ReadFile("c.rep"), ReadFile("a.rep"));
  }
  return outcome + (kind == ".pro" ? error : Crc32(ReadFile(written)));
}

TEST(FieldData, GivesTheScansOfAnotherDecoderOrTheLoadersStatus) {
  if (!std::filesystem::is_directory(FIELD_DATA_DIR)) {
    GTEST_SKIP() << "NOT TESTED: there are no scan files from the field in " FIELD_DATA_DIR;
  }
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.name);
    const TempDirectory directory;
    const std::filesystem::path from = std::filesystem::path(FIELD_DATA_DIR) / file.name;
    EXPECT_EQ(Outcome(from.string(), from.extension().string()), file.outcome);
  }
}

}  // namespace
