// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "support/recordings.h"

namespace {

TEST(Message, StartsZeroWithScaleOneAndNotBeyondTheMemory) {
  Handle surface;
  constexpr z32u kMost = ~z32u{0};
  EXPECT_EQ(MxSurfaceMsg_ConstructUnresampledSimple(surface.Out(), kMost, kMost, DefaultAlloc()),
            zERROR_MEMORY);
  MustBeOk(MxSurfaceMsg_ConstructSimple(surface.Out(), 2, 1, DefaultAlloc()));
  EXPECT_EQ(
      Describe(surface.Get()),
      "surface 2x1 resampled 1 offset (0 0 0) scale (1 1 1) box (0 0 0)(0 0 0) type 2: 0 0 0 0"
      " type 0: stamp 0 0 0 0 0 0 0 0");
}

TEST(Message, TakesOnlyArraysOfItsOwnShapeAndType) {
  const Handle surface = MakeSurface(2, 3, {1, 2, 3, 4, 5, 6});
  const Handle intensities = MakeArray2<z8u>(3, 2, {1, 2, 3, 4, 5, 6});
  for (const Handle& wrong :
       {MakeArray2<z16s>(2, 3, std::vector<z16s>(6)), MakeArray2<z16s>(3, 1, std::vector<z16s>(3)),
        intensities, Handle()}) {
    EXPECT_EQ(MxSurfaceMsg_CopyPointsArray(surface.Get(), wrong.Get()), zERROR_PARAMETER);
  }
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
  EXPECT_EQ(zArray_Data(array.Get()), MxSurfaceMsg_Points(second.Get(), 0));
  zArray_EditableItems<z16s>(array.Get())[0] = 10;
  zArray_EditableItems<z16s>(MxSurfaceMsg_PointsArray(first.Get(), 0))[1] = 20;
  EXPECT_EQ(ItemsOf<z16s>(array.Get()), (std::vector<z16s>{10, 2}));
  EXPECT_EQ(HeightsOf(first.Get()), (std::vector<z16s>{1, 20}));
  EXPECT_EQ(HeightsOf(second.Get()), (std::vector<z16s>{1, 2}));
}

}  // namespace
