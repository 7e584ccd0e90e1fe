// SPDX-License-Identifier: MIT
// Surface files of the kind FUZZED_TYPE, through a message into every format.
#include "fuzz.h"
#include "getfilestream/getfilestream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Attempt([&] {
    Handle message;
    GenerateSurfaceMsgFromBuffer(message, zBytes(data, data + size), FUZZED_TYPE, Alloc());
    const Handle cloud = MakeStream();
    GetMsgDataFileStream(message.Get(), PCD, cloud.Get(), Alloc());
    const Handle once = MakeStream();
    GetMsgDataFileStream(message.Get(), SRF, once.Get(), Alloc());
    // The compact format is exact, so a surface that was read can be read again.
    Handle again;
    GenerateSurfaceMsgFromBuffer(again, BytesOf(once.Get()), SRF, Alloc());
    const Handle twice = MakeStream();
    GetMsgDataFileStream(again.Get(), SRF, twice.Get(), Alloc());
    Require(BytesOf(once.Get()) == BytesOf(twice.Get()));

    const Handle digitalSurf = MakeStream();
    if (GetSurFileStream(message.Get(), digitalSurf.Get()) != zOK) return;
    GenerateSurfaceMsgFromBuffer(message, BytesOf(digitalSurf.Get()), SUR, Alloc());
  });
  return 0;
}
