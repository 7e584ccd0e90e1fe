// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "getfilestream/getfilestream.h"
#include "support/scans.h"
#include "support/sur_file.h"

namespace {

using Heights = std::vector<z16s>;

const zPoint3d64f kScale{0.1, 0.2, 0.01};
const zPoint3d64f kOffset{-1.5, 1e-9, 1e12};

zBytes WriteSur(MxMsg message) {
  const Handle stream = MakeStream();
  EXPECT_EQ(GetSurFileStream(message, stream.Get()), zOK);
  return BytesOf(stream.Get());
}

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
  const Heights heights{7, -300, -32768, 12000, 8, 9};
  const zBytes bytes = WriteSur(MakeSurface(3, 2, heights, kScale, kOffset).Get());
  ASSERT_EQ(bytes.size(), 512U + 12U);

  Fields fields(bytes);
  fields.ExpectText(0, "DIGITAL SURF");
  fields.Expect<z16s>(14, 1);   // object count
  fields.Expect<z16s>(16, 1);   // version
  fields.Expect<z16s>(18, 2);   // object type
  fields.Expect<z16s>(80, 1);   // material code
  fields.Expect<z16s>(82, 10);  // acquisition type
  fields.Expect<z16s>(86, 1);   // special points
  fields.Expect<z16s>(88, 1);   // absolute
  fields.Expect<z16s>(98, 16);  // bits per point
  fields.Expect<z32s>(100, -300);
  fields.Expect<z32s>(104, 12000);
  fields.Expect<z32s>(108, 3);
  fields.Expect<z32s>(112, 2);
  fields.Expect<z32s>(116, 6);
  fields.Expect(120, 0.1F);
  fields.Expect(124, 0.2F);
  fields.Expect(128, 0.01F);
  fields.ExpectText(132, "X");
  fields.ExpectText(148, "Y");
  fields.ExpectText(164, "Z");
  for (zSize unit = 180; unit <= 260; unit += 16) fields.ExpectText(unit, "mm");
  for (zSize ratio = 276; ratio <= 284; ratio += 4) fields.Expect(ratio, 1.0F);
  fields.Expect(466, -1.5F);
  fields.Expect(470, 1e-9F);
  fields.Expect(474, 1e12F);
  zSize end = 512;
  for (const z16s sample : Heights{7, -300, -302, 12000, 8, 9}) {
    fields.Expect(end, sample);
    end += 2;
  }
  fields.ExpectNothingElse();
}

TEST(WriteSur, IsReadBackUnchanged) {
  const Heights heights{-32765, -32768, 32766, 0, 1, -1};
  const zBytes bytes = WriteSur(MakeSurface(2, 3, heights, {0.5, 2, 0.25}, {8, -3, 0.125}).Get());
  Handle message;
  GenerateSurfaceMsgFromBuffer(message, bytes, SUR, &zAllocator::Default());
  EXPECT_EQ(MxSurfaceMsg_Width(message.Get()), 2U);
  EXPECT_EQ(HeightsOf(message.Get()), heights);
  EXPECT_EQ(WriteSur(message.Get()), bytes);
}

TEST(WriteSur, GivesInvalidPointsTheSmallestHeightMinusTwo) {
  const Handle array = MakeArray2<z16s>(1, 4, {-32768, 5, -32768, 9});
  const Handle surface = MakeSurface(4, 1, Heights(4));
  MustBeOk(MxSurfaceMsg_CopyPointsArray(surface.Get(), array.Get()));
  const zBytes bytes = WriteSur(surface.Get());
  EXPECT_EQ(sur::Get<z16s>(bytes, 512), 3);
  EXPECT_EQ(HeightsOf(surface.Get()), (Heights{3, 5, 3, 9}));
  // Whoever shares the points keeps his own.
  EXPECT_EQ(ItemsOf<z16s>(array.Get()), (Heights{-32768, 5, -32768, 9}));
}

TEST(WriteSur, WritesASurfaceWithoutAValidPoint) {
  const zBytes bytes = WriteSur(MakeSurface(2, 1, {-32768, -32768}).Get());
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kZMin), 32767);
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kZMax), -32768);
  EXPECT_EQ(sur::Get<z16s>(bytes, 514), 32765);
  SurfaceBuffer record;
  ASSERT_EQ(LoadSurFileBuffer(bytes, record, &zAllocator::Default()), zOK);
  EXPECT_EQ(ItemsOf<z16s>(record.points.Get()), (Heights{-32768, -32768}));
}

TEST(WriteSur, RefusesHeightsThatLeaveNoRoom) {
  const struct {
    Heights heights;
    zStatus status;
  } cases[] = {
      {{-32765, 32766, -32768}, zOK},
      {{-32766, 0, -32768}, kRefused},
      {{-32767, 0, -32768}, kRefused},
      {{32767, 0, -32768}, kRefused},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.heights[0]);
    const Handle surface = MakeSurface(3, 1, c.heights);
    const Handle stream = MakeStream();
    EXPECT_EQ(GetSurFileStream(surface.Get(), stream.Get()), c.status);
    EXPECT_EQ(zMemory_Length(stream.Get()), c.status == zOK ? 518U : 0U);
    EXPECT_EQ(HeightsOf(surface.Get()) == c.heights, c.status != zOK);
  }
}

TEST(WriteSur, RefusesWhatIsNoUniformSurface) {
  const Handle stream = MakeStream();
  Handle cloud;
  MustBeOk(MxSurfaceMsg_ConstructUnresampledSimple(cloud.Out(), 1, 1, &zAllocator::Default()));
  Handle profile;
  MustBeOk(MxProfileMsg_Construct(profile.Out(), zType::z16s, 1, 1, &zAllocator::Default()));
  EXPECT_EQ(GetSurFileStream(nullptr, stream.Get()), kRefused);
  EXPECT_EQ(GetSurFileStream(cloud.Get(), stream.Get()), kRefused);
  EXPECT_EQ(GetSurFileStream(profile.Get(), stream.Get()), kRefused);
  EXPECT_EQ(GetSurFileStream(MakeSurface(1, 1, {0}).Get(), nullptr), kRefused);
  EXPECT_EQ(zMemory_Length(stream.Get()), 0U);
}

TEST(WriteSur, PassesTheStatusOfAFailingStreamOn) {
  const z8u buffer[1024]{};
  const Handle stream = MakeStream();  // attached to memory: cannot be written
  MustBeOk(zMemory_Attach(stream.Get(), buffer, 0, sizeof buffer, sizeof buffer));
  EXPECT_EQ(GetSurFileStream(MakeSurface(1, 1, {0}).Get(), stream.Get()), zERROR_STREAM);
}

}  // namespace
