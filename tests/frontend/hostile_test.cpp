// SPDX-License-Identifier: MIT
// Files in which one number lies: each field, length, count and offset of a sound file takes the
// values 0, 1, -1, its largest, and one just past what the file holds. Whatever they say, the
// program ends on its own, with a last line that fits its exit code, in memory that the file's size
// bounds.
#include <gmock/gmock.h>

#include <limits>
#include <sstream>

#include "inspect/inspect.h"
#include "inspect/report.h"
#include "support/archives.h"
#include "support/csv_export.h"
#include "support/run_program.h"
#include "support/sur_file.h"

namespace {

class HostileFile : public testing::Test {
 protected:
  // Runs the program on a changed file and judges the outcome.
  void Convert(const std::string& name, const zBytes& bytes, const std::string& output,
               const std::string& change) {
    WriteFile(name, bytes);
    const Outcome run = RunProgram(TRELVANE_PROGRAM, {"-i", name, "-o", output});
    const std::string::size_type lastLine = run.output.rfind('\n', run.output.size() - 2) + 1;
    const std::string_view last = std::string_view(run.output).substr(lastLine);
    EXPECT_TRUE(run.exitCode == 0 ? last.starts_with("[INFO] Successfully exported '")
                                  : run.exitCode == 1 && last.starts_with("[ERROR] "))
        << change << ": exit code " << run.exitCode << ", " << run.output;
    EXPECT_EQ(run.errors, "") << change;
#if !defined(__SANITIZE_ADDRESS__)
    EXPECT_LE(run.peakMemory, (z64u{64} << 20) + 4 * bytes.size()) << change;
#endif
    // Looking at it ends, too, and lets nothing through that is not fit to be read.
    Progress progress(1, false);
    std::ostringstream report;
    WriteReport(InspectFile(name, true, nullptr, progress), report);
    EXPECT_THAT(report.str(), testing::Not(testing::HasSubstr("\x1B"))) << change;
  }

  // Numbers of `size` bytes at a place of a file.
  void ChangeNumber(const std::string& name, const zBytes& sound, zSize offset, zSize size,
                    const std::string& output) {
    const z64u largest = ~z64u{0} >> (64 - 8 * size);
    for (const z64u value : {z64u{0}, z64u{1}, largest, largest >> 1, z64u{sound.size()} + 1}) {
      zBytes changed = sound;
      std::memcpy(changed.data() + offset, &value, size);
      Convert(name, changed, output, Orv::Format("%s, byte %zu becomes %llu", name, offset, value));
    }
  }

  TempDirectory directory_;
};

TEST_F(HostileFile, DigitalSurf) {
  SurFile file;
  file.bits = 32;
  file.flag = 1;
  file.zMax = 30;
  file.commentSize = 4;
  const zBytes surface = file.Bytes();
  file = SurRow({1, 2, 3});
  const zBytes profile = file.Bytes();
  const struct {
    zSize offset, size;
  } fields[] = {{14, 2},  {18, 2},  {86, 2},  {98, 2},  {100, 4}, {104, 4}, {108, 4}, {112, 4},
                {116, 4}, {120, 4}, {124, 4}, {128, 4}, {334, 2}, {336, 2}, {466, 4}, {474, 4}};
  for (const auto& field : fields) {
    ChangeNumber("a.sur", surface, field.offset, field.size, "b.rep");
    ChangeNumber("a.pro", profile, field.offset, field.size, "b.rep");
  }
}

TEST_F(HostileFile, CompactSurface) {
  zBytes bytes(61 + 2 * 6, 0);
  bytes[0] = 1;
  bytes[4] = 3;
  bytes[8] = 2;
  for (zSize field = 0; field < 12; field += 4) ChangeNumber("a.srf", bytes, field, 4, "b.rep");
  for (zSize field = 12; field < 60; field += 8) ChangeNumber("a.srf", bytes, field, 8, "b.rep");
  ChangeNumber("a.srf", bytes, 72, 1, "b.rep");
}

TEST_F(HostileFile, PointCloud) {
  const std::string header =
      "VERSION .7\nFIELDS x y z intensity\nSIZE 4 4 4 4\nTYPE F F F F\nCOUNT 1 1 1 1\nWIDTH 2\n"
      "HEIGHT 3\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS 6\nDATA binary\n";
  for (zSize i = header.find("SIZE"); i < header.size(); ++i) {
    if (std::isdigit(static_cast<unsigned char>(header[i])) == 0) continue;
    for (const char* value : {"0", "1", "-1", "7", "2147483647", "4294967295", "4294967296",
                              "18446744073709551615", "99999999999999999999"}) {
      std::string changed = header;
      changed.replace(i, 1, value);
      Convert("a.pcd", ToBytes(changed + std::string(6 * 16, '\x3F')), "b.rep", changed);
    }
  }
}

TEST_F(HostileFile, Recording) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  const zBytes stream = WriteRecording(scanner, {{MakeSurfaceWithIntensity(1)}}, false);
  constexpr zSize kMagic = 8;
  constexpr zSize kRecordHead = 9;
  for (zSize record = kMagic; record + kMagic < stream.size();) {
    const auto length = static_cast<zSize>(sur::Get<z64u>(stream, record + 1));
    ChangeNumber("a.rep", stream, record + 1, 8, "b.sur");
    for (zSize field = 0; field + 4 <= std::min<zSize>(length, 24); field += 4) {
      ChangeNumber("a.rep", stream, record + kRecordHead + field, 4, "b.srf");
    }
    record += kRecordHead + length;
  }
}

TEST_F(HostileFile, Archive) {
  Plovia::ReplayScannerInfo scanner = MakeScanner();
  scanner.sources.resize(1);
  const zBytes archive = MakeArchive(
      {MakeJob(MakeScannerConfig().dump()),
       {"replay/buffer", ToText(WriteRecording(scanner, {{MakeSurfaceWithIntensity(1)}}, false))}});
  // Sizes as their headers' octal digits, with the checksum made to fit.
  for (zSize header = 0; archive[header] != 0;) {
    const std::string size(archive.begin() + static_cast<std::ptrdiff_t>(header) + 124,
                           archive.begin() + static_cast<std::ptrdiff_t>(header) + 135);
    for (const char* value : {"00000000000", "00000000001", "77777777777", "17777777777",
                              "00000100000", "-0000000001", "xxxxxxxxxxx"}) {
      zBytes changed = archive;
      std::memcpy(changed.data() + header + 124, value, 11);
      std::memset(changed.data() + header + 148, ' ', 8);
      unsigned sum = 0;
      for (zSize i = 0; i < 512; ++i) sum += changed[header + i];
      std::memcpy(changed.data() + header + 148, (Orv::Format("%06o", sum) + '\0').data(), 7);
      Convert("a.ovrec", changed, "b.csv", "size " + size + " becomes " + value);
    }
    header += 512 + (std::stoul(size, nullptr, 8) + 511) / 512 * 512;
  }
}

}  // namespace
