// SPDX-License-Identifier: MIT
// Payloads of surfaces that are laid out as one that was verified before.
#pragma once

#include <map>
#include <optional>

#include "message/message.h"
#include "pipeline/piece_reader.h"
#include "sdk/pipeline.h"

namespace sdk::replay {

// A recording holds many surfaces of one size. Where all that stands in front of a surface's points
// is as in a verified payload, but for numbers of which any will do, the payload is intact as well,
// and its points need not be held to know it.
class PayloadLayouts {
 public:
  // Keeps the layout of a verified payload, if it is the one of the writer: then nothing lies
  // behind the points or among them.
  void Learn(Bytes payload, const sdk::Message& message);

  // Whether a payload of `size` bytes, before which the reader stands, has a layout that is known.
  bool Knows(PieceReader& reader, z64u size) const { return Find(reader, size) != nullptr; }
  // Such a payload of heights, which are taken from the reader when they are asked for; nothing for
  // another one. The reader must outlive it.
  std::optional<Plovia::SurfaceStream> Open(PieceReader& reader, z64u size) const;

 private:
  struct Numbers {
    zSize start, size;
  };
  struct Layout {
    zBytes head;  // all in front of the points, without the numbers
    std::vector<Numbers> numbers;
    bool heights;
  };

  const Layout* Find(PieceReader& reader, z64u size) const;

  std::map<z64u, Layout> bySize_;
};

}  // namespace sdk::replay
