// SPDX-License-Identifier: MIT
// What point clouds tell.
#pragma once

#include "formats/description.h"

struct CloudFacts {
  std::string fields;     // separated by blanks
  std::string viewpoint;  // not used by a conversion
  bool binary = false;
};

// Looks at a whole file; no facts where its header cannot be read.
std::optional<CloudFacts> DescribePcd(const zSource& file, ScanFileDescription& description);
