// SPDX-License-Identifier: MIT
#include "inspect/reduction/ownunits.h"

#include <algorithm>
#include <cmath>

namespace {

// What is told in mm stays so. `most`: a larger step gets a larger unit.
AxisUnit Readable(const AxisUnit& unit, z64f step, z64f most) {
  constexpr z64f kLeast = 1e-5;
  const AxisUnit metric[] = {{"m", 1e3}, {"mm", 1}, {"µm", 1e-3}, {"nm", 1e-6}, {"pm", 1e-9}};
  const auto* place = std::ranges::find(metric, unit.name, &AxisUnit::name);
  if (place == std::end(metric) || unit.mm == 1 || !std::isfinite(step) || step == 0) return unit;
  const auto steps = [&] { return std::abs(step) * (unit.mm / place->mm); };
  while (steps() < kLeast && place + 1 != std::end(metric)) ++place;
  while (steps() > most && place != metric) --place;
  return *place;
}

void Change(AxisUnit& unit, const AxisUnit& other, z64f& scale, z64f& offset) {
  if (unit.mm == 0 || other.mm == 0) return;
  if (unit.mm != other.mm) {
    scale *= unit.mm / other.mm;
    offset *= unit.mm / other.mm;
  }
  unit = other;
}

}  // namespace

Scan InOwnUnits(Scan scan) {
  auto& [x, y, z] = scan.units;
  Change(x, Readable(x, scan.scale.x, 50), scan.scale.x, scan.offset.x);
  Change(y, x, scan.scale.y, scan.offset.y);
  Change(z, Readable(z, scan.scale.z, 0.5), scan.scale.z, scan.offset.z);
  return scan;
}

z64f HeightUnit(const Scan& scan) {
  const z64f x = scan.units[0].mm;
  const z64f z = scan.units[2].mm;
  return x == 0 ? 0 : z / x;
}
