// SPDX-License-Identifier: MIT
// Lengths in units that people read easily.
#pragma once

#include <string>

#include "inspect/measure/colourrange.h"
#include "scan/scan.h"

// How values are shown that are told in another unit: (value - reference) * factor.
struct ShownUnit {
  std::string name;           // "µm"
  z64f mm = 1;                // 0 for what is no known length
  z64f factor = 1;            // told to shown
  z64f reference = 0;         // told
  std::string referenceText;  // "12.345 mm"; empty where nothing is taken off

  z64f Shown(z64f told) const { return (told - reference) * factor; }
  // "z (mm)", "z - 12.345 mm (µm)"
  std::string AxisName(const char* axis) const;
  // "12.345 mm + -9 to 9 µm". Numbers tell values apart that are `step` from each other, told.
  std::string RangeText(z64f low, z64f high, z64f step) const;
};

// The largest of m, mm, µm, nm and pm that fits into the length `span`, told in `told`. Other units
// stay.
ShownUnit FittingUnit(const AxisUnit& told, z64f span);
// The same for values. Those that are far from 0, by a hundred times what they span, count from
// near by.
ShownUnit FittingUnit(const AxisUnit& told, const Span& values);

// How many units of `x` a unit of `other` is; 0 where one of them is no length.
z64f LengthRatio(const ShownUnit& x, const ShownUnit& other);

struct ShownUnits {
  ShownUnit x, y, z;
};

// Those of a picture of a scan, whose heights lie in `heights`. x and y have one unit where both
// are lengths.
ShownUnits FittingUnits(const Scan& scan, const Span& heights);
// The scan with scale, offset and units as they are shown.
Scan InUnits(Scan scan, const ShownUnits& units);

// A number with as many decimals as tell values apart that are `step` from each other.
std::string NumberText(z64f value, z64f step);
