// SPDX-License-Identifier: MIT
#include "loadfilestream/filereader.h"

zStatus FileReader::Open(const zBytes& bytes, zAlloc alloc) {
  if (bytes.empty()) return kMissing;
  zStatus status = zMemory_Construct(stream_.Out(), alloc);
  if (status != zOK) return status;
  status = zMemory_Attach(stream_.Get(), bytes.data(), 0, bytes.size(), bytes.size());
  if (status != zOK) return status;
  return zDat6Serializer_Construct(serializer_.Out(), stream_.Get(), alloc);
}
