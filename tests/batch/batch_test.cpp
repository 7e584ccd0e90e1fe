// SPDX-License-Identifier: MIT
// trelvane-batch as an operator runs it.
#include <gmock/gmock.h>

#include <fstream>
#include <regex>

#include "batch/progress.h"
#include "batch/record.h"
#include "support/recordings.h"
#include "support/run_program.h"
#include "support/sur_file.h"

namespace fs = std::filesystem;

namespace {

struct Batch : testing::Test {
  Batch() {
    fs::create_directories("in/b c");
    for (const char* name : {"part.sur", "part.pcd", "part.pro"}) Copy(name, "in");
    Copy("part.srf", "in/b c");
    WriteFile("in/note.txt", "");
    WriteRecordingOf("in/r.rep", "Top");
  }
  static void Copy(const std::string& example, const fs::path& folder) {
    fs::copy(fs::path(EXAMPLES_DIR) / example, folder / example);
  }
  static void WriteRecordingOf(const std::string& path, const std::string& source) {
    Plovia::ReplayScannerInfo scanner = MakeScanner();
    scanner.sources = {{source, source, 14, 0, 0}};
    const Handle surface = MakeSurfaceWithIntensity(1);
    WriteFile(path, WriteRecording(scanner, {{surface}, {surface}}, false));
  }
  TempDirectory directory_;
};

Outcome RunBatch(const std::string& args) {
  return RunProgram("/bin/sh", {"-c", TRELVANE_BATCH " " + args});
}

// All that it prints, without the time, and the exit code.
std::string Told(const std::string& args) {
  const Outcome run = RunBatch(args);
  return std::regex_replace(run.errors + run.output, std::regex(", in [0-9.]+ s"), "") +
         std::to_string(run.exitCode);
}

std::string FilesBelow(const std::string& folder) {
  std::set<std::string> names;
  if (!fs::exists(folder)) return "";
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_directory()) names.insert(entry.path().lexically_relative(folder).string());
  }
  std::string told;
  for (const std::string& name : names) told += name + " ";
  return told;
}

TEST_F(Batch, MakesWhatTheToolMakesInOneRunOrTwo) {
  EXPECT_EQ(Told("--to pcd --out o -a in --jobs 3"),
            "trelvane-batch: in/part.pcd: A point cloud becomes .rep and .ovrec only\n"
            "trelvane-batch: in/part.pro: A profile becomes .rep and .ovrec only\n"
            "3 converted, 2 failed\n"
            "failed: in/part.pcd: [ERROR] A point cloud becomes .rep and .ovrec only\n"
            "failed: in/part.pro: [ERROR] A profile becomes .rep and .ovrec only\n3");
  EXPECT_EQ(FilesBelow("o"),
            "in/b c/part.pcd in/part.pcd in/r-Frame-0000_Top.pcd in/r-Frame-0001_Top.pcd ");
  EXPECT_EQ(Told("--to sur --out o 'in/b c' -f 1 in/r.rep"), "2 converted, 0 failed\n0");
  EXPECT_EQ(Told("--to rep --out o in/part.pcd -w 20 --height 10 -s 1 -z 2 -r '(1, 2, 3)' "
                 "--name c/{stem}"),
            "1 converted, 0 failed\n0");
  const struct {
    const char *made, *first, *second;  // arguments of one run, and of a second one over a.rep
  } kRows[] = {
      {"o/in/part.pcd", "-i in/part.sur -o a.rep", "-i a.rep -o b.pcd"},
      {"o/in/b c/part.pcd", "-i in/b\\ c/part.srf -o a.rep", "-i a.rep -o b.pcd"},
      {"o/in/b c/part.sur", "-i in/b\\ c/part.srf -o a.rep", "-i a.rep -o b.sur"},
      {"o/in/r.sur", "-i in/r.rep -f 1 -o b.sur", nullptr},
      {"o/in/r-Frame-0001_Top.pcd", "-i in/r.rep -f 1 -o b.pcd", nullptr},
      {"o/c/part.rep", "-i in/part.pcd -o b.rep -w 20 -h 10 -s 1 -z 2 -r (1,2,3)", nullptr},
  };
  for (const auto& row : kRows) {
    std::string command = std::string(TRELVANE_PROGRAM " ") + row.first;
    if (row.second != nullptr) command += std::string(" && " TRELVANE_PROGRAM " ") + row.second;
    command = std::regex_replace(command, std::regex("\\(1,2,3\\)"), "'(1, 2, 3)'");
    EXPECT_EQ(RunProgram("/bin/sh", {"-c", command}).exitCode, 0) << row.made;
    const std::string made = "b" + fs::path(row.made).extension().string();
    EXPECT_EQ(ReadFile(row.made), ReadFile(made)) << row.made;
  }
}

