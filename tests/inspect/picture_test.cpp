// SPDX-License-Identifier: MIT
#include "inspect/picture/picture.h"

#include <gmock/gmock.h>
#include <png.h>

#include <cmath>
#include <limits>

#include "inspect/picture/colormap.h"
#include "inspect/picture/lettering.h"
#include "inspect/picture/ticks.h"
#include "inspect/scans_to_inspect.h"

namespace {

struct Image {
  int width = 0, height = 0;
  std::vector<Rgb> pixels;

  Rgb At(int x, int y) const {
    return pixels.at(static_cast<zSize>(y) * static_cast<zSize>(width) + static_cast<zSize>(x));
  }
};

Image Draw(const Scan& scan, const std::string& title = "title") {
  const zBytes bytes = DrawPicture(scan, title);
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

bool IsHeight(Rgb color) {
  static const auto palette = HeightPalette();
  return std::ranges::find(palette, color) != palette.end();
}
bool IsBlue(Rgb color) { return color.b > color.r + 60; }
bool IsGrey(Rgb color) { return color.r == color.g && color.g == color.b && color.r < 255; }

// The leftmost rectangle with colours of heights, which is the map; the other is the colour bar.
struct Box {
  int left = 0, top = 0, right = 0, bottom = 0;  // the last two are outside
};
Box MapIn(const Image& image) {
  const auto column = [&](int x) {
    for (int y = 0; y < image.height; ++y) {
      if (IsHeight(image.At(x, y))) return true;
    }
    return false;
  };
  Box box;
  while (box.left < image.width && !column(box.left)) ++box.left;
  for (box.right = box.left; box.right < image.width && column(box.right);) ++box.right;
  const auto row = [&](int y) {
    for (int x = box.left; x < box.right; ++x) {
      if (IsHeight(image.At(x, y))) return true;
    }
    return false;
  };
  while (box.top < image.height && !row(box.top)) ++box.top;
  for (box.bottom = image.height; box.bottom > box.top && !row(box.bottom - 1);) --box.bottom;
  return box;
}

Scan MakeFlat(z32u width, z32u length, zPoint3d64f scale) {
  return MakeScan(ScanKind::surface, width, length,
                  std::vector<z16s>(zSize{width} * length, z16s{5}), scale);
}

TEST(Picture, ShowsEachCellInTheColourOfItsHeight) {
  constexpr z32u kWidth = 7;
  constexpr z32u kLength = 4;
  for (const auto& [kind, scaleX, scaleY] : {std::tuple(ScanKind::surface, 0.5, 0.5),
                                             {ScanKind::surface, -0.5, 0.5},
                                             {ScanKind::surface, 0.5, -0.5},
                                             {ScanKind::cloud, 0.5, 0.5},
                                             {ScanKind::cloud, -2.0, -2.0}}) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(kind) << " " << scaleX << " " << scaleY);
    const zPoint3d64f scale{scaleX, scaleY, -1};
    std::vector<z16s> heights;
    std::vector<zPoint3d16s> points;
    for (z32u i = 0; i < kWidth * kLength; ++i) {
      heights.push_back(i == 10 ? kInvalidRaw : static_cast<z16s>(i));
      points.push_back(
          {static_cast<z16s>(i % kWidth), static_cast<z16s>(i / kWidth), heights.back()});
    }
    const Image image =
        Draw(kind == ScanKind::cloud ? MakeScan(kind, kWidth, kLength, points, scale)
                                     : MakeScan(kind, kWidth, kLength, heights, scale));
    ASSERT_EQ(image.width, 1000);
    const Box map = MapIn(image);
    const int side = (map.right - map.left) / static_cast<int>(kWidth);
    EXPECT_EQ((map.right - map.left) * 4, (map.bottom - map.top) * 7);
    for (int row = 0; row < 4; ++row) {
      for (int column = 0; column < 7; ++column) {
        const int x = scaleX > 0 ? map.left + column * side : map.right - (column + 1) * side;
        const int y = scaleY > 0 ? map.bottom - (row + 1) * side : map.top + row * side;
        for (const auto& [atX, atY] : {std::pair(x, y), {x + side - 1, y + side - 1}}) {
          const Rgb color = image.At(atX, atY);
          if (row * 7 + column == 10) {
            EXPECT_TRUE(IsGrey(color));
            continue;
          }
          const long index = std::lround(255 * (27 - row * 7 - column) / 27.0);
          EXPECT_EQ(color, HeightPalette()[static_cast<zSize>(index)]) << column << " " << row;
        }
      }
    }
  }
}

