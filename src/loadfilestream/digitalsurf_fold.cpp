// SPDX-License-Identifier: MIT
#include "loadfilestream/digitalsurf_fold.h"

#include <cmath>

namespace {

constexpr z32u kWidestRange = 65532;

// Rounds half away from zero and keeps the low 16 bits.
z16s RoundToRaw(z32f height) {
  const auto wide = static_cast<z64f>(height);
  const z64f rounded = wide + std::copysign(0.5, wide);
  if (!(std::abs(rounded) < 0x1p63)) return 0;  // no 64-bit integer, or not a number
  return static_cast<z16s>(static_cast<z64s>(rounded));
}

}  // namespace

z16s DigitalSurfFold::operator()(z32s sample) const {
  return RoundToRaw(static_cast<z32f>(sample) * gain + shift);
}

DigitalSurfFold MakeDigitalSurfFold(z32s lowest, z32s highest, z32f spacing, z32f offset) {
  // Unsigned, so that a file may use all 32 bits; the sum wraps.
  const z32u range = static_cast<z32u>(highest) - static_cast<z32u>(lowest);
  const auto sum = static_cast<z32s>(static_cast<z32u>(highest) + static_cast<z32u>(lowest));

  DigitalSurfFold fold{spacing, offset, 0, 0};
  if (range > kWidestRange) {
    fold.spacing = static_cast<z32f>(range) * spacing / z32f{kWidestRange};
    fold.offset = static_cast<z32f>(sum) * 0.5f * spacing + offset;
  }
  fold.gain = spacing / fold.spacing;
  fold.shift = (offset - fold.offset) / fold.spacing;
  return fold;
}
