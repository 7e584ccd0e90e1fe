// SPDX-License-Identifier: MIT
// Scan files from the field: imported, put into a recording, read back and written again. The
// expected values come from another decoder.
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

#include "support/field_data.h"
#include "support/recordings.h"
#include "support/sha256.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

struct FieldFile {
  const char* name;
  const char* summary;      // of the scan in the recording
  const char* points;       // SHA-256 of the raw points,
  const char* intensities;  // of the intensities, "" for none
  const char* written;      // and of the file that the recording gives as a .srf or .pcd
};

std::ostream& operator<<(std::ostream& text, const zPoint3d64f& point) {
  return text << '(' << point.x << ", " << point.y << ", " << point.z << ')';
}

std::span<const z8u> BytesOfItems(zObject array) {
  return {static_cast<const z8u*>(zArray_Data(array)),
          zArray_Count(array) * zType_Size(zArray_ItemType(array))};
}

struct Scan {
  explicit Scan(const Handle& message) {
    const MxMsg scan = message.Get();
    if (MxMsg_Kind(scan) == MxKind::profile) {
      size = std::to_string(MxProfileMsg_PointCount(scan));
      points = MxProfileMsg_PointsArray(scan, 0);
      offset = *MxProfileMsg_Offset(scan);
    } else {
      size = std::to_string(MxSurfaceMsg_Width(scan)) + " x " +
             std::to_string(MxSurfaceMsg_Length(scan));
      points = MxSurfaceMsg_PointsArray(scan, 0);
      intensities = MxSurfaceMsg_Intensities(scan, 0);
      offset = *MxSurfaceMsg_Offset(scan);
    }
    scale = *MxDataMsg_Scale(scan);
  }

  std::string Summary() const {
    const auto* raws = static_cast<const z16s*>(zArray_Data(points));
    const zSize axes = zType_Size(zArray_ItemType(points)) / sizeof(z16s);
    zSize invalid = 0;
    for (zSize i = 0; i < zArray_Count(points); ++i) {
      if (raws[i * axes] == kInvalidRaw) ++invalid;
    }
    std::ostringstream text;
    text << std::setprecision(9);  // enough to tell any 32-bit float
    text << size << "; scale " << scale << ", offset " << offset << "; " << invalid
         << " invalid; first raw";
    for (zSize i = 0; i < 3; ++i) text << ' ' << raws[i];
    return text.str();
  }

  std::string size;
  zObject points = nullptr, intensities = nullptr;
  zPoint3d64f scale{}, offset{};
};

// The first scan of a recording.
Handle FirstScan(const std::string& file) {
  const zBytes stream = ToBytes(ReadFile(file));
  Plovia::ReplaySerializer reader;
  reader.LoadBuffer(stream);
  reader.LoadDataIndexFiles();
  return reader.ReadData(0).at(0);
}

void Convert(const std::string& input, const std::string& output) {
  SurfaceFileConverter converter;
  converter.importFile(input);
  converter.exportFile(output);
}

std::string Sha256OfFile(const std::string& file) { return Sha256(ToBytes(ReadFile(file))); }

class FieldFiles : public testing::TestWithParam<FieldFile> {};

TEST_P(FieldFiles, GiveTheValuesOfAnotherDecoder) {
  const FieldFile& file = GetParam();
  const auto bytes = ReadFieldFile(file.name);
  if (!bytes) GTEST_SKIP() << "no field data";
  const TempDirectory directory;
  const std::string extension = std::filesystem::path(file.name).extension().string();
  WriteFile("in" + extension, *bytes);
  testing::internal::CaptureStdout();  // size warnings
  Convert("in" + extension, "a.rep");
  testing::internal::GetCapturedStdout();
  const Handle message = FirstScan("a.rep");
  const Scan scan(message);
  EXPECT_EQ(scan.Summary(), file.summary);
  EXPECT_EQ(Sha256(BytesOfItems(scan.points)), file.points);
  EXPECT_EQ(scan.intensities == nullptr ? "" : Sha256(BytesOfItems(scan.intensities)),
            file.intensities);
  if (extension != ".pro") {
    const std::string written = extension == ".pcd" ? "b.pcd" : "b.srf";
    Convert("a.rep", written);
    EXPECT_EQ(Sha256OfFile(written), file.written);
    if (extension == ".sur") {
      Convert("b.srf", "c.rep");
      EXPECT_EQ(Sha256OfFile("c.rep"), Sha256OfFile("a.rep"));
    }
    return;
  }
  // A range that fills 16 bits leaves the writer no room for invalid points.
  const bool folded = std::string_view(file.name).find("32bit") != std::string_view::npos;
  EXPECT_EQ(Thrown([] { Convert("a.rep", "b.pro"); }),
            folded ? "0 GetMsgDataFileStream: Failed to get pro file stream" : "");
  if (folded) return;
  Convert("b.pro", "c.rep");
  EXPECT_EQ(Sha256OfFile("c.rep"), Sha256OfFile("a.rep"));
}

