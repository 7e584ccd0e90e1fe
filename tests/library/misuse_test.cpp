// SPDX-License-Identifier: MIT
// What no call may be ended by.
#include <gmock/gmock.h>

#include <utility>

#include "handles.h"
#include "support/temp_directory.h"

namespace {

using testing::StartsWith;

// Calls without each of the pointers that are given; those that are NULL may be.
template <class... Parameters, class... Values>
void ExpectAllNeeded(trelvane_status (*call)(Parameters...), Values... values) {
  const auto without = [&](auto place) {
    std::tuple<Parameters...> given(values...);
    auto& value = std::get<place>(given);
    if constexpr (std::is_pointer_v<std::decay_t<decltype(value)>>) {
      if (std::exchange(value, nullptr) == nullptr) return;
      EXPECT_EQ(std::apply(call, given), TRELVANE_ERROR_ARGUMENT) << place;
    }
  };
  [&]<std::size_t... places>(std::index_sequence<places...>) {
    (without(std::integral_constant<std::size_t, places>()), ...);
  }
  (std::index_sequence_for<Parameters...>());
}

TEST(LibraryMisuse, OfPointersIsAnArgumentError) {
  const TempDirectory directory;
  std::filesystem::copy_file(EXAMPLES_DIR "/part.sur", "part.sur");
  const File file = Open("part.sur");
  const Scan scan = Read(file);
  auto fileInfo = Sized<trelvane_file_info>();
  auto source = MakeSource("a", TRELVANE_UNIFORM_SURFACE);
  auto info = MakeInfo(TRELVANE_SCAN_SURFACE, 2, 2);
  const std::int16_t points[4] = {};
  double numbers[3] = {};
  std::uint64_t count = 0;
  trelvane_file* newFile = nullptr;
  trelvane_scan* newScan = nullptr;
  trelvane_writer* newWriter = nullptr;
  const Writer writer = OpenWriter("a.rep", {source});
  const trelvane_scan* const scans[] = {scan.get()};
  const auto none = nullptr;
  ExpectAllNeeded(trelvane_open, "part.sur", none, &newFile, none);
  ExpectAllNeeded(trelvane_file_get_info, file.get(), &fileInfo, none);
  ExpectAllNeeded(trelvane_file_get_source, file.get(), 0, &source, none);
  ExpectAllNeeded(trelvane_file_count_items, file.get(), 0, 0, &count, none);
  ExpectAllNeeded(trelvane_file_read_scan, file.get(), 0, 0, 0, &newScan, none);
  ExpectAllNeeded(trelvane_scan_create, &info, points, 4, none, 0, &newScan, none);
  ExpectAllNeeded(trelvane_scan_get_info, scan.get(), &info, none);
  ExpectAllNeeded(trelvane_scan_heights_f32, scan.get(), none, 1 << 20, none);
  ExpectAllNeeded(trelvane_scan_heights_f64, none, numbers, 3, none);
  ExpectAllNeeded(trelvane_scan_find_box, scan.get(), numbers, numbers, none);
  ExpectAllNeeded(trelvane_scan_save, scan.get(), "a.sur", none);
  ExpectAllNeeded(trelvane_writer_open, "b.rep", &source, 1, none, &newWriter, none);
  ExpectAllNeeded(trelvane_writer_begin_frame, writer.get(), none);
  ExpectAllNeeded(trelvane_writer_add, writer.get(), scan.get(), none);
  ExpectAllNeeded(trelvane_writer_add_items, writer.get(), scans, 1, none);
  ExpectAllNeeded(trelvane_writer_close, writer.get(), none);
  ExpectAllNeeded(trelvane_convert, "part.sur", none, none, none);
  EXPECT_EQ(Failure(trelvane_scan_heights_f32, scan.get(), none, 1 << 20), "1 0 heights is NULL");
  EXPECT_EQ(Failure(trelvane_file_get_source, file.get(), 1, &source),
            "1 0 The file has no such source");
  EXPECT_EQ(Failure(trelvane_file_count_items, file.get(), ~0ULL, 0, &count),
            "1 0 The file has no such frame");
  EXPECT_EQ(Failure(trelvane_convert, "part.sur", "", none), "1 0 to is empty");

  trelvane_file_close(nullptr);
  trelvane_scan_free(nullptr);
  trelvane_writer_free(nullptr);
  std::size_t values = 1;
  EXPECT_EQ(trelvane_scan_points(nullptr, &values), nullptr);
  EXPECT_EQ(values, 0U);
  EXPECT_EQ(trelvane_scan_intensities(scan.get(), nullptr), nullptr);
  EXPECT_EQ(directory.Files().size(), 2U);  // with that of the open writer
}

TEST(LibraryMisuse, OfValuesIsAnArgumentError) {
  const std::int16_t points[4] = {};
  const std::uint8_t bytes[4] = {};
  trelvane_scan* scan = nullptr;
  const auto create = [&](auto change, std::size_t values = 4, std::size_t intensities = 0) {
    auto info = MakeInfo(TRELVANE_SCAN_SURFACE, 2, 2);
    change(info);
    return Failure(trelvane_scan_create, &info, points, values, intensities > 0 ? bytes : nullptr,
                   intensities, &scan);
  };
  const auto nothing = [](auto&) {};
  const auto huge = [](auto& info) {
    info.kind = TRELVANE_SCAN_CLOUD;
    info.width = info.length = 0xFFFFFFFF;
  };
  EXPECT_THAT(create(nothing, 3), StartsWith("1 0 The values given"));
  EXPECT_THAT(create(nothing, 4, 3), StartsWith("1 0 The values given"));
  EXPECT_THAT(create(huge, 3), StartsWith("1 0 The values given"));
  EXPECT_THAT(create([](auto& info) { --info.size; }), StartsWith("1 0 the size of info"));
  EXPECT_THAT(create([](auto& info) { info.kind = 5; }), StartsWith("1 0 There is no such kind"));
  EXPECT_THAT(create([](auto& info) { info.width = 0; }, 0), StartsWith("1 0 A scan has at least"));
  EXPECT_THAT(create([](auto& info) { info.kind = 3; }), StartsWith("1 0 A profile has one row"));
  EXPECT_THAT(create([](auto& info) { info.has_box = -1; }), StartsWith("1 0 has_box is neither"));

  auto cloud = Sized<trelvane_cloud_options>();
  auto options = Sized<trelvane_open_options>();
  options.cloud = &cloud;
  trelvane_file* file = nullptr;
  const auto open = [&](auto& field, auto value) {
    const auto before = std::exchange(field, value);
    const auto failure = Failure(trelvane_open, EXAMPLES_DIR "/part.sur", &options, &file);
    field = before;
    return failure;
  };
  EXPECT_EQ(open(options.size, 8U), "1 0 the size of options is not that of its struct");
  EXPECT_EQ(open(cloud.size, 0U), "1 0 the size of cloud is not that of its struct");
  EXPECT_EQ(open(options.unchecked, 2), "1 0 unchecked is neither 0 nor 1");
  EXPECT_EQ(open(cloud.swap_xz, 2), "1 0 swap_xz is neither 0 nor 1");
  for (const double zoom : {-1.0, 1.0 / 0.0, 0.0 / 0.0}) {
    EXPECT_EQ(open(cloud.zoom, zoom), "1 0 zoom is no number above 0");
  }
  EXPECT_EQ(file, nullptr);
}

TEST(LibraryMisuse, OfFilesIsTold) {
  const TempDirectory directory;
  WriteFile("empty.sur", std::string_view());
  WriteFile("text.txt", "text");
  WriteFile("a.sur", "DIGITAL SURF");
  WriteFile("a.rep", "MCAP");
  WriteFile("a.ovrec", "tar");
  std::filesystem::create_directory("folder");
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "ä";
  const struct {
    std::string path;
    const char* failure;
  } rows[] = {
      {"nothing.sur", "3 0 There is no file nothing.sur"},
      {"empty.sur", "5 -997 The inputted file is empty"},
      {"text.txt", "5 0 The extension of text.txt stands for no kind of scan or recording"},
      {"a.rep", "5 -6 The recording stream is damaged at byte offset 0"},
      {"a.ovrec", "5 -"},
      {"folder", "5 -999 Fail to find any file in the input directory."},
      {umlauts, "3 0 There is no file ää"},
  };
  trelvane_file* file = nullptr;
  for (const auto& row : rows) {
    EXPECT_THAT(Failure(trelvane_open, row.path.c_str(), nullptr, &file), StartsWith(row.failure));
  }
  const File damaged = Open("a.sur");  // which is read when its scan is asked for
  trelvane_scan* scan = nullptr;
  EXPECT_EQ(Failure(trelvane_file_read_scan, damaged.get(), 0, 0, 0, &scan),
            "5 -4 Failed to load sur file buffer");
  // A text is cut between two characters.
  trelvane_error error;
  for (const char* shift : {"", "x"}) {
    trelvane_open((shift + umlauts).c_str(), nullptr, &file, &error);
    const std::string text = error.text;
    EXPECT_GE(text.size(), 510U);
    EXPECT_THAT(text, testing::EndsWith("ä"));
  }
}

}  // namespace
