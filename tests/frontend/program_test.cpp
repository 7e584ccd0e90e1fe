// SPDX-License-Identifier: MIT
// The program as an operator runs it.
#include <gmock/gmock.h>

#include <cstdlib>
#include <sstream>

#include "support/recordings.h"
#include "support/run_program.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// Runs the program, which never writes to standard error.
Outcome RunProgram(const std::vector<std::string>& args) {
  Outcome outcome = ::RunProgram(TRELVANE_PROGRAM, args);
  EXPECT_EQ(outcome.errors, "");
  return outcome;
}

const std::string kBanner = "Trelvane 1.0.0.4\n";

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

TEST_F(Program, ShowsItsUsageWithoutArguments) {
  const Outcome run = RunProgram({});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.output, kBanner + ReadFile(TEST_DATA_DIR "/usage.txt"));
  EXPECT_FALSE(std::filesystem::exists("log.txt"));
  const Outcome help = RunProgram({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_EQ(help.output, run.output);
}

TEST_F(Program, ConvertsAndReports) {
  Outcome run = RunProgram({"-i", "a.sur", "-o", "50% x - %s%n a%%b.rep"});  // a format, too
  EXPECT_EQ(run.output, kBanner +
                            "[INFO] Successfully imported 'a.sur'.\n"
                            "[INFO] Successfully exported '50% x - %s%n a%b.rep'.\n");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(ReadFile("log.txt"), "");
  run = RunProgram({"--help", "-i", "50% x - %s%n a%%b.rep", "-o", "b.sur"});
  EXPECT_THAT(run.output, StartsWith(kBanner + "Usage:"));
  EXPECT_THAT(run.output, EndsWith("[INFO] Successfully exported 'b.sur'.\n"));
  // A single scan without an output name becomes an archive, which takes a configuration along.
  std::filesystem::create_directories("config/jobs/live");
  for (const char* name : {"config/config.json", "config/jobs/config.json"}) WriteFile(name, "{}");
  EXPECT_THAT(RunProgram({"-i", "a.sur"}).output,
              EndsWith("[ERROR] Failed to write the jobs/live/_live.ovjob file.\n"));
  WriteFile("config/jobs/live/_live.ovjob", "job");
  std::filesystem::copy("a.sur", "a.b.sur");
  EXPECT_THAT(RunProgram({"-i", "a.b.sur"}).output, EndsWith("exported 'a.b.ovrec'.\n"));
  EXPECT_THAT(RunProgram({"-i", "a.sur"}).output, EndsWith("Successfully exported 'a.ovrec'.\n"));
  run = RunProgram({"-i", "a.ovrec", "-a", "-o", "c.sur"});
  EXPECT_THAT(run.output, EndsWith("[INFO] All the frames are being exported.\n[INFO] Successfully "
                                   "exported 'c-Frame-0000_Surface.Top.sur'.\n"));
}

TEST_F(Program, ConvertsTheExamples) {
  std::filesystem::copy(EXAMPLES_DIR, ".", std::filesystem::copy_options::recursive);
  EXPECT_EQ(RunProgram({"-i", "part.sur", "-o", "part.rep"}).exitCode, 0);
  EXPECT_EQ(RunProgram({"-i", "scans", "-o", "scans.ovrec"}).output,
            kBanner +
                "[INFO] Successfully imported all the files in the directory (scans).\n.\n"
                "[INFO] Successfully exported 'scans.ovrec'.\n");
  EXPECT_EQ(ReadFile("scans.ovrec"), ReadFile("recording.ovrec"));
  EXPECT_EQ(RunProgram({"-i", "scans.ovrec", "-f", "1", "-o", "frame.sur"}).exitCode, 0);
  EXPECT_THAT(RunProgram({"-i", "scans.ovrec", "-o", "frame.csv"}).output,
              EndsWith("[INFO] The frame 0 is being exported.\n"
                       "[INFO] Successfully exported 'frame-Frame-0000_Left.csv'.\n"
                       "[INFO] Successfully exported 'frame-Frame-0000_Right.csv'.\n"));
  EXPECT_THAT(RunProgram({"-i", "scans.ovrec", "-o", "no/frame.csv"}).output,
              EndsWith("[ERROR] Failed to create the file - no/frame-Frame-0000_Left.csv.\n"));
  EXPECT_THAT(RunProgram({"-i", "scans/", "-o", ""}).output,
              EndsWith("Successfully exported 'scans.ovrec'.\n"));
  for (const char* side : {"Left", "Right"}) {
    const std::string file = std::string("Frame-0001_") + side + ".sur";
    EXPECT_EQ(ReadFile("frame-" + file), ReadFile("scans/scan-" + file));
  }
  for (const std::string kind : {".pro", ".srf"}) {
    EXPECT_EQ(RunProgram({"-i", "part" + kind, "-o", "b.rep"}).exitCode, 0);
    EXPECT_EQ(RunProgram({"-i", "b.rep", "-o", "back" + kind}).exitCode, 0);
    EXPECT_EQ(ReadFile("back" + kind), ReadFile("part" + kind)) << kind;
  }
  RunProgram({"-i", "part.pcd", "-o", "b.rep"});
  EXPECT_THAT(RunProgram({"-i", "b.rep", "-o", "b.pcd"}).output, HasSubstr("SURFACE_POINT_CLOUD"));
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

TEST_F(Program, ExchangesArchivesWithTar) {
  if (std::system("tar --version >tar.txt") != 0) GTEST_SKIP() << "NOT TESTED: there is no tar";
  const std::string folder = "replay/" + std::string(150, 'd');
  std::filesystem::create_directories(folder);
  WriteFile(folder + "/" + std::string(150, 'f'), "long name");
  std::filesystem::create_symlink("buffer", "replay/a link");
  std::filesystem::copy_file("a.rep", "replay/buffer");
  for (const char* format : {"gnu", "posix"}) {
    const std::string command = std::string("tar --format=") + format + " -cf x.ovrec replay";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(RunProgram({"-i", "x.ovrec", "-o", "b.sur"}).exitCode, 0) << format;
  }
  std::filesystem::copy(EXAMPLES_DIR "/config", "config", std::filesystem::copy_options::recursive);
  EXPECT_EQ(RunProgram({"-i", "a.sur", "-o", "y.ovrec"}).exitCode, 0);
  ASSERT_EQ(std::system("tar -tf y.ovrec >tar.txt"), 0);
  EXPECT_EQ(ReadFile("tar.txt"),
            "config.json\njobs/\njobs/config.json\njobs/live/\n"
            "jobs/live/_live.ovjob\nreplay/\nreplay/buffer\n");
}

// The arguments between blanks.
std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> args;
  std::istringstream stream(line);
  for (std::string arg; std::getline(stream, arg, ' ');) args.push_back(arg);
  return args;
}

// A command line that fails, and what is logged of it, or only said where "!" stands before.
void ExpectFailure(const std::string& command, std::string logged) {
  SCOPED_TRACE(command.substr(0, 60));
  std::filesystem::remove("log.txt");
  const Outcome run = RunProgram(Split(command));
  const bool silent = logged.starts_with("!");
  if (silent) logged.erase(0, 1);
  const std::size_t place = logged.find("): ");
  const std::string message = logged.substr(place == std::string::npos ? 0 : place + 3);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.output, EndsWith("[ERROR] " + message + ".\n"));
  EXPECT_THAT(run.output, testing::Not(HasSubstr("Successfully exported")));
  EXPECT_THAT(ReadFile("log.txt"), silent ? testing::Matcher<std::string>("") : HasSubstr(logged));
  // Of a name that does not exist no import is told.
  const bool none = command.starts_with("-i none");
  EXPECT_TRUE(!none || std::ranges::count(run.output, '\n') == 2) << run.output;
}

