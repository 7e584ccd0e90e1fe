// SPDX-License-Identifier: MIT
// What the readers of Digital Surf files, and whoever looks into them, call wrong.
#pragma once

#include "formats/description.h"
#include "formats/digitalsurf/layout.h"

// Why the header of a file, or the zones behind it, cannot be read. -4 where the file ends too
// early and 0 for another signature.
Complaint ComplainOfHeader(const zSource& file);

// Whether the samples that a header tells of can be there: `left` bytes of the file of `fileSize`
// bytes stand behind header and zones. -997 for a profile of more or less than one line, -2 for a
// negative size, 0 for samples of another size than 16 and 32 bits, -4 where samples are missing.
Complaints ValidateSamples(const SurHeader& header, bool profile, z64u left, z64u fileSize);
