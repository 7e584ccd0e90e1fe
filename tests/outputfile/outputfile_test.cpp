// SPDX-License-Identifier: MIT
// What stands at an output's place before, while and after it is written.
#include "outputfile/outputfile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include "support/scans.h"
#include "support/sur_file.h"
#include "support/temp_directory.h"
#include "surfacefileconverter/surfacefileconverter.h"

namespace {

namespace fs = std::filesystem;

constexpr fs::perms kOddMode = fs::perms(0604);

struct Place {
  std::string name;    // of the output
  std::string target;  // what it stands for
  std::function<void()> arrange;
  bool inPlace = false;
};

void Earlier(const std::string& name) {
  WriteFile(name, "earlier");
  fs::permissions(name, kOddMode);
}

std::vector<Place> Places() {
  const std::string longest(255, 'n');
  return {
      {"new", "new", [] {}},
      {longest, longest, [=] { Earlier(longest); }},
      {"a/link", "a/b/file", [] { Earlier("a/b/file"), fs::create_symlink("b/file", "a/link"); }},
      {"a/link", "a/b/no", [] { fs::create_symlink("b/no", "a/link"); }},
      {"one", "other", [] { Earlier("other"), fs::create_hard_link("other", "one"); }, true},
  };
}

std::set<std::string> AllFiles() {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(".")) names.insert(entry.path());
  return names;
}

TEST(OutputFile, StandsInItsPlaceWholeOrNotAtAll) {
  const mode_t mask = umask(027);
  for (const std::string_view end : {"none", "finished", "lost"}) {
    for (const Place& place : Places()) {
      SCOPED_TRACE(place.target);
      const TempDirectory directory;
      fs::create_directories("a/b");
      place.arrange();
      const std::string before = ReadFile(place.target);
      std::set<std::string> files = AllFiles();
      {
        OutputFile output;
        MustBeOk(output.Open(place.name));
        MustBeOk(zStream_Write(output.Stream(), "w-ole", 5));
        MustBeOk(zStream_Seek(output.Stream(), 1));  // even where it goes into a pipe
        MustBeOk(zStream_Write(output.Stream(), "h", 1));
        EXPECT_EQ(ReadFile(place.target), before);
        EXPECT_EQ(AllFiles().size(), files.size() + (place.inPlace ? 0 : 1));
        if (end == "finished") MustBeOk(output.Finish());
        if (end == "lost" && !place.inPlace) {  // its bytes, before they are at their place
          for (const std::string& name : AllFiles()) {
            if (!files.contains(name)) fs::remove(name);
          }
          EXPECT_EQ(output.Finish(), zERROR_STREAM);
        }
      }
      if (end == "finished") {
        files.insert("./" + place.target);
        EXPECT_EQ(ReadFile(place.target), "whole");
        EXPECT_EQ(fs::status(place.target).permissions(),
                  before.empty() ? fs::perms(0640) : kOddMode);
      } else {
        EXPECT_EQ(ReadFile(place.target), before);
      }
      EXPECT_EQ(AllFiles(), files);
    }
  }
  umask(mask);
}

TEST(OutputFile, GoesIntoAPipeThatSomebodyReads) {
  const TempDirectory directory;
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK) + mkfifo("named", 0600), 0);
  // One that a process has open, and that has no name of its own.
  fs::create_symlink("/dev/fd/" + std::to_string(ends[1]), "open");
  auto late = std::async(std::launch::async, [] {
    usleep(20000);
    return open("named", O_RDONLY | O_NONBLOCK);
  });
  for (const char* name : {"named", "open"}) {
    char bytes[9] = {};
    OutputFile output;
    MustBeOk(output.Open(name));
    const int reader = late.valid() ? late.get() : ends[0];
    EXPECT_EQ(read(reader, bytes, 9), -1) << name;  // nothing yet, but its end has not come
    MustBeOk(zStream_Write(output.Stream(), "whole", 5));
    MustBeOk(output.Finish());
    EXPECT_EQ(read(reader, bytes, 9), 5) << name;
    EXPECT_STREQ(bytes, "whole");
    EXPECT_EQ(read(reader, bytes, 9), reader == ends[0] ? -1 : 0);  // that one is still open
  }
}

TEST(OutputFile, CannotBeOpenedWhereNoFileCanStand) {
  const TempDirectory directory;
  fs::create_directory("folder");
  fs::create_symlink("loop", "loop");
  for (const std::string& name :
       {std::string(), std::string("folder"), std::string("folder/"), std::string("none/a"),
        std::string("none/"), std::string("loop"), std::string("a\0b", 3), std::string(256, 'n')}) {
    EXPECT_NE(OutputFile().Open(name), zOK) << name;
  }
  EXPECT_EQ(AllFiles(), (std::set<std::string>{"./folder", "./loop"}));
}

// By name, link or folder; a leftover of an earlier run is no part of one.
TEST(OutputFile, NeverReplacesAnInput) {
  const TempDirectory directory;
  fs::create_directories("d/config");
  const zBytes surface = SurFile{}.Bytes();
  for (const char* name : {"d/a-Frame-0000_T.sur", "d/a-Frame-0001_T.sur"})
    WriteFile(name, surface);
  WriteFile("d/.trelvane-1.partial", "half");
  fs::create_symlink("d/a-Frame-0001_T.sur", "link.rep");
  fs::create_hard_link("d/a-Frame-0001_T.sur", "hard.rep");
  SurfaceFileConverter converter;
  for (const char* output : {"link.rep", "hard.rep"}) {
    const std::string refused = std::string(": Failed to write ") + output;
    converter.importFile("d/a-Frame-0001_T.sur");
    EXPECT_THAT(Thrown([&] { converter.exportFile(output); }), testing::EndsWith(refused));
    converter.importFiles("d");
    EXPECT_THAT(Thrown([&] { converter.exportFile(output); }), testing::EndsWith(refused));
  }
  converter.exportFile("in.rep");
  fs::create_symlink("in.rep", "o-Frame-0001_T.sur");
  converter.importFile("in.rep");
  EXPECT_EQ(converter.getFrameNumber(), 2U);
  converter.exportAll = true;
  EXPECT_THAT(Thrown([&] { converter.exportFile("o.sur"); }),
              testing::EndsWith(": Failed to write o-Frame-0001_T.sur"));
  EXPECT_FALSE(fs::exists("o-Frame-0000_T.sur"));
  EXPECT_EQ(ToBytes(ReadFile("hard.rep")), surface);
}

}  // namespace
