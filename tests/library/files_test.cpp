// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <array>
#include <regex>
#include <thread>

#include "handles.h"
#include "support/temp_directory.h"

namespace {

// "kind layout frames: name/display name/type/arrayed ..."
std::string Describe(const File& file) {
  const trelvane_file_info info = InfoOf(file);
  std::ostringstream text;
  text << info.kind << " " << info.layout << " " << info.frames << ":";
  for (std::uint64_t i = 0; i < info.sources; ++i) {
    const trelvane_source_info source = SourceOf(file, i);
    text << " " << source.name << "/" << source.display_name << "/" << source.type << "/"
         << source.arrayed;
  }
  return text.str();
}

// "kind width x length resampled box stamp, intensities"
std::string Describe(const Scan& scan) {
  const trelvane_scan_info info = InfoOf(scan);
  std::ostringstream text;
  text << info.kind << " " << info.width << " x " << info.length << " " << info.resampled
       << info.has_box << info.has_stamp << ", " << IntensitiesOf(scan).size();
  return text.str();
}

// A recording of two frames with each kind of scan and arrays of 0 and 2 items; tells failures.
std::string WriteRecording(const std::string& path) {
  const Writer writer = OpenWriter(path, {MakeSource("Top", TRELVANE_UNIFORM_SURFACE),
                                          MakeSource("Many", TRELVANE_UNIFORM_PROFILE, 1),
                                          MakeSource("Cloud", TRELVANE_SURFACE_POINT_CLOUD),
                                          MakeSource("Trace", TRELVANE_PROFILE_POINT_CLOUD)});
  const Scan first = MakeScan(TRELVANE_SCAN_PROFILE, 7);
  const Scan second = MakeScan(TRELVANE_SCAN_PROFILE, 9);
  std::vector<const trelvane_scan*> items;
  std::string failures;
  for (int frame = 0; frame < 2; ++frame) {
    failures += BeginFrame(writer);
    failures += Add(writer, MakeScan(TRELVANE_SCAN_SURFACE, 40, 30, frame));
    failures += AddItems(writer, items);
    failures += Add(writer, MakeScan(TRELVANE_SCAN_CLOUD, 5, 4, frame));
    failures += Add(writer, MakeScan(TRELVANE_SCAN_POINT_PROFILE, 6, 1, frame));
    items = {first.get(), second.get()};
  }
  return failures + Close(writer);
}

std::vector<std::int16_t> TopPoints(int frame) {
  return MakePoints(MakeInfo(TRELVANE_SCAN_SURFACE, 40, 30), frame);
}

TEST(LibraryFile, TellsWhatEachKindHolds) {
  const TempDirectory directory;
  std::filesystem::copy(EXAMPLES_DIR "/config", "config", std::filesystem::copy_options::recursive);
  const struct {
    std::string path, file, scan;
  } rows[] = {
      {"part.sur", "2 0 1: Surface.Top/Surface.Top/14/0", "1 320 x 240 100, 0"},
      {"part.srf", "1 0 1: Surface.Top/Surface.Top/14/0", "1 80 x 60 100, 4800"},
      {"part.pro", "3 0 1: Surface.Top/Surface.Top/12/0", "3 640 x 1 000, 0"},
      {"part.pcd", "4 0 1: Surface.Top/Surface.Top/15/0", "2 80 x 60 000, 4800"},
      {"scans", "8 0 3: Left/Left/14/0 Right/Right/14/0", "1 80 x 60 100, 0"},
  };
  const std::pair<const char*, const char*> recordings[] = {{"a.rep", "6 2"}, {"a.ovrec", "7 2"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    const std::regex none("00,");  // neither box nor stamp
    const File file = Open(EXAMPLES_DIR "/" + row.path);
    EXPECT_EQ(Describe(file), row.file);
    EXPECT_EQ(Describe(Read(file)), row.scan);
    for (const auto& [path, head] : recordings) {
      EXPECT_EQ(Convert(EXAMPLES_DIR "/" + row.path, path), "3 " + std::string(path) + "\n");
      for (const bool unchecked : {false, true}) {
        const File recording = Open(path, unchecked);
        EXPECT_EQ(Describe(recording), head + row.file.substr(3));
        EXPECT_EQ(Describe(Read(recording)), std::regex_replace(row.scan, none, "11,"));
      }
    }
  }
}

// In any order, and scans that stay when more are read and the file is closed and gone.
TEST(LibraryFile, GivesScansAndItemsThatOutliveIt) {
  const TempDirectory directory;
  for (const bool unchecked : {false, true}) {
    ASSERT_EQ(WriteRecording("a.rep"), "");
    File file = Open("a.rep", unchecked);
    EXPECT_EQ(Describe(file),
              "6 2 2: Top/Top/14/0 Many/Many/12/1 Cloud/Cloud/15/0 Trace/Trace/13/0");
    const std::pair<std::array<std::uint64_t, 3>, const char*> rows[] = {
        {{1, 1, 2}, "3 0 There is no scan in this place"},
        {{0, 0, 1}, "3 0 There is no scan in this place"},
        {{2, 0, 0}, "1 0 The file has no such frame"},
        {{0, 4, 0}, "1 0 The file has no such source"},
    };
    for (const auto& row : rows) {
      EXPECT_THAT([&] { Read(file, row.first[0], row.first[1], row.first[2]); },
                  testing::ThrowsMessage<std::runtime_error>(row.second));
    }
    const Scan item = Read(file, 1, 1, 1);
    const Scan first = Read(file, 0, 0);
    EXPECT_EQ(InfoOf(Read(file, 1, 1, 0)).width, 7U);
    EXPECT_EQ(PointsOf(Read(file, 1, 2)), PointsOf(MakeScan(TRELVANE_SCAN_CLOUD, 5, 4, 1)));
    EXPECT_EQ(PointsOf(Read(file, 1, 3)), PointsOf(MakeScan(TRELVANE_SCAN_POINT_PROFILE, 6, 1, 1)));
    const Scan second = Read(file, 1, 0);
    file.reset();
    std::filesystem::remove("a.rep");
    EXPECT_EQ(PointsOf(first), TopPoints(0));
    EXPECT_EQ(PointsOf(second), TopPoints(1));
    EXPECT_EQ(PointsOf(item), PointsOf(MakeScan(TRELVANE_SCAN_PROFILE, 9)));
  }
}

TEST(LibraryFile, ServesSeveralThreads) {
  const TempDirectory directory;
  ASSERT_EQ(WriteRecording("a.rep"), "");
  std::vector<std::string> failures(4);
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < failures.size(); ++number) {
    threads.emplace_back([&, number] {
      const std::string name = "b" + std::to_string(number);
      for (int round = 0; round < 20; ++round) {
        trelvane_file* none = nullptr;
        const std::string missing = Failure(trelvane_open, name.c_str(), nullptr, &none);
        failures[number] += missing == "3 0 There is no file " + name ? "" : missing;
        const Scan scan = Read(Open("a.rep", round % 2 == 1), 1, 0);
        failures[number] += PointsOf(scan) == TopPoints(1) ? "" : "other points";
        failures[number] += WriteRecording(name + ".rep");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, std::vector<std::string>(4));
  EXPECT_TRUE(ReadFile("b3.rep") == ReadFile("a.rep"));
  EXPECT_EQ(directory.Files().size(), 5U);
}

TEST(LibraryFile, ToldUncheckedIsReadByItsHeadsAlone) {
  const TempDirectory directory;
  ASSERT_EQ(WriteRecording("a.rep"), "");
  const std::string sound = ReadFile("a.rep");
  const auto open = [&](std::size_t place, std::size_t size) {
    std::string damaged = sound;
    for (std::size_t i = place; i < place + size; ++i) damaged[i] = static_cast<char>(~damaged[i]);
    WriteFile("a.rep", damaged);
    return Open("a.rep", true);
  };
  const auto points = TopPoints(0);
  const std::size_t place =
      sound.find(std::string(reinterpret_cast<const char*>(points.data()), 2400));
  // The number of points: the other scans are as they were.
  const File file = open(place - 4, 4);
  const auto damaged = testing::ThrowsMessage<std::runtime_error>(
      testing::StartsWith("5 -6 The recording stream is damaged at byte offset"));
  EXPECT_THAT([&] { Read(file); }, damaged);
  EXPECT_EQ(PointsOf(Read(file, 1, 0)), TopPoints(1));
  EXPECT_THAT([&] { open(0, 1); }, damaged);
  WriteFile("a.rep", sound.substr(0, sound.size() / 2));
  EXPECT_THAT([&] { Open("a.rep", true); }, damaged);
}

TEST(LibraryConversion, DoesWhatTrelvaneDoes) {
  const TempDirectory directory;
  trelvane_cloud_options cloud{sizeof cloud, 40, 30, 0, 0, {}, 0};
  const trelvane_open_options open{sizeof open, 0, &cloud, nullptr, nullptr};
  const File file = Make<trelvane_file>(trelvane_open, EXAMPLES_DIR "/part.pcd", &open);
  cloud = {};  // of which the file has a copy
  EXPECT_EQ(InfoOf(Read(file)).width, 40U);

  trelvane_convert_options options{};
  options.frame = 2;
  EXPECT_EQ(Convert(EXAMPLES_DIR "/recording.ovrec", "f.sur", options),
            "3 f-Frame-0002_Left.sur\n3 f-Frame-0002_Right.sur\n");
  EXPECT_EQ(ReadFile("f-Frame-0002_Left.sur"),
            ReadFile(EXAMPLES_DIR "/scans/scan-Frame-0002_Left.sur"));
  options = {};
  options.all_frames = 1;
  std::filesystem::create_directory("h-Frame-0001_Left.sur");
  EXPECT_EQ(Convert(EXAMPLES_DIR "/recording.ovrec", "h.sur", options),
            "3 h-Frame-0000_Left.sur\n3 h-Frame-0000_Right.sur\n"
            "6 -997 Failed to open h-Frame-0001_Left.sur");
}

}  // namespace
