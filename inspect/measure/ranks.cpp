// SPDX-License-Identifier: MIT
#include "inspect/measure/ranks.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

constexpr zSize kMostSorted = 1 << 20;

// Where a rank lies.
struct Place {
  zSize part;
  z64f within;  // of the heights in its part, from 0
};

std::vector<Place> PlacesOf(const std::vector<z64f>& ranks, const Histogram& histogram) {
  std::vector<Place> places;
  zSize part = 0;
  z64f before = histogram.Below();
  for (const z64f rank : ranks) {
    while (part + 1 < histogram.Counts().size() && before + histogram.Counts()[part] <= rank) {
      before += histogram.Counts()[part++];
    }
    places.push_back({part, rank - before});
  }
  return places;
}

struct Counted {
  z64f height, count;
};

// Gives the heights in the parts with a place.
template <class Use>
void ForEachWanted(const HeightBlocks& blocks, const Histogram& histogram,
                   const std::vector<Place>& places, Use use) {
  std::vector<z8u> wanted(histogram.Counts().size());
  for (const Place& place : places) wanted[place.part] = 1;
  blocks([&](const HeightBlock& block) {
    for (zSize i = 0; i < block.heights.size(); ++i) {
      const z64f height = block.heights[i];
      if (!histogram.Has(height)) continue;
      const zSize part = histogram.PartOf(height);
      if (wanted[part] != 0) use(part, Counted{height, block.CountOf(i)});
    }
  });
}

// Nothing where there are too many heights to sort.
std::optional<std::vector<z64f>> Sorted(const HeightBlocks& blocks, const Histogram& histogram,
                                        const std::vector<Place>& places) {
  std::vector<Counted> heights;
  bool tooMany = false;
  ForEachWanted(blocks, histogram, places, [&](zSize, const Counted& height) {
    tooMany = tooMany || heights.size() == kMostSorted;
    if (!tooMany) heights.push_back(height);
  });
  if (tooMany) return std::nullopt;
  std::ranges::sort(heights, {}, &Counted::height);
  std::vector<z64f> found;
  auto height = heights.begin();
  z64f before = 0;  // heights of its part
  for (const Place& place : places) {
    while (histogram.PartOf(height->height) < place.part ||
           before + height->count <= place.within) {
      const zSize part = histogram.PartOf(height->height);
      before += height->count;
      if (histogram.PartOf((++height)->height) != part) before = 0;
    }
    found.push_back(height->height);
  }
  return found;
}

// As if the heights of a part lay evenly between its lowest and its highest.
std::vector<z64f> Estimated(const HeightBlocks& blocks, const Histogram& histogram,
                            const std::vector<Place>& places) {
  struct Extent {
    z64f low = HUGE_VAL, high = -HUGE_VAL;
  };
  std::vector<Extent> extents(histogram.Counts().size());
  ForEachWanted(blocks, histogram, places, [&](zSize part, const Counted& counted) {
    extents[part].low = std::min(extents[part].low, counted.height);
    extents[part].high = std::max(extents[part].high, counted.height);
  });
  std::vector<z64f> found;
  for (const Place& place : places) {
    const Extent& extent = extents[place.part];
    const z64f share = place.within / histogram.Counts()[place.part];
    found.push_back(extent.low + (extent.high - extent.low) * share);
  }
  return found;
}

}  // namespace

Histogram::Histogram(z64f low, z64f high, zSize parts)
    : low_(low),
      high_(high),
      partsPerHeight_(static_cast<z64f>(parts) / (high - low)),
      last_(static_cast<z64f>(parts) - 1),
      counts_(parts) {
  if (!std::isfinite(partsPerHeight_)) partsPerHeight_ = 0;
}

void Histogram::Add(const HeightBlock& block) {
  for (zSize i = 0; i < block.heights.size(); ++i) {
    const z64f height = block.heights[i];
    if (Has(height)) {
      counts_[PartOf(height)] += block.CountOf(i);
    } else if (height < low_) {
      below_ += block.CountOf(i);
    }
  }
}

Histogram Histogram::Narrowed(zSize first, zSize last) const {
  const z64f part = Size() / static_cast<z64f>(counts_.size());
  return {std::max(low_, low_ + (static_cast<z64f>(first) - 1) * part),
          std::min(high_, low_ + (static_cast<z64f>(last) + 2) * part), counts_.size()};
}

std::vector<z64f> HeightsOfRanks(const HeightBlocks& blocks, Histogram histogram,
                                 const std::vector<z64f>& ranks) {
  if (ranks.empty()) return {};
  for (;;) {
    const std::vector<Place> places = PlacesOf(ranks, histogram);
    if (auto found = Sorted(blocks, histogram, places)) return *found;
    Histogram narrower = histogram.Narrowed(places.front().part, places.back().part);
    if (!(narrower.Size() < histogram.Size() / 2)) return Estimated(blocks, histogram, places);
    blocks([&](const HeightBlock& block) { narrower.Add(block); });
    histogram = std::move(narrower);
  }
}
