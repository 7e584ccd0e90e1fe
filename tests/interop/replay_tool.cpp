// SPDX-License-Identifier: MIT
// Makes recordings for the interoperability test, and lists those that it is given:
//   trelvane_replay make segmented|classic <file>
//   trelvane_replay list <file>
#include <fstream>
#include <iostream>
#include <iterator>

#include "support/recordings.h"

namespace {

// Two scanners and three frames. The second scanner has one source for the frame's last two
// messages, an empty surface and one without a valid point.
int Make(bool classic, const char* path) {
  Plovia::ReplaySerializer serializer;
  serializer.WriteScannerInfo(
      {MakeScanner(),
       {"r4xxx", "Scanner-\xC3\xBC", "Scanner \xC3\xBC", {{"Left", "Left", 14, 0, 2}}}});
  for (const int seed : {1, 2, 3}) {
    serializer.WriteIndexInfo(static_cast<z32u>(39 + seed));
    for (const Handle& message : MakeFrame(seed)) serializer.WriteData(message);
    serializer.WriteData(MakeSurface(0, 4, {}));
    serializer.WriteData(MakeSurface(2, 1, {kInvalidRaw, kInvalidRaw}));
  }
  const zBytes stream = serializer.GetReplayFile(classic);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(stream.data()), std::ssize(stream));
  return file.flush() ? 0 : 1;
}

int List(const char* path) {
  std::ifstream file(path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  const auto* bytes = reinterpret_cast<const z8u*>(content.data());
  try {
    std::cout << ReadRecording({bytes, bytes + content.size()});
  } catch (const Orv::Exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc > 1 ? argv[1] : "";
  if (command == "make" && argc == 4) return Make(std::string(argv[2]) == "classic", argv[3]);
  if (command == "list" && argc == 3) return List(argv[2]);
  std::cerr << "usage: make segmented|classic <file>, or list <file>\n";
  return 2;
}
