// SPDX-License-Identifier: MIT
// Payloads of surfaces that are laid out as our own writer does it.
#pragma once

#include <optional>
#include <vector>

#include "message/message.h"
#include "pipeline/piece_reader.h"
#include "sdk/pipeline.h"

namespace sdk::replay {

// What stands in front of the points of an intact payload, which hold all that is behind it.
struct PayloadHead {
  zSize size;
  zType pointType;
  Plovia::SurfaceStream surface;  // without heights
  BoundingBox6 box;
};

// Where all that stands in front of a surface's points is as our writer puts it, but for numbers,
// and those of them that tell sizes agree, the payload is intact, and its points need not be held
// to know it.
class PayloadLayouts {
 public:
  PayloadLayouts();

  // How many bytes from the start of a payload of `size` bytes tell whether its layout is known.
  zSize StartSize(z64u size) const;
  // The head of a payload of which these bytes are known; nothing for another layout, and for a
  // surface with intensities.
  std::optional<PayloadHead> Find(Bytes start, z64u size) const;

 private:
  struct Layout {
    zType pointType;
    std::vector<z8u> head, mask;  // the mask is 0 where the head's numbers stand

    bool Fits(Bytes start) const;
  };

  static Layout MakeLayout(zType pointType, bool resampled, z32u points);

  std::vector<Layout> layouts_;
  zSize longestHead_ = 0;
};

// Gives all heights of a surface, before which the reader stands, to `put`.
void PutHeights(PieceReader& reader, const Plovia::SurfaceStream& surface,
                const Plovia::SurfaceStream::Put& put);

}  // namespace sdk::replay
