// SPDX-License-Identifier: MIT
#include "formats/srf/srf.h"

#include "formats/srf/validation.h"

void DescribeSrf(const zSource& source, ScanFileDescription& description) {
  FileReader file(source);
  SrfFile srf;
  description.complaints = ValidateSrf(file, source.Size(), srf);
  if (!description.complaints.empty()) return;
  Scan scan;
  const zStatus status = LoadSrfFileBuffer(source, scan, &zAllocator::Default());
  if (status != zOK) {
    description.complaints.push_back(
        MakeComplaint({}, status, "the points cannot be read (status %d)", status));
    return;
  }
  if (source.Size() > srf.Size()) {
    description.Note("%llu bytes after the points are ignored", source.Size() - srf.Size());
  }
  description.scan = std::move(scan);
}
