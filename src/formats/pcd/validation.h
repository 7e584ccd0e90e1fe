// SPDX-License-Identifier: MIT
// What the reader of point clouds, and whoever looks into them, call wrong.
#pragma once

#include "formats/description.h"
#include "formats/pcd/layout.h"

struct PcdFile {
  PcdCloud cloud;
  std::string header;                // with its last line end
  z64u dataStart = 0, dataSize = 0;  // of all that stands behind the header
};

// Parses the header of a file and looks whether its points can be there. -984 for a header that
// breaks the format's rules or is longer than 16 MiB, or fewer points than it tells of; -996 for
// points in text form.
Complaints ValidatePcd(const zSource& file, PcdFile& pcd);

// What stands behind a keyword, with the blank at its end, in a header.
std::string PcdValueOf(std::string_view header, std::string_view keyword);
