// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "getfilestream/getfilestream.h"
#include "support/recordings.h"
#include "support/sur_file.h"

namespace {

zBytes WriteSrf(MxMsg message) {
  const Handle stream = MakeStream();
  EXPECT_EQ(GetSrfFileStream(message, stream.Get()), zOK);
  return BytesOf(stream.Get());
}

zStatus Load(const zBytes& bytes, SurfaceBuffer& record) {
  return LoadSrfFileBuffer(bytes, record, &zAllocator::Default());
}
zStatus Load(const zBytes& bytes) {
  SurfaceBuffer record;
  return Load(bytes, record);
}

// 3 x 2 points, with or without intensities.
Handle MakeScan(bool intensities) {
  Handle surface =
      MakeSurface(3, 2, {1, -2, -32768, 32767, -32767, 6}, {0.1, 0.2, 1e-300}, {-1e300, 0.3, 7});
  if (!intensities) return surface;
  MustBeOk(MxSurfaceMsg_AllocateIntensity(surface.Get(), zType::z8u));
  z8u value = 250;
  for (z8u& item : zArray_EditableItems<z8u>(MxSurfaceMsg_Intensities(surface.Get(), 0))) {
    item = value++;
  }
  return surface;
}

TEST(Srf, HoldsASurfaceExactly) {
  for (const bool intensities : {false, true}) {
    const Handle surface = MakeScan(intensities);
    const zBytes bytes = WriteSrf(surface.Get());
    ASSERT_EQ(bytes.size(), intensities ? 79U : 73U);
    EXPECT_EQ(sur::Get<z32u>(bytes, 0), 1U);
    EXPECT_EQ(sur::Get<z32u>(bytes, 4), 3U);
    EXPECT_EQ(sur::Get<z32u>(bytes, 8), 2U);
    EXPECT_EQ(sur::Get<z64f>(bytes, 12), 0.1);
    EXPECT_EQ(sur::Get<z64f>(bytes, 28), 1e-300);
    EXPECT_EQ(sur::Get<z64f>(bytes, 36), -1e300);
    EXPECT_EQ(sur::Get<z64f>(bytes, 52), 7);
    EXPECT_EQ(sur::Get<z16s>(bytes, 62), -2);
    EXPECT_EQ(bytes[72], intensities ? 1 : 0);
    SurfaceBuffer record;
    ASSERT_EQ(Load(bytes, record), zOK);
    EXPECT_EQ(ItemsOf<z16s>(record.points.Get()), HeightsOf(surface.Get()));
    EXPECT_EQ(record.hasIntensity, intensities ? 1U : 0U);
    Handle again;
    GenerateSurfaceMsgFromBuffer(again, bytes, SRF, &zAllocator::Default());
    EXPECT_TRUE(MxSurfaceMsg_IsResampled(again.Get()));
    EXPECT_EQ(WriteSrf(again.Get()), bytes);
  }
}

TEST(Srf, IsRefusedWhenItIsDamaged) {
  const zBytes bytes = WriteSrf(MakeScan(true).Get());
  EXPECT_EQ(Load({}), kMissing);
  for (zSize size = 1; size < bytes.size(); ++size) {
    EXPECT_EQ(Load(zBytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))),
              zERROR_STREAM)
        << size;
  }
  const auto changed = [&](zSize offset, auto value) {
    zBytes copy = bytes;
    sur::Set(copy, offset, value);
    return Load(copy);
  };
  EXPECT_EQ(changed(0, z32u{2}), -989);
  EXPECT_EQ(changed(0, z32u{0}), -989);
  EXPECT_EQ(changed(72, z8u{2}), kMalformed);
  EXPECT_EQ(changed(72, z8u{255}), kMalformed);
  constexpr z32u kMost = std::numeric_limits<z32u>::max();
  for (const z32u side : {z32u{1000}, z32u{1} << 31, kMost}) {
    EXPECT_EQ(changed(4, side), zERROR_STREAM) << side;
    EXPECT_EQ(changed(4, (z64u{side} << 32) + side), zERROR_STREAM) << side;
  }
  EXPECT_EQ(changed(4, z64u{kMost}), zOK);  // no rows: the first height, 1, is the flag
  SurfaceBuffer record;
  record.hasIntensity = 1;
  EXPECT_EQ(Load(WriteSrf(MakeScan(false).Get()), record), zOK);
  EXPECT_EQ(record.hasIntensity, 0U);
  record.points = MakeArray2<z16s>(1, 1, {7});
  EXPECT_EQ(Load({2, 0, 0, 0}, record), -989);
  EXPECT_FALSE(record.points);
}

TEST(Srf, TakesAnySurface) {
  const Handle stream = MakeStream();
  const zBytes bytes = WriteSrf(MakeCloud(1).Get());
  EXPECT_EQ(bytes.size(), 61U + 2 * 6);
  EXPECT_EQ(GetSrfFileStream(nullptr, stream.Get()), kRefused);
  EXPECT_EQ(GetSrfFileStream(MakeProfile(zType::z16s, 1).Get(), stream.Get()), kRefused);
  EXPECT_EQ(GetSrfFileStream(MakeScan(false).Get(), nullptr), kRefused);
  EXPECT_EQ(zMemory_Length(stream.Get()), 0U);
}

}  // namespace
