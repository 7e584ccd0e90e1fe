// SPDX-License-Identifier: MIT
#include "inspect/picture/lineplot.h"

#include <algorithm>
#include <cmath>

namespace {

z32f Distance(PenPoint point, PenPoint from, PenPoint to) {
  const z32f dx = to.x - from.x;
  const z32f dy = to.y - from.y;
  const z32f square = dx * dx + dy * dy;
  const z32f along = (point.x - from.x) * dx + (point.y - from.y) * dy;
  const z32f share = square > 0 ? std::clamp(along / square, 0.0F, 1.0F) : 0;
  return std::hypot(point.x - from.x - share * dx, point.y - from.y - share * dy);
}

}  // namespace

Pen::Pen(int width, int height)
    : width_(width),
      height_(height),
      coverage_(static_cast<zSize>(width) * static_cast<zSize>(height)) {}

void Pen::Line(PenPoint from, PenPoint to, z32f thickness) {
  // Pixels near the line, in steps along its longer side.
  const bool flat = std::abs(to.x - from.x) >= std::abs(to.y - from.y);
  const auto main = [flat](PenPoint point) { return flat ? point.x : point.y; };
  const auto side = [flat](PenPoint point) { return flat ? point.y : point.x; };
  if (main(to) < main(from)) std::swap(from, to);
  const z32f reach = thickness + 1;
  const z32f slope = main(to) > main(from) ? (side(to) - side(from)) / (main(to) - main(from)) : 0;
  const int mains = flat ? width_ : height_;
  const int sides = flat ? height_ : width_;
  const auto pixel = [](z32f at, int pixels) {
    return static_cast<int>(std::clamp(at, 0.0F, static_cast<z32f>(pixels - 1)));
  };
  for (int i = pixel(main(from) - reach, mains); i <= pixel(main(to) + reach, mains); ++i) {
    const z32f step = static_cast<z32f>(i) + 0.5F;
    const z32f middle = side(from) + slope * (std::clamp(step, main(from), main(to)) - main(from));
    for (int j = pixel(middle - reach, sides); j <= pixel(middle + reach, sides); ++j) {
      const z32f across = static_cast<z32f>(j) + 0.5F;
      const PenPoint center = flat ? PenPoint{step, across} : PenPoint{across, step};
      const z32f ink = thickness / 2 + 0.5F - Distance(center, from, to);
      z32f& coverage = coverage_[static_cast<zSize>(flat ? j : i) * static_cast<zSize>(width_) +
                                 static_cast<zSize>(flat ? i : j)];
      coverage = std::max(coverage, std::clamp(ink, 0.0F, 1.0F));
    }
  }
}

void Pen::DrawOnto(Canvas& canvas, int x, int y, Rgb color) const {
  auto coverage = coverage_.begin();
  for (int row = 0; row < height_; ++row) {
    for (int column = 0; column < width_; ++column, ++coverage) {
      if (*coverage > 0) canvas.Blend(x + column, y + row, color, *coverage);
    }
  }
}
