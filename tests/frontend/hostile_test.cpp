// SPDX-License-Identifier: MIT
// Files in which one field, length, count or offset lies: it takes its largest values, or one past
// what the file holds. Whatever it says, the program ends on its own, with a last line that fits
// its exit code, in memory that the file's size bounds, and looking at the file ends, too.
#include <gmock/gmock.h>

#include <numeric>

#include "inspect/inspect.h"
#include "support/archives.h"
#include "support/csv_export.h"
#include "support/run_program.h"
#include "support/sur_file.h"

namespace {

void Survive(const std::string& name, const zBytes& bytes, const std::string& change = {}) {
  SCOPED_TRACE(name + ": " + change);
  WriteFile(name, bytes);
  const char* output = name == "a.rep" || name == "a.ovrec" ? "b.sur" : "b.rep";
  const Outcome run = RunProgram(TRELVANE_PROGRAM, {"-i", name, "-o", output});
  const zSize lastLine = run.output.rfind('\n', run.output.size() - 2) + 1;
  const int expected = change.empty() ? 0 : std::clamp(run.exitCode, 0, 1);
  EXPECT_EQ(run.exitCode, expected);
  EXPECT_THAT(run.output.substr(lastLine),
              testing::StartsWith(expected == 0 ? "[INFO] Successfully exp" : "[ERROR] "));
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LE(run.peakMemory, (z64u{64} << 20) + 4 * bytes.size());
#endif
  Progress progress(1, false);
  static_cast<void>(InspectFile(name, Depth::check, {}, progress));
}

// The number of `size` bytes at each of these offsets lies.
void Lie(const std::string& name, const zBytes& sound, zSize size, std::vector<zSize> offsets) {
  Survive(name, sound);
  for (const zSize offset : offsets) {
    for (const z64u value : {~z64u{0}, ~z64u{0} >> (65 - 8 * size), z64u{sound.size()} + 1}) {
      zBytes changed = sound;
      std::memcpy(changed.data() + offset, &value, size);
      Survive(name, changed, Orv::Format("byte %zu becomes %llu", offset, value));
    }
  }
}

TEST(HostileFile, LiesInOneNumber) {
  const TempDirectory directory;
  const auto example = [](const char* name) {
    return ToBytes(ReadFile(std::string(EXAMPLES_DIR "/") + name));
  };
  Lie("a.sur", example("part.sur"), 2, {sur::kBits, sur::kCommentSize, sur::kPrivateSize});
  Lie("a.sur", example("part.sur"), 4, {sur::kWidth, sur::kLength});
  Lie("a.pro", example("part.pro"), 4, {sur::kWidth, sur::kLength});
  Lie("a.srf", example("part.srf"), 4, {4, 8});
  const std::string cloud =
      "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 2\nHEIGHT 3\n"
      "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 6\nDATA binary\n" +
      std::string(6 * 12, '\x3F');
  Survive("a.pcd", ToBytes(cloud));
  for (const std::string field : {"SIZE ", "COUNT ", "WIDTH ", "HEIGHT ", "POINTS "}) {
    for (const std::string value : {"2147483647", "4294967295", "18446744073709551615"}) {
      std::string text = cloud;
      text.replace(text.find(field) + field.size(), 1, value);
      Survive("a.pcd", ToBytes(text), field + value);
    }
  }
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  const zBytes stream = WriteRecording(scanner, {{MakeSurfaceWithIntensity(1)}}, false);
  for (zSize record = 8; record + 8 < stream.size();) {
    // Its length, then what begins its content: lengths of texts, sizes and offsets.
    Lie("a.rep", stream, 8, {record + 1});
    Lie("a.rep", stream, 4, {record + 9});
    record += 9 + static_cast<zSize>(sur::Get<z64u>(stream, record + 1));
  }
  const zBytes archive = MakeArchive({MakeJob("{}"), {"replay/buffer", ToText(stream)}});
  for (const char* size : {"00000000001", "77777777777", "-0000000001"}) {
    zBytes changed = archive;
    std::memcpy(changed.data() + 124, size, 11);
    std::memset(changed.data() + 148, ' ', 8);  // the checksum is made to fit
    const unsigned sum = std::accumulate(changed.begin(), changed.begin() + 512, 0U);
    std::memcpy(changed.data() + 148, Orv::Format("%06o", sum).c_str(), 7);
    Survive("a.ovrec", changed, Orv::Format("the first member has %s bytes", size));
  }
}

}  // namespace
