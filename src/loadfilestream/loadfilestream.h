// SPDX-License-Identifier: MIT
// Readers of single-scan files: bytes of a whole file to a decoded record.
#pragma once

#include "sdk/object.h"

// Statuses of the readers and writers, beside those of the SDK calls that they make.
inline constexpr zStatus kRefused = 0;        // a file or message that the format does not take
inline constexpr zStatus kEmptyInput = -999;  // no bytes at all

// A decoded surface. Fresh records are zero and empty.
struct SurfaceBuffer {
  z32u width = 0;   // points in a row
  z32u length = 0;  // rows
  zPoint3d64f scale{};
  zPoint3d64f offset{};
  Orv::Object<void*> points;       // zArray2 of z16s heights (or zPoint3d16s), length x width
  Orv::Object<void*> intensities;  // zArray2 of z8u, length x width, or empty
  z32u hasIntensity = 0;
};

// Decodes a Digital Surf surface of 16- or 32-bit samples. 32-bit samples are folded into 16 bits
// and the z scale and offset adjusted. Returns 1, or -999 for no bytes at all, 0 for a file of
// another kind or sample size, or the status of the step that failed. A surface of no points
// (either side 0) is read. After a failure the record may hold an unfilled array of points.
zStatus LoadSurFileBuffer(const zBytes& bytes, SurfaceBuffer& record, zAlloc alloc);
