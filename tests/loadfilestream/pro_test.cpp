// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "getfilestream/getfilestream.h"
#include "support/scans.h"
#include "support/sur_file.h"

namespace {

using Heights = std::vector<z16s>;

struct Loaded {
  zStatus status;
  ProfileBuffer record;
  Heights Points() const { return ItemsOf<z16s>(record.points.Get()); }
};

Loaded Load(const zBytes& bytes) {
  Loaded loaded;
  loaded.status = LoadProFileBuffer(bytes, loaded.record, &zAllocator::Default());
  return loaded;
}

TEST(LoadPro, FillsTheWholeRecord) {
  SurFile file = SurRow({5, -7, 9});
  file.commentSize = 3;
  file.flag = 1;
  file.zMin = -6;
  const Loaded loaded = Load(file.Bytes());
  ASSERT_EQ(loaded.status, zOK);
  EXPECT_EQ(loaded.record.count, 3U);
  EXPECT_EQ(loaded.Points(), (Heights{5, -32768, 9}));
  EXPECT_EQ(loaded.record.scale.z, 0.125);
  EXPECT_EQ(loaded.record.offset.x, 1);
  EXPECT_EQ(loaded.record.hasIntensity, 0U);
}

// The lowest sample that counts is the header's only where the flag says so, unlike in a surface.
TEST(LoadPro, KeepsEveryLongSampleWithoutTheFlag) {
  const struct {
    z16s flag;
    Heights points;
    z32f spacing, offset;
  } rows[] = {
      {0, {-32766, -1638, 32766}, 65536.0F / 65532.0F, 32768},
      {1, {-32768, 31130, -4402}, 1, 0},  // the folded ones wrap
  };
  for (const auto& row : rows) {
    SurFile file = SurRow({0, 31130, 65536 - 4402});
    file.samples[2] = row.flag == 1 ? 65536 - 4402 : 65536;
    file.bits = 32;
    file.flag = row.flag;
    file.zMin = 10;
    file.zMax = 20;
    file.spacing.z = 1;
    file.offset.z = 0;
    const Loaded loaded = Load(file.Bytes());
    ASSERT_EQ(loaded.status, zOK);
    EXPECT_EQ(loaded.Points(), row.points);
    EXPECT_EQ(static_cast<z32f>(loaded.record.scale.z), row.spacing);
    EXPECT_EQ(static_cast<z32f>(loaded.record.offset.z), row.offset);
  }
}

TEST(LoadPro, RefusesWhatIsNoSingleProfile) {
  EXPECT_EQ(Load({}).status, kMissing);
  for (const z32s lines : {0, 2, -1}) {
    SurFile file = SurRow({1, 2});
    file.length = lines;
    EXPECT_EQ(Thrown([&] { Load(file.Bytes()); }),
              "-997 LoadProFileBuffer: The pro file contains multiples profiles.");
  }
  SurFile file = SurRow({1, 2});
  zBytes bytes = file.Bytes();
  for (; bytes.size() > 1; bytes.pop_back()) {
    EXPECT_EQ(Load(bytes).status, bytes.size() == 516 ? zOK : zERROR_STREAM);
  }
  file.width = -1;
  EXPECT_EQ(Load(file.Bytes()).status, zERROR_PARAMETER);
  file.width = 2147483647;
  EXPECT_EQ(Load(file.Bytes()).status, zERROR_STREAM);
  file.bits = 8;
  EXPECT_EQ(Load(file.Bytes()).status, kRefused);
  bytes = file.Bytes();
  bytes[11] = 'f';
  EXPECT_EQ(Load(bytes).status, kRefused);
}

TEST(WritePro, IsReadBackUnchanged) {
  SurFile file = SurRow({-32765, 100, 32766, -32768});
  file.flag = 1;
  file.zMin = -32765;
  Handle profile;
  GenerateProfileMsgFromBuffer(profile, file.Bytes(), PRO, &zAllocator::Default());
  const Handle stream = MakeStream();
  ASSERT_EQ(GetProFileStream(profile.Get(), stream.Get()), zOK);
  const zBytes bytes = BytesOf(stream.Get());
  EXPECT_EQ(bytes.size(), 512U + 8U);
  EXPECT_EQ(sur::Get<z16s>(bytes, 18), 1);  // object type
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kWidth), 4);
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kLength), 1);
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kTotal), 4);
  EXPECT_EQ(sur::Get<z32f>(bytes, sur::kOffset + 8), 3.0F);
  EXPECT_EQ(sur::Get<z16s>(bytes, 518), -32767);
  const Loaded loaded = Load(bytes);
  EXPECT_EQ(loaded.Points(), (Heights{-32765, 100, 32766, -32768}));
  EXPECT_EQ(loaded.record.scale.z, 0.125);
}

TEST(WritePro, RefusesWhatIsNoUniformProfile) {
  const Handle stream = MakeStream();
  Handle points, wide;
  MustBeOk(MxProfileMsg_Construct(points.Out(), zType::zPoint16s, 1, 1, &zAllocator::Default()));
  MustBeOk(MxProfileMsg_Construct(wide.Out(), zType::z16s, 1, 1, &zAllocator::Default()));
  zArray_EditableItems<z16s>(MxProfileMsg_PointsArray(wide.Get(), 0))[0] = 32767;
  for (const Handle& message : {Handle(), MakeSurface(1, 1, {0}), points, wide}) {
    EXPECT_EQ(GetProFileStream(message.Get(), stream.Get()), kRefused);
  }
  EXPECT_EQ(GetProFileStream(wide.Get(), nullptr), kRefused);
  EXPECT_EQ(zMemory_Length(stream.Get()), 0U);
}

}  // namespace
