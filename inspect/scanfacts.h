// SPDX-License-Identifier: MIT
// What can be said about a scan in numbers.
#pragma once

#include <span>
#include <string>

#include "inspect/measure/figures.h"
#include "scan/heightrange.h"
#include "scan/scan.h"

// A frame's scan of one source.
struct TaggedScan {
  std::string source;         // display name; of a file's only scan, empty
  std::optional<zSize> item;  // in the array message that holds it
  Scan scan;
};

template <class Value>
struct Range {
  Value lowest, highest;
};

struct ScanFacts {
  ScanKind kind;
  z32u width, length;                   // points
  zSize points, validPoints;            // of all rows
  zPoint3d64f scale, offset;            // mm
  std::optional<Range<z64f>> heights;   // mm, of the valid points
  std::optional<BoundingBox6> box;      // mm, of the valid points
  std::optional<Range<z8u>> intensity;  // of all points that have one
  std::optional<MxStamp> stamp;
  std::vector<Caution> cautions;       // those of the scan, and of its heights
  std::optional<ScanFigures> figures;  // mm; where they are asked for
};

// The key of the caution about heights that cannot be written as Digital Surf files.
inline constexpr std::string_view kNotWritable = "heights-not-writable";

// What the points tell, also where they come in parts.
struct MeasuredPoints {
  zSize valid = 0;
  HeightRange heights;  // raw

  void Include(std::span<const z16s> points);
};

// One pass over the points. The bounding box is the scan's own, or the one that a conversion gives
// it, if any; neither heights nor box without a valid point.
ScanFacts MeasureScan(const Scan& scan);
// The same for a scan without its points, whose box is its own.
ScanFacts MeasureScan(const Scan& scan, const MeasuredPoints& measured);
