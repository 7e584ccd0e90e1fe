// SPDX-License-Identifier: MIT
// The program as an operator runs it.
#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
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

class Program : public testing::Test {
 protected:
  Program() {
    WriteFile("a.sur", SurFile{}.Bytes());
    WriteFile("a.pcd", "no point cloud");
    Plovia::ReplayScannerInfo scanner = MakeScanner();
    scanner.sources = {{"Top", "Top", 14, 0, 0}};
    const Handle surface = MakeSurfaceWithIntensity(1);
    WriteFile("a.rep", WriteRecording(scanner, {{surface}, {surface}}, false));
    scanner.sources[0].dataType = 12;
    WriteFile("p.rep", WriteRecording(scanner, {{MakeProfile(zType::z16s, 1)}}, false));
  }
  TempDirectory directory_;
};

TEST_F(Program, ShowsItsUsageWithoutArguments) {
  const Outcome run = RunProgram({});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.output,
              StartsWith(kBanner + "Usage:\n    Trelvane.exe -i <inputFile> [options] -o "
                                   "<outputFile>\n\nThe following conversions are "
                                   "supported at the moment: \n        .ovrec <-----> "));
  EXPECT_THAT(run.output,
              HasSubstr("data)\n\nYou may use the following options:\n        --help:  "));
  EXPECT_THAT(run.output, HasSubstr("\n     -z/--zoom <zoom>:       Specify"));
  EXPECT_THAT(
      run.output,
      EndsWith("\nFor example, 'Trelvane.exe -i input_xxx.ovrec -f 0 -o output_xxx.sur'\n"));
  EXPECT_FALSE(std::filesystem::exists("log.txt"));

  const Outcome help = RunProgram({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_EQ(help.output, run.output);
  EXPECT_TRUE(std::filesystem::exists("log.txt"));
}

TEST_F(Program, ConvertsAndReports) {
  const std::string imported = "[INFO] Successfully imported 'a.sur'.\n";
  Outcome run = RunProgram({"-i", "a.sur", "-o", "x y.rep"});
  EXPECT_EQ(run.output, kBanner + imported + "[INFO] Successfully exported 'x y.rep'.\n");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(ReadFile("log.txt"), "");
  run = RunProgram({"--help", "-i", "x y.rep", "-o", "b.sur"});
  EXPECT_THAT(run.output, EndsWith("output_xxx.sur'\n"
                                   "[INFO] Successfully imported 'x y.rep'.\n"
                                   "[INFO] The replay data is captured from 0 sensor.\n"
                                   "[INFO] The data type in the replay data is UNIFORM_SURFACE.\n"
                                   "[INFO] The imported recording data has 1 frame.\n"
                                   "[INFO] The frame 0 is being exported.\n"
                                   "[INFO] Successfully exported 'b.sur'.\n"));
  EXPECT_EQ(run.exitCode, 0);
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
  std::filesystem::create_directories("d");
  WriteFile("d/Frame-Frame-0000_T.sur", SurFile{}.Bytes());
  EXPECT_EQ(RunProgram({"-i", "d", "-o", "d.rep"}).output,
            kBanner +
                "[INFO] Successfully imported all the files in the directory (d).\n.\n"
                "[INFO] Successfully exported 'd.rep'.\n");
}

TEST_F(Program, ConvertsTheExamples) {
  std::filesystem::copy(EXAMPLES_DIR, ".", std::filesystem::copy_options::recursive);
  EXPECT_EQ(RunProgram({"-i", "part.sur", "-o", "part.rep"}).exitCode, 0);
  EXPECT_EQ(RunProgram({"-i", "scans", "-o", "scans.ovrec"}).exitCode, 0);
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
    EXPECT_EQ(ReadFile("back" + kind), ReadFile("part" + kind));
  }
}

// The bytes of a cloud after its header.
std::string PointsOf(const std::string& file) {
  const std::string text = ReadFile(file);
  const std::string last = "DATA binary\n";
  return text.substr(text.find(last) + last.size());
}

