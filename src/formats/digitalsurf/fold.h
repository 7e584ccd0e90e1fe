// SPDX-License-Identifier: MIT
// Folding of 32-bit Digital Surf samples into 16-bit heights.
#pragma once

#include "sdk/core.h"

// Every step rounds to a 32-bit float, so that the heights are the same wherever they are computed.
struct DigitalSurfFold {
  z32f spacing, offset;  // of the folded heights
  z32f gain, shift;      // sample to folded height

  // The folded height. A height outside 16 bits wraps; one that is no number becomes 0.
  z16s operator()(z32s sample) const;
  // Whether the folded height is this one's, and not that of a wrapped or an invalid point.
  bool Keeps(z32s sample) const;
};

// Maps samples from `lowest` to `highest`, whose real values are sample * spacing + offset. A range
// that 16 bits can hold keeps its spacing and offset, a wider one is put onto about -32766..32766.
DigitalSurfFold MakeDigitalSurfFold(z32s lowest, z32s highest, z32f spacing, z32f offset);
