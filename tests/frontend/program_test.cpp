// SPDX-License-Identifier: MIT
// The program as an operator runs it.
#include <gmock/gmock.h>

#include <cstdlib>
#include <regex>
#include <sstream>

#include "support/recordings.h"
#include "support/run_program.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"

namespace {

using testing::EndsWith;
using testing::StartsWith;

// Runs the program, which never writes to standard error.
Outcome RunProgram(const std::vector<std::string>& args) {
  Outcome outcome = ::RunProgram(TRELVANE_PROGRAM, args);
  EXPECT_EQ(outcome.errors, "");
  return outcome;
}

struct Program : testing::Test {
  Program() {
    WriteFile("a.sur", SurFile{}.Bytes());
    WriteFile("a.pcd", "no point cloud");
    Plovia::ReplayScannerInfo scanner = MakeScanner();
    scanner.sources = {{"Top", "Top", 14, 0, 0}};
    const Handle surface = MakeSurfaceWithIntensity(1);
    WriteFile("a.rep", WriteRecording(scanner, {{surface}, {surface}}, false));
    for (const z16u dataType : {z16u{12}, z16u{13}, z16u{15}}) {
      scanner.sources[0].dataType = dataType;
      WriteFile(std::to_string(dataType) + ".rep", WriteRecording(scanner, {{surface}}, false));
    }
  }
  TempDirectory directory_;
};

// A command of the shell, with all that it prints and what is logged meanwhile.
std::string Tell(const std::string& command) {
  const std::string folder = std::filesystem::path(TRELVANE_PROGRAM).parent_path();
  const Outcome run = ::RunProgram("/bin/sh", {"-c", "PATH=" + folder + ":$PATH\n" + command});
  std::string told = "$ " + command + "\n" + run.output;
  if (!run.errors.empty()) told += "standard error: " + run.errors;
  if (run.exitCode != 0) told += "exit code " + std::to_string(run.exitCode) + "\n";
  const std::string log = ReadFile("log.txt");
  std::filesystem::remove("log.txt");
  if (log.empty()) return told;
  // But its time, and lines of the sources that are no part of the interface.
  const std::regex sourceLine("\\(([a-z]+):1?[0-9]?[0-9]\\)");
  return told + "log.txt: " + std::regex_replace(log.substr(log.find(' ') + 1), sourceLine, "($1)");
}

// The session in the folder of data. Nothing is imported from a name that does not exist, so that
// what fails after it tells the order of the steps.
TEST_F(Program, PrintsAndLogsAsInASession) {
  std::filesystem::copy(EXAMPLES_DIR, "examples", std::filesystem::copy_options::recursive);
  const std::string session = ReadFile(TEST_DATA_DIR "/session.txt");
  std::istringstream lines(session);
  std::string told;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("$ ")) told += Tell(line.substr(2));
  }
  EXPECT_EQ(told, session);
  EXPECT_GT(session.size(), 30000U);
}

TEST_F(Program, ExchangesCloudsWithThePointCloudLibrary) {
  const std::string tool = "pcl_convert_pcd_ascii_binary";
  if (std::system(("command -v " + tool + " >tool.txt").c_str()) != 0) {
    GTEST_SKIP() << "NOT TESTED: there is no " << tool << " (Debian's pcl-tools)";
  }
  for (const char* scan : {"part.sur", "part.srf", "part.pcd"}) {
    SCOPED_TRACE(scan);
    EXPECT_EQ(RunProgram({"-i", std::string(EXAMPLES_DIR "/") + scan, "-o", "b.rep"}).exitCode, 0);
    EXPECT_EQ(RunProgram({"-i", "b.rep", "-o", "ours.pcd"}).exitCode, 0);
    ASSERT_EQ(std::system((tool + " ours.pcd theirs.pcd 1 >tool.txt 2>&1").c_str()), 0);
    const std::string ours = ReadFile("ours.pcd"), theirs = ReadFile("theirs.pcd");
    const std::string points = ours.substr(ours.find("DATA binary\n"));
    EXPECT_EQ(theirs.substr(theirs.find("DATA binary\n"), points.size()),
              points);  // theirs are padded
    EXPECT_EQ(RunProgram({"-i", "ours.pcd", "-o", "ours.rep"}).exitCode, 0);
    EXPECT_EQ(RunProgram({"-i", "theirs.pcd", "-o", "theirs.rep"}).exitCode, 0);
    EXPECT_EQ(ReadFile("theirs.rep"), ReadFile("ours.rep"));
  }
}

TEST_F(Program, KeepsALogOf2048BytesAndStartsALongerOneAnew) {
  WriteFile("log.txt", std::string(2048, 'x'));
  RunProgram({"-i", "a.sur", "-o", "b.x\ny"});
  const std::string log = ReadFile("log.txt");
  EXPECT_THAT(log, StartsWith(std::string(2048, 'x') + "20"));
  EXPECT_THAT(log, EndsWith("status -997 in SurfaceFileConverter::exportFile "
                            "(surfacefileconverter:" +
                            log.substr(log.rfind(':', log.rfind("): ")) + 1)));
  EXPECT_EQ(std::ranges::count(log, '\n'), 1);
  WriteFile("log.txt", std::string(2049, 'x'));
  RunProgram({"-i", "a.rep", "-f", "x"});  // not an error of the tool's own: not logged
  EXPECT_EQ(ReadFile("log.txt"), "");
  std::filesystem::remove("log.txt");
  std::filesystem::create_directory("log.txt");
  const Outcome run = RunProgram({"-i", "a.sur", "-o", "b.rep"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.output, "Trelvane 1.0.0.4\n[ERROR] Failed to open the log file.\n");
}

}  // namespace
