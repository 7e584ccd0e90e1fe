// SPDX-License-Identifier: MIT
// Readers of single-scan files: bytes of a whole file to a decoded record.
#pragma once

#include "sdk/message.h"
#include "sdk/object.h"
#include "statuses.h"

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

// A decoded profile.
struct ProfileBuffer {
  z32u count = 0;  // points
  zPoint3d64f scale{};
  zPoint3d64f offset{};
  Orv::Object<void*> points;       // zArray1 of z16s heights, or of zPoint16s
  Orv::Object<void*> intensities;  // zArray1 of z8u, or empty
  z32u hasIntensity = 0;
};

// Decodes a Digital Surf surface of 16- or 32-bit samples. 32-bit samples are folded into 16 bits
// and the z scale and offset adjusted. Returns 1, or -999 for no bytes at all, 0 for a file of
// another kind or sample size, or the status of the step that failed. A surface of no points
// (either side 0) is read. After a failure the record may hold an unfilled array of points.
zStatus LoadSurFileBuffer(const zBytes& bytes, SurfaceBuffer& record, zAlloc alloc);

// Decodes a Digital Surf profile into z16s heights, folded like those of a surface. Returns what
// LoadSurFileBuffer returns; throws Orv::Exception for a file of more or less than one line.
zStatus LoadProFileBuffer(const zBytes& bytes, ProfileBuffer& record, zAlloc alloc);

// Decodes one of the tool's own compact surface files into z16s heights and, where the file has
// them, intensities. Returns 1, -999 for no bytes at all, -989 for another version, -984 for a flag
// that is neither 0 nor 1, or the status of the step that failed; the record is then partly filled.
zStatus LoadSrfFileBuffer(const zBytes& bytes, SurfaceBuffer& record, zAlloc alloc);

// Decodes a binary point cloud of PCD version 0.7 into a grid of zPoint3d16s points; see
// PcdPointsToSurface. The record comes with the wished width and length, 0 for the cloud's own.
// `invalidPoint` (x, y, z) and `zoom` may be null. Returns 1, 0 for no bytes at all, -984 for a
// header or data block that breaks the format's rules, -996 for a cloud in text form, or the status
// of an array that cannot be had.
// Format: https://pointclouds.org/documentation/tutorials/pcd_file_format.html
zStatus LoadPcdFileBuffer(const zBytes& bytes, SurfaceBuffer& record, bool swapXZ,
                          const zPoint3d64f* invalidPoint, const z64f* zoom, zAlloc alloc);