TEST_F(Program, ExchangesCloudsWithThePointCloudLibrary) {
  const std::string tool = "pcl_convert_pcd_ascii_binary";
  if (std::system(("command -v " + tool + " >tool.txt").c_str()) != 0) {
    GTEST_SKIP() << "no " << tool << " (Debian's pcl-tools)";
  }
  for (const char* scan : {"part.sur", "part.srf", "part.pcd"}) {
    SCOPED_TRACE(scan);
    EXPECT_EQ(RunProgram({"-i", std::string(EXAMPLES_DIR "/") + scan, "-o", "b.rep"}).exitCode, 0);
    EXPECT_EQ(RunProgram({"-i", "b.rep", "-o", "ours.pcd"}).exitCode, 0);
    ASSERT_EQ(std::system((tool + " ours.pcd theirs.pcd 1 >tool.txt 2>&1").c_str()), 0);
    const std::string points = PointsOf("ours.pcd");
    ASSERT_FALSE(points.empty());
    EXPECT_EQ(PointsOf("theirs.pcd").substr(0, points.size()), points);  // theirs are padded
    EXPECT_EQ(RunProgram({"-i", "ours.pcd", "-o", "ours.rep"}).exitCode, 0);
    EXPECT_EQ(RunProgram({"-i", "theirs.pcd", "-o", "theirs.rep"}).exitCode, 0);
    EXPECT_EQ(ReadFile("theirs.rep"), ReadFile("ours.rep"));
  }
}

TEST_F(Program, ExchangesArchivesWithTar) {
  if (std::system("tar --version >tar.txt 2>&1") != 0) GTEST_SKIP() << "no tar";
  const std::string longName = std::string(150, 'd') + "/" + std::string(150, 'f');
  std::filesystem::create_directories("replay/" + std::string(150, 'd'));
  WriteFile("replay/" + longName, "long name");
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

TEST_F(Program, TakesANameForAFormat) {
  for (const auto& [name, shown] : std::map<std::string, std::string>{
           {"a%%b", "a%b"}, {"50% - 60%", "50% - 60%"}, {"%s%n", "%s%n"}}) {
    const std::string file = name + ".rep";
    EXPECT_THAT(RunProgram({"-i", "a.sur", "-o", file}).output,
                EndsWith("[INFO] Successfully exported '" + shown + ".rep'.\n"));
    EXPECT_TRUE(std::filesystem::exists(file));
  }
}

// The arguments between blanks.
std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> args;
  std::istringstream stream(line);
  for (std::string arg; std::getline(stream, arg, ' ');) args.push_back(arg);
  return args;
}

