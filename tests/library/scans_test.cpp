// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "handles.h"
#include "support/temp_directory.h"

namespace {

// Equal to the bit to what the definition says, one after the other, and nothing written behind.
template <class Number>
void ExpectHeights(const trelvane_scan_info& info,
                   trelvane_status (*heights)(const trelvane_scan*, Number*, std::size_t,
                                              trelvane_error*)) {
  const std::vector<std::int16_t> points = MakePoints(info);
  const Scan scan = Create(info, points);
  const std::size_t step = ValuesInPoint(info.kind);
  std::vector<Number> expected;
  for (std::size_t i = 0; i < points.size(); i += step) {
    const bool invalid = std::count(&points[i], &points[i] + step, TRELVANE_INVALID) > 0;
    const volatile double product = points[i + step - 1] * info.scale[2];
    expected.push_back(invalid ? std::numeric_limits<Number>::quiet_NaN()
                               : static_cast<Number>(product + info.offset[2]));
  }
  std::vector<Number> filled(expected.size() + 1, 77);
  EXPECT_EQ(Failure(heights, scan.get(), filled.data(), expected.size()), "");
  EXPECT_EQ(filled.back(), 77);
  EXPECT_EQ(std::memcmp(filled.data(), expected.data(), expected.size() * sizeof(Number)), 0);
  EXPECT_EQ(Failure(heights, scan.get(), filled.data(), expected.size() - 1),
            "1 0 There is no room for all heights");
}

TEST(LibraryScan, GivesHeightsOfEveryKindAndSize) {
  for (const auto kind : {TRELVANE_SCAN_SURFACE, TRELVANE_SCAN_CLOUD, TRELVANE_SCAN_PROFILE,
                          TRELVANE_SCAN_POINT_PROFILE}) {
    for (std::uint32_t width = 1; width < 70; width += 1 + width / 9) {
      SCOPED_TRACE(testing::Message() << kind << " " << width);
      trelvane_scan_info info = MakeInfo(kind, width, kind >= TRELVANE_SCAN_PROFILE ? 1 : 3);
      if (width == 4) info.scale[2] = 1e300;  // more than a float can be
      ExpectHeights(info, trelvane_scan_heights_f32);
      ExpectHeights(info, trelvane_scan_heights_f64);
    }
  }
}

TEST(LibraryScan, IsSavedByTheExtension) {
  const TempDirectory directory;
  const struct {
    trelvane_scan_kind kind;
    const char* name;
    const char* failure;
  } rows[] = {
      {TRELVANE_SCAN_SURFACE, "a.pcd", ""},
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
    const Scan scan = MakeScan(row.kind, 6, row.kind >= TRELVANE_SCAN_PROFILE ? 1 : 2);
    const std::string failure = Failure(trelvane_scan_save, scan.get(), row.name);
    EXPECT_THAT(failure, testing::StartsWith(row.failure)) << row.name;
    EXPECT_EQ(std::filesystem::exists(row.name), *row.failure == '\0') << failure;
  }
}

}  // namespace
