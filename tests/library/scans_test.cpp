// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "handles.h"
#include "support/temp_directory.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

template <class Number>
using Heights = trelvane_status (*)(const trelvane_scan*, Number*, std::size_t, trelvane_error*);

// In the way of the definition, one after the other.
template <class Number>
std::vector<Number> Expected(const trelvane_scan_info& info,
                             const std::vector<std::int16_t>& points) {
  const std::size_t step = ValuesInPoint(info.kind);
  std::vector<Number> heights;
  for (std::size_t i = 0; i < points.size(); i += step) {
    bool valid = true;
    for (std::size_t k = 0; k < step; ++k) valid = valid && points[i + k] != TRELVANE_INVALID;
    const volatile double product = points[i + step - 1] * info.scale[2];
    heights.push_back(valid ? static_cast<Number>(product + info.offset[2])
                            : std::numeric_limits<Number>::quiet_NaN());
  }
  return heights;
}

// Equal to the bit, and nothing written behind them.
template <class Number>
void ExpectHeights(const Scan& scan, const std::vector<Number>& expected, Heights<Number> heights) {
  std::vector<Number> filled(expected.size() + 1, 77);
  EXPECT_EQ(Failure(heights, scan.get(), filled.data(), expected.size()), "");
  EXPECT_EQ(filled.back(), 77);
  EXPECT_EQ(std::memcmp(filled.data(), expected.data(), expected.size() * sizeof(Number)), 0);
  EXPECT_THAT(Failure(heights, scan.get(), filled.data(), expected.size() - 1),
              StartsWith("1 0 There is no room"));
}

TEST(LibraryScan, GivesHeightsOfEveryKindAndSize) {
  for (const auto kind : {TRELVANE_SCAN_SURFACE, TRELVANE_SCAN_CLOUD, TRELVANE_SCAN_PROFILE,
                          TRELVANE_SCAN_POINT_PROFILE}) {
    for (std::uint32_t width = 1; width < 70; width += 1 + width / 9) {
      SCOPED_TRACE(testing::Message() << kind << " " << width);
      const bool row = kind >= TRELVANE_SCAN_PROFILE;
      trelvane_scan_info info = MakeInfo(kind, width, row ? 1 : 3);
      if (width == 4) info.scale[2] = 1e300;  // more than a float can be
      const std::vector<std::int16_t> points = MakePoints(info);
      const Scan scan = Create(info, points);
      ExpectHeights(scan, Expected<float>(info, points), trelvane_scan_heights_f32);
      ExpectHeights(scan, Expected<double>(info, points), trelvane_scan_heights_f64);
    }
  }
}

// The cells of a CSV file are these heights with six digits.
TEST(LibraryScan, GivesTheHeightsOfTheCsvFile) {
  const TempDirectory directory;
  ASSERT_EQ(Convert(EXAMPLES_DIR "/recording.ovrec", "a.csv"),
            "3 a-Frame-0000_Left.csv\n3 a-Frame-0000_Right.csv\n");
  const File file = Open(EXAMPLES_DIR "/recording.ovrec");
  const Scan scan = Read(file, 0, 0);
  const trelvane_scan_info info = InfoOf(scan);
  std::vector<double> heights(std::size_t{info.width} * info.length);
  MustSucceed(trelvane_scan_heights_f64, scan.get(), heights.data(), heights.size());
  std::string expected;
  for (std::size_t row = 0; row < info.length; ++row) {
    expected += "\r\n";
    char cell[32];
    const double y = static_cast<double>(row) * info.scale[1] + info.offset[1];
    std::snprintf(cell, sizeof cell, "%.6g", y);
    expected += cell;
    for (std::size_t column = 0; column < info.width; ++column) {
      const double height = heights[row * info.width + column];
      std::snprintf(cell, sizeof cell, ",%.6g", height);
      expected += std::isnan(height) ? "," : cell;
    }
  }
  EXPECT_THAT(ReadFile("a-Frame-0000_Left.csv"), HasSubstr(expected));
}

