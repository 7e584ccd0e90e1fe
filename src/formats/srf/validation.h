// SPDX-License-Identifier: MIT
// What the reader of compact surface files, and whoever looks into them, call wrong.
#pragma once

#include "formats/description.h"
#include "formats/filereader.h"
#include "formats/srf/layout.h"

struct SrfFile {
  SrfHeader header;
  bool hasIntensities = false;

  // Bytes of the whole file.
  z64u Size() const;
};

// Reads all but heights and intensities of a file of `fileSize` bytes, which is at its start. -989
// for another version, -984 for a flag that is neither 0 nor 1, -4 where the file ends too early.
Complaints ValidateSrf(FileReader& file, z64u fileSize, SrfFile& srf);
