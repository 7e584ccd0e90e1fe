// SPDX-License-Identifier: MIT
#include "loadfilestream/filereader.h"
#include "loadfilestream/srfheader.h"

namespace {

// Makes an array of length x width items and fills it from the file, which must hold them.
zStatus ReadGrid(FileReader& file, const SurfaceBuffer& record, zType type,
                 Orv::Object<void*>& array, zAlloc alloc) {
  const z64u count = z64u{record.width} * record.length;
  if (count > file.Left() / zType_Size(type)) return zERROR_STREAM;
  const zStatus status = zArray2_Construct(array.Out(), type, record.length, record.width, alloc);
  return status == zOK ? file.ReadArray(array.Get()) : status;
}

}  // namespace

zStatus LoadSrfFileBuffer(const zBytes& bytes, SurfaceBuffer& record, zAlloc alloc) {
  FileReader file;
  zStatus status = file.Open(bytes, alloc);
  if (status != zOK) return status;
  z32u version = 0;
  status = file.Read(zType::z32u, &version, 1);
  if (status != zOK) return status;
  record.points.Reset();
  if (version != kSrfVersion) return kUnsupportedVersion;

  status = ForEachSrfField(
      record, [&](zType type, void* items, zSize count) { return file.Read(type, items, count); });
  if (status != zOK) return status;
  status = ReadGrid(file, record, zType::z16s, record.points, alloc);
  if (status != zOK) return status;

  record.hasIntensity = 0;
  z8u flag = 0;
  status = file.Read(zType::z8u, &flag, 1);
  if (status != zOK || flag == 0) return status;
  if (flag != 1) return kMalformed;
  record.hasIntensity = 1;
  return ReadGrid(file, record, zType::z8u, record.intensities, alloc);
}
