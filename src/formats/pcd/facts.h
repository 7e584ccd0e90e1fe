// SPDX-License-Identifier: MIT
// What point clouds tell.
#pragma once

#include <string_view>

#include "formats/description.h"

struct CloudFacts {
  std::string fields;     // separated by blanks
  std::string viewpoint;  // not used by a conversion
  bool binary = false;
};

// Keys of cautions about what a conversion makes nonsense of: coordinates that are no 32-bit floats
// but are read as such, and axes of which no raw value can be told.
inline constexpr std::string_view kCoordinateType = "coordinate-type";
inline constexpr std::string_view kRangeTooWide = "range-too-wide";

// Looks at a whole file; no facts where its header cannot be read.
std::optional<CloudFacts> DescribePcd(const zSource& file, ScanFileDescription& description);
