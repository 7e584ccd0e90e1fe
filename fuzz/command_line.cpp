// SPDX-License-Identifier: MIT
// Command lines, run in a folder with one surface. Names from the input are not used as paths, so
// that nothing outside of the folder is touched.
#include "commandargsoperator/commandargsoperator.h"
#include "fuzz.h"
#include "scratch.h"
#include "surfacefileconverter/filenames.h"

namespace {

void WriteSurface() {
  constexpr z8u kFile[] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
  zBytes bytes(63, 0);  // 1 x 1 point of height 0, no intensities
  std::copy(std::begin(kFile), std::end(kFile), bytes.begin());
  ScratchFolder::Write("a.srf", bytes.data(), bytes.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder scratch;
  static const bool prepared = (WriteSurface(), true);
  Require(prepared);
  const std::string line(reinterpret_cast<const char*>(data), size);
  Attempt([&] {
    CommandArgsOperator tool;
    ParsedArgs args = parseCommandLine(line, tool.getKnownOptions());
    for (const auto& [option, value] : args) Require(line.find(value) != std::string::npos);
    for (const char* option : {"-i", "--input"}) {
      if (args.contains(option)) args[option] = "a.srf";
    }
    for (const char* option : {"-o", "--output"}) {
      if (args.contains(option) && !args[option].empty()) args[option] = "b.rep";
    }
    tool.process(args);
  });
  Attempt([&] { Orv::Format(line, 1, "text", 2.5); });
  Attempt([&] { GetIndexFileName(line, "Frame", 1, line); });
  return 0;
}
