// SPDX-License-Identifier: MIT
// Pixels to draw on. What lies outside is not drawn.
#pragma once

#include <vector>

#include "inspect/picture/colormap.h"

class Canvas {
 public:
  // White; both sides from 1.
  Canvas(int width, int height);

  void Set(int x, int y, Rgb color) { Blend(x, y, color, 1); }
  // `coverage` from 0, nothing, to 1.
  void Blend(int x, int y, Rgb color, z32f coverage);
  void Fill(int x, int y, int width, int height, Rgb color);
  // The border inside of a rectangle, one pixel wide.
  void Frame(int x, int y, int width, int height, Rgb color);

  // Throws Orv::Exception when it cannot be had.
  zBytes ToPng() const;

 private:
  Rgb* At(int x, int y);

  int width_, height_;
  std::vector<Rgb> pixels_;  // row by row from the top
};
