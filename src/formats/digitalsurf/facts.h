// SPDX-License-Identifier: MIT
// What Digital Surf files tell and a conversion does not use.
#pragma once

#include <array>
#include <string>

#include "formats/description.h"

struct DigitalSurfFacts {
  std::string objectName, operatorName, comment;
  std::string acquired;  // "2024-05-31 12:00:00", empty when no date is set
  z16s objectType = 0;   // 1 profile, 2 surface
  z16s objectCount = 0;
  z16s bitsPerPoint = 0;
  bool specialPoints = false;  // samples below the smallest one are not measured
  std::array<std::string, 3> axes, stepUnits, lengthUnits;  // of x, y and z
  z64u privateBytes = 0, bytesAfterSamples = 0;
};

// Looks at a whole file; no facts where its header cannot be read.
std::optional<DigitalSurfFacts> DescribeDigitalSurf(const zSource& source, bool profile,
                                                    ScanFileDescription& description);
