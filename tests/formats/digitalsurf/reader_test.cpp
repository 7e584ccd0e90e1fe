// SPDX-License-Identifier: MIT
// Samples of surfaces and profiles as heights.
#include "formats/digitalsurf/reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "statuses.h"
#include "support/scans.h"
#include "support/sur_file.h"

namespace {

constexpr z32s kMin32 = std::numeric_limits<z32s>::min();
constexpr z32s kMax32 = std::numeric_limits<z32s>::max();

using Heights = std::vector<z16s>;

struct Loaded {
  zStatus status;
  Scan scan;
  Heights Points() const { return ItemsOf<z16s>(scan.points.Get()); }
};

Loaded Load(const zBytes& bytes, bool profile = false) {
  Loaded loaded;
  const auto load = profile ? LoadProFileBuffer : LoadSurFileBuffer;
  loaded.status = load(*SourceOf(bytes), loaded.scan, DefaultAlloc());
  return loaded;
}

SurFile Long(const std::vector<z32s>& samples, z16s flag, z32s zMin, z32s zMax, z32f spacing = 1,
             z32f offset = 0) {
  SurFile file = SurRow(samples);
  file.bits = 32;
  file.flag = flag;
  file.zMin = zMin;
  file.zMax = zMax;
  file.spacing.z = spacing;
  file.offset.z = offset;
  return file;
}
SurFile Short(z16s flag, z32s zMin) {
  SurFile file = Long({-32768, -5, 4, 5, 32767}, flag, zMin, 0);
  file.bits = 16;
  return file;
}

void ExpectHeights(const char* what, const SurFile& file, const Heights& heights, z32f spacing = 1,
                   z32f offset = 0, bool profile = false) {
  SCOPED_TRACE(what);
  const auto [status, scan] = Load(file.Bytes(), profile);
  ASSERT_EQ(status, zOK);
  EXPECT_EQ(ItemsOf<z16s>(scan.points.Get()), heights);
  EXPECT_EQ(scan.kind, profile ? ScanKind::profile : ScanKind::surface);
  EXPECT_EQ(static_cast<z32f>(scan.scale.z), spacing);
  EXPECT_EQ(static_cast<z32f>(scan.offset.z), offset);
}

TEST(DigitalSurf, FoldsSamplesIntoHeightsSpacingAndOffset) {
  const Heights measured{-32768, -32768, -32768, 5, 32767}, all{-32768, -5, 4, 5, 32767};
  ExpectHeights("below the minimum", Short(1, 5), measured);
  ExpectHeights("another flag", Short(2, 5), all);
  ExpectHeights("minimum with the low half 5", Short(1, 65541), measured);
  ExpectHeights("minimum with the low half -5", Short(1, 65531), all);

  constexpr z32f kSteps = 65532;
  ExpectHeights("narrow range", Long({-5, 0, 7}, 0, -5, 7, 0.5F, 3), {-5, 0, 7}, 0.5F, 3);
  ExpectHeights("widest range that stays", Long({-9, 65523}, 0, -9, 0), {-9, -13});
  ExpectHeights("next range folds", Long({-32766, 32767}, 0, -32766, 0), {-32766, 32766},
                65533 / kSteps, 0.5F);
  // The middle of the range, 35000, becomes the offset.
  ExpectHeights("flagged minimum and maximum", Long({0, 35000, 70000, -1, -2}, 1, 0, 70000),
                {-32766, 0, 32766, -32768, -32768}, 70000 / kSteps, 35000);
  // Twice the spacing, so that odd samples fall on halves.
  ExpectHeights("halves round away from zero",
                Long({-65532, -3, -2, -1, 0, 1, 2, 3, 65532}, 0, -65532, 0, 0.25F),
                {-32766, -2, -1, -1, 0, 1, 1, 2, 32766}, 0.5F);
  // The range is 2^32 - 1 and the sum -1.
  ExpectHeights("whole range", Long({kMin32, 0, kMax32}, 0, kMin32, 0), {-32766, 0, 32766},
                4294967296.0F / kSteps, -0.5F);
  // The sum, 4000100000, wraps to -294867296: an offset far from the samples.
  ExpectHeights("sum wraps", Long({}, 1, 2000000000, 2000100000, 1, 8), {}, 100000 / kSteps,
                -147433648.0F + 8);
  // 8388609 is 128 * 65536 + 1, and odd: its neighbours' halves are no 32-bit floats.
  ExpectHeights("samples beyond a narrow range wrap",
                Long({10, 32768, 40000, 65536 + 3, 8388609, kMax32}, 1, 0, 10),
                {10, -32768, -25536, 3, 1, 0});
  ExpectHeights("minimum counts without the flag", Long({4, 5, 9}, 0, 5, 0), {-32768, 5, 9});
  ExpectHeights("another flag of long samples", Long({-70000, 70000}, 2, -70000, 0),
                {-32766, 32766}, 140000 / kSteps);
  ExpectHeights("no samples", Long({}, 0, 5, 0, 1, 2), {}, 1, 2);
  ExpectHeights("spacing 0", Long({-70000, 5}, 0, kMin32, 0, 0, 1), {0, 0}, 0, 1);
  ExpectHeights("offset infinite", Long({1, 5}, 0, 0, 0, 1, INFINITY), {0, 0}, 1, INFINITY);
  // The lowest sample that counts is the header's only where the flag says so.
  ExpectHeights("profile without the flag", Long({0, 31130, 65536}, 0, 10, 20),
                {-32766, -1638, 32766}, 65536 / kSteps, 32768, true);
  ExpectHeights("flagged profile", Long({0, 31130, 61134}, 1, 10, 20), {-32768, 31130, -4402}, 1, 0,
                true);
  EXPECT_EQ(Load(Long({1, 2}, 0, 0, 0, NAN).Bytes()).Points(), (Heights{0, 0}));
  std::vector<z32s> many(10001);  // more than one block
  for (zSize i = 0; i < many.size(); ++i) many[i] = static_cast<z32s>(i) - 5000;
  ExpectHeights("many", Long(many, 0, -5000, 0), Heights(many.begin(), many.end()));
}

TEST(DigitalSurf, HasZonesBeforeTheSamples) {
  const struct {
    z16s comment, privateZone;
    zSize samplesAt;  // 0: refused
  } cases[] = {
      {10, 0, 522},  {0, 7, 519},  {300, 200, 1012}, {10, -5, 517},     {-5, 10, 517},
      {-5, -5, 512}, {1, -512, 1}, {1, -514, 0},     {32767, 32767, 0}, {32767, -32768, 511},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.comment << " and " << c.privateZone);
    zBytes bytes = SurFile{}.Bytes();
    bytes.resize(1100, 0);
    for (zSize i = sur::kHeaderSize; i < bytes.size(); ++i) bytes[i] = static_cast<z8u>(i * 7);
    sur::Set(bytes, sur::kCommentSize, c.comment);
    sur::Set(bytes, sur::kPrivateSize, c.privateZone);
    const Loaded loaded = Load(bytes);
    ASSERT_EQ(loaded.status, c.samplesAt == 0 ? zERROR_STREAM : zOK);
    if (c.samplesAt == 0) continue;
    EXPECT_EQ(loaded.Points()[5], sur::Get<z16s>(bytes, c.samplesAt + 10));
  }
}

