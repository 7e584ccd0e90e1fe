// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <sys/resource.h>

#include <csignal>
#include <cstring>

#include "handles.h"
#include "support/temp_directory.h"

namespace {

using testing::StartsWith;

const trelvane_source_info kTop = MakeSource("Top", TRELVANE_UNIFORM_SURFACE);

std::string AddFrame(const Writer& writer, const Scan& scan) {
  const std::string failure = BeginFrame(writer);
  return failure + Add(writer, scan);
}

Scan Surface() { return MakeScan(TRELVANE_SCAN_SURFACE, 3, 2); }

TEST(LibraryWriter, KeepsEverythingOfAScan) {
  const TempDirectory directory;
  trelvane_scan_info info = MakeInfo(TRELVANE_SCAN_SURFACE, 3, 2);
  info.stamp = {1, 2, -3, -4, 5, {6, 7, 8}};
  info.has_stamp = info.has_box = 1;
  info.resampled = 0;
  info.box_center[2] = 1e-3;
  const Scan scan = Create(info, MakePoints(info));
  const Writer writer = OpenWriter("a.rec", {kTop});
  EXPECT_EQ(AddFrame(writer, scan), "");
  EXPECT_EQ(Close(writer), "");
  for (const trelvane_scan_info& told : {InfoOf(scan), InfoOf(Read(Open("a.rec")))}) {
    EXPECT_EQ(std::memcmp(&told, &info, sizeof info), 0);
  }
}

TEST(LibraryWriter, PutsTheFileInItsPlaceWholeOrNotAtAll) {
  const TempDirectory directory;
  WriteFile("a.rep", "earlier");
  Writer writer = OpenWriter("a.rep", {kTop});
  EXPECT_EQ(AddFrame(writer, Surface()), "");
  EXPECT_EQ(ReadFile("a.rep"), "earlier");
  EXPECT_EQ(Close(writer), "");
  EXPECT_EQ(InfoOf(Open("a.rep")).frames, 1U);
  const std::string closed = "7 0 The writer of a.rep was closed or failed";
  for (const auto& call : {BeginFrame(writer), Add(writer, Surface()), Close(writer)}) {
    EXPECT_EQ(call, closed);
  }
  writer.reset();
  EXPECT_EQ(directory.Files(), std::set<std::string>{"a.rep"});
}

// Of what could not be added nothing is left: the recording goes on.
TEST(LibraryWriter, RefusesWhatIsNotTheNextStep) {
  const TempDirectory directory;
  const Writer writer =
      OpenWriter("a.rep", {kTop, MakeSource("Many", TRELVANE_UNIFORM_PROFILE, 1)});
  const Scan profile = MakeScan(TRELVANE_SCAN_PROFILE, 4);
  const Scan surface = Surface();
  EXPECT_EQ(Close(writer), "1 0 A recording has at least one frame");
  EXPECT_EQ(Add(writer, surface), "1 0 No frame has been begun");
  EXPECT_EQ(BeginFrame(writer), "");
  EXPECT_EQ(AddItems(writer, {surface.get()}), "1 0 The source Top is not arrayed");
  EXPECT_EQ(Add(writer, profile), "1 0 The scan is of another kind than the source Top");
  EXPECT_EQ(Add(writer, surface), "");
  EXPECT_EQ(Add(writer, profile), "1 0 The source Many is arrayed");
  EXPECT_EQ(AddItems(writer, {profile.get(), surface.get()}),
            "1 0 The scan is of another kind than the source Many");
  EXPECT_EQ(AddItems(writer, {nullptr}), "1 0 scans is NULL");
  EXPECT_EQ(Close(writer), "1 0 The frame has no scan yet of the source Many");
  EXPECT_EQ(BeginFrame(writer), "1 0 The frame has no scan yet of the source Many");
  EXPECT_EQ(AddItems(writer, {profile.get()}), "");
  EXPECT_EQ(AddItems(writer, {}), "1 0 The frame has a scan of each source");
  EXPECT_EQ(Close(writer), "");
  EXPECT_EQ(InfoOf(Read(Open("a.rep"), 0, 1, 0)).width, 4U);
}

TEST(LibraryWriter, TellsWhyItCannotBegin) {
  const TempDirectory directory;
  const struct {
    const char* path;
    std::vector<trelvane_source_info> sources;
    const char* failure;
  } rows[] = {
      {"a.rep", {}, "1 0 A recording has 1 to 65535 sources"},
      {"a.rep", std::vector(65536, kTop), "1 0 A recording has 1 to 65535 sources"},
      {"a.rep", {MakeSource("Top", 11)}, "1 0 There is no such type of source"},
      {"a.rep", {kTop, MakeSource("\xC3", 14)}, "1 0 name is no UTF-8"},
      {"a.rep", {MakeSource(nullptr, 14)}, "1 0 name is NULL"},
      {"a.mcap", {kTop}, "1 0 The extension of a.mcap stands for no recording"},
      {"no/a.rep", {kTop}, "6 -997 Failed to open no/a.rep"},
      {"no/a.ovrec", {kTop}, "6 -5 Failed to construct no/a.ovrec"},
      {"a.ovrec", {kTop}, "5 -5 Failed to write the config.json file"},
  };
  for (const auto& row : rows) {
    trelvane_writer* writer = nullptr;
    EXPECT_EQ(Failure(trelvane_writer_open, row.path, row.sources.data(), row.sources.size(),
                      nullptr, &writer),
              row.failure);
    EXPECT_EQ(writer, nullptr);
  }
  EXPECT_EQ(directory.Files(), std::set<std::string>{});
}

// A device without room, and a limit on the size of files.
TEST(LibraryWriter, TellsWhatCannotBeWritten) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
  const TempDirectory directory;
  std::filesystem::create_symlink("/dev/full", "a.rep");
  const Writer writer = OpenWriter("a.rep", {kTop});
  EXPECT_EQ(AddFrame(writer, Surface()), "");
  EXPECT_EQ(Close(writer), "6 -997 Failed to write a.rep");
  EXPECT_THAT(Close(writer), StartsWith("7 0"));

  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{1 << 20, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const Writer full = OpenWriter("b.rep", {kTop});
  const Scan large = MakeScan(TRELVANE_SCAN_SURFACE, 1024, 1024);
  EXPECT_EQ(AddFrame(full, large), "6 -997 Failed to write b.rep");
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, before);
  EXPECT_THAT(Add(full, large), StartsWith("7 0"));
}

}  // namespace