TEST(Picture, IsToScaleUnlessASideWouldBeTooShort) {
  const Box upright = MapIn(Draw(MakeFlat(40, 30, {1, 2, 1})));
  EXPECT_NEAR((upright.bottom - upright.top) / (upright.right - upright.left * 1.0), 1.5, 0.01);
  for (const auto& [width, length] : {std::pair(5000U, 5U), {5U, 5000U}}) {
    const Image image = Draw(MakeFlat(width, length, {0.1, 0.1, 1}));
    const Box box = MapIn(image);
    EXPECT_GE(std::min(box.right - box.left, box.bottom - box.top), 100);
    EXPECT_GE(std::max(box.right - box.left, box.bottom - box.top), 700);
    EXPECT_LE(image.height, 1000);
  }
}

TEST(Picture, IsReducedByArea) {
  // Below, stripes of one column, of which single points would show. Above, a plain part.
  constexpr z32u kWidth = 2944;
  std::vector<z16s> heights(zSize{kWidth} * kWidth, 100);
  for (zSize i = 0; i < heights.size() / 2; ++i) heights[i] = i % 2 == 0 ? -300 : 300;
  const Image image = Draw(MakeScan(ScanKind::surface, kWidth, kWidth, heights));
  const Box box = MapIn(image);
  for (int x = box.left; x < box.right; ++x) {
    ASSERT_EQ(image.At(x, box.bottom - 20), HeightPalette().front()) << x;
    ASSERT_EQ(image.At(x, box.top + 20), HeightPalette().back()) << x;
  }
}

TEST(Picture, SaysWhenThereIsNothingToShow) {
  const z16s no = kInvalidRaw;
  const Scan scans[] = {
      Scan(),
      MakeScan<z16s>(ScanKind::surface, 2, 1, {no, no}),
      MakeScan<z16s>(ScanKind::surface, 1, 1, {4}, {std::nan(""), 1, 1}),
      MakeScan<zPoint3d16s>(ScanKind::cloud, 1, 1, {{1, 2, no}}),
      MakeScan<z16s>(ScanKind::profile, 2, 1, {no, no}),
  };
  const Image first = Draw(scans[0]);
  EXPECT_TRUE(std::ranges::any_of(first.pixels, IsGrey));
  EXPECT_FALSE(std::ranges::any_of(first.pixels, IsHeight));
  for (const Scan& scan : scans) EXPECT_EQ(Draw(scan).pixels, first.pixels);
}

TEST(Picture, OfAProfileIsALineWithGaps) {
  std::vector<z16s> heights(300, 0);
  std::fill(heights.begin() + 100, heights.begin() + 200, kInvalidRaw);
  std::fill(heights.begin() + 200, heights.end(), z16s{50});
  heights[150] = 25;
  const Image image = Draw(MakeScan(ScanKind::profile, 300, 1, heights, {0.1, 1, 0.1}));
  ASSERT_EQ(image.width, 1000);
  const auto rowAt = [&](int x) {
    int y = 0;
    while (y < image.height && !IsBlue(image.At(x, y))) ++y;
    return y;
  };
  EXPECT_EQ(rowAt(480), image.height);
  const int middle = rowAt(104 + 860 * 150 / 299);
  EXPECT_LT(rowAt(800), middle);
  EXPECT_LT(middle, rowAt(200));
  EXPECT_LT(rowAt(200), image.height);
}

