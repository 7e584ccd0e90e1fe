// SPDX-License-Identifier: MIT
// Replay streams: what is read can be written and read again.
#include "fuzz.h"
#include "sdk/pipeline.h"
#include "support/recordings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Attempt([&] {
    const zBytes stream(data, data + size);
    Plovia::ReplaySerializer reader;
    reader.LoadBuffer(stream);
    Plovia::ReplaySerializer writer;
    writer.WriteScannerInfo(reader.ReadScannerInfo());
    const bool classic = reader.GetReplayInfo().IsClassic();
    const z64u parts = classic ? 1 : reader.SegmentCount();
    std::string expected;
    for (z64u part = 0; part < parts; ++part) {
      if (!classic) reader.LoadDataIndexFiles();
      const std::vector<z32u> indexes = reader.ReadIndexInfo();
      for (zSize frame = 0; frame < indexes.size(); ++frame) {
        writer.WriteIndexInfo(indexes[frame]);
        const Plovia::ReplayFrame messages = reader.ReadData(frame);
        for (const Handle& message : messages) writer.WriteData(message);
        expected += Describe(messages);
      }
    }
    const zBytes written = writer.GetReplayFile(classic);
    std::string found = ReadRecording(written);
    Require(found.size() >= expected.size());
  });
  return 0;
}
