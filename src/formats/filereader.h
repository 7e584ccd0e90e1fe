// SPDX-License-Identifier: MIT
// The bytes of a whole file, read from front to back as little-endian numbers.
#pragma once

#include "sdk/object.h"
#include "statuses.h"

// All operations return 1 or the status of the SDK call that failed.
class FileReader {
 public:
  // The bytes must outlive the reader. No bytes at all are -999.
  zStatus Open(const zBytes& bytes, zAlloc alloc) {
    if (bytes.empty()) return kMissing;
    zStatus status = zMemory_Construct(stream_.Out(), alloc);
    if (status != zOK) return status;
    status = zMemory_Attach(stream_.Get(), bytes.data(), 0, bytes.size(), bytes.size());
    if (status != zOK) return status;
    return zDat6Serializer_Construct(serializer_.Out(), stream_.Get(), alloc);
  }

  zSize Position() const { return zMemory_Position(stream_.Get()); }
  zSize Left() const { return zMemory_Length(stream_.Get()) - Position(); }
  zStatus Seek(z64s position) { return zStream_Seek(stream_.Get(), position); }

  zStatus Read(zType type, void* items, zSize count) {
    return zSerializer_Read(serializer_.Get(), type, items, count);
  }
  // Fills a whole array.
  zStatus ReadArray(zObject array) {
    return zSerializer_ReadPrimitives(serializer_.Get(), array, zArray_Count(array), 1);
  }

  zSerializer Serializer() const { return serializer_.Get(); }

 private:
  Orv::Object<void*> stream_;
  Orv::Object<void*> serializer_;  // over the stream; ends before it
};