TEST(Picture, WithstandsAnyScale) {
  const z64f inf = std::numeric_limits<z64f>::infinity();
  const std::vector<z16s> heights{1, 2, 3, kInvalidRaw, 5, -32767};
  for (const z64f hostile : {0.0, std::nan(""), inf, 1e308, -1e34, 5e-324}) {
    for (const zPoint3d64f& scale : {zPoint3d64f{hostile, 1, 1}, {1, hostile, hostile}}) {
      for (const zPoint3d64f& offset : {zPoint3d64f{1e15, 1e15, 1e15}, scale}) {
        SCOPED_TRACE(testing::Message() << scale.x << " " << scale.y << " " << scale.z);
        for (const Scan& scan :
             {MakeScan(ScanKind::surface, 3, 2, heights, scale, offset),
              MakeScan<zPoint3d16s>(ScanKind::cloud, 3, 1, {{1, 2, 3}, {5, 9, 2}, {-9, 4, 4}},
                                    scale, offset),
              MakeScan(ScanKind::profile, 6, 1, heights, scale, offset),
              MakeScan<zPoint16s>(ScanKind::pointProfile, 3, 1, {{1, 2}, {9, 5}, {-4, 4}}, scale,
                                  offset)}) {
          const Image image = Draw(scan);
          EXPECT_EQ(image.width, 1000);
          EXPECT_LE(image.height, 1000);
        }
      }
    }
  }
}

TEST(Picture, KeepsALongTitleWithin) {
  const Image image = Draw(MakeFlat(2, 2, {1, 1, 1}), std::string(5000, 'W') + ".sur");
  int last = 0;
  for (int x = 0; x < image.width; ++x) {
    if (IsGrey(image.At(x, 26))) last = x;
  }
  EXPECT_GT(last, 940);
  EXPECT_LT(last, 990);
}

TEST(Title, ReplacesWhatCannotBePrinted) {
  const std::pair<std::string, std::u32string> table[] = {
      {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", U"a\u00E9\u20AC\U0001F600"},
      {"\n\x1B[0m\x7F\xC2\x85", U"\uFFFD\uFFFD[0m\uFFFD\uFFFD"},
      {"\xE2\x80\xAE"
       "fdp",
       U"\uFFFDfdp"},                   // turns the direction of writing
      {"\xC3", U"\uFFFD"},              // ends early
      {"\xC3(\x80", U"\uFFFD(\uFFFD"},  // not continued, and out of place
      {"\xC0\x80\xE0\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},  // longer than needed
      {"\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},                      // half of a pair of UTF-16
      {"\xF5\x80\x80\x80\xF4\x90\x80\x80", std::u32string(8, U'\uFFFD')},  // past the last
  };
  for (const auto& [bytes, text] : table) EXPECT_EQ(ToPrintable(bytes), text) << bytes;
}

TEST(Ticks, AreRoundNumbersWithinTheRange) {
  const auto labels = [](z64f low, z64f high, int most) {
    std::string all;
    for (const Tick& tick : TicksWithin({low, high}, most)) all += tick.label + " ";
    return all;
  };
  EXPECT_EQ(labels(0, 10, 5), "0 2 4 6 8 10 ");
  EXPECT_EQ(labels(-0.31, 0.29, 4), "-0.2 0 0.2 ");
  EXPECT_EQ(labels(1000.0, 1000.004, 4), "1000.000 1000.001 1000.002 1000.003 1000.004 ");
  EXPECT_EQ(labels(-3e9, 9e9, 4), "0 5e+09 ");
  EXPECT_EQ(labels(0, 3e-20, 4), "0 1e-20 2e-20 3e-20 ");
  EXPECT_EQ(labels(7.25, 7.25, 4), "7.25 ");
  EXPECT_EQ(labels(1e20, 1e20 + 16384, 4), "1e+20 ");  // one after the other
  EXPECT_EQ(labels(-3e38, 3e38, 4), "-2e+38 0 2e+38 ");
}

TEST(Palette, GrowsLighterAndIsNeverGrey) {
  const auto palette = HeightPalette();
  const auto luma = [](Rgb color) {
    return 0.2126 * color.r + 0.7152 * color.g + 0.0722 * color.b;
  };
  for (const Rgb& color : palette) {
    const auto [low, high] = std::minmax({color.r, color.g, color.b});
    EXPECT_GT(high - low, 60);
  }
  for (zSize i = 4; i < palette.size(); ++i) {
    EXPECT_GT(luma(palette[i]), luma(palette[i - 4]) + 1) << i;
  }
}

}  // namespace
