// SPDX-License-Identifier: MIT
// Payloads of scan messages, sound and damaged.
#pragma once

#include <string>
#include <vector>

#include "scan_message_generated.h"

namespace payloads {

struct Shape {
  unsigned width = 2;
  unsigned length = 1;
  std::vector<short> points = {10, 20};
  std::vector<unsigned char> intensities = {};
  trelvane::PointType pointType = trelvane::PointType::Height;
  bool own = false;  // laid out as our own writer does it
};

using Builder = flatbuffers::FlatBufferBuilder;
using Offset = flatbuffers::Offset<trelvane::ScanMessage>;

inline Offset Surface(Builder& builder, const Shape& shape) {
  const auto points = builder.CreateVector(shape.points);
  flatbuffers::Offset<flatbuffers::Vector<unsigned char>> intensities;
  if (!shape.intensities.empty()) intensities = builder.CreateVector(shape.intensities);
  const trelvane::Vec3 vec(1, 2, 3);
  const trelvane::Box box(vec, vec);
  const trelvane::Stamp stamp(1, 2, 3, 4, 5, 6, 7, 8);
  const auto surface =
      trelvane::CreateSurface(builder, shape.width, shape.length, shape.pointType, points,
                              intensities, shape.own ? &vec : nullptr, shape.own ? &vec : nullptr,
                              shape.own ? &box : nullptr, shape.own, shape.own ? &stamp : nullptr);
  return trelvane::CreateScanMessage(builder, trelvane::ScanData::Surface, surface.Union());
}

inline Offset Array(Builder& builder, const std::vector<Offset>& items) {
  const auto array = trelvane::CreateArray(builder, builder.CreateVector(items));
  return trelvane::CreateScanMessage(builder, trelvane::ScanData::Array, array.Union());
}

inline std::string Finish(Builder& builder, Offset message) {
  trelvane::FinishScanMessageBuffer(builder, message);
  return {reinterpret_cast<const char*>(builder.GetBufferPointer()), builder.GetSize()};
}

inline std::string Surface(const Shape& shape = {}) {
  Builder builder;
  return Finish(builder, Surface(builder, shape));
}

inline std::string Profile(unsigned count, const std::vector<short>& points,
                           trelvane::PointType pointType) {
  Builder builder;
  const auto profile =
      trelvane::CreateProfile(builder, count, pointType, builder.CreateVector(points));
  return Finish(builder,
                trelvane::CreateScanMessage(builder, trelvane::ScanData::Profile, profile.Union()));
}

// An array that names the same surface `count` times.
inline std::string RepeatedItem(std::size_t count, const Shape& shape) {
  Builder builder;
  return Finish(builder, Array(builder, std::vector(count, Surface(builder, shape))));
}

inline std::string NestedArray() {
  Builder builder;
  return Finish(builder, Array(builder, {Array(builder, {Surface(builder, {})})}));
}

// A message whose union says `type` and points to a surface, or to nothing.
inline std::string Union(unsigned char type, bool data) {
  Builder builder;
  flatbuffers::Offset<void> surface;
  if (data) surface = trelvane::CreateSurface(builder).Union();
  return Finish(builder, trelvane::CreateScanMessage(builder, static_cast<trelvane::ScanData>(type),
                                                     surface));
}

}  // namespace payloads
