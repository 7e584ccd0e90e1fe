// SPDX-License-Identifier: MIT
#include "formats/pcd/quantize.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>

#include "scan/points.h"
#include "scan/rounding.h"

namespace {

// Points are taken a block at a time, axis by axis, in loops that compilers turn into vector
// instructions.
constexpr zSize kBlock = 512;

constexpr z32f kNaN = std::numeric_limits<z32f>::quiet_NaN();

using Values = std::array<z32f, kBlock>;
using Raws = std::array<z16s, kBlock>;

using Mask = std::array<z32s, kBlock>;  // -1 for points that count, 0 for others

struct PointBlock {
  Values x, y, z;
  Mask valid;
  Raws rawX, rawY, rawZ;
};

// Points from `start` on; past the last one there are points that are not finite.
void Gather(const PcdRecords& records, zSize start, zSize count, PointBlock& block) {
  for (zSize i = 0; i < count; ++i) {
    const zPoint3d32f point = records.Point(start + i);
    block.x[i] = point.x;
    block.y[i] = point.y;
    block.z[i] = point.z;
  }
  for (zSize i = count; i < kBlock; ++i) block.x[i] = block.y[i] = block.z[i] = kNaN;
}

z32s FiniteMask(z32f value) {
  return -z32s{(std::bit_cast<z32s>(value) & 0x7FFFFFFF) < 0x7F800000};
}

void MarkFinite(PointBlock& block) {
  for (zSize i = 0; i < kBlock; ++i) {
    block.valid[i] = FiniteMask(block.x[i]) & FiniteMask(block.y[i]) & FiniteMask(block.z[i]);
  }
}

z32s Choose(z32s mask, z32s one, z32s other) { return (mask & one) | (~mask & other); }

// Leaves out points with one of these coordinates.
void UnmarkMatching(PointBlock& block, const Values& values, z32f invalid) {
  for (zSize i = 0; i < kBlock; ++i) block.valid[i] &= -z32s{values[i] != invalid};
}

void Replace(Values& values, const Mask& kept, z32f substitute) {
  const auto bits = std::bit_cast<z32s>(substitute);
  for (zSize i = 0; i < kBlock; ++i) {
    values[i] = std::bit_cast<z32f>(Choose(kept[i], std::bit_cast<z32s>(values[i]), bits));
  }
}

// Floats as integers of the same order, whose extremes vector instructions find in any order; and
// the way back.
z32s ToOrdered(z32s bits) { return bits ^ (bits < 0 ? 0x7FFFFFFF : 0); }
z32f FromOrdered(z32s ordered) { return std::bit_cast<z32f>(ToOrdered(ordered)); }

struct Extremes {
  z32s lowest = std::numeric_limits<z32s>::max();  // ordered
  z32s highest = std::numeric_limits<z32s>::min();

  void Include(const Values& values, const Mask& counted) {
    z32s least = lowest;
    z32s greatest = highest;
    for (zSize i = 0; i < kBlock; ++i) {
      const z32s ordered = ToOrdered(std::bit_cast<z32s>(values[i]));
      least = std::min(least, Choose(counted[i], ordered, std::numeric_limits<z32s>::max()));
      greatest = std::max(greatest, Choose(counted[i], ordered, std::numeric_limits<z32s>::min()));
    }
    lowest = least;
    highest = greatest;
  }
};

struct Range {
  z32f lowest = std::numeric_limits<z32f>::max();
  z32f highest = -std::numeric_limits<z32f>::max();
};

// Between extremes in 32 bits; the rest in 64.
class QuantizedAxis {
 public:
  QuantizedAxis(const Range& range, z32f zoom) : zoom_(zoom) {
    const z32f lowest = range.lowest * zoom;
    const z32f highest = range.highest * zoom;
    offset_ = static_cast<z64f>(highest + lowest) * 0.5;
    scale_ = static_cast<z64f>(highest - lowest) * 0.5 / 32767;
    // What holds at both ends holds between them, since every step of the way is monotonic. Not so
    // on a flat axis, or where a zoom or a range does not fit into 32-bit floats.
    constexpr z64f kNarrow = 0x1p31 - 1;
    narrow_ = std::abs(ToStep(range.lowest)) < kNarrow && std::abs(ToStep(range.highest)) < kNarrow;
  }

  z64f Offset() const { return offset_; }
  z64f Scale() const { return scale_; }

  // Of values within the range. 0 on a flat axis, whose offset is the value itself.
  void Quantize(const Values& values, Raws& raws) const {
    if (!narrow_) {
      for (zSize i = 0; i < kBlock; ++i) raws[i] = RoundToRaw(ToStep(values[i]));
      return;
    }
    for (zSize i = 0; i < kBlock; ++i) {
      const z64f step = ToStep(values[i]);
      raws[i] = static_cast<z16s>(static_cast<z32s>(step + std::copysign(0.5, step)));
    }
  }