// Nothing is imported from a name that does not exist, so that what fails after it tells the order
// of the steps.
TEST_F(Program, SaysWhatIsWrongAndLogsWhere) {
  std::filesystem::create_directories("d/d.rep");
  std::filesystem::create_directories("e");
  WriteFile("e/a-Frame-0000_T.sur", SurFile{}.Bytes());
  std::ifstream commands(TEST_DATA_DIR "/wrong_commands.txt");
  int count = 0;
  for (std::string line; std::getline(commands, line);) {
    const std::size_t arrow = line.find(" => ");
    if (line.starts_with('#')) continue;
    ExpectFailure(line.substr(0, arrow), line.substr(arrow + 4));
    ++count;
  }
  EXPECT_GT(count, 30);
  const std::string longName(100000, 'x');
  ExpectFailure("-i " + longName + " -o b.rep", "No files have been imported yet");
  ExpectFailure("-i a.sur -o b." + longName,
                "Extension ." + longName + " of the export file name is not supported");
}

TEST_F(Program, SaysWhatIsImportedAndExported) {
  const std::array<const char*, 4> rows[] = {
      {"-i 12.rep -o b.CSV", "UNIFORM_PROFILE", "1 frame", "All the frames are"},
      {"-i 13.rep -o b.csv", "PROFILE_POINT_CLOUD", "1 frame", "All the frames are"},
      {"-i 15.rep -o b.csv", "SURFACE_POINT_CLOUD", "1 frame", "The frame 0 is"},
      {"-i 12.rep -o b.pro", "UNIFORM_PROFILE", "1 frame", "The frame 0 is"},
      {"-i a.rep -f 1 -o b.sur", "UNIFORM_SURFACE", "2 frames", "The frame 1 is"},
      {"--input a.rep --all --output b.sur", "UNIFORM_SURFACE", "2 frames", "All the frames are"},
  };
  for (const auto& [command, type, frames, exported] : rows) {
    EXPECT_THAT(RunProgram(Split(command)).output,
                HasSubstr(Orv::Format("[INFO] The replay data is captured from 0 sensor.\n"
                                      "[INFO] The data type in the replay data is %s.\n"
                                      "[INFO] The imported recording data has %s.\n"
                                      "[INFO] %s being exported.\n",
                                      type, frames, exported)))
        << command;
  }
  EXPECT_THAT(RunProgram(Split("-i a.pcd -r 1.0,2.0,3.0 -z +.5")).output,
              HasSubstr("[INFO] The point (0.000000, 2.000000, 3.000000) is configured as the "
                        "invalid point.\n[INFO] The zooming factor has been set to 0.500000.\n"));
  EXPECT_THAT(RunProgram(Split("-i a.pcd -z nan")).output, HasSubstr("set to nan.\n"));
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
  EXPECT_EQ(run.output, kBanner + "[ERROR] Failed to open the log file.\n");
}

}  // namespace
