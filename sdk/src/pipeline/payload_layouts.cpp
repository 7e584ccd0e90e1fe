// SPDX-License-Identifier: MIT
#include "pipeline/payload_layouts.h"

#include <algorithm>
#include <utility>

#include "pipeline/payload.h"
#include "pipeline/payload_values.h"

namespace fb = trelvane;

namespace sdk::replay {

namespace {

// Is aligned.
std::vector<z8u> CopyOf(Bytes bytes) { return {bytes.data(), bytes.data() + bytes.size()}; }

const fb::Surface& SurfaceIn(const std::vector<z8u>& head) {
  return *fb::GetScanMessage(head.data())->data_as_Surface();
}

}  // namespace

PayloadLayouts::PayloadLayouts() {
  for (const zType pointType : {zType::z16s, zType::zPoint3d16s}) {
    for (const bool resampled : {true, false}) {
      // Padding stands in front of as many bytes of points as one of these has, and none in front
      // of those of the other.
      for (const z32u points : {1U, 3U}) {
        layouts_.push_back(MakeLayout(pointType, resampled, points));
        longestHead_ = std::max(longestHead_, layouts_.back().head.size());
      }
    }
  }
}

PayloadLayouts::Layout PayloadLayouts::MakeLayout(zType pointType, bool resampled, z32u points) {
  const Owned<Surface> surface = MakeHollowSurface(pointType, points, 1);
  surface->resampled = resampled;
  const PayloadBuilder payload(*surface);
  Layout layout{pointType, CopyOf(payload.Head()), {}};
  layout.mask.assign(layout.head.size(), 0xFF);
  const auto leave = [&](const z8u* number, zSize size) {
    std::fill_n(layout.mask.begin() + (number - layout.head.data()), size, z8u{0});
  };
  const auto& table = reinterpret_cast<const flatbuffers::Table&>(SurfaceIn(layout.head));
  leave(table.GetAddressOf(fb::Surface::VT_WIDTH), sizeof(z32u));
  leave(table.GetAddressOf(fb::Surface::VT_LENGTH), sizeof(z32u));
  leave(table.GetAddressOf(fb::Surface::VT_OFFSET), sizeof(fb::Vec3));
  leave(table.GetAddressOf(fb::Surface::VT_SCALE), sizeof(fb::Vec3));
  leave(table.GetAddressOf(fb::Surface::VT_BOUNDING_BOX), sizeof(fb::Box));
  leave(table.GetAddressOf(fb::Surface::VT_STAMP), sizeof(fb::Stamp));
  // The length of the vector of points.
  leave(layout.head.data() + layout.head.size() - sizeof(z32u), sizeof(z32u));
  return layout;
}

bool PayloadLayouts::Layout::Fits(Bytes start) const {
  if (start.size() < head.size()) return false;
  int different = 0;
  for (zSize i = 0; i < head.size(); ++i) different |= (start[i] ^ head[i]) & mask[i];
  return different == 0;
}

zSize PayloadLayouts::StartSize(z64u size) const {
  return static_cast<zSize>(std::min<z64u>(size, longestHead_));
}

std::optional<PayloadHead> PayloadLayouts::Find(Bytes start, z64u size) const {
  if (size >= FLATBUFFERS_MAX_BUFFER_SIZE) return std::nullopt;
  const auto layout =
      std::ranges::find_if(layouts_, [&](const Layout& known) { return known.Fits(start); });
  if (layout == layouts_.end()) return std::nullopt;
  const zSize headSize = layout->head.size();
  const std::vector<z8u> head = CopyOf(start.first(headSize));
  const fb::Surface& table = SurfaceIn(head);
  // None of these products is too large for 64 bits.
  const z64u points = z64u{table.width()} * table.length();
  const z64u bytes = z64u{table.points()->size()} * sizeof(z16s);
  const zSize pointSize = zType_Size(layout->pointType);
  constexpr z64u kAlignment = sizeof(flatbuffers::uoffset_t);
  const z64u padded = (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (bytes % pointSize != 0 || bytes / pointSize != points || headSize + padded != size) {
    return std::nullopt;
  }
  return PayloadHead{headSize,
                     layout->pointType,
                     {table.width(), table.length(), ToPoint(table.scale(), {}),
                      ToPoint(table.offset(), {}), ToStamp(table.stamp())},
                     ToBox(table.bounding_box())};
}

void PutHeights(PieceReader& reader, const Plovia::SurfaceStream& surface,
                const Plovia::SurfaceStream::Put& put) {
  constexpr zSize kBlock = zSize{128} << 10;  // stays in the cache
  const zSize count = zSize{surface.width} * surface.length;
  std::vector<z16s> block(std::min(count, kBlock));
  for (zSize left = count; left > 0; left -= block.size()) {
    block.resize(std::min(block.size(), left));
    reader.ReadInto(block.data(), block.size() * sizeof(z16s));
    put(block);
  }
}

}  // namespace sdk::replay