// Nothing is imported from a name that does not exist, so that what fails after it tells the order
// of the steps.
TEST_F(Program, SaysWhatIsWrongAndLogsWhere) {
  const auto own = [](int line, int status = -997) {
    return Orv::Format(
        "status %d in CommandArgsOperator::process (commandargsoperator:%d): ", status, line);
  };
  const auto converter = [](const std::string& operation, int line, int status = -988) {
    return Orv::Format("status %d in SurfaceFileConverter::%s (surfacefileconverter:%d): ", status,
                       operation, line);
  };
  const std::string nothing = "No file was exported because no file has been imported yet";
  const std::string none = "No files have been imported yet";
  const std::string notRecording =
      "The imported data isn't a recording data and it doesn't support this option('-f/--frame').";
  const std::string badPoint = "The input invalid point is not right";
  const std::string badFrame = "The frame index should be less than 2";
  const std::string longName(100000, 'x');
  const struct {
    std::string line;
    std::string logged;  // in front of the error, where that is told here
    std::string error;
  } rows[] = {
      {"stray -w 0", own(274, -990), nothing},
      {"--help -o ", own(274, -990), nothing},
      {"-i  --input a.sur", own(236),  // the short form goes first
       "No file was exported because the input file/directory name wasn't specified."},
      {"-i none -f x -w 0", converter("isRecordingData", 479), none},
      {"-i " + longName + " -o b.rep", converter("isRecordingData", 479), none},
      {"-i a.sur -f x -w 0", own(278), notRecording},
      {"-i a.rep -f x", "", "std::exception - invalid stoi argument"},
      {"-i a.rep -f 4294967296", "", "std::exception - stoi argument out of range"},
      {"-i a.rep -f 2", converter("setFrameIndex", 421, -997), badFrame},
      {"-i a.rep -f -1 -a", converter("setFrameIndex", 421, -997), badFrame},
      {"-i a.pcd -w abc", "", "std::exception - invalid stoi argument"},
      {"-i none --width 0 -h 0", own(294), "The input surface width should be greater than 1"},
      {"-i none -w 1 -h 0", converter("setPcdWidth", 434), none},
      {"-i none --height -1 -s 2", own(301), "The input surface height should be greater than 1"},
      {"-i none -h 1 -s 2", converter("setPcdHeight", 442), none},
      {"-i none --swap -1 -r ", own(308), "The input swap should be equal to 0/1"},
      {"-i none -s 1 -r ", converter("setPcdFlipXZEnabled", 450), none},
      {"-i none -r  -z 0", own(316), badPoint},
      {"-i none -r 1,2,3", own(316), badPoint},
      {"-i none --remove ( -z 0", own(319), badPoint},
      {"-i none -r (1,2", own(319), badPoint},
      {"-i none -r (1,2,3,4)", own(319), badPoint},
      {"-i none -r (1,2,3,)", converter("setInvalidPoint", 457), none + "."},
      {"-i none -r 1,2,3)", "", "std::exception - invalid stod argument"},
      {"-i none -r (1,,3)", "", "std::exception - invalid stod argument"},
      {"-i none -r (1,1e999,x)", "", "std::exception - stod argument out of range"},
      {"-i none --zoom -0", own(331), "The input zoom factor is less than 0"},
      {"-i none -z nan", converter("setPcdZoom", 468), none},
      {"-i e -a", own(358), "No file was exported because the export file name wasn't specified"},
      {"-i a.rep", "", "std::exception - invalid string position"},
      {"-i a.rep -o out", "", "std::exception - invalid string position"},
      {"-i d -o b.rep", "", "Fail to find any file in the input directory."},
      {"-i a.sur -o ", "", "Failed to write the config.json file"},
      {"-i a.sur -o b.%s%n%2000000000d", "",
       "Extension .%s%n%2000000000d of the export file name is not supported"},
      {"-i a.sur -o b." + longName, "",
       "Extension ." + longName + " of the export file name is not supported"},
      {"-i a.rep -o b.csv", "", "The import file type is not OVREC"},
      {"-i a.sur -o no/b.rep", "", "Failed to open no/b.rep"},
      {"-i a.sur -o d/d.rep", "", "Failed to open d/d.rep"},
  };
  std::filesystem::create_directories("d/d.rep");
  std::filesystem::create_directories("e");
  WriteFile("e/a-Frame-0000_T.sur", SurFile{}.Bytes());
  for (const auto& row : rows) {
    std::filesystem::remove("log.txt");
    const Outcome run = RunProgram(Split(row.line));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, EndsWith("[ERROR] " + row.error + ".\n"));
    EXPECT_THAT(run.output, testing::Not(HasSubstr("Successfully exported")));
    if (row.line.starts_with("-i none")) {
      EXPECT_EQ(run.output, kBanner + "[ERROR] " + row.error + ".\n");  // no import is told
    }
    const bool ours = !row.error.starts_with("std::exception");  // the others are not logged
    const std::string log = ReadFile("log.txt");
    EXPECT_EQ(log.empty(), !ours) << row.error;
    EXPECT_THAT(log, HasSubstr(row.logged));
  }
  EXPECT_THAT(RunProgram({"-i", "p.rep", "-o", "b.CSV"}).output,
              HasSubstr("[INFO] All the frames are being exported.\n"));
}

TEST_F(Program, SetsThePointCloudOptionsThatItReports) {
  EXPECT_THAT(RunProgram({"-i", "a.pcd", "-r", "1.0,2.0,3.0", "-z", "+.5"}).output,
              HasSubstr("[INFO] The point (0.000000, 2.000000, 3.000000) is configured as the "
                        "invalid point.\n[INFO] The zooming factor has been set to 0.500000.\n"));
  EXPECT_THAT(RunProgram({"-i", "a.pcd", "-z", "nan"}).output, HasSubstr("set to nan.\n"));
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