TEST_F(Batch, NamesAndRefusesBeforeItStarts) {
  fs::create_directory_symlink("..", "in/up");
  fs::copy(fs::path(EXAMPLES_DIR) / "scans", "scans");
  const std::string here = fs::current_path(), name = fs::path(here).filename();
  const struct {
    std::string args, told;
  } kRows[] = {
      {"--to rep in/r.rep",
       "trelvane-batch: in/r.rep: A recording becomes .sur, .srf, .pcd and .pro only\n0"},
      {"--to csv in/r.rep",
       "trelvane-batch: in/r.rep: A recording becomes .sur, .srf, .pcd and .pro only\n0"},
      {"--to srf in/part.sur ./in/part.sur x.sur in/note.txt",
       "trelvane-batch: x.sur: No such file or directory\n"
       "trelvane-batch: in/note.txt: The extension of the name is not supported\n"
       "in/part.sur -> o/in/part.srf\n0"},
      {"--to rep '" + here + "/in/b c' ../" + name + "/in/part.sur",
       here + "/in/b c/part.srf -> o/b c/part.rep\n../" + name + "/in/part.sur -> o/" + name +
           "/in/part.rep\n0"},
      {"--to rep in",
       "trelvane-batch: in/part.pro and in/part.pcd would both become o/in/part.rep; --name may "
       "tell them apart\n2"},
      {"--to srf in/part.sur o/in/part.srf",
       "trelvane-batch: in/part.sur would replace o/in/part.srf, which is an input\n2"},
      {"--to rep scans --folders-are-recordings", "scans -> o/scans.rep\n0"},
      {"--to rep scans/ --name '{stem}{folder}' --folders-are-recordings",
       "scans/ -> o/scans.rep\n0"},
      {"--to pcd in/r.rep --name {stem}-{source}-{frame} -f 12",
       "in/r.rep -> o/r-{source}-0012.pcd\n0"},
      {"--to pcd --from-file list", "in/part.sur -> o/in/part.pcd\n0"},
      {"--to pcd - < list", "in/part.sur -> o/in/part.pcd\n0"},
  };
  WriteFile("list", "in/part.sur\n");
  for (const auto& row : kRows) EXPECT_EQ(Told("--out o -n " + row.args), row.told) << row.args;
  for (const char* args :
       {"--to xyz --out o in", "--to rep in", "--to rep --out o", "--to rep --out o in --resume",
        "--to rep --out o in --name {frame}", "--to pcd --out o in --shard 2",
        "--to rep --out o -z 0 in", "--to rep --out o -r '(1,2)' in",
        "--to pcd --out o --from-file x", "--to rep --out o in --jobs 0"}) {
    EXPECT_EQ(RunBatch(args).exitCode, 2) << args;
  }
  EXPECT_EQ(FilesBelow("o"), "");
  // Outputs below an input are none.
  EXPECT_EQ(Told("--to rep --out in/o in/part.sur --name x"), "1 converted, 0 failed\n0");
  EXPECT_THAT(Told("--to sur --out in/o in -n"), testing::Not(testing::HasSubstr("in/o/x.rep")));
  EXPECT_EQ(Told("--to sur --out in/o in/o -n"), "in/o/x.rep -> in/o/in/o/x.sur\n0");
}

TEST_F(Batch, NoTwoRecordingsWriteOneName) {
  WriteRecordingOf("in/r2.rep", "..");
  const std::string args = "--to sur -j 1 --out o -a in/r.rep in/r2.rep --name ";
  EXPECT_EQ(Told(args + "{source}/{frame}"),
            "1 converted, 1 failed\n"
            "failed: in/r2.rep: [ERROR] the output would have the name ../0000\n3");
  EXPECT_EQ(FilesBelow("o"), "Top/0000.sur Top/0001.sur ");
  EXPECT_EQ(
      Told(args + "{stem}{source}"),
      "0 converted, 2 failed\nfailed: in/r.rep: [ERROR] Two outputs have the name o/rTop.sur\n"
      "failed: in/r2.rep: [ERROR] Two outputs have the name o/r2...sur\n1");
  WriteRecordingOf("in/r2.rep", "Top");
  EXPECT_THAT(Told("--to sur -j 1 --out o -a in/r.rep in/r2.rep --name {frame} --fail-fast"),
              testing::HasSubstr("both become o/{frame}.sur"));
}