TEST(LibraryScan, KeepsWhatItIsMadeOf) {
  trelvane_scan_info info = MakeInfo(TRELVANE_SCAN_CLOUD, 3, 2);
  std::vector<std::int16_t> points = MakePoints(info);
  const std::vector<std::int16_t> before = points;
  const std::vector<std::uint8_t> intensities{1, 2, 3, 4, 5, 6};
  info.stamp = {1, 2, -3, -4, 5, {6, 7, 8}};
  info.has_stamp = 1;
  info.box_size[1] = 9;
  info.has_box = 1;
  const Scan scan = Create(info, points, intensities);
  points.assign(points.size(), 0);  // which are the caller's again
  EXPECT_EQ(PointsOf(scan), before);
  EXPECT_EQ(IntensitiesOf(scan), intensities);
  const trelvane_scan_info told = InfoOf(scan);
  EXPECT_EQ(std::memcmp(&told, &info, sizeof info), 0);
}

TEST(LibraryScan, FindsItsBox) {
  const auto find = [](std::vector<std::int16_t> points) {
    const Scan scan = Create(MakeInfo(TRELVANE_SCAN_SURFACE, 2, 2), points);
    double center[3] = {};
    double extent[3] = {};
    std::string told = Failure(trelvane_scan_find_box, scan.get(), center, extent);
    char text[128];
    std::snprintf(text, sizeof text, "%.6g %.6g %.6g, %.6g %.6g %.6g", center[0], center[1],
                  center[2], extent[0], extent[1], extent[2]);
    return told.empty() ? std::string(text) : told;
  };
  EXPECT_EQ(find({-32768, 10, 19, -32768}), "-1.6 -3.2 -0.6, 0.2 0.4 3");
  EXPECT_EQ(find({-32768, -32768, -32768, -32768}), "3 0 No point of the scan is valid");
}

TEST(LibraryScan, IsSavedByTheExtension) {
  const TempDirectory directory;
  const struct {
    trelvane_scan_kind kind;
    const char* name;
    const char* failure;
  } rows[] = {
      {TRELVANE_SCAN_SURFACE, "a.sur", ""},
      {TRELVANE_SCAN_SURFACE, "a.srf", ""},
      {TRELVANE_SCAN_SURFACE, "a.pcd", ""},
      {TRELVANE_SCAN_CLOUD, "b.pcd", ""},
      {TRELVANE_SCAN_PROFILE, "a.pro", ""},
      {TRELVANE_SCAN_SURFACE, "x.pro", "1 0 This kind of scan cannot be saved as x.pro"},
      {TRELVANE_SCAN_CLOUD, "x.sur", "1 0 This kind"},
      {TRELVANE_SCAN_CLOUD, "x.srf", "1 0 This kind"},
      {TRELVANE_SCAN_PROFILE, "x.pcd", "1 0 This kind"},
      {TRELVANE_SCAN_POINT_PROFILE, "x.pro", "1 0 This kind"},
      {TRELVANE_SCAN_SURFACE, "x.rep", "1 0 This kind"},
      {TRELVANE_SCAN_SURFACE, "sur", "1 0 This kind"},
      {TRELVANE_SCAN_SURFACE, "no/a.sur", "6 -997 Failed to open no/a.sur"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::uint32_t length = row.kind >= TRELVANE_SCAN_PROFILE ? 1 : 2;
    const Scan scan = MakeScan(row.kind, 6, length);
    const std::string failure = Failure(trelvane_scan_save, scan.get(), row.name);
    EXPECT_THAT(failure, StartsWith(row.failure));
    EXPECT_EQ(std::filesystem::exists(row.name), failure.empty());
    if (!failure.empty() || row.name[2] == 'p') continue;
    const Scan read = Read(Open(row.name));
    EXPECT_EQ(PointsOf(read), PointsOf(scan));
    EXPECT_EQ(InfoOf(read).has_box, 0);
  }
}

}  // namespace
