// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "formats/digitalsurf/reader.h"
#include "support/scans.h"
#include "support/sur_file.h"

namespace {

constexpr z32s kMin32 = std::numeric_limits<z32s>::min();
constexpr z32s kMax32 = std::numeric_limits<z32s>::max();
constexpr z32f kInfinity = std::numeric_limits<z32f>::infinity();

struct Loaded {
  zStatus status;
  Scan record;
  std::vector<z16s> Heights() const { return ItemsOf<z16s>(record.points.Get()); }
};

Loaded Load(const zBytes& bytes) {
  Loaded loaded;
  loaded.status = LoadSurFileBuffer(bytes, loaded.record, DefaultAlloc());
  return loaded;
}
Loaded Load(const SurFile& file) { return Load(file.Bytes()); }

using Heights = std::vector<z16s>;

TEST(LoadSur, MarksShortSamplesBelowTheMinimum) {
  const std::vector<z32s> samples{-32768, -5, 4, 5, 32767};
  const struct {
    z16s flag;
    z32s zMin;
    Heights heights;
  } cases[] = {
      {1, 5, {-32768, -32768, -32768, 5, 32767}},
      {0, 5, {-32768, -5, 4, 5, 32767}},
      {2, 5, {-32768, -5, 4, 5, 32767}},
      {-1, 5, {-32768, -5, 4, 5, 32767}},
      {1, kMin32, {-32768, -32768, 4, 5, 32767}},  // low half 0
      {1, 65536 + 5, {-32768, -32768, -32768, 5, 32767}},
      {1, 65531, {-32768, -5, 4, 5, 32767}},       // low half -5
      {1, kMax32, {-32768, -32768, 4, 5, 32767}},  // low half -1
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "flag " << c.flag << " minimum " << c.zMin);
    SurFile file = SurRow(samples);
    file.flag = c.flag;
    file.zMin = c.zMin;
    const Loaded loaded = Load(file);
    ASSERT_EQ(loaded.status, zOK);
    EXPECT_EQ(loaded.Heights(), c.heights);
    EXPECT_EQ(loaded.record.scale.z, 0.125);
  }
}

struct FoldCase {
  const char* what;
  std::vector<z32s> samples;
  struct {
    z16s flag;
    z32s zMin, zMax;
  } heading;
  struct Axis {
    z32f spacing, offset;
  } z;
  Heights heights;
  Axis foldedZ;
};

const FoldCase kFoldCases[] = {
    {"narrow range", {-5, 0, 7}, {0, -5, 7}, {0.5F, 3}, {-5, 0, 7}, {0.5F, 3}},
    {"widest range that stays", {-9, 65523}, {0, -9, 0}, {1, 0}, {-9, -13}, {1, 0}},
    {"next range folds",
     {-32766, 32767},
     {0, -32766, 0},
     {1, 0},
     {-32766, 32766},
     {65533.0F / 65532.0F, 0.5F}},
    // The middle of the range, 35000, becomes the offset.
    {"flagged minimum and maximum",
     {0, 35000, 70000, -1, -2},
     {1, 0, 70000},
     {1, 0},
     {-32766, 0, 32766, -32768, -32768},
     {70000.0F / 65532.0F, 35000}},
    // Twice the spacing, so that odd samples fall on halves.
    {"halves round away from zero",
     {-65532, -3, -2, -1, 0, 1, 2, 3, 65532},
     {0, -65532, 0},
     {0.25F, 0},
     {-32766, -2, -1, -1, 0, 1, 1, 2, 32766},
     {0.5F, 0}},
    // The range is 2^32 - 1 and the sum -1.
    {"whole range",
     {kMin32, 0, kMax32},
     {0, kMin32, 0},
     {1, 0},
     {-32766, 0, 32766},
     {4294967296.0F / 65532.0F, -0.5F}},
    // The sum, 4000100000, wraps to -294867296: an offset far from the samples.
    {"sum wraps",
     {},
     {1, 2000000000, 2000100000},
     {1, 8},
     {},
     {100000.0F / 65532.0F, -147433648.0F + 8.0F}},
    // 8388609 is 128 * 65536 + 1, and odd: its neighbours' halves are no 32-bit floats.
    {"samples beyond a narrow range wrap",
     {10, 32768, 40000, 65536 + 3, 8388609, kMax32},
     {1, 0, 10},
     {1, 0},
     {10, -32768, -25536, 3, 1, 0},
     {1, 0}},
    {"minimum counts without the flag", {4, 5, 9}, {0, 5, 0}, {1, 0}, {-32768, 5, 9}, {1, 0}},
    {"another flag",
     {-70000, 70000},
     {2, -70000, 0},
     {1, 0},
     {-32766, 32766},
     {140000.0F / 65532.0F, 0}},
    {"no samples", {}, {0, 5, 0}, {1, 2}, {}, {1, 2}},
    {"spacing 0", {-70000, 5}, {0, kMin32, 0}, {0, 1}, {0, 0}, {0, 1}},
    {"spacing infinite", {1, 5}, {0, 0, 0}, {kInfinity, 1}, {0, 0}, {kInfinity, 1}},
    {"offset infinite", {1, 5}, {0, 0, 0}, {1, kInfinity}, {0, 0}, {1, kInfinity}},
};
TEST(LoadSur, FoldsLongSamplesIntoHeightsSpacingAndOffset) {
  for (const FoldCase& c : kFoldCases) {
    SCOPED_TRACE(c.what);
    SurFile file = SurRow(c.samples);
    file.bits = 32;
    file.flag = c.heading.flag;
    file.zMin = c.heading.zMin;
    file.zMax = c.heading.zMax;
    file.spacing.z = c.z.spacing;
    file.offset.z = c.z.offset;
    const Loaded loaded = Load(file);
    ASSERT_EQ(loaded.status, zOK);
    EXPECT_EQ(loaded.Heights(), c.heights);
    EXPECT_EQ(static_cast<z32f>(loaded.record.scale.z), c.foldedZ.spacing);
    EXPECT_EQ(static_cast<z32f>(loaded.record.offset.z), c.foldedZ.offset);
  }
  SurFile file = SurRow({1, 2, 3});
  file.bits = 32;
  file.spacing.z = std::numeric_limits<z32f>::quiet_NaN();
  EXPECT_EQ(Load(file).Heights(), (Heights{0, 0, 0}));
}

