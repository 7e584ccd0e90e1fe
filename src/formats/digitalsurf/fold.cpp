// SPDX-License-Identifier: MIT
#include "formats/digitalsurf/fold.h"

#include <cmath>

#include "scan/rounding.h"
#include "sdk/message.h"

namespace {

constexpr z32u kWidestRange = 65532;

}  // namespace

z16s DigitalSurfFold::operator()(z32s sample) const {
  const z32f height = static_cast<z32f>(sample) * gain + shift;
  return RoundToRaw(static_cast<z64f>(height));
}

bool DigitalSurfFold::Keeps(z32s sample) const {
  const z16s folded = (*this)(sample);
  const z32f height = static_cast<z32f>(sample) * gain + shift;
  return folded != kInvalidRaw && !(std::abs(height - static_cast<z32f>(folded)) > 0.5F);
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
