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
template <class Handle>
using Owned = std::unique_ptr<Handle, EndHandle>;
using File = Owned<trelvane_file>;
using Scan = Owned<trelvane_scan>;
using Writer = Owned<trelvane_writer>;

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

// What a call gives by its last parameter: a handle, or a struct that begins with its size.
template <class Handle, class Call, class... Values>
Owned<Handle> Make(Call call, Values... values) {
  Handle* made = nullptr;
  MustSucceed(call, values..., &made);
  return Owned<Handle>(made);
}
template <class Result, class Call, class... Values>
Result Get(Call call, Values... values) {
  Result result{};
  result.size = sizeof result;
  MustSucceed(call, values..., &result);
  return result;
}

inline File Open(const std::string& path, bool unchecked = false) {
  const trelvane_open_options options{sizeof options, unchecked, nullptr, nullptr, nullptr};
  return Make<trelvane_file>(trelvane_open, path.c_str(), &options);
}
inline Scan Read(const File& file, std::uint64_t frame = 0, std::uint64_t source = 0,
                 std::uint64_t item = 0) {
  return Make<trelvane_scan>(trelvane_file_read_scan, file.get(), frame, source, item);
}
inline auto InfoOf(const File& file) {
  return Get<trelvane_file_info>(trelvane_file_get_info, file.get());
}
inline auto InfoOf(const Scan& scan) {
  return Get<trelvane_scan_info>(trelvane_scan_get_info, scan.get());
}
inline auto SourceOf(const File& file, std::uint64_t source) {
  return Get<trelvane_source_info>(trelvane_file_get_source, file.get(), source);
}

template <class Value>
std::vector<Value> ValuesOf(const Scan& scan,
                            const Value* (*values)(const trelvane_scan*, std::size_t*)) {
  std::size_t count = 0;
  const Value* first = values(scan.get(), &count);
  return {first, first + count};
}
inline auto PointsOf(const Scan& scan) { return ValuesOf(scan, trelvane_scan_points); }
inline auto IntensitiesOf(const Scan& scan) { return ValuesOf(scan, trelvane_scan_intensities); }

// A scan of numbers that differ from each other, with some invalid points.
inline trelvane_scan_info MakeInfo(trelvane_scan_kind kind, std::uint32_t width,
                                   std::uint32_t length = 1) {
  trelvane_scan_info info{};
  info.size = sizeof info;
  info.kind = kind;
  info.width = width;
  info.length = length;
  info.resampled = kind == TRELVANE_SCAN_SURFACE;
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
  for (std::int64_t i = 0; std::int16_t & point : points) {
    const std::int64_t number = (i + seed) * 7919 % 30011 - 15000;
    point = i++ % 5 == 3 ? TRELVANE_INVALID : static_cast<std::int16_t>(number);
  }
  return points;
}

inline Scan Create(const trelvane_scan_info& info, const std::vector<std::int16_t>& points,
                   const std::vector<std::uint8_t>& intensities = {}) {
  return Make<trelvane_scan>(trelvane_scan_create, &info, points.data(), points.size(),
                             intensities.data(), intensities.size());
}

inline Scan MakeScan(trelvane_scan_kind kind, std::uint32_t width, std::uint32_t length = 1,
                     int seed = 0) {
  const trelvane_scan_info info = MakeInfo(kind, width, length);
  return Create(info, MakePoints(info, seed));
}

inline trelvane_source_info MakeSource(const char* name, int type, int arrayed = 0) {
  return {sizeof(trelvane_source_info), name, nullptr, type, arrayed};
}

inline Writer OpenWriter(const std::string& path,
                         const std::vector<trelvane_source_info>& sources) {
  return Make<trelvane_writer>(trelvane_writer_open, path.c_str(), sources.data(), sources.size(),
                               nullptr);
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
                           trelvane_convert_options options = {}) {
  std::string told;
  options.size = sizeof options;
  options.context = &told;
  options.on_message = [](void* context, trelvane_message_kind kind, const char* text) {
    *static_cast<std::string*>(context) += std::to_string(kind) + " " + text + "\n";
  };
  return told += Failure(trelvane_convert, from.c_str(), to, &options);
}
