// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "support/scan_files.h"
#include "support/sur_file.h"

namespace {

using Heights = std::vector<z16s>;

struct Loaded {
  zStatus status;
  Scan record;
  Heights Points() const { return ItemsOf<z16s>(record.points.Get()); }
};

Loaded Load(const zBytes& bytes) {
  Loaded loaded;
  loaded.status = LoadProFileBuffer(bytes, loaded.record, DefaultAlloc());
  return loaded;
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
  const zBytes bytes = file.Bytes();
  for (zSize size = 1; size < bytes.size(); ++size) {
    EXPECT_EQ(Load(First(bytes, size)).status, zERROR_STREAM) << size;
  }
  file.width = -1;
  EXPECT_EQ(Load(file.Bytes()).status, zERROR_PARAMETER);
  file.width = 2147483647;
  EXPECT_EQ(Load(file.Bytes()).status, zERROR_STREAM);
  file.bits = 8;
  EXPECT_EQ(Load(file.Bytes()).status, kRefused);
}

TEST(WritePro, IsReadBackUnchanged) {
  SurFile file = SurRow({-32765, 100, 32766, -32768});
  file.commentSize = 3;
  file.flag = 1;
  file.zMin = -32765;
  const Handle profile = ReadScan(file.Bytes(), PRO);
  const Heights points{-32765, 100, 32766, -32768};
  EXPECT_EQ(ItemsOf<z16s>(MxProfileMsg_PointsArray(profile.Get(), 0)), points);
  const zBytes bytes = WriteScan(profile, PRO);
  EXPECT_EQ(bytes.size(), 512U + 8U);
  EXPECT_EQ(sur::Get<z16s>(bytes, 18), 1);  // object type
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kWidth), 4);
  EXPECT_EQ(sur::Get<z32s>(bytes, sur::kLength), 1);
  EXPECT_EQ(sur::Get<z32f>(bytes, sur::kOffset + 8), 3.0F);
  EXPECT_EQ(sur::Get<z16s>(bytes, 518), -32767);
  EXPECT_EQ(Load(bytes).Points(), points);
}

}  // namespace
