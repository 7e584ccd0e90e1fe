// SPDX-License-Identifier: MIT
// The points of a cloud as raw values.
#pragma once

#include <cstring>
#include <functional>
#include <span>

#include "formats/pcd/layout.h"
#include "formats/pcd/reader.h"
#include "scan/rounding.h"
#include "sdk/vectors.h"

// The point records of a file, of which some are at hand.
class PcdRecords {
 public:
  // The file must outlive this.
  PcdRecords(const zSource& file, z64u dataStart, const PcdCloud& cloud);

  // Sees to it that the record `start`, and as many as possible behind it, are at hand; tells how
  // many, up to `most`. What was at hand before may be gone.
  zSize Load(zSize start, zSize most);
  // The first of them.
  const z8u* AtHand() const { return atHand_; }
  zSize Stride() const { return stride_; }

  static z32f Float(const z8u* bytes) {
    z32f value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }

 private:
  const zSource& file_;
  z64u dataStart_;
  zSize stride_, count_;
  zBytes block_;
  zSize blockStart_ = 0, blockCount_ = 0;  // records
  const z8u* atHand_ = nullptr;
};

// Takes records of a cloud that stand one behind the other.
using RecordVisitor = std::function<void(const z8u* first, zSize count)>;

// An intensity in 255ths; a conversion keeps its low byte.
inline z64s WholeIntensity(const z8u* bytes) {
  return Truncate(static_cast<z64f>(PcdRecords::Float(bytes) * 255));
}

// Quantises the first points of a cloud into as many cells, each axis to -32767..32767 between its
// extremes, and tells the scan's scale and offset. A point that is not valid becomes kInvalidPoint;
// a coordinate on a flat axis 0. Of the options, swap, invalid point and zoom count here. `visit`,
// where there is one, is given each of the records once, in their order.
void QuantizePoints(std::span<zPoint3d16s> cells, PcdRecords& records, const PcdCloud& cloud,
                    const PcdOptions& options, Scan& scan, const RecordVisitor& visit = {},
                    zVectors vectors = zVectors_Widest());
