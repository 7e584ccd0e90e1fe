// SPDX-License-Identifier: MIT
// Colours of heights.
#pragma once

#include <array>

#include "sdk/core.h"

struct Rgb {  // sRGB
  z8u r = 0, g = 0, b = 0;
  bool operator==(const Rgb&) const = default;
};

// From the lowest to the highest: dark blue over green to light yellow, each step lighter by the
// same amount to the eye, so that no height looks like an edge. None is grey.
std::array<Rgb, 256> HeightPalette();
// Of heights outside of those that the palette stands for: no others look like these.
inline constexpr Rgb kBelowRange{200, 90, 230};
inline constexpr Rgb kAboveRange{230, 30, 40};
