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

// Where the coordinates stand in a record, after the swap of x and z.
struct Places {
  zSize x, y, z;
};

// The points of a file, a block at a time.
struct Points {
  PcdRecords& records;
  Places places;

  // Points from `start` on; past the last one there are points that are not finite.
  void Gather(zSize start, zSize count, PointBlock& block, const RecordVisitor& visit = {}) {
    zSize i = 0;
    while (i < count) {
      const zSize run = records.Load(start + i, count - i);
      const z8u* record = records.AtHand();
      if (visit) visit(record, run);
      const zSize stride = records.Stride();
      for (const zSize end = i + run; i < end; ++i, record += stride) {
        block.x[i] = PcdRecords::Float(record + places.x);
        block.y[i] = PcdRecords::Float(record + places.y);
        block.z[i] = PcdRecords::Float(record + places.z);
      }
    }
    for (; i < kBlock; ++i) block.x[i] = block.y[i] = block.z[i] = kNaN;
  }
};

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
Range RangeOf(const Extremes& extremes, Points& points, zSize count, Values PointBlock::*axis,
              PointBlock& block) {
  Range range{FromOrdered(extremes.lowest), FromOrdered(extremes.highest)};
  if (range.lowest != 0 && range.highest != 0) return range;
  for (zSize start = 0; start < count; start += kBlock) {
    points.Gather(start, std::min(kBlock, count - start), block);
    MarkFinite(block);
    for (zSize i = 0; i < kBlock; ++i) {
      const z32f value = (block.*axis)[i];
      if (block.valid[i] == 0 || value != 0) continue;
      if (range.lowest == 0) range.lowest = value;
      if (range.highest == 0) range.highest = value;
      return range;
    }
  }
  return range;
}

struct Ranges {
  Range x, y, z;
};

// Of the finite points.
Ranges FindRanges(Points& points, zSize count, PointBlock& block) {
  Extremes x, y, z;
  for (zSize start = 0; start < count; start += kBlock) {
    points.Gather(start, std::min(kBlock, count - start), block);
    MarkFinite(block);
    x.Include(block.x, block.valid);
    y.Include(block.y, block.valid);
    z.Include(block.z, block.valid);
  }
  if (x.lowest > x.highest) return {};  // no point is finite
  return {RangeOf(x, points, count, &PointBlock::x, block),
          RangeOf(y, points, count, &PointBlock::y, block),
          RangeOf(z, points, count, &PointBlock::z, block)};
}

// A coordinate that is no 32-bit float matches none.
z32f Narrow(z64f value) {
  const auto narrow = static_cast<z32f>(value);
  return static_cast<z64f>(narrow) == value ? narrow : kNaN;
}

void FillCells(std::span<zPoint3d16s> cells, Points& points, const Ranges& ranges,
               const PcdOptions& options, Scan& scan, const RecordVisitor& visit,
               PointBlock& block) {
  const z32f zoom = options.zoom ? static_cast<z32f>(*options.zoom) : 1;
  const QuantizedAxis x(ranges.x, zoom), y(ranges.y, zoom), z(ranges.z, zoom);
  scan.scale = {x.Scale(), y.Scale(), z.Scale()};
  scan.offset = {x.Offset(), y.Offset(), z.Offset()};
  for (zSize start = 0; start < cells.size(); start += kBlock) {
    const zSize count = std::min(kBlock, cells.size() - start);
    points.Gather(start, count, block, visit);
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

PcdRecords::PcdRecords(const zSource& file, z64u dataStart, const PcdCloud& cloud)
    : file_(file),
      dataStart_(dataStart),
      stride_(cloud.stride),
      count_(static_cast<zSize>(cloud.PointCount())) {}

zSize PcdRecords::Load(zSize start, zSize most) {
  if (const z8u* bytes = file_.Bytes()) {
    atHand_ = bytes + dataStart_ + start * stride_;
    return std::min(most, count_ - start);
  }
  if (start < blockStart_ || start >= blockStart_ + blockCount_) {
    blockStart_ = start;
    blockCount_ = std::clamp<zSize>(file_.Piece() / stride_, 1, count_ - start);
    block_.resize(std::max(block_.size(), blockCount_ * stride_));
    file_.Read(dataStart_ + z64u{start} * stride_, block_.data(), blockCount_ * stride_);
  }
  atHand_ = block_.data() + (start - blockStart_) * stride_;
  return std::min(most, blockStart_ + blockCount_ - start);
}

void QuantizePoints(std::span<zPoint3d16s> cells, PcdRecords& records, const PcdCloud& cloud,
                    const PcdOptions& options, Scan& scan, const RecordVisitor& visit,
                    zVectors vectors) {
  const auto block = std::make_unique<PointBlock>();
  Points points{records, {cloud.x, cloud.y, cloud.z}};
  if (options.swapXZ) std::swap(points.places.x, points.places.z);
  Ranges ranges;
  zVectors_Run(vectors, [&] { ranges = FindRanges(points, cells.size(), *block); });
  zVectors_Run(vectors, [&] { FillCells(cells, points, ranges, options, scan, visit, *block); });
}
