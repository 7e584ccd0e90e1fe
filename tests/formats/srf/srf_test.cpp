// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "statuses.h"
#include "support/recordings.h"
#include "support/scan_files.h"
#include "support/sur_file.h"

namespace {

zStatus Load(const zBytes& bytes) {
  Scan record;
  return LoadSrfFileBuffer(bytes, record, DefaultAlloc());
}

// 3 x 2 points, with or without intensities.
Handle MakeScan(bool intensities) {
  Handle surface =
      MakeSurface(3, 2, {1, -2, -32768, 32767, -32767, 6}, {0.1, 0.2, 1e-300}, {-1e300, 0.3, 7});
  if (!intensities) return surface;
  const Handle array = MakeArray2<z8u>(2, 3, {250, 251, 252, 253, 254, 255});
  MustBeOk(MxSurfaceMsg_AllocateIntensity(surface.Get(), zType::z8u));
  MustBeOk(MxSurfaceMsg_CopyIntensityArray(surface.Get(), array.Get()));
  return surface;
}

TEST(Srf, HoldsASurfaceExactly) {
  for (const bool intensities : {false, true}) {
    SCOPED_TRACE(intensities);
    Handle surface = MakeScan(intensities);
    const zBytes bytes = WriteScan(surface, SRF);
    ASSERT_EQ(bytes.size(), intensities ? 79U : 73U);
    EXPECT_EQ(sur::Get<z32u>(bytes, 0), 1U);
    EXPECT_EQ(sur::Get<z32u>(bytes, 4), 3U);
    EXPECT_EQ(sur::Get<z64f>(bytes, 12), 0.1);
    EXPECT_EQ(sur::Get<z64f>(bytes, 36), -1e300);
    EXPECT_EQ(sur::Get<z16s>(bytes, 62), -2);
    const Handle again = ReadScan(bytes, SRF);
    MustBeOk(MxSurfaceMsg_SetBoundingBox(surface.Get(), MxSurfaceMsg_BoundingBox(again.Get())));
    EXPECT_EQ(Describe(again.Get()), Describe(surface.Get()));
  }
  // Of a cloud, two bytes a point.
  EXPECT_EQ(WriteScan(MakeCloud(1), SRF).size(), 61U + 2 * 6);
}

TEST(Srf, IsRefusedWhenItIsDamaged) {
  const zBytes bytes = WriteScan(MakeScan(true), SRF);
  for (zSize size = 1; size < bytes.size(); ++size) {
    EXPECT_EQ(Load(First(bytes, size)), zERROR_STREAM) << size;
  }
  const auto changed = [&](zSize offset, auto value) {
    zBytes copy = bytes;
    sur::Set(copy, offset, value);
    return Load(copy);
  };
  EXPECT_EQ(changed(0, z32u{2}), kUnsupportedVersion);
  EXPECT_EQ(changed(0, z32u{0}), kUnsupportedVersion);
  EXPECT_EQ(Load({2, 0, 0, 0}), kUnsupportedVersion);  // nothing after it is read
  EXPECT_EQ(changed(72, z8u{2}), kMalformed);
  EXPECT_EQ(changed(72, z8u{255}), kMalformed);
  constexpr z32u kMost = ~z32u{0};
  for (const z32u side : {z32u{1000}, z32u{1} << 31, kMost}) {
    EXPECT_EQ(changed(4, side), zERROR_STREAM) << side;
    EXPECT_EQ(changed(4, (z64u{side} << 32) + side), zERROR_STREAM) << side;
  }
  EXPECT_EQ(changed(4, z64u{kMost}), zOK);  // no rows: the first height, 1, is the flag
  // What the record held before is gone.
  Scan record;
  record.kind = ScanKind::cloud;
  record.intensities = MakeArray2<z8u>(1, 1, {7});
  EXPECT_EQ(LoadSrfFileBuffer(WriteScan(MakeScan(false), SRF), record, DefaultAlloc()), zOK);
  EXPECT_EQ(record.kind, ScanKind::surface);
  EXPECT_FALSE(record.intensities);
}

}  // namespace
