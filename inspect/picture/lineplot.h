// SPDX-License-Identifier: MIT
// Smooth lines on a canvas.
#pragma once

#include <vector>

#include "inspect/picture/canvas.h"

struct PenPoint {
  z32f x, y;  // pixels, from the upper left corner; finite
};

// Lines of one colour. Where they overlap, they are no darker.
class Pen {
 public:
  Pen(int width, int height);

  // Ends are round; a line to the same place is a dot. Takes as long as the line, not its square.
  void Line(PenPoint from, PenPoint to, z32f thickness);
  void DrawOnto(Canvas& canvas, int x, int y, Rgb color) const;

 private:
  int width_, height_;
  std::vector<z32f> coverage_;
};
