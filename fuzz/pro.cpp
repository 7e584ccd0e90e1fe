// SPDX-License-Identifier: MIT
// Profile files, through a message and back.
#include "fuzz.h"
#include "getfilestream/getfilestream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Attempt([&] {
    Handle message;
    GenerateProfileMsgFromBuffer(message, *SourceOf(zBytes(data, data + size)), PRO,
                                 DefaultAlloc());
    const Handle once = MakeStream();
    if (GetProFileStream(message.Get(), once.Get()) != zOK) return;
    Handle again;
    GenerateProfileMsgFromBuffer(again, *SourceOf(BytesOf(once.Get())), PRO, DefaultAlloc());
    const Handle twice = MakeStream();
    Require(GetProFileStream(again.Get(), twice.Get()) == zOK);
    Require(BytesOf(once.Get()) == BytesOf(twice.Get()));
  });
  return 0;
}
