// SPDX-License-Identifier: MIT
// A decoded scan, whatever file it comes from, as tables and pictures look at it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "loadfilestream/loadfilestream.h"
#include "sdk/message.h"

enum class ScanKind : z8u {
  surface,       // a grid of heights
  cloud,         // a grid of points
  profile,       // a row of heights
  pointProfile,  // a row of points in x and z
};

struct Scan {
  ScanKind kind = ScanKind::surface;
  z32u width = 0;              // points in a row
  z32u length = 0;             // rows; 1 for a profile
  zPoint3d64f scale{1, 1, 1};  // a raw value v stands for v * scale + offset mm
  zPoint3d64f offset{};        // mm
  Orv::Object<void*> points;   // z16s, zPoint3d16s, z16s or zPoint16s, in the order of the kinds
  Orv::Object<void*> intensities;   // as many z8u, or empty
  std::optional<BoundingBox6> box;  // mm, as a recording tells it
  std::optional<MxStamp> stamp;     // of a recording

  zSize Count() const { return zArray_Count(points.Get()); }
  bool IsProfile() const { return kind >= ScanKind::profile; }
};

// The scan shares the arrays of the record or message. Arrays of a recording are copied into memory
// here; throws Orv::Exception when that fails, and for a message that is no surface or profile.
Scan ToScan(const SurfaceBuffer& record);
Scan ToScan(const ProfileBuffer& record);
Scan ToScan(MxMsg message);

// A frame's scan of one source.
struct TaggedScan {
  std::string source;         // display name; of a file's only scan, empty
  std::optional<zSize> item;  // in the array message that holds it
  Scan scan;
};

// Gives the real coordinates of each valid point to `use(row, column, zPoint3d64f)`, row by row.
// y is 0 for points of a profile.
template <class Use>
void ForEachValidPoint(const Scan& scan, Use use) {
  const zPoint3d64f& scale = scan.scale;
  const zPoint3d64f& offset = scan.offset;
  const auto real = [](z64f raw, z64f step, z64f start) { return raw * step + start; };
  const auto heights = zArray_Items<z16s>(scan.points.Get());
  const auto cloud = zArray_Items<zPoint3d16s>(scan.points.Get());
  const auto line = zArray_Items<zPoint16s>(scan.points.Get());
  zSize i = 0;
  for (z32u row = 0; scan.width > 0 && row < scan.length; ++row) {
    const z64f y = scan.IsProfile() ? 0 : real(row, scale.y, offset.y);
    for (z32u column = 0; column < scan.width; ++column, ++i) {
      if (!heights.empty()) {
        if (heights[i] == kInvalidRaw) continue;
        use(row, column,
            zPoint3d64f{real(column, scale.x, offset.x), y, real(heights[i], scale.z, offset.z)});
      } else if (!cloud.empty()) {
        const zPoint3d16s raw = cloud[i];
        if (raw.x == kInvalidRaw || raw.y == kInvalidRaw || raw.z == kInvalidRaw) continue;
        use(row, column,
            zPoint3d64f{real(raw.x, scale.x, offset.x), real(raw.y, scale.y, offset.y),
                        real(raw.z, scale.z, offset.z)});
      } else {
        const zPoint16s raw = line[i];
        if (raw.x == kInvalidRaw || raw.z == kInvalidRaw) continue;
        use(row, column,
            zPoint3d64f{real(raw.x, scale.x, offset.x), y, real(raw.z, scale.z, offset.z)});
      }
    }
  }
}
