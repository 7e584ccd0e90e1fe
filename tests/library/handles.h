// SPDX-License-Identifier: MIT
// The library's calls, with handles that end by themselves and failures that are thrown.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "trelvane.h"

struct EndHandle {
  void operator()(trelvane_file* file) const { trelvane_file_close(file); }
  void operator()(trelvane_scan* scan) const { trelvane_scan_free(scan); }
  void operator()(trelvane_writer* writer) const { trelvane_writer_free(writer); }
};
using File = std::unique_ptr<trelvane_file, EndHandle>;
using Scan = std::unique_ptr<trelvane_scan, EndHandle>;
using Writer = std::unique_ptr<trelvane_writer, EndHandle>;

// Calls with an error; tells how it fails, as "status code text"; empty for success.
template <class... Parameters, class... Values>
std::string Failure(trelvane_status (*call)(Parameters...), Values... values) {
  trelvane_error error;
  const trelvane_status status = std::apply(call, std::tuple<Parameters...>(values..., &error));
  if (status != error.status) return "the error tells another status";
  if (status == TRELVANE_OK) return error.code == 0 && error.text[0] == '\0' ? "" : "not cleared";
  return std::to_string(status) + " " + std::to_string(error.code) + " " + error.text;
}

template <class Call, class... Values>
void MustSucceed(Call call, Values... values) {
  const std::string failure = Failure(call, values...);
  if (!failure.empty()) throw std::runtime_error(failure);
}

template <class Struct>
Struct Sized() {
  Struct made{};
  made.size = sizeof made;
  return made;
}

inline File Open(const std::string& path, bool unchecked = false) {
  auto options = Sized<trelvane_open_options>();
  options.unchecked = unchecked ? 1 : 0;
  trelvane_file* file = nullptr;
  MustSucceed(trelvane_open, path.c_str(), &options, &file);
  return File(file);
}

inline Scan Read(const File& file, std::uint64_t frame = 0, std::uint64_t source = 0,
                 std::uint64_t item = 0) {
  trelvane_scan* scan = nullptr;
  MustSucceed(trelvane_file_read_scan, file.get(), frame, source, item, &scan);
  return Scan(scan);
}

inline trelvane_file_info InfoOf(const File& file) {
  auto info = Sized<trelvane_file_info>();
  MustSucceed(trelvane_file_get_info, file.get(), &info);
  return info;
}

inline trelvane_scan_info InfoOf(const Scan& scan) {
  auto info = Sized<trelvane_scan_info>();
  MustSucceed(trelvane_scan_get_info, scan.get(), &info);
  return info;
}

inline std::uint64_t CountItems(const File& file, std::uint64_t frame, std::uint64_t source) {
  std::uint64_t count = 0;
  MustSucceed(trelvane_file_count_items, file.get(), frame, source, &count);
  return count;
}

inline std::vector<std::int16_t> PointsOf(const Scan& scan) {
  std::size_t count = 0;
  const std::int16_t* points = trelvane_scan_points(scan.get(), &count);
  return {points, points + count};
}

inline std::vector<std::uint8_t> IntensitiesOf(const Scan& scan) {
  std::size_t count = 0;
  const std::uint8_t* intensities = trelvane_scan_intensities(scan.get(), &count);
  return {intensities, intensities + count};
}

// A scan of numbers that differ from each other, with some invalid points.
inline trelvane_scan_info MakeInfo(trelvane_scan_kind kind, std::uint32_t width,
                                   std::uint32_t length = 1) {
  auto info = Sized<trelvane_scan_info>();
  info.kind = kind;
  info.width = width;
  info.length = length;
  info.resampled = kind == TRELVANE_SCAN_SURFACE ? 1 : 0;
  for (int axis = 0; axis < 3; ++axis) {
    info.scale[axis] = 0.1 * (axis + 1);
    info.offset[axis] = -1.7 * (axis + 1);
  }
  return info;
}

inline std::size_t ValuesInPoint(int kind) {
  return kind == TRELVANE_SCAN_CLOUD ? 3 : kind == TRELVANE_SCAN_POINT_PROFILE ? 2 : 1;
}

inline std::vector<std::int16_t> MakePoints(const trelvane_scan_info& info, int seed = 0) {
  std::vector<std::int16_t> points(std::size_t{info.width} * info.length *
                                   ValuesInPoint(info.kind));
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i] =
        static_cast<std::int16_t>((static_cast<std::int64_t>(i) + seed) * 7919 % 30011 - 15000);
    if (i % 5 == 3) points[i] = TRELVANE_INVALID;
  }
  return points;
}

inline Scan Create(const trelvane_scan_info& info, const std::vector<std::int16_t>& points,
                   const std::vector<std::uint8_t>& intensities = {}) {
  trelvane_scan* scan = nullptr;
  MustSucceed(trelvane_scan_create, &info, points.data(), points.size(),
              intensities.empty() ? nullptr : intensities.data(), intensities.size(), &scan);
  return Scan(scan);
}

inline Scan MakeScan(trelvane_scan_kind kind, std::uint32_t width, std::uint32_t length = 1,
                     int seed = 0) {
  const trelvane_scan_info info = MakeInfo(kind, width, length);
  return Create(info, MakePoints(info, seed));
}

inline trelvane_source_info MakeSource(const char* name, trelvane_source_type type,
                                       int arrayed = 0) {
  auto source = Sized<trelvane_source_info>();
  source.name = name;
  source.type = type;
  source.arrayed = arrayed;
  return source;
}

inline Writer OpenWriter(const std::string& path, const std::vector<trelvane_source_info>& sources,
                         const char* config = nullptr) {
  auto options = Sized<trelvane_writer_options>();
  options.config = config;
  trelvane_writer* writer = nullptr;
  MustSucceed(trelvane_writer_open, path.c_str(), sources.data(), sources.size(), &options,
              &writer);
  return Writer(writer);
}

inline std::string BeginFrame(const Writer& writer) {
  return Failure(trelvane_writer_begin_frame, writer.get());
}
inline std::string Add(const Writer& writer, const Scan& scan) {
  return Failure(trelvane_writer_add, writer.get(), scan.get());
}
inline std::string AddItems(const Writer& writer, const std::vector<const trelvane_scan*>& scans) {
  return Failure(trelvane_writer_add_items, writer.get(), scans.data(), scans.size());
}
inline std::string Close(const Writer& writer) {
  return Failure(trelvane_writer_close, writer.get());
}

// What was told, a line each; then the failure, if any.
inline std::string Convert(const std::string& from, const char* to,
                           trelvane_convert_options options = Sized<trelvane_convert_options>()) {
  std::string told;
  options.context = &told;
  options.on_message = [](void* context, trelvane_message_kind kind, const char* text) {
    *static_cast<std::string*>(context) += std::to_string(kind) + " " + text + "\n";
  };
  return told += Failure(trelvane_convert, from.c_str(), to, &options);
}
