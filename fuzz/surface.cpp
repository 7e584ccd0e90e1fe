// SPDX-License-Identifier: MIT
// Surface files of the kind FUZZED_TYPE, through a message into every format.
#include "fuzz.h"
#include "getfilestream/getfilestream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Attempt([&] {
    Handle message;
    GenerateSurfaceMsgFromBuffer(message, *SourceOf(zBytes(data, data + size)), FUZZED_TYPE,
                                 DefaultAlloc());
    const Handle cloud = MakeStream();
    GetMsgDataFileStream(message.Get(), PCD, cloud.Get(), DefaultAlloc());
    const Handle once = MakeStream();
    GetMsgDataFileStream(message.Get(), SRF, once.Get(), DefaultAlloc());
    // The compact format is exact, so a surface that was read can be read again.
    Handle again;
    GenerateSurfaceMsgFromBuffer(again, *SourceOf(BytesOf(once.Get())), SRF, DefaultAlloc());
    const Handle twice = MakeStream();
    GetMsgDataFileStream(again.Get(), SRF, twice.Get(), DefaultAlloc());
    Require(BytesOf(once.Get()) == BytesOf(twice.Get()));

    const Handle digitalSurf = MakeStream();
    if (GetSurFileStream(message.Get(), digitalSurf.Get()) != zOK) return;
    GenerateSurfaceMsgFromBuffer(message, *SourceOf(BytesOf(digitalSurf.Get())), SUR,
                                 DefaultAlloc());
  });
  return 0;
}