 private:
  z64f ToStep(z32f value) const { return (static_cast<z64f>(value * zoom_) - offset_) / scale_; }

  z32f zoom_;
  z64f offset_ = 0;
  z64f scale_ = 0;
  bool narrow_ = false;  // 32-bit integers hold all steps
};

void Store(const PointBlock& block, std::span<zPoint3d16s> cells) {
  for (zSize i = 0; i < cells.size(); ++i) {
    const auto kept = static_cast<z16s>(block.valid[i]);
    const auto invalid = static_cast<z16s>(kInvalidRaw & ~kept);
    cells[i] = {static_cast<z16s>((block.rawX[i] & kept) | invalid),
                static_cast<z16s>((block.rawY[i] & kept) | invalid),
                static_cast<z16s>((block.rawZ[i] & kept) | invalid)};
  }
}

// Of two zeros that differ in sign, the one that comes first in the file counts.
Range RangeOf(const Extremes& extremes, const PcdRecords& records, zSize count,
              z32f zPoint3d32f::*axis) {
  Range range{FromOrdered(extremes.lowest), FromOrdered(extremes.highest)};
  if (range.lowest != 0 && range.highest != 0) return range;
  for (zSize i = 0; i < count; ++i) {
    const zPoint3d32f point = records.Point(i);
    if (point.*axis != 0) continue;
    if ((FiniteMask(point.x) & FiniteMask(point.y) & FiniteMask(point.z)) == 0) continue;
    if (range.lowest == 0) range.lowest = point.*axis;
    if (range.highest == 0) range.highest = point.*axis;
    break;
  }
  return range;
}

struct Ranges {
  Range x, y, z;
};

// Of the finite points.
Ranges FindRanges(const PcdRecords& records, zSize count, PointBlock& block) {
  Extremes x, y, z;
  for (zSize start = 0; start < count; start += kBlock) {
    Gather(records, start, std::min(kBlock, count - start), block);
    MarkFinite(block);
    x.Include(block.x, block.valid);
    y.Include(block.y, block.valid);
    z.Include(block.z, block.valid);
  }
  if (x.lowest > x.highest) return {};  // no point is finite
  return {RangeOf(x, records, count, &zPoint3d32f::x), RangeOf(y, records, count, &zPoint3d32f::y),
          RangeOf(z, records, count, &zPoint3d32f::z)};
}

// A coordinate that is no 32-bit float matches none.
z32f Narrow(z64f value) {
  const auto narrow = static_cast<z32f>(value);
  return static_cast<z64f>(narrow) == value ? narrow : kNaN;
}

void FillCells(std::span<zPoint3d16s> cells, const PcdRecords& records, const Ranges& ranges,
               const PcdOptions& options, Scan& scan, PointBlock& block) {
  const z32f zoom = options.zoom ? static_cast<z32f>(*options.zoom) : 1;
  const QuantizedAxis x(ranges.x, zoom), y(ranges.y, zoom), z(ranges.z, zoom);
  scan.scale = {x.Scale(), y.Scale(), z.Scale()};
  scan.offset = {x.Offset(), y.Offset(), z.Offset()};
  for (zSize start = 0; start < cells.size(); start += kBlock) {
    const zSize count = std::min(kBlock, cells.size() - start);
    Gather(records, start, count, block);
    MarkFinite(block);
    if (options.invalidPoint) {
      UnmarkMatching(block, block.x, Narrow(options.invalidPoint->x));
      UnmarkMatching(block, block.y, Narrow(options.invalidPoint->y));
      UnmarkMatching(block, block.z, Narrow(options.invalidPoint->z));
    }
    // What is not valid is quantised as a point that is.
    Replace(block.x, block.valid, ranges.x.lowest);
    Replace(block.y, block.valid, ranges.y.lowest);
    Replace(block.z, block.valid, ranges.z.lowest);
    x.Quantize(block.x, block.rawX);
    y.Quantize(block.y, block.rawY);
    z.Quantize(block.z, block.rawZ);
    Store(block, cells.subspan(start, count));
  }
}

}  // namespace

void QuantizePoints(std::span<zPoint3d16s> cells, const PcdRecords& records,
                    const PcdOptions& options, Scan& scan, zVectors vectors) {
  const auto block = std::make_unique<PointBlock>();
  Ranges ranges;
  zVectors_Run(vectors, [&] { ranges = FindRanges(records, cells.size(), *block); });
  zVectors_Run(vectors, [&] { FillCells(cells, records, ranges, options, scan, *block); });
}
