// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/recordings.h"
#include "support/scan_files.h"
#include "support/sur_file.h"

namespace {

using Heights = std::vector<z16s>;

TEST(WriteDigitalSurf, PutsEveryFieldInItsPlace) {
  zBytes expected(512 + 12, 0);
  const auto text = [&](std::ptrdiff_t at, std::string_view value) {
    std::ranges::copy(value, expected.begin() + at);
  };
  // Object count, version, object type, material code, acquisition type, special points, absolute
  // and bits per point; lowest and highest height, width, length and number of points.
  const std::pair<zSize, z16s> shorts[] = {{14, 1},  {16, 1}, {18, 2}, {80, 1},
                                           {82, 10}, {86, 1}, {88, 1}, {98, 16}};
  const std::pair<zSize, z32s> longs[] = {{100, -300}, {104, 12000}, {108, 3}, {112, 2}, {116, 6}};
  const std::pair<zSize, z32f> floats[] = {{120, 0.1F},  {124, 0.2F},  {128, 0.01F},
                                           {276, 1},     {280, 1},     {284, 1},
                                           {466, -1.5F}, {470, 1e-9F}, {474, 1e12F}};
  for (const auto& [at, value] : shorts) sur::Set(expected, at, value);
  for (const auto& [at, value] : longs) sur::Set(expected, at, value);
  for (const auto& [at, value] : floats) sur::Set(expected, at, value);
  text(0, "DIGITAL SURF");
  text(132, "X");
  text(148, "Y");
  text(164, "Z");
  for (std::ptrdiff_t unit = 180; unit <= 260; unit += 16) text(unit, "mm");
  const Heights samples{7, -300, -302, 12000, 8, 9};
  std::memcpy(&expected[512], samples.data(), 12);
  const zBytes bytes = WriteScan(
      MakeSurface(3, 2, {7, -300, -32768, 12000, 8, 9}, {0.1, 0.2, 0.01}, {-1.5, 1e-9, 1e12}), SUR);
  ASSERT_EQ(bytes.size(), expected.size());
  for (zSize i = 0; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], expected[i]) << "byte " << i;
}

// What is written; or nothing, where that is refused.
void ExpectWritten(const Heights& heights, z32s lowest, z32s highest, const Heights& written) {
  SCOPED_TRACE(testing::PrintToString(heights));
  const auto width = static_cast<z32u>(heights.size());
  const Handle array = MakeArray2<z16s>(1, width, heights);
  const Handle surface = MakeSurface(width, 1, Heights(width));
  MustBeOk(MxSurfaceMsg_CopyPointsArray(surface.Get(), array.Get()));
  zBytes bytes;
  const std::string error = Thrown([&] { bytes = WriteScan(surface, SUR); });
  EXPECT_EQ(error.empty(), !written.empty()) << error;
  EXPECT_EQ(HeightsOf(surface.Get()), heights);
  if (!error.empty()) return;
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kZMin), lowest);
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kZMax), highest);
  for (zSize i = 0; i < width; ++i) EXPECT_EQ(sur::Get<z16s>(bytes, 512 + 2 * i), written[i]);
  Scan back;
  ASSERT_EQ(LoadSurFileBuffer(zMemorySource(bytes), back, DefaultAlloc()), zOK);
  EXPECT_EQ(ItemsOf<z16s>(back.points.Get()), heights);
}

TEST(WriteDigitalSurf, LeavesRoomForInvalidPoints) {
  ExpectWritten({-32765, 32766, -32768}, -32765, 32766, {-32765, 32766, -32767});
  ExpectWritten({-32768, 5, -32768, 9}, 5, 9, {3, 5, 3, 9});
  ExpectWritten({5, 9}, 5, 9, {5, 9});
  ExpectWritten({-32768, -32768}, 32767, -32768, {32765, 32765});
  for (const z16s height : Heights{-32766, -32767, 32767}) {
    ExpectWritten({height, -32768}, 0, 0, {});
  }
}

TEST(WriteDigitalSurf, WritesProfilesThatAreReadBackUnchanged) {
  const Handle profile = ReadScan(SurRow({-32765, 100, 32766}).Bytes(), PRO);
  const zBytes bytes = WriteScan(profile, PRO);
  ASSERT_EQ(bytes.size(), 512U + 6U);
  EXPECT_EQ(sur::Get<z16s>(bytes, 18), 1);  // object type
  EXPECT_EQ(Describe(ReadScan(bytes, PRO).Get()), Describe(profile.Get()));
}

}  // namespace
