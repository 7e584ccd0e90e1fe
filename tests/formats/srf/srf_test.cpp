// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "statuses.h"
#include "support/recordings.h"
#include "support/scan_files.h"
#include "support/sur_file.h"

namespace {

zStatus Load(const zBytes& bytes) {
  Scan record;
  return LoadSrfFileBuffer(*SourceOf(bytes), record, DefaultAlloc());
}

TEST(Srf, HoldsASurfaceExactly) {
  const Handle plain =
      MakeSurface(3, 2, {1, -2, -32768, 32767, -32767, 6}, {0.1, 0.2, 1e-300}, {-1e300, 0.3, 7});
  const zBytes bytes = WriteScan(plain, SRF);
  ASSERT_EQ(bytes.size(), 73U);
  EXPECT_EQ(sur::Get<z32u>(bytes, 0), 1U);
  EXPECT_EQ(sur::Get<z32u>(bytes, 4), 3U);
  EXPECT_EQ(sur::Get<z64f>(bytes, 12), 0.1);
  EXPECT_EQ(sur::Get<z64f>(bytes, 36), -1e300);
  EXPECT_EQ(sur::Get<z16s>(bytes, 62), -2);
  for (const Handle& surface : {plain, MakeSurfaceWithIntensity(1)}) {
    const Handle again = ReadScan(WriteScan(surface, SRF), SRF);
    MustBeOk(MxSurfaceMsg_SetBoundingBox(surface.Get(), MxSurfaceMsg_BoundingBox(again.Get())));
    const std::string text = Describe(surface.Get());  // but for the stamp
    EXPECT_EQ(Describe(again.Get()).substr(0, text.find(" stamp")),
              text.substr(0, text.find(" stamp")));
  }
  // Of a cloud, two bytes a point.
  EXPECT_EQ(WriteScan(MakeCloud(1), SRF).size(), 61U + 2 * 6);
}

TEST(Srf, IsRefusedWhenItIsDamaged) {
  zBytes bytes = WriteScan(MakeSurfaceWithIntensity(1), SRF);
  bytes[60] = 1;  // of the first height
  bytes[61] = 0;
  for (zSize size = 1; size < bytes.size(); ++size) {
    EXPECT_EQ(Load(First(bytes, size)), zERROR_STREAM) << size;
  }
  const auto changed = [&](zSize offset, auto value) {
    zBytes copy = bytes;
    sur::Set(copy, offset, value);
    return Load(copy);
  };
  EXPECT_EQ(changed(0, z32u{2}), kUnsupportedVersion);
  EXPECT_EQ(Load({2, 0, 0, 0}), kUnsupportedVersion);  // nothing after it is read
  EXPECT_EQ(changed(60 + 2 * 15, z8u{2}), kMalformed);
  constexpr z32u kMost = ~z32u{0};
  for (const z32u side : {z32u{1000}, z32u{1} << 31, kMost}) {
    EXPECT_EQ(changed(4, side), zERROR_STREAM) << side;
    EXPECT_EQ(changed(4, (z64u{side} << 32) + side), zERROR_STREAM) << side;
  }
  EXPECT_EQ(changed(4, z64u{kMost}), zOK);  // no rows: the first height is the flag
  // What the record held before is gone.
  Scan record;
  record.kind = ScanKind::cloud;
  record.intensities = MakeArray2<z8u>(1, 1, {7});
  EXPECT_EQ(
      LoadSrfFileBuffer(*SourceOf(WriteScan(MakeSurface(1, 1, {0}), SRF)), record, DefaultAlloc()),
      zOK);
  EXPECT_EQ(record.kind, ScanKind::surface);
  EXPECT_FALSE(record.intensities);
}

}  // namespace
