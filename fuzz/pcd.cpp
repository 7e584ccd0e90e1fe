// SPDX-License-Identifier: MIT
// Point clouds with options, through a message and back. The options stand at the end of the input.
#include <fuzzer/FuzzedDataProvider.h>

#include <bit>

#include "fuzz.h"
#include "getfilestream/getfilestream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const auto width = input.ConsumeIntegral<std::uint8_t>();
  const auto height = input.ConsumeIntegral<std::uint8_t>();
  const auto switches = input.ConsumeIntegral<std::uint8_t>();
  const auto real = [&] {
    const std::int64_t bits = input.ConsumeIntegral<std::int64_t>();
    return (switches & 8) != 0 ? std::bit_cast<z64f>(bits) : static_cast<z64f>(bits % 1000) / 8;
  };
  PcdOptions options{width, height, (switches & 1) != 0, {}, {}};
  const zPoint3d64f invalid{real(), real(), real()};
  const z64f zoom = real();
  if ((switches & 2) != 0) options.invalidPoint = invalid;
  if ((switches & 4) != 0) options.zoom = zoom;
  const auto bytes = input.ConsumeRemainingBytes<std::uint8_t>();
  Attempt([&] {
    Handle message;
    GenerateSurfaceMsgFromBuffer(message, *SourceOf(zBytes(bytes.begin(), bytes.end())), options,
                                 DefaultAlloc());
    const Handle cloud = MakeStream();
    GetMsgDataFileStream(message.Get(), PCD, cloud.Get(), DefaultAlloc());
    Handle again;
    GenerateSurfaceMsgFromBuffer(again, *SourceOf(BytesOf(cloud.Get())), PcdOptions(),
                                 DefaultAlloc());
  });
  return 0;
}
