// SPDX-License-Identifier: MIT
#include "formats/srf/srf.h"

#include "formats/srf/validation.h"

void DescribeSrf(const zBytes& bytes, ScanFileDescription& description) {
  zAlloc alloc = &zAllocator::Default();
  FileReader file;
  SrfFile srf;
  zStatus status = file.Open(bytes, alloc);
  if (status == zOK) description.complaints = ValidateSrf(file, bytes.size(), srf);
  if (!description.complaints.empty()) return;
  Scan scan;
  if (status == zOK) status = LoadSrfFileBuffer(bytes, scan, alloc);
  if (status != zOK) {
    description.complaints.push_back(
        MakeComplaint({}, status, "the points cannot be read (status %d)", status));
    return;
  }
  if (bytes.size() > srf.Size()) {
    description.Note("%llu bytes after the points are ignored", bytes.size() - srf.Size());
  }
  description.scan = std::move(scan);
}
