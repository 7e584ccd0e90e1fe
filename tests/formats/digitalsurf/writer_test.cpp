// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/scan_files.h"
#include "support/sur_file.h"

namespace {

using Heights = std::vector<z16s>;

// Compares fields of a file and puts zeros in their place.
class Fields {
 public:
  explicit Fields(zBytes bytes) : bytes_(std::move(bytes)) {}

  template <class Number>
  void Expect(zSize offset, Number expected) {
    EXPECT_EQ(sur::Get<Number>(bytes_, offset), expected) << "offset " << offset;
    sur::Set(bytes_, offset, Number{});
  }
  void ExpectText(zSize offset, std::string_view expected) {
    for (const char character : expected) Expect(offset++, static_cast<z8u>(character));
  }
  void ExpectNothingElse() const {
    for (zSize i = 0; i < bytes_.size(); ++i) EXPECT_EQ(bytes_[i], 0) << "offset " << i;
  }

 private:
  zBytes bytes_;
};

TEST(WriteSur, WritesEveryFieldAtItsPlace) {
  const zBytes bytes = WriteScan(
      MakeSurface(3, 2, {7, -300, -32768, 12000, 8, 9}, {0.1, 0.2, 0.01}, {-1.5, 1e-9, 1e12}), SUR);
  ASSERT_EQ(bytes.size(), 512U + 12U);
  Fields fields(bytes);
  fields.ExpectText(0, "DIGITAL SURF");
  // Object count, version, object type, material code, acquisition type, special points, absolute
  // and bits per point; lowest and highest height, width, length and number of points.
  const std::pair<zSize, z16s> shorts[] = {{14, 1},  {16, 1}, {18, 2}, {80, 1},
                                           {82, 10}, {86, 1}, {88, 1}, {98, 16}};
  const std::pair<zSize, z32s> longs[] = {{100, -300}, {104, 12000}, {108, 3}, {112, 2}, {116, 6}};
  const std::pair<zSize, z32f> floats[] = {{120, 0.1F},  {124, 0.2F},  {128, 0.01F},
                                           {276, 1},     {280, 1},     {284, 1},
                                           {466, -1.5F}, {470, 1e-9F}, {474, 1e12F}};
  for (const auto& [offset, value] : shorts) fields.Expect(offset, value);
  for (const auto& [offset, value] : longs) fields.Expect(offset, value);
  for (const auto& [offset, value] : floats) fields.Expect(offset, value);
  fields.ExpectText(132, "X");
  fields.ExpectText(148, "Y");
  fields.ExpectText(164, "Z");
  for (zSize unit = 180; unit <= 260; unit += 16) fields.ExpectText(unit, "mm");
  zSize end = 512;
  for (const z16s sample : Heights{7, -300, -302, 12000, 8, 9}) {
    fields.Expect(end, sample);
    end += 2;
  }
  fields.ExpectNothingElse();
}

TEST(WriteSur, IsReadBackUnchanged) {
  const Heights heights{-32765, -32768, 32766, 0, 1, -1};
  const zBytes bytes = WriteScan(MakeSurface(2, 3, heights, {0.5, 2, 0.25}, {8, -3, 0.125}), SUR);
  const Handle message = ReadScan(bytes, SUR);
  EXPECT_EQ(HeightsOf(message.Get()), heights);
  EXPECT_EQ(WriteScan(message, SUR), bytes);
}

TEST(WriteSur, GivesInvalidPointsTheSmallestHeightMinusTwo) {
  const Handle array = MakeArray2<z16s>(1, 4, {-32768, 5, -32768, 9});
  const Handle surface = MakeSurface(4, 1, Heights(4));
  MustBeOk(MxSurfaceMsg_CopyPointsArray(surface.Get(), array.Get()));
  EXPECT_EQ(sur::Get<z16s>(WriteScan(surface, SUR), 512), 3);
  EXPECT_EQ(HeightsOf(surface.Get()), (Heights{3, 5, 3, 9}));
  // Whoever shares the points keeps his own.
  EXPECT_EQ(ItemsOf<z16s>(array.Get()), (Heights{-32768, 5, -32768, 9}));
}

TEST(WriteSur, WritesASurfaceWithoutAValidPoint) {
  const zBytes bytes = WriteScan(MakeSurface(2, 1, {-32768, -32768}), SUR);
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kZMin), 32767);
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kZMax), -32768);
  EXPECT_EQ(sur::Get<z16s>(bytes, 514), 32765);
  Scan record;
  ASSERT_EQ(LoadSurFileBuffer(bytes, record, DefaultAlloc()), zOK);
  EXPECT_EQ(ItemsOf<z16s>(record.points.Get()), (Heights{-32768, -32768}));
}

TEST(WriteSur, RefusesHeightsThatLeaveNoRoom) {
  EXPECT_EQ(WriteScan(MakeSurface(3, 1, {-32765, 32766, -32768}), SUR).size(), 518U);
  for (const z16s height : Heights{-32766, -32767, 32767}) {
    const Handle surface = MakeSurface(2, 1, {height, -32768});
    EXPECT_NE(Thrown([&] { WriteScan(surface, SUR); }), "") << height;
    EXPECT_EQ(HeightsOf(surface.Get()), (Heights{height, -32768}));
  }
}

}  // namespace
