// SPDX-License-Identifier: MIT
// Scan files from the field: imported, put into a recording, read back and written again. The
// expected values come from another decoder.
#include <gtest/gtest.h>
#include <libdeflate.h>

#include "support/field_data.h"
#include "support/recordings.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

// Tells the error, if any; what the conversion says of sizes is not shown.
std::string Convert(const std::string& input, const std::string& output) {
  testing::internal::CaptureStdout();
  const std::string error = Thrown([&] {
    SurfaceFileConverter converter;
    converter.importFile(input);
    converter.exportFile(output);
  });
  testing::internal::GetCapturedStdout();
  return error;
}

z32u Crc32(const void* bytes, zSize size) { return libdeflate_crc32(0, bytes, size); }

struct SurfaceFile {
  const char* name;
  z32u crc32;  // of the .srf, or of the .pcd for a cloud, that the recording gives
};

const SurfaceFile kSurfaceFiles[] = {
    {"accepted/nm_steps_special_points.sur", 0x440B58F2},
    {"accepted/dvd_comment21.sur", 0x0576FA36},
    {"accepted/gwyddion_export.sur", 0x07B1CCB5},
    {"accepted/hyperspectral_16bit.sur", 0x922EA2E5},
    {"made/rsciio_surface_int16.sur", 0x85965BE4},
    {"accepted/kinect_320x240_rgba.pcd", 0x79BC946C},
    {"accepted/column_rgb_normals.pcd", 0x127CDD14},
    {"accepted/keypoints_intensity.pcd", 0x2EECE081},
    {"accepted/flat_curve.pcd", 0x74D2DAA6},
    {"accepted/lidar_ros_padded.pcd", 0x7A3FA2FD},
};

TEST(FieldFiles, GiveTheSurfacesOfAnotherDecoder) {
  const TempDirectory directory;
  for (const SurfaceFile& file : kSurfaceFiles) {
    SCOPED_TRACE(file.name);
    const auto bytes = ReadFieldFile(file.name);
    if (!bytes) GTEST_SKIP() << "no field data";
    const std::string extension = std::filesystem::path(file.name).extension().string();
    const std::string written = extension == ".pcd" ? "b.pcd" : "b.srf";
    WriteFile("in" + extension, *bytes);
    EXPECT_EQ(Convert("in" + extension, "a.rep"), "");
    EXPECT_EQ(Convert("a.rep", written), "");
    const std::string text = ReadFile(written);
    EXPECT_EQ(Crc32(text.data(), text.size()), file.crc32);
    if (extension == ".pcd") continue;
    EXPECT_EQ(Convert("b.srf", "c.rep"), "");
    EXPECT_EQ(ReadFile("c.rep"), ReadFile("a.rep"));
  }
}

struct ProfileFile {
  const char* name;
  zPoint3d64f scale, offset;  // to nine digits, enough to tell any 32-bit float
  z32u crc32;                 // of the raw points
  const char* error;          // of writing it again
};

const ProfileFile kProfileFiles[] = {
    // A range that fills 16 bits leaves the writer no room for invalid points.
    {"accepted/spectrum_32bit.pro",
     {1.08400025e-06, 1, 0.0748320222},
     {0.000172842818, 0, 2295.73584},
     0x7CE4E7C6,
     "0 GetMsgDataFileStream: Failed to get pro file stream"},
    {"made/rsciio_profile_int16.pro",
     {1.08400002e-06, 0, 1},
     {0.000172842818, 0, -151},
     0x26B9E2F5,
     ""},
};

TEST(FieldFiles, GiveTheProfilesOfAnotherDecoder) {
  const TempDirectory directory;
  for (const ProfileFile& file : kProfileFiles) {
    SCOPED_TRACE(file.name);
    const auto bytes = ReadFieldFile(file.name);
    if (!bytes) GTEST_SKIP() << "no field data";
    WriteFile("in.pro", *bytes);
    EXPECT_EQ(Convert("in.pro", "a.rep"), "");
    const zBytes stream = ToBytes(ReadFile("a.rep"));
    Plovia::ReplaySerializer reader;
    reader.LoadBuffer(stream);
    reader.LoadDataIndexFiles();
    const Handle profile = reader.ReadData(0).at(0);
    const std::vector<z16s> points = ItemsOf<z16s>(MxProfileMsg_PointsArray(profile.Get(), 0));
    EXPECT_EQ(Crc32(points.data(), points.size() * sizeof points[0]), file.crc32);
    const auto text = [](const zPoint3d64f& p) {
      return Orv::Format("%.9g %.9g %.9g", p.x, p.y, p.z);
    };
    EXPECT_EQ(text(*MxProfileMsg_Scale(profile.Get())), text(file.scale));
    EXPECT_EQ(text(*MxProfileMsg_Offset(profile.Get())), text(file.offset));
    EXPECT_EQ(Convert("a.rep", "b.pro"), file.error);
    if (*file.error != '\0') continue;
    EXPECT_EQ(Convert("b.pro", "c.rep"), "");
    EXPECT_EQ(ReadFile("c.rep"), ReadFile("a.rep"));
  }
}

TEST(FieldFiles, AreRefusedWithTheLoadersStatus) {
  const std::string generator = " GenerateSurfaceMsgFromBuffer: Failed to load ";
  const struct {
    const char* name;
    const char* input;
    std::string error;
  } rows[] = {
      {"refused/compressed_surface.sur", "in.sur", "0" + generator + "sur file buffer"},
      {"refused/compressed_profile.pro", "in.pro",
       "0 GenerateProfileMsgFromBuffer: Failed to load pro file buffer"},
      {"refused/version_5.pcd", "in.pcd", "-984" + generator + "pcd file buffer"},
      {"refused/binary_compressed.pcd", "in.pcd", "-984" + generator + "pcd file buffer"},
      {"refused/ascii_crlf.pcd", "in.pcd", "-996" + generator + "pcd file buffer"},
      {"refused/upper_case_doubles.pcd", "in.pcd", "-984" + generator + "pcd file buffer"},
      {"refused/width_0.pcd", "in.pcd", "-984" + generator + "pcd file buffer"},
      {"accepted/gwyddion_export.sur", "in.pro",
       "-997 LoadProFileBuffer: The pro file contains multiples profiles."},
  };
  const TempDirectory directory;
  for (const auto& row : rows) {
    const auto bytes = ReadFieldFile(row.name);
    if (!bytes) GTEST_SKIP() << "no field data";
    WriteFile(row.input, *bytes);
    EXPECT_EQ(Convert(row.input, "a.rep"), row.error) << row.name;
    EXPECT_FALSE(std::filesystem::exists("a.rep"));
  }
}

}  // namespace