TEST(LoadSur, FoldsMoreSamplesThanOneBlockHolds) {
  std::vector<z32s> samples(10001);
  for (zSize i = 0; i < samples.size(); ++i) samples[i] = static_cast<z32s>(i) - 5000;
  SurFile file = SurRow(samples);
  file.bits = 32;
  file.zMin = -5000;
  EXPECT_EQ(Load(file).Heights(), Heights(samples.begin(), samples.end()));
}

TEST(LoadSur, SkipsTheZonesBeforeTheSamples) {
  const struct {
    z16s comment, privateZone;
    zSize samplesAt;  // 0: refused
  } cases[] = {
      {10, 0, 522},  {0, 7, 519},   {300, 200, 1012},  {10, -5, 517},
      {-5, 10, 517}, {-5, -5, 512}, {-1, 0, 512},      {600, -600, 512},
      {1, -512, 1},  {1, -514, 0},  {32767, 32767, 0}, {32767, -32768, 511},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.comment << " and " << c.privateZone);
    zBytes bytes = SurFile{}.Bytes();
    bytes.resize(1100, 0);
    for (zSize i = sur::kHeaderSize; i < bytes.size(); ++i) bytes[i] = static_cast<z8u>(i * 7);
    sur::Set(bytes, sur::kCommentSize, c.comment);
    sur::Set(bytes, sur::kPrivateSize, c.privateZone);
    const Loaded loaded = Load(bytes);
    if (c.samplesAt == 0) {
      EXPECT_EQ(loaded.status, zERROR_STREAM);
    } else {
      ASSERT_EQ(loaded.status, zOK);
      EXPECT_EQ(loaded.Heights()[0], sur::Get<z16s>(bytes, c.samplesAt));
      EXPECT_EQ(loaded.Heights()[5], sur::Get<z16s>(bytes, c.samplesAt + 10));
    }
  }
}

TEST(LoadSur, RefusesAnotherSignature) {
  for (const std::string_view text : {"DIGITAL SURf", "DSCOMPRESSED", "DIGITALxSURF"}) {
    zBytes bytes = SurFile{}.Bytes();
    std::ranges::copy(text, bytes.begin());
    EXPECT_EQ(Load(bytes).status, kRefused) << text;
    EXPECT_EQ(Load(First(bytes, 12)).status, kRefused) << text;  // nothing after it is read
  }
}

TEST(LoadSur, RefusesAFileCutAtAnyPlace) {
  for (const z16s bits : {z16s{16}, z16s{32}}) {
    SurFile file;
    file.bits = bits;
    file.commentSize = 7;
    file.privateSize = 5;
    zBytes bytes = file.Bytes();
    for (zSize size = bytes.size() - 1; size > 0; --size) {
      ASSERT_EQ(Load(First(bytes, size)).status, zERROR_STREAM) << size;
    }
    bytes.push_back(1);  // bytes after the samples are no error
    EXPECT_EQ(Load(bytes).status, zOK);
  }
}

TEST(LoadSur, RefusesOtherSampleSizes) {
  for (const int bits : {0, 1, -1, 8, 17, 31, 33, 64, -16, -32768, 32767}) {
    SurFile file;
    file.bits = static_cast<z16s>(bits);
    EXPECT_EQ(Load(file).status, kRefused) << bits;
    file.width = file.length = 40000;
    EXPECT_EQ(Load(file).status, kRefused) << bits;
    EXPECT_FALSE(Load(file).record.points) << bits;
  }
}

TEST(LoadSur, AllocatesNoMoreThanTheFileHolds) {
  const struct {
    z32s width, length;
    zStatus status;
  } cases[] = {
      {0, 5, zOK},
      {kMax32, 0, zOK},
      {44, 1, zOK},
      {45, 1, zERROR_STREAM},
      {65536, 65536, zERROR_STREAM},  // 2^32 points
      {kMax32, kMax32, zERROR_STREAM},
      {-1, -1, zERROR_PARAMETER},
      {kMin32, kMin32, zERROR_PARAMETER},
      {1, -1, zERROR_PARAMETER},
      {kMin32, 0, zERROR_PARAMETER},
  };
  for (const auto& c : cases) {
    for (const z16s bits : {z16s{16}, z16s{32}}) {
      SCOPED_TRACE(testing::Message() << c.width << " x " << c.length << ", " << bits << " bits");
      SurFile file;
      file.width = c.width;
      file.length = c.length;
      file.bits = bits;
      zBytes bytes = file.Bytes();
      bytes.resize(sur::kHeaderSize + 44U * static_cast<zSize>(bits) / 8);
      const Loaded loaded = Load(bytes);
      EXPECT_EQ(loaded.status, c.status);
      EXPECT_EQ(static_cast<bool>(loaded.record.points), c.status == zOK);
    }
  }
}

}  // namespace
