// SPDX-License-Identifier: MIT
// Replay streams: what is read can be written and read again.
#include "fuzz.h"
#include "sdk/pipeline.h"
#include "support/recordings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Attempt([&] {
    const zBytes stream(data, data + size);
    Plovia::ReplaySerializer reader;
    // As from a file, in pieces of any size.
    reader.LoadBuffer(SourceOf(stream, size % 4 == 0 ? 1 : size));
    const bool classic = reader.GetReplayInfo().IsClassic();
    const Handle written = MakeStream();
    Plovia::ReplaySerializer writer;
    writer.BeginReplay(written.Get(), classic);
    writer.WriteScannerInfo(reader.ReadScannerInfo());
    const z64u parts = classic ? 1 : reader.SegmentCount();
    std::string expected;
    for (z64u part = 0; part < parts; ++part) {
      if (!classic) reader.LoadDataIndexFiles();
      const std::vector<z32u> indexes = reader.ReadIndexInfo();
      for (zSize frame = 0; frame < indexes.size(); ++frame) {
        writer.WriteIndexInfo(indexes[frame]);
        const Frame messages = MessagesOf(reader, reader.ReadData(frame));
        for (const Handle& message : messages) writer.WriteData(message);
        expected += Describe(messages);
      }
    }
    writer.EndReplay();
    std::string found = ReadRecording(SourceOf(BytesOf(written.Get())));
    Require(found.size() >= expected.size());
  });
  return 0;
}