const FieldFile kFieldFiles[] = {
    {"accepted/nm_steps_special_points.sur",
     "512 x 512; scale (295546, 295546, 1.06701307e-07), offset (0, 0, 8.18448607e-05); 233009 "
     "invalid; first raw -32768 -32768 -32768",
     "1b66f6803b98d154aa242b625b31ce95b1c0719214117f93657924968d388dd7", "",
     "2e67d6179530f2b7988a65d60ff692da89708c8a7d44e968f4372431caf46cf1"},
    {"accepted/dvd_comment21.sur",
     "512 x 512; scale (1.95709163e-05, 1.95802095e-05, 9.56014201e-09), offset (0, 0, "
     "1.24466806e-06); 0 invalid; first raw -18602 -18564 -18255",
     "5fc3c4df2f5b2ccf594d92f0011759107eab27a6282372701680f3c0e1b53923", "",
     "de17521632d89f5352ecdd0463753b270be9c3a3a7953437996257644b7979c4"},
    {"accepted/gwyddion_export.sur",
     "257 x 257; scale (9756097, 9756097, 13.3978367), offset (0, 0, -163976.344); 0 invalid; "
     "first raw 9345 13874 11725",
     "c86d6838433559fc6cdfe156497eaa2a5e421f60b51f8f7876d9ad888d5c0303", "",
     "2df55e77727f916827e1eb9ff9294f1dec715dd635acdd94b2a82de26f37067d"},
    {"accepted/hyperspectral_16bit.sur",
     "10 x 12; scale (8.25219759e-05, 8.25219759e-05, 1), offset (0.00701436773, 0.00305331312, "
     "0); 0 invalid; first raw 301 314 293",
     "a6367e5596eb4faa7b2cffadec0f1282428b194a4460eb3e47d17c59449d8ff2", "",
     "ad3c9ca8427ce3604dfec64459b30f43107121468653892df5aa840ccd092ed8"},
    {"made/rsciio_surface_int16.sur",
     "128 x 128; scale (8.25219759e-05, 8.25219759e-05, 1), offset (0, 0, -13444); 0 invalid; "
     "first raw 4589 7825 7921",
     "24f413d3a8dff424a2db4f81b334b5d66c2395e6b87a385326445546896c515e", "",
     "d343a51288f1abe4ec3355f85a6f8f55aa28ce82a8adcb6542aa54aad246fd61"},
    {"accepted/spectrum_32bit.pro",
     "512; scale (1.08400025e-06, 1, 0.0748320222), offset (0.000172842818, 0, 2295.73584); 0 "
     "invalid; first raw -30854 -30857 -30838",
     "9d81c23e131057a8380063ba6fd8beadde07103069661dc209af88e55bd652f1", "", ""},
    {"made/rsciio_profile_int16.pro",
     "512; scale (1.08400002e-06, 0, 1), offset (0.000172842818, 0, -151); 0 invalid; first raw "
     "-19 0 -18",
     "82603db7e566cad2636edada782cb29a5619de37912dfc6ccdd014b5d6cdf30f", "", ""},
    {"accepted/kinect_320x240_rgba.pcd",
     "320 x 240; scale (2.28883018e-05, 1.47153858e-05, 1.76397006e-05), offset (-0.107139051, "
     "-0.205059037, 1.22600007); 36362 invalid; first raw -32768 -32768 -32768",
     "6db86af2550633603bcedf5d112968fc2d19d9c90549cd9b267d277788bc50d6",
     "c960a47371955870e6b4165a0bf630c90d9d31f12e33528573302f26c2907f8c",
     "8e5188254985431154d0d4e1261dbc18211c0078964fe5c7765e2c4de67fbc59"},
    {"accepted/column_rgb_normals.pcd",
     "32 x 32; scale (2.09952236e-05, 4.20004465e-06, 9.91851431e-06), offset (-0.199150503, "
     "-0.513112426, 1.20700002); 24 invalid; first raw -31240 -28189 26214",
     "370ad0a134cac84c9b79e901764b8d3efb06d6b1c27e69c9598ea0adbef1ddf8",
     "3d187e8a906cd84b44187f0374d11ff53c9f61a530949d5b861c55c626d32025",
     "d99194fe68e098eda75480ad662f0b5c3c839009acb384627cae5f1100d35cdd"},
    {"accepted/keypoints_intensity.pcd",
     "37 x 37; scale (0.000322252102, 0.000223980427, 5.40075891e-05), offset (-0.428733826, "
     "-1.43083286, 0.408166647); 51 invalid; first raw 12653 25344 952",
     "d8b0769f1c07570f37de2cb2d3bd8a37d5bd0e87d9d471f4e80f507d9fc4607c",
     "18ec57be0d3e6002ed46e966602e54c1c67e8019f510238ea6a89c71890c1b6a",
     "6d284904934af41a467144b41410e10b8af116f6fe5587ecddd367fb7f02bfb0"},
    {"accepted/flat_curve.pcd",
     "11 x 11; scale (1.52592547e-05, 1.52592547e-05, 0), offset (0.5, 0.5, 0); 11 invalid; first "
     "raw -15606 -32767 0",
     "e6796b878e306dee9656e61825080c03f45c761939e47eeb70317115b17cfc0f", "",
     "290dbdb4547e76bdac656be35791cf769feedac18e3a261d4cf53ed4d52ab528"},
    {"accepted/lidar_ros_padded.pcd",
     "259 x 259; scale (0.00376542042, 0.00459744097, 0.000362034643), offset (23.1092644, "
     "49.3092804, 0.642705917); 300 invalid; first raw -6131 -1904 6310",
     "0741f46f587689626fa97ef30e056d79bf9fd5dbc8374ba861f26f8bc99d0e1d",
     "93ea39c6e8f7a135c6000a7d81a986127bb24804c2de1945b66ac15931d2d387",
     "580beaa8f123846747e02835c924e249737be657328c868324429b735341965d"},
};
INSTANTIATE_TEST_SUITE_P(All, FieldFiles, testing::ValuesIn(kFieldFiles), [](const auto& test) {
  return std::filesystem::path(test.param.name).stem().string();
});

