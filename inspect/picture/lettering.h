// SPDX-License-Identifier: MIT
// Text on a canvas, in the font that is part of the program.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "inspect/picture/canvas.h"

// The characters of UTF-8. Bytes that are none, control characters and those that change the
// direction of writing become U+FFFD.
std::u32string ToPrintable(std::string_view utf8);

// One size of the font.
class Lettering {
 public:
  // `height` in pixels, of a line. Throws Orv::Exception when the font cannot be had.
  explicit Lettering(int height);
  ~Lettering();
  Lettering(const Lettering&) = delete;
  Lettering& operator=(const Lettering&) = delete;

  int Width(std::string_view utf8) const;
  // Starts at `x`; letters stand on `baseline`. Text wider than `mostWidth` loses its middle.
  void Draw(Canvas& canvas, int x, int baseline, std::string_view utf8, Rgb color,
            int mostWidth = 1 << 20) const;

 private:
  struct Font;
  z32f Advance(char32_t character) const;
  std::u32string Cut(std::u32string text, int mostWidth) const;

  std::unique_ptr<Font> font_;
};
