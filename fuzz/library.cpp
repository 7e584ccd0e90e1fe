// SPDX-License-Identifier: MIT
// The library's calls, with a file of any kind. The first byte chooses the kind, the second what is
// asked of it.
#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz.h"
#include "scratch.h"
#include "trelvane.h"

namespace {

constexpr const char* kOutputs[] = {"b.sur", "b.srf",   "b.pro", "b.pcd",
                                    "b.rep", "b.ovrec", "b.csv"};

// A small number, or the largest.
std::uint64_t Index(int twoBits) {
  return twoBits == 3 ? ~std::uint64_t{0} : static_cast<std::uint64_t>(twoBits);
}

template <class Struct>
Struct Sized() {
  Struct made{};
  made.size = sizeof made;
  return made;
}

void UseScan(const trelvane_scan* scan, const char* output, std::size_t room) {
  auto info = Sized<trelvane_scan_info>();
  Require(trelvane_scan_get_info(scan, &info, nullptr) == TRELVANE_OK);
  std::size_t points = 0;
  std::size_t intensities = 0;
  const std::int16_t* firstPoint = trelvane_scan_points(scan, &points);
  const std::uint8_t* firstIntensity = trelvane_scan_intensities(scan, &intensities);
  std::vector<double> heights(std::min<std::size_t>(room, 1 << 16));
  const auto filled = trelvane_scan_heights_f64(scan, heights.data(), heights.size(), nullptr);
  Require((filled == TRELVANE_OK) == (heights.size() >= std::size_t{info.width} * info.length));
  double box[6];
  static_cast<void>(trelvane_scan_find_box(scan, box, box + 3, nullptr));
  static_cast<void>(trelvane_scan_save(scan, output, nullptr));
  trelvane_scan* copy = nullptr;
  const auto copied =
      trelvane_scan_create(&info, firstPoint, points, firstIntensity, intensities, &copy, nullptr);
  if (points > 0) Require(copied == TRELVANE_OK);
  auto source = Sized<trelvane_source_info>();
  source.name = "Top";
  source.type = TRELVANE_UNIFORM_SURFACE;
  trelvane_writer* writer = nullptr;
  Require(trelvane_writer_open("c.rep", &source, 1, nullptr, &writer, nullptr) == TRELVANE_OK);
  static_cast<void>(trelvane_writer_begin_frame(writer, nullptr));
  const auto added = trelvane_writer_add(writer, copy, nullptr);
  Require(trelvane_writer_close(writer, nullptr) == added);
  trelvane_writer_free(writer);
  trelvane_scan_free(copy);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder scratch;
  if (size < 2) return 0;
  const ScratchFolder::Input input = ScratchFolder::WriteInput(data, size);
  const int wish = input.options;
  const char* output = kOutputs[static_cast<std::size_t>(wish) % std::size(kOutputs)];
  auto cloud = Sized<trelvane_cloud_options>();
  cloud.width = static_cast<std::uint32_t>(wish % 16);
  cloud.swap_xz = wish % 3;
  cloud.zoom = wish % 5 - 1;
  auto options = Sized<trelvane_open_options>();
  options.cloud = &cloud;
  options.unchecked = wish >> 7;
  const std::uint64_t frame = Index(wish >> 5 & 3);
  const std::uint64_t source = Index(wish >> 3 & 3);
  const std::uint64_t item = Index(wish >> 1 & 3);

  trelvane_error error;
  trelvane_file* file = nullptr;
  const auto opened = trelvane_open(input.name.c_str(), &options, &file, &error);
  Require((opened == TRELVANE_OK) == (file != nullptr));
  Require(std::memchr(error.text, 0, sizeof error.text) != nullptr);
  std::uint64_t count = 0;
  const auto counted = trelvane_file_count_items(file, frame, source, &count, &error);
  trelvane_scan* scan = nullptr;
  const auto read = trelvane_file_read_scan(file, frame, source, item, &scan, &error);
  if (read == TRELVANE_OK) Require(counted == TRELVANE_OK && item < count);
  trelvane_file_close(file);
  if (scan != nullptr) UseScan(scan, output, size);
  trelvane_scan_free(scan);

  auto wanted = Sized<trelvane_convert_options>();
  wanted.frame = static_cast<std::uint32_t>(frame);
  wanted.all_frames = options.unchecked;
  wanted.cloud = input.name == "a.pcd" ? &cloud : nullptr;
  static_cast<void>(trelvane_convert(input.name.c_str(), output, &wanted, &error));
  scratch.Clear();
  return 0;
}
