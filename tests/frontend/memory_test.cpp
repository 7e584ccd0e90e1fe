// SPDX-License-Identifier: MIT
// The memory of a run is that of the largest scan, however large recordings and folders are.
#include <gtest/gtest.h>
#include <malloc.h>

#include "support/recordings.h"
#include "support/run_program.h"
#include "support/scan_files.h"

namespace {

constexpr z32u kWidth = 2048;
constexpr z32u kLength = 4096;
constexpr z64u kMost = (z64u{32} << 20) + z64u{kWidth} * kLength * sizeof(z16s) * 11 / 10;

// Five frames of one surface, in a folder.
zBytes MakeScans() {
  std::vector<z16s> heights(zSize{kWidth} * kLength);
  for (zSize i = 0; i < heights.size(); ++i) heights[i] = static_cast<z16s>(i % 60000 - 32000);
  heights.back() = kInvalidRaw;
  zBytes scan = WriteScan(MakeSurface(kWidth, kLength, heights), SUR);
  std::filesystem::create_directory("scans");
  for (int frame = 0; frame < 5; ++frame) {
    WriteFile(Orv::Format("scans/s-Frame-%04d_Top.sur", frame), scan);
  }
  return scan;
}

void MustRun(const std::string& program, const std::vector<std::string>& args) {
  const Outcome run = RunProgram(program, args);
  EXPECT_EQ(run.exitCode, 0) << args[0] << " " << args[1] << "\n" << run.output << run.errors;
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LE(run.peakMemory, kMost) << args[0] << " " << args[1];
#endif
}

TEST(Memory, IsThatOfOneScan) {
  const TempDirectory directory;
  const zSize size = MakeScans().size();
  malloc_trim(0);  // what this process holds counts for those that it starts
  MustRun(TRELVANE_PROGRAM, {"-i", "scans", "-o", "five.rep"});
  EXPECT_GT(std::filesystem::file_size("five.rep"), kMost);
  MustRun(TRELVANE_PROGRAM, {"-i", "five.rep", "-a", "-o", "f.sur"});
  MustRun(TRELVANE_PROGRAM, {"-i", "five.rep", "-f", "3", "-o", "f.pcd"});
  MustRun(TRELVANE_PROGRAM, {"-i", "f-Frame-0000_Top.sur", "-o", "one.rep"});
  MustRun(TRELVANE_INSPECT, {"scans", "--json"});
  MustRun(TRELVANE_INSPECT, {"five.rep", "--check"});
  MustRun(TRELVANE_INSPECT, {"five.rep", "--png", "f.png", "--frame", "2"});
  EXPECT_EQ(std::filesystem::file_size("f-Frame-0004_Top.sur"), size);
}

}  // namespace
