// SPDX-License-Identifier: MIT
// Makes recordings for the interoperability test, and lists those that it is given:
//   trelvane_replay make segmented|classic <file>
//   trelvane_replay list <file>
#include <iostream>

#include "support/recordings.h"
#include "support/temp_directory.h"

namespace {

// Two scanners and three frames. The second scanner has one source for the frame's last two
// messages, an empty surface and one without a valid point.
zBytes Make(bool classic) {
  const Handle stream = MakeStream();
  Plovia::ReplaySerializer serializer;
  serializer.BeginReplay(stream.Get(), classic);
  serializer.WriteScannerInfo(
      {MakeScanner(),
       {"r4xxx", "Scanner-\xC3\xBC", "Scanner \xC3\xBC", {{"Left", "Left", 14, 0, 2}}}});
  for (const int seed : {1, 2, 3}) {
    serializer.WriteIndexInfo(static_cast<z32u>(39 + seed));
    for (const Handle& message : MakeFrame(seed)) serializer.WriteData(message);
    serializer.WriteData(MakeSurface(0, 4, {}));
    serializer.WriteData(MakeSurface(2, 1, {kInvalidRaw, kInvalidRaw}));
  }
  serializer.EndReplay();
  return BytesOf(stream.Get());
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc > 1 ? argv[1] : "";
  if (command == "make" && argc == 4) {
    WriteFile(argv[3], Make(std::string(argv[2]) == "classic"));
  } else if (command == "list" && argc == 3) {
    std::cout << ReadRecording(SourceOf(ToBytes(ReadFile(argv[2]))));
  } else {
    return 2;
  }
}
