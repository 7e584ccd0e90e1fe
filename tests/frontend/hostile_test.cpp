// SPDX-License-Identifier: MIT
// Files in which one field, length, count or offset lies: it takes its largest values, or one past
// what the file holds. Whatever it says, the program ends on its own, with a last line that fits
// its exit code, in memory that the file's size bounds, and looking at the file ends, too.
#include <gmock/gmock.h>

#include <sstream>

#include "inspect/inspect.h"
#include "inspect/report.h"
#include "support/archives.h"
#include "support/csv_export.h"
#include "support/run_program.h"
#include "support/sur_file.h"

namespace {

// Tells the exit code.
int Survive(const std::string& name, const zBytes& bytes, const std::string& change) {
  SCOPED_TRACE(name + ": " + change);
  WriteFile(name, bytes);
  const char* output = name == "a.rep" || name == "a.ovrec" ? "b.sur" : "b.rep";
  const Outcome run = RunProgram(TRELVANE_PROGRAM, {"-i", name, "-o", output});
  const zSize lastLine = run.output.rfind('\n', run.output.size() - 2) + 1;
  EXPECT_THAT(run.output.substr(lastLine),
              testing::StartsWith(run.exitCode == 0 ? "[INFO] Successfully exp" : "[ERROR] "));
  EXPECT_TRUE(run.exitCode == 0 || run.exitCode == 1) << run.exitCode;
  EXPECT_EQ(run.errors, "");
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LE(run.peakMemory, (z64u{64} << 20) + 4 * bytes.size());
#endif
  Progress progress(1, false);
  std::ostringstream report;
  WriteReport(InspectFile(name, true, nullptr, progress), report);
  EXPECT_THAT(report.str(), testing::Not(testing::HasSubstr("\x1B")));
  return run.exitCode;
}

// The numbers of `size` bytes at these offsets lie, one after the other.
void Lie(const std::string& name, const zBytes& sound, zSize size, std::vector<zSize> offsets) {
  EXPECT_EQ(Survive(name, sound, "nothing"), 0);
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
  SurFile surface;
  surface.commentSize = 4;
  Lie("a.sur", surface.Bytes(), 2, {sur::kBits, sur::kCommentSize, sur::kPrivateSize});
  Lie("a.sur", surface.Bytes(), 4, {sur::kWidth, sur::kLength});
  Lie("a.pro", SurRow({1, 2, 3}).Bytes(), 4, {sur::kWidth, sur::kLength});
  zBytes compact(61 + 2 * 6, 0);
  compact[0] = 1;
  compact[4] = 3;
  compact[8] = 2;
  Lie("a.srf", compact, 4, {4, 8});
  const std::string header =
      "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 2\nHEIGHT 3\n"
      "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 6\nDATA binary\n";
  EXPECT_EQ(Survive("a.pcd", ToBytes(header + std::string(6 * 12, '\x3F')), "nothing"), 0);
  for (const char* field : {"SIZE ", "COUNT ", "WIDTH ", "HEIGHT ", "POINTS "}) {
    for (const char* value : {"2147483647", "4294967295", "18446744073709551615"}) {
      std::string text = header + std::string(6 * 12, '\x3F');
      text.replace(text.find(field) + std::strlen(field), 1, value);
      Survive("a.pcd", ToBytes(text), field + std::string(value));
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
  EXPECT_EQ(Survive("a.ovrec", archive, "nothing"), 0);
  for (const char* size : {"00000000001", "77777777777", "17777777777", "-0000000001"}) {
    zBytes changed = archive;
    std::memcpy(changed.data() + 124, size, 11);
    std::memset(changed.data() + 148, ' ', 8);  // the checksum is made to fit
    unsigned sum = 0;
    for (zSize i = 0; i < 512; ++i) sum += changed[i];
    std::memcpy(changed.data() + 148, (Orv::Format("%06o", sum) + '\0').data(), 7);
    Survive("a.ovrec", changed, std::string("the first member has ") + size + " bytes");
  }
}

}  // namespace
