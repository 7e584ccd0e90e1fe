// SPDX-License-Identifier: MIT
// Scan files to messages and back, as conversions do it.
#pragma once

#include "getfilestream/getfilestream.h"
#include "support/scans.h"

// Throws what the conversion throws.
inline Handle ReadScan(const zBytes& bytes, FileType fileType) {
  const zSourcePtr file = SourceOf(bytes);
  Handle message;
  if (fileType == PRO) {
    GenerateProfileMsgFromBuffer(message, *file, fileType, DefaultAlloc());
  } else if (fileType == PCD) {
    GenerateSurfaceMsgFromBuffer(message, *file, PcdOptions{}, DefaultAlloc());
  } else {
    GenerateSurfaceMsgFromBuffer(message, *file, fileType, DefaultAlloc());
  }
  return message;
}

inline zBytes WriteScan(const Handle& message, FileType fileType) {
  const Handle stream = MakeStream();
  GetMsgDataFileStream(message.Get(), fileType, stream.Get(), DefaultAlloc());
  return BytesOf(stream.Get());
}
