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
  trelvane_file_info fileInfo = InfoOf(file);
  trelvane_source_info source = SourceOf(file, 0);
  trelvane_scan_info info = MakeInfo(TRELVANE_SCAN_SURFACE, 2, 2);
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
  trelvane_scan_info info = MakeInfo(TRELVANE_SCAN_SURFACE, 2, 2);
  trelvane_cloud_options cloud{sizeof cloud, 0, 0, 0, 0, {}, 0};
  trelvane_open_options options{sizeof options, 0, &cloud, nullptr, nullptr};
  const std::vector<std::int16_t> points(4);
  const std::vector<std::uint8_t> bytes(4);
  trelvane_scan* scan = nullptr;
  trelvane_file* file = nullptr;
  const auto create = [&](std::size_t values, std::size_t intensities) {
    return Failure(trelvane_scan_create, &info, points.data(), values,
                   intensities > 0 ? bytes.data() : nullptr, intensities, &scan);
  };
  // Tells what is wrong with one field of the three structs.
  const auto with = [&](auto& field, auto value, std::size_t values = 4) {
    const auto before = std::exchange(field, value);
    const auto open = Failure(trelvane_open, EXAMPLES_DIR "/part.sur", &options, &file);
    const auto failure = open.empty() ? create(values, 0) : open;
    trelvane_file_close(std::exchange(file, nullptr));
    field = before;
    return failure;
  };
  const std::string notThose = "1 0 The values given are not those of width x length points";
  EXPECT_EQ(create(3, 0), notThose);
  EXPECT_EQ(create(4, 3), notThose);
  EXPECT_EQ(with(info.size, sizeof info - 1), "1 0 the size of info is not that of its struct");
  EXPECT_EQ(with(info.kind, 5), "1 0 There is no such kind of scan");
  EXPECT_EQ(with(info.width, 0U, 0), "1 0 A scan has at least one point");
  EXPECT_EQ(with(info.kind, 3), "1 0 A profile has one row");
  EXPECT_EQ(with(info.has_box, -1), "1 0 has_box is neither 0 nor 1");
  EXPECT_EQ(with(options.size, 8U), "1 0 the size of options is not that of its struct");
  EXPECT_EQ(with(options.unchecked, 2), "1 0 unchecked is neither 0 nor 1");
  EXPECT_EQ(with(cloud.size, 0U), "1 0 the size of cloud is not that of its struct");
  EXPECT_EQ(with(cloud.swap_xz, 2), "1 0 swap_xz is neither 0 nor 1");
  for (const double zoom : {-1.0, 1.0 / 0.0, 0.0 / 0.0}) {
    EXPECT_EQ(with(cloud.zoom, zoom), "1 0 zoom is no number above 0");
  }
  EXPECT_EQ(scan, nullptr);
  info = MakeInfo(TRELVANE_SCAN_CLOUD, ~0U, ~0U);
  EXPECT_EQ(create(3, 0), notThose);
}

TEST(LibraryMisuse, OfFilesIsTold) {
  const TempDirectory directory;
  std::filesystem::create_directory("folder");
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "ä";
  const struct {
    std::string path;
    const char* content;
    const char* failure;
  } rows[] = {
      {"nothing.sur", nullptr, "3 0 There is no file nothing.sur"},
      {"empty.sur", "", "5 -997 The inputted file is empty"},
      {"text.txt", "text", "5 0 The extension of text.txt stands for no kind of scan or recording"},
      {"a.sur", "DIGITAL SURF", "5 -4 Failed to load sur file buffer"},  // when it is read
      {"a.rep", "MCAP", "5 -6 The recording stream is damaged at byte offset 0"},
      {"a.ovrec", "tar", "5 -"},
      {"folder", nullptr, "5 -999 Fail to find any file in the input directory."},
  };
  for (const auto& row : rows) {
    if (row.content != nullptr) WriteFile(row.path, std::string_view(row.content));
    EXPECT_THAT([&] { Read(Open(row.path)); },
                testing::ThrowsMessage<std::runtime_error>(StartsWith(row.failure)));
  }
  // A text is cut between two characters.
  trelvane_file* file = nullptr;
  trelvane_error error;
  for (const char* shift : {"", "x"}) {
    trelvane_open((shift + umlauts).c_str(), nullptr, &file, &error);
    const std::string text = error.text;
    EXPECT_GE(text.size(), 510U);
    EXPECT_THAT(text, testing::EndsWith("ä"));
  }
}

}  // namespace
