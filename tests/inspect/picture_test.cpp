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
};

Image Decode(const zBytes& bytes) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()) == 0) return {};
  png.format = PNG_FORMAT_RGB;
  std::vector<Rgb> pixels(zSize{png.width} * png.height);
  if (png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr) == 0) return {};
  return {static_cast<int>(png.width), static_cast<int>(png.height), pixels};
}

PictureView ViewOf(const Scan& scan, Levelling levelling = Levelling::none) {
  SharedRange range({});
  range.Add(MeasureHeights(HeightsOf(scan), {1, 99}));
  return {range.All(), range.Colours(), std::abs(scan.scale.z), levelling};
}

// Dark and without a colour.
bool IsText(const Rgb& pixel) {
  return pixel.r < 200 && std::abs(pixel.r - pixel.g) <= 8 && std::abs(pixel.r - pixel.b) <= 8;
}

// The pictures in the folder of data, apart from how different versions of the library smooth text.
TEST(Picture, LooksAsItShould) {
  const z16s no = kInvalidRaw;
  const std::vector<z16s> some{0, 2, 4, 6, 8, 10, 12, 14, no, no, no, no, no, no, no, no};
  std::vector<z16s> one(9'000'000, no);
  one[0] = 4;
  const std::vector<zPoint3d16s> cloud{{0, 0, 5}, {1, 0, 5}, {0, 1, 5}, {1, 1, no}};
  Scan metres = MakeScan(ScanKind::surface, 4, 4, some, {1e-6, 1e-3, 2e-9}, {0, 0, 1e-6});
  metres.units = {{{"m", 1e3}, {"mm", 1}, {"m", 1e3}}};
  std::string words;
  for (int i = 0; i < 150; ++i) words += " words";  // more than four lines
  metres.cautions = {{"key", "a caution"}, {"key", std::string(300, 'w')}, {"key", words}};
  Scan odd = MakeScan<z16s>(ScanKind::profile, 3, 1, {0, 1, 4}, {1000, 1, 100});
  odd.units = {{{"nm", 1e-6}, {}, {"a.u.", 0}}};
  std::vector<z16s> spiky(4'000'000);  // one point up, two down, and two sources of noise
  for (zSize i = 0; i < spiky.size(); ++i) spiky[i] = static_cast<z16s>(i % 97 + i % 2000 / 20);
  spiky[1'234'567] = 30'000;
  spiky[2'000'999] = spiky[2'002'999] = -900;
  Scan far = MakeScan(ScanKind::surface, 4, 4, some, {1e-3, 1e-3, 1e-6}, {0, 0, 12.345});
  far.offset.x = 1e6;
  const struct {
    const char* name;
    Scan scan;
    Levelling levelling = Levelling::none;
  } rows[] = {
      {"spikes", MakeScan(ScanKind::surface, 2000, 2000, spiky, {0.1, 0.1, 1e-3}), Levelling::mean},
      {"far", far, Levelling::plane},
      {"row", MakeScan(ScanKind::surface, 8, 1, std::vector<z16s>{1, 2, 4, no, 5, 5, 6, 2})},
      {"metres", metres},
      {"odd-units", odd},
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
  for (const auto& [name, scan, levelling] : rows) {
    SCOPED_TRACE(name);
    const std::string file = std::string(TEST_DATA_DIR "/pictures/") + name + ".png";
    const Image expected = Decode(ToBytes(ReadFile(file)));
    const Image image = Decode(DrawPicture(scan, "title", ViewOf(scan, levelling)));
    ASSERT_EQ(image.width, expected.width);
    ASSERT_EQ(image.height, expected.height);
    zSize different = 0;
    for (zSize i = 0; i < image.pixels.size(); ++i) {
      const Rgb a = image.pixels[i], b = expected.pixels[i];
      const int most = IsText(a) || IsText(b) ? 32 : 12;
      if (std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)}) > most)
        ++different;
    }
    EXPECT_EQ(different, 0U);
  }
}

TEST(Picture, WithstandsAnyScale) {
  for (const Scan& scan : MakeHostileScans()) {
    const Image image = Decode(DrawPicture(scan, "", ViewOf(scan)));
    EXPECT_TRUE(image.width == 1000 && image.height <= 1100)
        << scan.scale.x << ' ' << scan.scale.y << ' ' << scan.scale.z << ' ' << scan.offset.x;
  }
}

TEST(Title, LosesItsMiddleWhereItIsLong) {
  const Image image = Decode(DrawPicture(Scan(), "A" + std::string(5000, 'W') + "B", {}));
  int last = 0;
  for (int x = 0; x < image.width; ++x) {
    if (image.pixels.at(static_cast<zSize>(26 * image.width + x)).r < 255) last = x;
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
  const std::tuple<z64f, z64f, int, const char*> rows[] = {
      {0, 10, 5, "0 2 4 6 8 10 "},
      {0, 10, 2, "0 5 10 "},
      {-0.31, 0.29, 4, "-0.2 0 0.2 "},
      {1000.0, 1000.004, 4, "1000.000 1000.001 1000.002 1000.003 1000.004 "},
      {0, 3e-20, 4, "0 1e-20 2e-20 3e-20 "},
      {7.25, 7.25, 4, "7.25 "},
      {1e20, 1e20 + 16384, 4, "1e+20 "},  // one after the other
      {-3e38, 3e38, 4, "-2e+38 0 2e+38 "},
      {9999998, 10000001, 3, "9.9999980e+06 9.9999990e+06 1.0000000e+07 1.0000001e+07 "},
  };
  for (const auto& [low, high, most, expected] : rows) {
    std::string labels;
    for (const Tick& tick : TicksWithin({low, high}, most)) labels += tick.label + " ";
    EXPECT_EQ(labels, expected);
  }
}

}  // namespace