TEST_F(Batch, RecordsAndResumes) {
  const std::string args = "--to pcd --out o --report r.jsonl in/part.sur 'in/b c' x.sur ";
  EXPECT_EQ(RunBatch(args).exitCode, 3);
  const std::map<std::string, Entry> record = ReadRecord("r.jsonl");
  ASSERT_EQ(record.size(), 3U);
  const Entry& entry = record.at("in/part.sur");
  EXPECT_EQ(entry.outputs, std::vector<std::string>{"o/in/part.pcd"});
  EXPECT_EQ(entry.outputBytes, fs::file_size("o/in/part.pcd"));
  EXPECT_EQ(entry.state, StateOf("in/part.sur"));
  EXPECT_GT(entry.seconds, 0);
  EXPECT_EQ(record.at("x.sur").messages,
            std::vector<std::string>{"[ERROR] No such file or directory"});

  const auto todo = [&](const std::string& more = "") {
    return RunBatch(args + "--resume -n " + more).output;
  };
  const std::string surface = "in/part.sur -> o/in/part.pcd\n";
  const std::string other = "in/b c/part.srf -> o/in/b c/part.pcd\n";
  EXPECT_EQ(todo(), "");
  EXPECT_EQ(todo("--name {folder}/par"),
            "in/part.sur -> o/in/par.pcd\nin/b c/part.srf -> o/in/b c/par.pcd\n");
  const struct {
    const char* change;
    std::string todo;
  } kRows[] = {
      {"touch o/in/part.pcd", surface},
      {"echo >> 'o/in/b c/part.pcd'", surface + other},
      {"touch in/part.sur && rm 'o/in/b c/part.pcd'", surface + other},
      {"printf '{\"input\":\"in/part.sur\",\"status\":\"done\"' >> r.jsonl", surface + other},
  };
  for (const auto& row : kRows) {
    ASSERT_EQ(std::system(row.change), 0);
    EXPECT_EQ(todo(), row.todo) << row.change;
  }
  EXPECT_EQ(Told(args + "--resume 2>&-").substr(0, 22), "2 converted, 1 failed\n");
  EXPECT_EQ(Told(args + "--resume 2>&-").substr(0, 42),
            "0 converted, 2 were done before, 1 failed\n");
  EXPECT_EQ(Told("--to pcd --out o in/part.sur --report /dev/full"),
            "trelvane-batch: Failed to write /dev/full\n1");
}

TEST_F(Batch, EndsAfterTheConversionsThatRun) {
  std::ofstream list("list");
  for (int i = 0; i < 20000; ++i) list << "none" << i << ".sur\n";
  list << "in/part.sur\n";
  list.close();
  const std::string begin = "sh -c 'exec " TRELVANE_BATCH " --to pcd -j 2 --out o --report r ";
  const std::string wait = "; while [ ! -s r ]; do :; done; kill -INT $!; wait $!";
  const Outcome run =
      RunProgram("/bin/sh", {"-c", begin + "--from-file list' 2>errors &" + wait.substr(1)});
  EXPECT_EQ(run.exitCode, 130);
  const zSize lines = static_cast<zSize>(std::ranges::count(ReadFile("r"), '\n'));
  EXPECT_THAT(run.output, testing::HasSubstr(std::to_string(20001 - lines) + " not begun, "));
  EXPECT_EQ(ReadRecord("r").size(), lines);
  EXPECT_EQ(Told("--to pcd --out o -j 1 --fail-fast none.sur in/part.sur").back(), '1');
  EXPECT_EQ(FilesBelow("o"), "");
}

TEST(BatchProgress, TellsRateAndTimeLeft) {
  using namespace std::chrono_literals;
  const BatchProgress::Clock::time_point start{};
  BatchProgress terminal({4, 400'000'000}, true, start);
  EXPECT_EQ(terminal.Tick(start + 99ms), "");
  EXPECT_EQ(terminal.Done(100'000'000, false, start + 2s),
            "\r1 of 4 files, 100 of 400 MB, 50 MB/s, 0:06 left\x1b[K");
  EXPECT_EQ(terminal.Done(0, true, start + 2s + 99ms), "");
  EXPECT_EQ(terminal.Tick(start + 4000s),
            "\r2 of 4 files, 100 of 400 MB, 0 MB/s, 3:20:00 left, 1 failed\x1b[K");
  EXPECT_EQ(terminal.Clear(), "\r\x1b[K");
  EXPECT_EQ(terminal.Clear(), "");
  BatchProgress elsewhere({1, 0}, false, start);
  EXPECT_EQ(elsewhere.Tick(start + 59s), "");
  EXPECT_EQ(elsewhere.Tick(start + 60s), "0 of 1 files, 0 of 0 MB, 0 MB/s\n");
}

}  // namespace
