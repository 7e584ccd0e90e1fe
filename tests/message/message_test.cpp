// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "support/recordings.h"

namespace {

TEST(Message, IsNotConstructedBeyondTheMemory) {
  Handle message;
  constexpr z32u kMost = ~z32u{0};
  EXPECT_EQ(MxSurfaceMsg_ConstructSimple(message.Out(), kMost, kMost, DefaultAlloc()),
            zERROR_MEMORY);
  EXPECT_EQ(MxSurfaceMsg_ConstructUnresampledSimple(message.Out(), kMost, kMost, DefaultAlloc()),
            zERROR_MEMORY);
  EXPECT_FALSE(message);
}

TEST(Message, StartsZeroWithScaleOne) {
  Handle surface;
  MustBeOk(MxSurfaceMsg_ConstructSimple(surface.Out(), 2, 1, DefaultAlloc()));
  EXPECT_EQ(
      Describe(surface.Get()),
      "surface 2x1 resampled 1 offset (0 0 0) scale (1 1 1) box (0 0 0)(0 0 0) type 2: 0 0 0 0"
      " type 0: stamp 0 0 0 0 0 0 0 0");
}

TEST(Message, TakesOnlyArraysOfItsOwnShapeAndType) {
  const Handle surface = MakeSurface(2, 3, {1, 2, 3, 4, 5, 6});
  const Handle wrong[] = {MakeArray2<z16s>(2, 3, std::vector<z16s>(6)),
                          MakeArray2<z16s>(3, 1, std::vector<z16s>(3)),
                          MakeArray2<z8u>(3, 2, std::vector<z8u>(6)), MakeStream(), Handle()};
  for (const Handle& array : wrong) {
    EXPECT_EQ(MxSurfaceMsg_CopyPointsArray(surface.Get(), array.Get()), zERROR_PARAMETER);
  }
  const Handle intensities = MakeArray2<z8u>(3, 2, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(MxSurfaceMsg_CopyIntensityArray(surface.Get(), intensities.Get()), zERROR_PARAMETER);
  EXPECT_EQ(MxSurfaceMsg_AllocateIntensity(surface.Get(), zType::z16s), zERROR_PARAMETER);
  EXPECT_EQ(MxSurfaceMsg_AllocateIntensity(surface.Get(), zType::z8u), zOK);
  EXPECT_EQ(MxSurfaceMsg_CopyIntensityArray(surface.Get(), intensities.Get()), zOK);
  EXPECT_EQ(*MxSurfaceMsg_IntensityAt(surface.Get(), 2, 1), 6);
  EXPECT_EQ(MxSurfaceMsg_IntensityAt(surface.Get(), 3, 0), nullptr);
  EXPECT_EQ(MxSurfaceMsg_IntensityAt(surface.Get(), 0, 2), nullptr);
  EXPECT_EQ(static_cast<const z16s*>(MxSurfaceMsg_Points(surface.Get(), 2))[1], 6);
  EXPECT_EQ(MxSurfaceMsg_Points(surface.Get(), 3), nullptr);
}

TEST(Message, SharesCopiedItemsUntilOneSideEditsThem) {
  const Handle array = MakeArray2<z16s>(1, 2, {1, 2});
  const Handle first = MakeSurface(2, 1, {0, 0});
  const Handle second = MakeSurface(2, 1, {0, 0});
  MustBeOk(MxSurfaceMsg_CopyPointsArray(first.Get(), array.Get()));
  MustBeOk(MxSurfaceMsg_CopyPointsArray(second.Get(), array.Get()));
  zArray_EditableItems<z16s>(array.Get())[0] = 10;
  zArray_EditableItems<z16s>(MxSurfaceMsg_PointsArray(first.Get(), 0))[1] = 20;
  EXPECT_EQ(ItemsOf<z16s>(array.Get()), (std::vector<z16s>{10, 2}));
  EXPECT_EQ(HeightsOf(first.Get()), (std::vector<z16s>{1, 20}));
  EXPECT_EQ(HeightsOf(second.Get()), (std::vector<z16s>{1, 2}));
}

TEST(Message, RefusesHandlesOfOtherKinds) {
  const Handle profile = MakeProfile(zType::z16s, 1);
  const Handle array = MakeArrayOf({MakeCloud(1), profile});
  const Handle stream = MakeStream();
  const zPoint3d64f point{};
  const MxStamp stamp{};
  for (MxMsg other : {MxMsg{nullptr}, profile.Get(), array.Get(), stream.Get()}) {
    EXPECT_EQ(MxSurfaceMsg_SetOffset(other, &point), zERROR_PARAMETER);
    EXPECT_EQ(MxSurfaceMsg_AllocateIntensity(other, zType::z8u), zERROR_PARAMETER);
    EXPECT_EQ(MxSurfaceMsg_Width(other), 0U);
    EXPECT_EQ(MxSurfaceMsg_PointsArray(other, 0), nullptr);
  }
  EXPECT_EQ(MxDataMsg_SetStamp(profile.Get(), 1, &stamp), zERROR_PARAMETER);
  EXPECT_EQ(MxDataMsg_SetStamp(array.Get(), 0, &stamp), zERROR_PARAMETER);
  EXPECT_EQ(MxArrayMsg_Add(array.Get(), array.Get()), zERROR_PARAMETER);
  EXPECT_EQ(MxArrayMsg_At(array.Get(), 2), nullptr);
}

TEST(Message, StaysWithWhoeverSharesIt) {
  Handle item;
  {
    const Handle array = MakeArrayOf({MakeCloud(1)});
    item = Handle::Share(MxArrayMsg_At(array.Get(), 0));
    EXPECT_EQ(MxDataMsg_Stamp(array.Get()), MxDataMsg_Stamp(item.Get()));
  }
  EXPECT_EQ(Describe(item.Get()), Describe(MakeCloud(1).Get()));
  EXPECT_EQ(MxDataMsg_Stamp(MakeArrayOf({}).Get()), nullptr);
}

}  // namespace