TEST(FieldFiles, AreRefusedWithTheLoadersStatus) {
  const std::string generator = " GenerateSurfaceMsgFromBuffer: Failed to load ";
  const struct {
    const char* name;
    std::string error;
  } rows[] = {
      {"refused/compressed_surface.sur", "0" + generator + "sur file buffer"},
      {"refused/compressed_profile.pro",
       "0 GenerateProfileMsgFromBuffer: Failed to load pro file buffer"},
      {"refused/version_5.pcd", "-984" + generator + "pcd file buffer"},
      {"refused/binary_compressed.pcd", "-984" + generator + "pcd file buffer"},
      {"refused/ascii_crlf.pcd", "-996" + generator + "pcd file buffer"},
      {"refused/upper_case_doubles.pcd", "-984" + generator + "pcd file buffer"},
      {"refused/width_0.pcd", "-984" + generator + "pcd file buffer"},
      {"accepted/gwyddion_export.sur",  // as a profile
       "-997 LoadProFileBuffer: The pro file contains multiples profiles."},
  };
  const TempDirectory directory;
  for (const auto& row : rows) {
    const auto bytes = ReadFieldFile(row.name);
    if (!bytes) GTEST_SKIP() << "no field data";
    const std::string extension = std::filesystem::path(row.name).extension().string();
    const bool accepted = std::string_view(row.name).starts_with("accepted");
    const std::string input = accepted ? "in.pro" : "in" + extension;
    WriteFile(input, *bytes);
    testing::internal::CaptureStdout();
    EXPECT_EQ(Thrown([&] { Convert(input, "a.rep"); }), row.error) << row.name;
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(std::filesystem::exists("a.rep"));
  }
}

}  // namespace
