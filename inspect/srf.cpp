// SPDX-License-Identifier: MIT
// What the tool's own compact surface files tell.
#include "inspect/findings.h"
#include "loadfilestream/srfheader.h"

namespace {

// Bytes of a file with this header and flag, as the loader reads it.
z64u SizeOf(const SurfaceBuffer& record) {
  const z64u points = z64u{record.width} * record.length;
  const z64u intensities = record.hasIntensity == 1 ? points : 0;
  return kSrfHeaderSize + points * sizeof(z16s) + 1 + intensities;
}

}  // namespace

void DescribeSrf(const zBytes& bytes, Findings& findings) {
  SurfaceBuffer record;
  const zStatus status = LoadSrfFileBuffer(bytes, record, &zAllocator::Default());
  if (status == kUnsupportedVersion) {
    return findings.Problem(0, "the file is of another version than %u", kSrfVersion);
  }
  if (bytes.size() < kSrfHeaderSize) {
    return findings.Problem(bytes.size(), "the file ends in its header of %zu bytes",
                            kSrfHeaderSize);
  }
  if (status == kMalformed) {
    return findings.Problem(SizeOf(record) - 1, "the flag before the intensities is not 0 or 1");
  }
  if (status == zERROR_STREAM) {
    return findings.Problem(bytes.size(), "%u x %u points do not fit into the file", record.width,
                            record.length);
  }
  if (status != zOK) return findings.Problem({}, "the points cannot be read (status %d)", status);
  if (bytes.size() > SizeOf(record)) {
    findings.Note("%llu bytes after the points are ignored", bytes.size() - SizeOf(record));
  }
  findings.Take(ToScan(record));
}
