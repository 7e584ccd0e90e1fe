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

zStatus OpenSrfFile(const zSource& source, HeightFile& opened, zAlloc alloc) {
  if (source.Size() == 0) return kMissing;
  FileReader file(source);
  SrfFile srf;
  const Complaints complaints = ValidateSrf(file, source.Size(), srf);
  if (!complaints.empty()) return complaints.front().status;

  const SrfHeader& header = srf.header;
  Scan& scan = opened.scan;
  scan.kind = ScanKind::surface;
  scan.width = header.width;
  scan.length = header.length;
  scan.scale = header.scale;
  scan.offset = header.offset;
  const zSize points = zSize{header.width} * header.length;
  if (srf.hasIntensities) {
    zStatus status = file.Seek(static_cast<z64s>(kSrfHeaderSize + points * sizeof(z16s) + 1));
    if (status == zOK) status = ReadGrid(file, header, zType::z8u, scan.intensities, alloc);
    if (status != zOK) return status;
  }
  const zStatus status = file.Seek(kSrfHeaderSize);
  opened.read = [file](std::span<z16s> heights) mutable {
    return file.Read(zType::z16s, heights.data(), heights.size());
  };
  return status;
}

zStatus LoadSrfFileBuffer(const zSource& source, Scan& record, zAlloc alloc) {
  HeightFile file;
  const zStatus status = OpenSrfFile(source, file, alloc);
  if (status != zOK) return status;
  return LoadHeights(file, record, alloc);
}
