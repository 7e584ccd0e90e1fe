// SPDX-License-Identifier: MIT
#include "inspect/picture/colormap.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

z8u ToSrgb(z64f linear) {
  const z64f light = std::clamp(linear, 0.0, 1.0);
  const z64f coded = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  return static_cast<z8u>(std::lround(coded * 255));
}

// A colour of OKLab in polar form. Matrices: Bjoern Ottosson, "A perceptual color space for image
// processing" (2020), https://bottosson.github.io/posts/oklab/
Rgb FromOklch(z64f lightness, z64f chroma, z64f hueDegrees) {
  const z64f hue = hueDegrees * std::numbers::pi / 180;
  const z64f a = chroma * std::cos(hue);
  const z64f b = chroma * std::sin(hue);
  const z64f l = std::pow(lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
  const z64f m = std::pow(lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
  const z64f s = std::pow(lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
  return {ToSrgb(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
          ToSrgb(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
          ToSrgb(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s)};
}

}  // namespace

std::array<Rgb, 256> HeightPalette() {
  std::array<Rgb, 256> palette;
  for (zSize i = 0; i < palette.size(); ++i) {
    const z64f t = static_cast<z64f>(i) / static_cast<z64f>(palette.size() - 1);
    // Screens show the least colour where blue turns into green.
    const z64f chroma = 0.088 + 0.25 * (t - 0.4) * (t - 0.4);
    palette[i] = FromOklch(0.28 + 0.64 * t, chroma, 285 - 180 * t);
  }
  return palette;
}
