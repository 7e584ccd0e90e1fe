// SPDX-License-Identifier: MIT
#include "inspect/measure/units.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "text.h"

namespace {

const AxisUnit kMetric[] = {{"m", 1e3}, {"mm", 1}, {"µm", 1e-3}, {"nm", 1e-6}, {"pm", 1e-9}};

std::string Fixed(z64f value, int decimals) {
  char text[400];
  const auto end =
      std::to_chars(text, std::end(text), value, std::chars_format::fixed, decimals).ptr;
  std::string fixed(text, end);
  if (decimals > 0) {
    fixed.erase(fixed.find_last_not_of('0') + 1);
    if (fixed.ends_with('.')) fixed.pop_back();
  }
  return fixed == "-0" ? "0" : fixed;
}

// Takes off what lies far from 0: about the middle, as a multiple of the power of ten below
// `digit`.
ShownUnit CountingFromNearBy(const AxisUnit& told, ShownUnit shown, const Span& values,
                             z64f digit) {
  constexpr z64f kFar = 100;
  const z64f largest = std::max(std::abs(values.low), std::abs(values.high));
  if (!(digit > 0) || !std::isfinite(largest) || largest <= kFar * values.Size()) return shown;
  const z64f round = std::pow(10, std::floor(std::log10(digit) + 1e-9));
  shown.reference = std::round((values.low + values.Size() / 2) / round) * round;
  const ShownUnit unit = FittingUnit(told, std::abs(shown.reference));
  shown.referenceText =
      NumberText(unit.Shown(shown.reference), round * unit.factor) + " " + unit.name;
  return shown;
}

// Heights are told from their middle, places from a round number: theirs are ticks of an axis.
ShownUnit CountingHeights(const AxisUnit& told, const ShownUnit& shown, const Span& values) {
  return CountingFromNearBy(told, shown, values, values.Size() / 2);
}
ShownUnit CountingPlaces(const AxisUnit& told, const ShownUnit& shown, const Span& values) {
  return CountingFromNearBy(told, shown, values, values.Size() * 10);
}

z64f SpanOf(const Span& values) {
  return values.Size() > 0 ? values.Size() : std::max(std::abs(values.low), std::abs(values.high));
}

// The places of a scan along x and y.
std::array<Span, 2> ExtentOf(const Scan& scan) {
  std::array<Span, 2> extent;
  if (IsGrid(scan)) {
    for (const z64f column : {0.0, static_cast<z64f>(scan.width)}) {
      extent[0].Include(Real(column, scan.X()));
    }
    for (const z64f row : {0.0, static_cast<z64f>(scan.length)}) {
      extent[1].Include(Real(row, scan.Y()));
    }
    return extent;
  }
  ForEachPlace(scan, [&extent](const PlacedHeight& place) {
    extent[0].Include(place.u);
    extent[1].Include(place.v);
  });
  return extent;
}

void Change(const ShownUnit& shown, AxisUnit& unit, z64f& scale, z64f& offset) {
  scale *= shown.factor;
  offset = shown.Shown(offset);
  unit = {shown.name, shown.mm};
}

}  // namespace

std::string NumberText(z64f value, z64f step) {
  constexpr z64f kMostDecimals = 12;
  if (std::abs(value) >= 1e15 || !std::isfinite(value)) return RealText(value);
  if (!(step > 0)) return Fixed(value, static_cast<int>(kMostDecimals));
  z64f decimals = std::clamp(std::ceil(-std::log10(step) - 1e-9), 0.0, kMostDecimals - 1);
  const auto lost = [&] {  // of a step such as 0.125
    const z64f unit = std::pow(10, -decimals);
    return std::abs(std::round(step / unit) * unit - step);
  };
  while (decimals < kMostDecimals && lost() > step / 100) ++decimals;
  return Fixed(value, static_cast<int>(decimals));
}

std::string ShownUnit::AxisName(const char* axis) const {
  std::string from = referenceText;
  if (from.starts_with('-')) {
    from = " + " + from.substr(1);
  } else if (!from.empty()) {
    from = " \u2212 " + from;
  }
  return axis + from + " (" + name + ")";
}

std::string ShownUnit::RangeText(z64f low, z64f high, z64f step) const {
  const z64f shownStep = std::abs(step * factor);
  const std::string from = referenceText.empty() ? "" : referenceText + " + ";
  return from + NumberText(Shown(low), shownStep) + " to " + NumberText(Shown(high), shownStep) +
         " " + name;
}

ShownUnit FittingUnit(const AxisUnit& told, z64f span) {
  const auto* place = std::ranges::find(kMetric, told.name, &AxisUnit::name);
  if (place == std::end(kMetric) || !(span > 0) || !std::isfinite(span)) {
    return {told.name, told.mm, 1, 0, {}};
  }
  const z64f mm = span * told.mm * (1 + 1e-9);
  const auto* unit =
      std::ranges::find_if(kMetric, [mm](const AxisUnit& one) { return one.mm <= mm; });
  if (unit == std::end(kMetric)) --unit;
  return {unit->name, unit->mm, told.mm / unit->mm, 0, {}};
}

ShownUnit FittingUnit(const AxisUnit& told, const Span& values) {
  return CountingHeights(told, FittingUnit(told, SpanOf(values)), values);
}

z64f LengthRatio(const ShownUnit& x, const ShownUnit& other) {
  return x.mm == 0 ? 0 : other.mm / x.mm;
}

ShownUnits FittingUnits(const Scan& scan, const Span& heights) {
  const auto& [x, y, z] = scan.units;
  const auto [across, along] = ExtentOf(scan);
  z64f width = SpanOf(across);
  z64f length = SpanOf(along);
  if (x.mm > 0 && y.mm > 0 && !scan.IsProfile()) {
    const z64f larger = std::max(width * x.mm, length * y.mm);
    width = larger / x.mm;
    length = larger / y.mm;
  }
  return {CountingPlaces(x, FittingUnit(x, width), across),
          CountingPlaces(y, FittingUnit(y, length), along), FittingUnit(z, heights)};
}

Scan InUnits(Scan scan, const ShownUnits& units) {
  Change(units.x, scan.units[0], scan.scale.x, scan.offset.x);
  Change(units.y, scan.units[1], scan.scale.y, scan.offset.y);
  Change(units.z, scan.units[2], scan.scale.z, scan.offset.z);
  return scan;
}
