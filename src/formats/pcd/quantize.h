// SPDX-License-Identifier: MIT
// The points of a cloud as raw values.
#pragma once

#include <cstring>
#include <span>

#include "formats/pcd/layout.h"
#include "formats/pcd/reader.h"
#include "scan/rounding.h"
#include "sdk/vectors.h"

// The point records as the file has them, after the swap of x and z.
class PcdRecords {
 public:
  PcdRecords(const z8u* data, const PcdCloud& cloud, bool swapXZ)
      : data_(data),
        stride_(cloud.stride),
        x_(swapXZ ? cloud.z : cloud.x),
        y_(cloud.y),
        z_(swapXZ ? cloud.x : cloud.z) {}

  const z8u* operator[](zSize point) const { return data_ + point * stride_; }

  zPoint3d32f Point(zSize point) const {
    const z8u* record = (*this)[point];
    return {Float(record + x_), Float(record + y_), Float(record + z_)};
  }

  static z32f Float(const z8u* bytes) {
    z32f value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }

 private:
  const z8u* data_;
  zSize stride_, x_, y_, z_;
};

// An intensity in 255ths; a conversion keeps its low byte.
inline z64s WholeIntensity(const z8u* bytes) {
  return Truncate(static_cast<z64f>(PcdRecords::Float(bytes) * 255));
}

// Quantises the first points of a cloud into as many cells, each axis to -32767..32767 between its
// extremes, and tells the scan's scale and offset. A point that is not valid becomes kInvalidPoint;
// a coordinate on a flat axis 0. Of the options, invalid point and zoom count here.
void QuantizePoints(std::span<zPoint3d16s> cells, const PcdRecords& records,
                    const PcdOptions& options, Scan& scan, zVectors vectors = zVectors_Widest());
