// SPDX-License-Identifier: MIT
// Surface files of the kind FUZZED_TYPE, through a message into every format.
#include "fuzz.h"
#include "support/scan_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Attempt([&] {
    const Handle message = ReadScan(zBytes(data, data + size), FUZZED_TYPE);
    static_cast<void>(WriteScan(message, PCD));
    // The compact format is exact, so a surface that was read can be read again.
    const zBytes once = WriteScan(message, SRF);
    Require(WriteScan(ReadScan(once, SRF), SRF) == once);

    const Handle digitalSurf = MakeStream();
    if (GetSurFileStream(message.Get(), digitalSurf.Get()) != zOK) return;
    static_cast<void>(ReadScan(BytesOf(digitalSurf.Get()), SUR));
  });
  return 0;
}
