// SPDX-License-Identifier: MIT
#include "inspect/picture/picture.h"

#include <gmock/gmock.h>
#include <png.h>

#include <cmath>

#include "inspect/picture/plot.h"
#include "inspect/scans_to_inspect.h"
#include "support/temp_directory.h"

namespace {

struct Image {
  int width = 0, height = 0;
  std::vector<Rgb> pixels;

  Rgb At(int x, int y) const {
    return pixels.at(static_cast<zSize>(y) * static_cast<zSize>(width) + static_cast<zSize>(x));
  }
};

Image Decode(const zBytes& bytes) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  Image image;
  if (png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()) == 0) return image;
  png.format = PNG_FORMAT_RGB;
  image.pixels.resize(zSize{png.width} * png.height);
  if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) return image;
  image.width = static_cast<int>(png.width);
  image.height = static_cast<int>(png.height);
  return image;
}
Image Draw(const Scan& scan, const std::string& title = "title") {
  return Decode(DrawPicture(scan, title));
}

bool IsGrey(Rgb color) { return color.r == color.g && color.g == color.b && color.r < 255; }

// The pictures in the folder of data, apart from how different versions of the library smooth text.
TEST(Picture, LooksAsItShould) {
  const z16s no = kInvalidRaw;
  const std::vector<z16s> some{0, 2, 4, 6, 8, 10, 12, 14, no, no, no, no, no, no, no, no};
  std::vector<z16s> one(9'000'000, no);
  one[0] = 4;
  const std::vector<zPoint3d16s> cloud{{0, 0, 5}, {1, 0, 5}, {0, 1, 5}, {1, 1, no}};
  const struct {
    const char* name;
    Scan scan;
  } rows[] = {
      {"surface", MakeScan(ScanKind::surface, 4, 4, some, {1, 1, 1}, {0, 0, 1})},
      {"cloud", MakeScan(ScanKind::cloud, 2, 2, cloud)},
      {"profile",
       MakeScan<z16s>(ScanKind::profile, 9, 1, {0, 1, 1, no, 2, no, 4, 4, 4}, {-0.5, 1, 1})},
      {"point", MakeScan<z16s>(ScanKind::profile, 1, 1, {7})},
      {"turned", MakeScan(ScanKind::surface, 4, 4, some, {-0.5, -0.5, -1e9})},
      {"long", MakeScan(ScanKind::surface, 5000, 5, std::vector<z16s>(25000, 5), {0.1, 0.1, 1})},
      {"upright", MakeScan(ScanKind::surface, 4, 3, std::vector<z16s>(12, 5), {1, 2.001, 1})},
      {"same-y", MakeScan(ScanKind::surface, 4, 4, some, {1, 0, 1})},
      {"same-x", MakeScan(ScanKind::surface, 4, 4, some, {0, 1, 1})},
      {"few", MakeScan(ScanKind::surface, 3000, 3000, one)},
      {"nothing", Scan()},
      {"nothing", MakeScan<z16s>(ScanKind::surface, 2, 1, {no, no})},
      {"nothing", MakeScan<z16s>(ScanKind::surface, 1, 1, {4}, {std::nan(""), 1, 1})},
      {"nothing", MakeScan<zPoint3d16s>(ScanKind::cloud, 1, 1, {{1, 2, no}})},
      {"nothing", MakeScan<z16s>(ScanKind::profile, 2, 1, {no, no})},
  };
  for (const auto& [name, scan] : rows) {
    SCOPED_TRACE(name);
    const Image expected =
        Decode(ToBytes(ReadFile(TEST_DATA_DIR "/pictures/" + std::string(name) + ".png")));
    const Image image = Draw(scan);
    ASSERT_EQ(image.width, expected.width);
    ASSERT_EQ(image.height, expected.height);
    zSize different = 0;
    for (zSize i = 0; i < image.pixels.size(); ++i) {
      const Rgb a = image.pixels[i], b = expected.pixels[i];
      const int most = std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
      if (most > 32) ++different;
    }
    EXPECT_EQ(different, 0U);
  }
}

TEST(Picture, WithstandsAnyScale) {
  for (const Scan& scan : MakeHostileScans()) {
    SCOPED_TRACE(testing::Message() << scan.scale.x << ' ' << scan.scale.y << ' ' << scan.scale.z
                                    << ", " << scan.offset.x << ' ' << scan.offset.z);
    const Image image = Draw(scan);
    EXPECT_EQ(image.width, 1000);
    EXPECT_LE(image.height, 1000);
  }
}

TEST(Title, LosesItsMiddleWhereItIsLong) {
  const Image image = Draw(Scan(), "A" + std::string(5000, 'W') + "B");
  int last = 0;
  for (int x = 0; x < image.width; ++x) {
    if (IsGrey(image.At(x, 26))) last = x;
  }
  EXPECT_GT(last, 940);
  EXPECT_LT(last, 984);
}

TEST(Title, ReplacesWhatCannotBePrinted) {
  EXPECT_EQ(ToPrintable("a~\xC2\xA0\xC3\xA9\xE2\x80\x8A\xE2\x80\x90\xE2\x80\xA7\xF0\x9F\x98\x80"),
            U"a~\u00A0\u00E9\u200A\u2010\u2027\U0001F600");
  EXPECT_EQ(ToPrintable("\n\x1F\x7F\xC2\x9F\xC3\xE2\x80\x8B\xE2\x80\x8F\xE2\x80\xA8\xE2\x80\xAE"
                        "\xE2\x81\xA0\xE2\x81\xAF\xEF\xBB\xBF"),
            std::u32string(12, U'\uFFFD'));
}

TEST(Ticks, AreRoundNumbersWithinTheRange) {
  const struct {
    z64f low, high;
    int most;
    const char* labels;
  } rows[] = {
      {0, 10, 5, "0 2 4 6 8 10 "},
      {0, 10, 2, "0 5 10 "},
      {-0.31, 0.29, 4, "-0.2 0 0.2 "},
      {1000.0, 1000.004, 4, "1000.000 1000.001 1000.002 1000.003 1000.004 "},
      {-3e9, 9e9, 4, "0 5e+09 "},
      {0, 3e-20, 4, "0 1e-20 2e-20 3e-20 "},
      {7.25, 7.25, 4, "7.25 "},
      {1e20, 1e20 + 16384, 4, "1e+20 "},  // one after the other
      {-3e38, 3e38, 4, "-2e+38 0 2e+38 "},
      {9999998, 10000001, 3, "9.9999980e+06 9.9999990e+06 1.0000000e+07 1.0000001e+07 "},
  };
  for (const auto& row : rows) {
    std::string labels;
    for (const Tick& tick : TicksWithin({row.low, row.high}, row.most)) labels += tick.label + " ";
    EXPECT_EQ(labels, row.labels) << row.low << ' ' << row.high;
  }
}

}  // namespace
