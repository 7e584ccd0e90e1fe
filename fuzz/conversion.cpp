// SPDX-License-Identifier: MIT
// Whole conversions: a file of any kind is imported and exported to everything that it can become.
// The first byte chooses the kind, the second the options.
#include "fuzz.h"
#include "scratch.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

constexpr const char* kOutputs[] = {"b.srf", "b.sur", "b.pro", "b.pcd", "b.csv", "b.rep"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder scratch;
  if (size < 2) return 0;
  const ScratchFolder::Input file = ScratchFolder::WriteInput(data, size);
  const std::string& input = file.name;
  const z8u options = file.options;
  Attempt([&] {
    SurfaceFileConverter converter;
    converter.importFile(input);
    converter.exportAll = (options & 1) != 0;
    if (input == "a.pcd") {
      if ((options & 2) != 0) converter.setPcdWidth(7);
      if ((options & 4) != 0) converter.setPcdHeight(options);
      converter.setPcdFlipXZEnabled(options >> 7);
    } else if (converter.isRecordingData()) {
      Attempt([&] { converter.setFrameIndex(options >> 4); });
    }
    for (const char* output : kOutputs) Attempt([&] { converter.exportFile(output); });
  });
  // What came out of it can be taken in again.
  Attempt([&] {
    if (!std::filesystem::exists("b.rep")) return;
    SurfaceFileConverter converter;
    converter.importFile("b.rep");
    for (const char* output : kOutputs) Attempt([&] { converter.exportFile(output); });
  });
  scratch.Clear();
  return 0;
}
