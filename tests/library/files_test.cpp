// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <thread>

#include "handles.h"
#include "support/temp_directory.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// "kind layout frames: name/display name/type/arrayed ..."
std::string Describe(const File& file) {
  const trelvane_file_info info = InfoOf(file);
  std::string text = std::to_string(info.kind) + " " + std::to_string(info.layout) + " " +
                     std::to_string(info.frames) + ":";
  for (std::uint64_t i = 0; i < info.sources; ++i) {
    auto source = Sized<trelvane_source_info>();
    MustSucceed(trelvane_file_get_source, file.get(), i, &source);
    text += " " + std::string(source.name) + "/" + source.display_name + "/" +
            std::to_string(source.type) + "/" + std::to_string(source.arrayed);
  }
  return text;
}

// "kind width x length resampled box stamp, intensities"
std::string Describe(const Scan& scan) {
  const trelvane_scan_info info = InfoOf(scan);
  return std::to_string(info.kind) + " " + std::to_string(info.width) + " x " +
         std::to_string(info.length) + " " + std::to_string(info.resampled) +
         std::to_string(info.has_box) + std::to_string(info.has_stamp) + ", " +
         std::to_string(IntensitiesOf(scan).size());
}

// A recording of two frames with each kind of scan and arrays of 0 and 2 items.
std::vector<std::string> WriteRecording(const std::string& path) {
  const Writer writer = OpenWriter(path, {MakeSource("Top", TRELVANE_UNIFORM_SURFACE),
                                          MakeSource("Many", TRELVANE_UNIFORM_PROFILE, 1),
                                          MakeSource("Cloud", TRELVANE_SURFACE_POINT_CLOUD),
                                          MakeSource("Trace", TRELVANE_PROFILE_POINT_CLOUD)});
  std::vector<std::string> failures;
  for (int frame = 0; frame < 2; ++frame) {
    failures.push_back(BeginFrame(writer));
    failures.push_back(Add(writer, MakeScan(TRELVANE_SCAN_SURFACE, 40, 30, frame)));
    const Scan first = MakeScan(TRELVANE_SCAN_PROFILE, 7);
    const Scan second = MakeScan(TRELVANE_SCAN_PROFILE, 9);
    using Items = std::vector<const trelvane_scan*>;
    failures.push_back(AddItems(writer, frame == 0 ? Items{} : Items{first.get(), second.get()}));
    failures.push_back(Add(writer, MakeScan(TRELVANE_SCAN_CLOUD, 5, 4, frame)));
    failures.push_back(Add(writer, MakeScan(TRELVANE_SCAN_POINT_PROFILE, 6, 1, frame)));
  }
  failures.push_back(Close(writer));
  std::erase(failures, "");
  return failures;
}

