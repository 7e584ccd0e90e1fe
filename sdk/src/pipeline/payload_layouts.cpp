// SPDX-License-Identifier: MIT
#include "pipeline/payload_layouts.h"

#include <algorithm>
#include <new>

#include "pipeline/payload.h"
#include "pipeline/payload_values.h"

namespace fb = trelvane;

namespace sdk::replay {

namespace {

constexpr zSize kMostLayouts = 64;  // a recording has few sizes

const fb::Surface& SurfaceIn(const z8u* payload) {
  return *fb::GetScanMessage(payload)->data_as_Surface();
}

}  // namespace

void PayloadLayouts::Learn(Bytes payload, const sdk::Message& message) try {
  const auto* surface = dynamic_cast<const Surface*>(&message);
  if (surface == nullptr || surface->intensities != nullptr || bySize_.size() == kMostLayouts ||
      bySize_.contains(payload.size())) {
    return;
  }
  const PayloadBuilder own(*surface);
  const Bytes head = own.Head();
  if (own.Size() != payload.size() || head.size() + surface->points->Size() != payload.size() ||
      !std::ranges::equal(head, payload.first(head.size()))) {
    return;
  }
  Layout layout{{head.begin(), head.end()}, {}, surface->points->ItemType() == zType::z16s};
  const auto leave = [&](const auto* numbers) {
    const auto start = reinterpret_cast<const z8u*>(numbers) - payload.data();
    layout.numbers.push_back({static_cast<zSize>(start), sizeof *numbers});
    std::fill_n(layout.head.begin() + start, sizeof *numbers, z8u{0});
  };
  const fb::Surface& table = SurfaceIn(payload.data());
  leave(table.offset());
  leave(table.scale());
  leave(table.bounding_box());
  leave(table.stamp());
  bySize_.emplace(payload.size(), std::move(layout));
} catch (const std::bad_alloc&) {
  // Nothing is lost: such payloads are verified one by one.
}

const PayloadLayouts::Layout* PayloadLayouts::Find(PieceReader& reader, z64u size) const {
  const auto known = bySize_.find(size);
  if (known == bySize_.end()) return nullptr;
  const Layout& layout = known->second;
  const Bytes bytes = reader.Look(layout.head.size());
  zBytes head(bytes.begin(), bytes.end());
  for (const auto& [start, length] : layout.numbers) {
    std::fill_n(head.begin() + static_cast<std::ptrdiff_t>(start), length, z8u{0});
  }
  return head == layout.head ? &layout : nullptr;
}

std::optional<Plovia::SurfaceStream> PayloadLayouts::Open(PieceReader& reader, z64u size) const {
  const Layout* layout = Find(reader, size);
  if (layout == nullptr || !layout->heights) return std::nullopt;
  const Bytes bytes = reader.Take(layout->head.size());
  const zBytes head(bytes.begin(), bytes.end());  // aligned
  const fb::Surface& table = SurfaceIn(head.data());
  Plovia::SurfaceStream surface{table.width(), table.length(), ToPoint(table.scale(), {}),
                                ToPoint(table.offset(), {}), ToStamp(table.stamp())};
  const zSize count = (size - head.size()) / sizeof(z16s);
  surface.heights = [&reader, count,
                     box = ToBox(table.bounding_box())](const Plovia::SurfaceStream::Put& put) {
    constexpr zSize kBlock = zSize{128} << 10;  // stays in the cache
    std::vector<z16s> block(std::min(count, kBlock));
    for (zSize left = count; left > 0; left -= block.size()) {
      block.resize(std::min(block.size(), left));
      reader.ReadInto(block.data(), block.size() * sizeof(z16s));
      put(block);
    }
    return box;
  };
  return surface;
}

}  // namespace sdk::replay
