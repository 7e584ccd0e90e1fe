// SPDX-License-Identifier: MIT
// Point clouds to scans.
#pragma once

#include "notices.h"
#include "scan/scan.h"

// How a cloud is put into a surface. Of a size, 0 stands for the cloud's own.
struct PcdOptions {
  z32u width = 0, height = 0;               // cells in a row, rows
  bool swapXZ = false;                      // x and z change places before all else
  std::optional<zPoint3d64f> invalidPoint;  // a point with one of these coordinates is none
  std::optional<z64f> zoom;                 // multiplies all coordinates
};

// Decodes a binary point cloud of PCD version 0.7 into a surface of zPoint3d16s in the order of its
// points, each axis quantised to -32767..32767 between its extremes. This is no resampling.
//
// Where width or height is not wished, the cloud's own size is used, and a square one for a cloud
// of one row or column. Points that do not fit are dropped, cells without a point are invalid with
// intensity 255; a warning tells both sizes. A point is invalid when a coordinate is not finite, or
// equals its component of the invalid point. Intensities are intensity x 255 or the luminance of
// the color; a cloud with both gives two bytes a point, as far as there are cells.
//
// Returns 1, 0 for no bytes at all, -984 for a header or data block that breaks the format's rules,
// -996 for a cloud in text form, or the status of an array that cannot be had.
zStatus LoadPcdFileBuffer(const zSource& file, Scan& record, const PcdOptions& options,
                          zAlloc alloc, const Listener& listener = {});
