// SPDX-License-Identifier: MIT
#include "inspect/measure/colourrange.h"

#include <charconv>
#include <cmath>

namespace {

std::optional<z64f> NumberOf(std::string_view text) {
  z64f number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return {};
  return number;
}

}  // namespace

std::optional<ColourChoice> ColourChoice::FromText(std::string_view text) {
  if (text == "auto") return ColourChoice{};
  if (text == "full") return ColourChoice{Kind::full};
  const zSize middle = text.find_first_of(",:");
  if (middle == text.npos) return {};
  const std::optional<z64f> low = NumberOf(text.substr(0, middle));
  const std::optional<z64f> high = NumberOf(text.substr(middle + 1));
  if (!low || !high || *low >= *high) return {};
  if (text[middle] == ':') return ColourChoice{Kind::values, *low, *high};
  if (*low < 0 || *high > 100) return {};
  return ColourChoice{Kind::percentiles, *low, *high};
}

std::vector<z64f> ColourChoice::Percents() const {
  if (kind == Kind::percentiles) return {low, high};
  return {1, 99};
}

void SharedRange::Add(const HeightStatistics& scan) {
  if (scan.figures.validPoints == 0) return;
  all_.Include(scan.figures.lowest);
  all_.Include(scan.figures.highest);
  most_.Include(scan.percentiles[0]);
  most_.Include(scan.percentiles[1]);
}

Span SharedRange::Colours() const {
  switch (choice_.kind) {
    case ColourChoice::Kind::full:
      return all_;
    case ColourChoice::Kind::percentiles:
      return most_;
    case ColourChoice::Kind::values:
      return {choice_.low, choice_.high};
    default:
      break;
  }
  const bool differs = most_.Size() > 0 && all_.Size() > 2 * most_.Size();
  return differs ? most_ : all_;
}
