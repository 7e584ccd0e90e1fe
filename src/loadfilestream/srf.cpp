// SPDX-License-Identifier: MIT
#include "loadfilestream/srfheader.h"

namespace {

constexpr zStatus kUnsupportedVersion = -989;

class SrfReader {
 public:
  zStatus Open(const zBytes& bytes, zAlloc alloc) {
    if (bytes.empty()) return kEmptyInput;
    zStatus status = zMemory_Construct(stream_.Out(), alloc);
    if (status != zOK) return status;
    status = zMemory_Attach(stream_.Get(), bytes.data(), 0, bytes.size(), bytes.size());
    if (status != zOK) return status;
    return zDat6Serializer_Construct(serializer_.Out(), stream_.Get(), alloc);
  }

  zStatus Read(zType type, void* items, zSize count) {
    return zSerializer_Read(serializer_.Get(), type, items, count);
  }

  // A new array of length x width items, filled from the file, which must hold them.
  zStatus ReadGrid(Orv::Object<void*>& array, zType type, const SurfaceBuffer& record,
                   zAlloc alloc) {
    const z64u count = z64u{record.width} * record.length;
    const zSize left = zMemory_Length(stream_.Get()) - zMemory_Position(stream_.Get());
    if (count > left / zType_Size(type)) return zERROR_STREAM;
    const zStatus status = zArray2_Construct(array.Out(), type, record.length, record.width, alloc);
    if (status != zOK) return status;
    return zSerializer_ReadPrimitives(serializer_.Get(), array.Get(), zArray_Count(array.Get()), 1);
  }

 private:
  Orv::Object<void*> stream_;      // the whole file
  Orv::Object<void*> serializer_;  // over the stream; ends before it
};

}  // namespace

zStatus LoadSrfFileBuffer(const zBytes& bytes, SurfaceBuffer& record, zAlloc alloc) {
  SrfReader file;
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
  status = file.ReadGrid(record.points, zType::z16s, record, alloc);
  if (status != zOK) return status;

  record.hasIntensity = 0;
  z8u flag = 0;
  status = file.Read(zType::z8u, &flag, 1);
  if (status != zOK || flag == 0) return status;
  if (flag != 1) return kMalformed;
  record.hasIntensity = 1;
  return file.ReadGrid(record.intensities, zType::z8u, record, alloc);
}
