// SPDX-License-Identifier: MIT
#include "formats/srf/srf.h"

#include "formats/srf/validation.h"
#include "statuses.h"

namespace {

zStatus ReadGrid(FileReader& file, const SrfHeader& header, zType type, Orv::Object<void*>& array,
                 zAlloc alloc) {
  const zStatus status = zArray2_Construct(array.Out(), type, header.length, header.width, alloc);
  return status == zOK ? file.ReadArray(array.Get()) : status;
}

}  // namespace

zStatus LoadSrfFileBuffer(const zSource& source, Scan& record, zAlloc alloc) {
  if (source.Size() == 0) return kMissing;
  FileReader file(source);
  SrfFile srf;
  const Complaints complaints = ValidateSrf(file, source.Size(), srf);
  if (!complaints.empty()) return complaints.front().status;

  const SrfHeader& header = srf.header;
  record.kind = ScanKind::surface;
  record.width = header.width;
  record.length = header.length;
  record.scale = header.scale;
  record.offset = header.offset;
  record.intensities.Reset();
  zStatus status = file.Seek(kSrfHeaderSize);
  if (status == zOK) status = ReadGrid(file, header, zType::z16s, record.points, alloc);
  if (status != zOK || !srf.hasIntensities) return status;
  status = file.Seek(static_cast<z64s>(file.Position() + 1));  // the flag
  return status == zOK ? ReadGrid(file, header, zType::z8u, record.intensities, alloc) : status;
}