TEST(LibraryFile, TellsWhatEachKindHolds) {
  const TempDirectory directory;
  std::filesystem::copy(EXAMPLES_DIR "/config", "config", std::filesystem::copy_options::recursive);
  for (const char* from : {"part.sur", "part.srf", "part.pro", "part.pcd", "scans"}) {
    const std::string input = std::string(EXAMPLES_DIR "/") + from;
    const std::string to = std::string(from) + ".rep";
    EXPECT_EQ(Convert(input, to.c_str()), "3 " + to + "\n");
    EXPECT_EQ(Convert(input, (to + ".ovrec").c_str()), "3 " + to + ".ovrec\n");
  }
  const std::string examples = EXAMPLES_DIR "/";
  const struct {
    std::string path;
    std::string file, scan;
    const char* recording;  // of the same scans
    std::string recordedScan;
  } rows[] = {
      {"part.sur", "2 0 1: Surface.Top/Surface.Top/14/0", "1 320 x 240 100, 0", "part.sur.rep",
       "1 320 x 240 111, 0"},
      {"part.srf", "1 0 1: Surface.Top/Surface.Top/14/0", "1 80 x 60 100, 4800", "part.srf.rep",
       "1 80 x 60 111, 4800"},
      {"part.pro", "3 0 1: Surface.Top/Surface.Top/12/0", "3 640 x 1 000, 0", "part.pro.rep",
       "3 640 x 1 011, 0"},
      {"part.pcd", "4 0 1: Surface.Top/Surface.Top/15/0", "2 80 x 60 000, 4800", "part.pcd.rep",
       "2 80 x 60 011, 4800"},
      {"scans", "8 0 3: Left/Left/14/0 Right/Right/14/0", "1 80 x 60 100, 0", "scans.rep.ovrec",
       "1 80 x 60 111, 0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    const File file = Open(examples + row.path);
    const Scan scan = Read(file);
    EXPECT_EQ(Describe(file), row.file);
    EXPECT_EQ(Describe(scan), row.scan);
    const std::string path = row.recording;
    const std::string head = path.ends_with(".ovrec") ? "7 2" : "6 2";
    for (const bool unchecked : {false, true}) {
      const File recording = Open(path, unchecked);
      EXPECT_EQ(Describe(recording), head + row.file.substr(3));
      const trelvane_file_info info = InfoOf(recording);
      for (std::uint64_t i = 0; i < info.frames * info.sources; ++i) {
        const Scan recorded = Read(recording, i / info.sources, i % info.sources);
        const Scan single = Read(file, i / info.sources, i % info.sources);
        EXPECT_TRUE(i > 0 || Describe(recorded) == row.recordedScan) << Describe(recorded);
        EXPECT_EQ(PointsOf(recorded), PointsOf(single));
        EXPECT_EQ(IntensitiesOf(recorded), IntensitiesOf(single));
        EXPECT_EQ(CountItems(recording, i / info.sources, i % info.sources), 1U);
      }
    }
  }
  std::filesystem::copy_file("part.sur.rep", "a.rec");
  EXPECT_THAT(Describe(Open("a.rec")), StartsWith("5 2 1"));
}

TEST(LibraryFile, TellsSourcesOfOneNameApart) {
  const TempDirectory directory;
  std::filesystem::create_directory("scans");
  MustSucceed(trelvane_scan_save, MakeScan(TRELVANE_SCAN_SURFACE, 3, 2).get(),
              "scans/a-Frame-0000_Top.sur");
  MustSucceed(trelvane_scan_save, MakeScan(TRELVANE_SCAN_SURFACE, 4, 2).get(),
              "scans/b-Frame-0000_Top.sur");
  const File file = Open("scans");
  EXPECT_EQ(Describe(file), "8 0 1: Top/Top/14/0 Top/Top/14/0");
  EXPECT_EQ(InfoOf(Read(file, 0, 0)).width, 3U);
  EXPECT_EQ(InfoOf(Read(file, 0, 1)).width, 4U);
}

TEST(LibraryFile, GivesItemsOfArrayedSources) {
  const TempDirectory directory;
  ASSERT_THAT(WriteRecording("a.rep"), testing::IsEmpty());
  for (const bool unchecked : {false, true}) {
    const File file = Open("a.rep", unchecked);
    EXPECT_EQ(Describe(file),
              "6 2 2: Top/Top/14/0 Many/Many/12/1 Cloud/Cloud/15/0 Trace/Trace/13/0");
    EXPECT_EQ(CountItems(file, 0, 1), 0U);
    EXPECT_EQ(CountItems(file, 1, 1), 2U);
    // In any order.
    EXPECT_EQ(InfoOf(Read(file, 1, 1, 1)).width, 9U);
    EXPECT_EQ(PointsOf(Read(file, 0, 0)), PointsOf(MakeScan(TRELVANE_SCAN_SURFACE, 40, 30)));
    EXPECT_EQ(InfoOf(Read(file, 1, 1, 0)).width, 7U);
    EXPECT_EQ(PointsOf(Read(file, 1, 2)), PointsOf(MakeScan(TRELVANE_SCAN_CLOUD, 5, 4, 1)));
    EXPECT_EQ(PointsOf(Read(file, 1, 3)), PointsOf(MakeScan(TRELVANE_SCAN_POINT_PROFILE, 6, 1, 1)));
    const struct {
      std::uint64_t frame, source, item;
      const char* failure;
    } rows[] = {
        {0, 1, 0, "3 0 There is no scan"},
        {1, 1, 2, "3 0 There is no scan"},
        {0, 0, 1, "3 0 There is no scan"},
        {2, 0, 0, "1 0 The file has no such frame"},
        {0, 4, 0, "1 0 The file has no such source"},
    };
    for (const auto& row : rows) {
      trelvane_scan* scan = nullptr;
      EXPECT_THAT(
          Failure(trelvane_file_read_scan, file.get(), row.frame, row.source, row.item, &scan),
          StartsWith(row.failure));
      EXPECT_EQ(scan, nullptr);
    }
  }
}

TEST(LibraryFile, LeavesScansWhenItIsClosedOrReadOn) {
  const TempDirectory directory;
  ASSERT_THAT(WriteRecording("a.rep"), testing::IsEmpty());
  File file = Open("a.rep");
  const Scan first = Read(file, 0, 0);
  const Scan item = Read(file, 1, 1, 1);
  const Scan second = Read(file, 1, 0);
  file.reset();
  std::filesystem::remove("a.rep");
  EXPECT_EQ(PointsOf(first), PointsOf(MakeScan(TRELVANE_SCAN_SURFACE, 40, 30, 0)));
  EXPECT_EQ(PointsOf(second), PointsOf(MakeScan(TRELVANE_SCAN_SURFACE, 40, 30, 1)));
  EXPECT_EQ(PointsOf(item), PointsOf(MakeScan(TRELVANE_SCAN_PROFILE, 9)));
}

// Handles of their own, or scans of one file.
TEST(LibraryFile, ServesSeveralThreads) {
  const TempDirectory directory;
  ASSERT_THAT(WriteRecording("a.rep"), testing::IsEmpty());
  const std::vector<std::int16_t> expected = PointsOf(MakeScan(TRELVANE_SCAN_SURFACE, 40, 30, 1));
  std::vector<std::string> failures(4);
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < failures.size(); ++number) {
    threads.emplace_back([&, number] {
      const std::string name = "b" + std::to_string(number);
      for (int round = 0; round < 20; ++round) {
        trelvane_file* none = nullptr;
        const std::string missing = Failure(trelvane_open, name.c_str(), nullptr, &none);
        failures[number] += missing == "3 0 There is no file " + name ? "" : missing;
        const File file = Open("a.rep", round % 2 == 1);
        failures[number] += PointsOf(Read(file, 1, 0)) == expected ? "" : "other points";
        for (const std::string& failure : WriteRecording(name + ".rep"))
          failures[number] += failure;
      }
    });
  }
  const File file = Open("a.rep");
  for (int round = 0; round < 100; ++round) {
    threads.emplace_back([&, scan = Read(file, 1, 0)] {
      if (PointsOf(scan) != expected) std::abort();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, std::vector<std::string>(4));
  EXPECT_TRUE(ReadFile("b3.rep") == ReadFile("a.rep"));
  EXPECT_EQ(directory.Files().size(), 5U);
}

TEST(LibraryFile, ToldUncheckedIsReadByItsHeadsAlone) {
  const TempDirectory directory;
  ASSERT_THAT(WriteRecording("a.rep"), testing::IsEmpty());
  const std::string sound = ReadFile("a.rep");
  const auto damage = [&](std::size_t place, std::size_t size) {
    std::string damaged = sound;
    for (std::size_t i = place; i < place + size; ++i) damaged[i] = static_cast<char>(~damaged[i]);
    WriteFile("a.rep", damaged);
  };
  const auto open = [](bool unchecked) {
    auto options = Sized<trelvane_open_options>();
    options.unchecked = unchecked ? 1 : 0;
    trelvane_file* file = nullptr;
    const std::string failure = Failure(trelvane_open, "a.rep", &options, &file);
    trelvane_file_close(file);
    return failure;
  };
  const Scan surface = MakeScan(TRELVANE_SCAN_SURFACE, 40, 30, 0);
  const auto bytes = reinterpret_cast<const char*>(trelvane_scan_points(surface.get(), nullptr));
  const std::size_t points = sound.find(std::string(bytes, 2400));
  damage(points, 1);  // a number that nobody can know
  EXPECT_THAT(open(false), HasSubstr("the checksum of the chunk's records is"));
  EXPECT_NE(PointsOf(Read(Open("a.rep", true), 0, 0)), PointsOf(surface));
  damage(points - 4, 4);  // their number: the other scans are as they were
  const File file = Open("a.rep", true);
  trelvane_scan* scan = nullptr;
  EXPECT_THAT(Failure(trelvane_file_read_scan, file.get(), 0, 0, 0, &scan),
              StartsWith("5 -6 The recording stream is damaged at byte offset"));
  EXPECT_EQ(PointsOf(Read(file, 1, 0)), PointsOf(MakeScan(TRELVANE_SCAN_SURFACE, 40, 30, 1)));
  damage(0, 1);
  EXPECT_THAT(open(true), StartsWith("5 -6 The recording stream is damaged at byte offset 0"));
  WriteFile("a.rep", sound.substr(0, sound.size() / 2));
  EXPECT_THAT(open(true), HasSubstr("damaged at byte offset"));
}

TEST(LibraryConversion, DoesWhatTrelvaneDoes) {
  const TempDirectory directory;
  std::filesystem::copy_file(EXAMPLES_DIR "/part.pcd", "part.pcd");
  auto cloud = Sized<trelvane_cloud_options>();
  cloud.width = 40;
  cloud.height = 30;
  cloud.zoom = 2;
  cloud.has_invalid_point = 1;
  auto options = Sized<trelvane_convert_options>();
  options.cloud = &cloud;
  options.config = EXAMPLES_DIR "/config";
  const std::string converted = Convert("part.pcd", nullptr, options);
  EXPECT_THAT(converted, StartsWith("1 The point (0.000000, 0.000000, 0.000000) is configured"));
  EXPECT_THAT(converted, HasSubstr("1 The zooming factor has been set to 2.000000\n"));
  EXPECT_THAT(converted, HasSubstr("2 "));
  EXPECT_THAT(converted, testing::EndsWith("3 part.ovrec\n"));
  // Options of an opened file are the same.
  auto open = Sized<trelvane_open_options>();
  std::string told;
  open.cloud = &cloud;
  open.context = &told;
  open.on_message = [](void* context, trelvane_message_kind kind, const char*) {
    *static_cast<std::string*>(context) += std::to_string(kind);
  };
  trelvane_file* opened = nullptr;
  MustSucceed(trelvane_open, "part.pcd", &open, &opened);
  const File file(opened);
  cloud = {};
  EXPECT_EQ(told, "");
  const Scan scan = Read(file);
  EXPECT_EQ(told, "2");
  EXPECT_EQ(InfoOf(scan).width, 40U);
  EXPECT_EQ(PointsOf(scan), PointsOf(Read(Open("part.ovrec"))));

  auto frames = Sized<trelvane_convert_options>();
  const std::string recording = EXAMPLES_DIR "/recording.ovrec";
  frames.frame = 2;
  EXPECT_EQ(Convert(recording, "f.sur", frames),
            "3 f-Frame-0002_Left.sur\n3 f-Frame-0002_Right.sur\n");
  EXPECT_EQ(ReadFile("f-Frame-0002_Left.sur"),
            ReadFile(EXAMPLES_DIR "/scans/scan-Frame-0002_Left.sur"));
  frames.frame = 3;
  EXPECT_EQ(Convert(recording, "g.sur", frames), "1 0 The frame index should be less than 3");
  frames.frame = 0;
  frames.all_frames = 1;
  std::filesystem::create_directory("h-Frame-0001_Left.sur");
  EXPECT_EQ(Convert(recording, "h.sur", frames),
            "3 h-Frame-0000_Left.sur\n3 h-Frame-0000_Right.sur\n"
            "6 -997 Failed to open h-Frame-0001_Left.sur");
  EXPECT_EQ(Convert("nothing.sur", "a.rep"), "3 0 There is no file nothing.sur");
  EXPECT_EQ(Convert("part.pcd", "part.pcd"),
            "5 -997 The import file type is same as the export file type");
  frames.cloud = &cloud;
  cloud = Sized<trelvane_cloud_options>();
  cloud.swap_xz = 1;
  EXPECT_THAT(Convert(recording, "i.sur", frames), StartsWith("1 0 Configuring surface"));
}

}  // namespace
