// SPDX-License-Identifier: MIT
#include "formats/srf/validation.h"

#include "statuses.h"

z64u SrfFile::Size() const {
  const z64u points = z64u{header.width} * header.length;
  return kSrfHeaderSize + points * sizeof(z16s) + 1 + (hasIntensities ? points : 0);
}

Complaints ValidateSrf(FileReader& file, z64u fileSize, SrfFile& srf) {
  SrfHeader& header = srf.header;
  const zStatus status = ForEachSrfField(header, [&](zType type, void* items, zSize count) {
    const zStatus read = file.Read(type, items, count);
    return read == zOK && header.version != kSrfVersion ? kUnsupportedVersion : read;
  });
  if (status == kUnsupportedVersion) {
    return {MakeComplaint(0, status, "the file is of another version than %u", kSrfVersion)};
  }
  if (status != zOK) {
    return {MakeComplaint(fileSize, status, "the file ends in its header of %zu bytes",
                          kSrfHeaderSize)};
  }

  Complaints cut{MakeComplaint(fileSize, zERROR_STREAM, "%u x %u points do not fit into the file",
                               header.width, header.length)};
  const z64u points = z64u{header.width} * header.length;
  if (points > file.Left() / sizeof(z16s)) return cut;
  const z64u flagAt = kSrfHeaderSize + points * sizeof(z16s);
  z8u flag = 0;
  if (file.Seek(static_cast<z64s>(flagAt)) != zOK || file.Read(zType::z8u, &flag, 1) != zOK) {
    return cut;
  }
  if (flag > 1) {
    return {{flagAt, kMalformed, "the flag before the intensities is not 0 or 1"}};
  }
  if (flag == 1 && points > file.Left()) return cut;
  srf.hasIntensities = flag == 1;
  return {};
}
