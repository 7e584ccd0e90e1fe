// SPDX-License-Identifier: MIT
// A scan in memory, whatever file or recording it comes from.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/message.h"
#include "sdk/object.h"

enum class ScanKind : z8u {
  surface,       // a grid of heights
  cloud,         // a grid of points
  profile,       // a row of heights
  pointProfile,  // a row of points in x and z
};

// The raw value v of an axis stands for v * scale + offset mm.
struct Axis {
  z64f scale, offset;
};

// What a conversion makes wrong, loses or takes otherwise than it is meant.
struct Caution {
  std::string_view key;  // for programs; docs/inspect.md has them all
  std::string text;
};

// What a file tells an axis in; a conversion takes everything for mm.
struct AxisUnit {
  std::string name = "mm";
  z64f mm = 1;  // 0 for what is no known length
};

constexpr z64f Real(z64f raw, const Axis& axis) { return raw * axis.scale + axis.offset; }

struct Scan {
  ScanKind kind = ScanKind::surface;
  z32u width = 0;              // points in a row
  z32u length = 0;             // rows; 1 for a profile
  zPoint3d64f scale{1, 1, 1};  // mm
  zPoint3d64f offset{};        // mm
  Orv::Object<void*> points;   // z16s, zPoint3d16s, z16s or zPoint16s, in the order of the kinds
  Orv::Object<void*> intensities;   // as many z8u, or empty
  std::optional<BoundingBox6> box;  // mm, as a recording tells it
  std::optional<MxStamp> stamp;     // of a recording

  // Where the scan is looked at, not converted:
  std::vector<Caution> cautions;
  std::array<AxisUnit, 3> units;  // of x, y and z

  bool resampled = false;  // of a surface in a recording: onto a regular grid

  Axis X() const { return {scale.x, offset.x}; }
  Axis Y() const { return {scale.y, offset.y}; }
  Axis Z() const { return {scale.z, offset.z}; }
  zSize Count() const { return zArray_Count(points.Get()); }
  bool IsProfile() const { return kind >= ScanKind::profile; }
};

// The scan in a surface or profile message. It shares the message's arrays, which a recording's
// message copies into memory here. Returns 1, -2 for another handle, or -3 when there is no memory.
zStatus GetScan(MxMsg message, Scan& scan);