TEST(DigitalSurf, IsRefusedWithAnotherSignatureOrCutAtAnyPlace) {
  for (const std::string_view text : {"DIGITAL SURf", "DSCOMPRESSED", "DIGITALxSURF"}) {
    zBytes bytes = SurFile{}.Bytes();
    std::ranges::copy(text, bytes.begin());
    EXPECT_EQ(Load(bytes).status, kRefused) << text;
    EXPECT_EQ(Load(First(bytes, 12)).status, kRefused) << text;  // nothing after it is read
  }
  EXPECT_EQ(Load({}, true).status, kMissing);
  for (const bool profile : {false, true}) {
    for (SurFile file : {Short(0, 0), Long({10, 11, 12}, 0, 0, 0)}) {
      file.commentSize = 7;
      file.privateSize = 5;
      zBytes bytes = file.Bytes();
      for (zSize size = bytes.size() - 1; size > 0; --size) {
        ASSERT_EQ(Load(First(bytes, size), profile).status, zERROR_STREAM) << size;
      }
      bytes.push_back(1);  // bytes after the samples are no error
      EXPECT_EQ(Load(bytes, profile).status, zOK);
    }
  }
}

TEST(DigitalSurf, TakesOnlySizesThatTheFileHolds) {
  const struct {
    z32s width, length;
    zStatus status;
    bool profile = false;
  } cases[] = {
      {0, 5, zOK},
      {kMax32, 0, zOK},
      {44, 1, zOK},
      {45, 1, zERROR_STREAM},
      {65536, 65536, zERROR_STREAM},  // 2^32 points
      {kMax32, kMax32, zERROR_STREAM},
      {kMin32, kMin32, zERROR_PARAMETER},
      {1, -1, zERROR_PARAMETER},
      {-1, 1, zERROR_PARAMETER, true},
      {kMax32, 1, zERROR_STREAM, true},
  };
  SurFile file;
  for (const auto& c : cases) {
    for (const int bits : {16, 32, 0, 8, 17, 33, 64, -16}) {
      SCOPED_TRACE(testing::Message() << c.width << " x " << c.length << ", " << bits << " bits");
      file.width = c.width;
      file.length = c.length;
      file.bits = static_cast<z16s>(bits);
      zBytes bytes = file.Bytes();
      const bool known = bits == 16 || bits == 32;
      bytes.resize(sur::kHeaderSize + (known ? 44U * static_cast<zSize>(bits) / 8 : 500));
      const Loaded loaded = Load(bytes, c.profile);
      EXPECT_EQ(loaded.status, known || c.status == zERROR_PARAMETER ? c.status : kRefused);
      EXPECT_EQ(static_cast<bool>(loaded.scan.points), loaded.status == zOK);
    }
  }
  for (const z32s lines : {0, 2, -1}) {
    file = SurRow({1, 2});
    file.length = lines;
    EXPECT_EQ(Thrown([&] { Load(file.Bytes(), true); }),
              "-997 LoadProFileBuffer: The pro file contains multiples profiles.")
        << lines;
  }
}

}  // namespace
