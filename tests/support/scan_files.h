// SPDX-License-Identifier: MIT
// Scan files to messages and back, as conversions do it.
#pragma once

#include "support/scans.h"
#include "surfacefileconverter/recordingexport.h"

// Throws what the conversion throws.
inline Handle ReadScan(const zBytes& bytes, FileType fileType) {
  const Handle stream = MakeStream();
  WriteRecording({fileType, SourceOf(bytes)}, {}, DefaultAlloc(), {}, stream.Get());
  Plovia::ReplaySerializer recording;
  recording.LoadBuffer(SourceOf(BytesOf(stream.Get())));
  return recording.ReadMessage(0);
}

inline zBytes WriteScan(const Handle& message, FileType fileType) {
  const Handle stream = MakeStream();
  GetMsgDataFileStream(message.Get(), fileType, stream.Get(), DefaultAlloc());
  return BytesOf(stream.Get());
}
