// SPDX-License-Identifier: MIT
// Message library: surface, profile and array messages.
//
// A raw value v stands for the real value v * scale + offset of its axis; -32768 in any coordinate
// marks an invalid point. Accessors of a null or foreign handle return 0, null or false; setters
// and constructors return a failing status for it.
#pragma once

#include "sdk/core.h"

using MxLib = zObject;
using MxMsg = zObject;

inline constexpr z16s kInvalidRaw = -32768;

// Centre and extent of a scan in real units.
struct BoundingBox6 {
  zPoint3d64f center, size;
};

// When and where a scan was taken.
struct MxStamp {
  z64u frame;
  z64u time;
  z64s encoder;
  z64s zEncoder;
  z64u inputs;  // 16 digital inputs in the low 16 bits
  z64u reserved[3];
};
static_assert(sizeof(MxStamp) == 8 * sizeof(z64u));

enum class MxKind : z8u { none, surface, profile, array };

zStatus MxLib_Construct(MxLib* library) noexcept;

// Any message ---------------------------------------------------------------------------------
MxKind MxMsg_Kind(MxMsg message) noexcept;  // none for a handle that is no message
// An array message answers with its first item's stamp; null when it has none.
const MxStamp* MxDataMsg_Stamp(MxMsg message) noexcept;
zStatus MxDataMsg_SetStamp(MxMsg message, zSize index, const MxStamp* stamp) noexcept;  // index 0
zStatus MxDataMsg_SetTime(MxMsg message, z64u time) noexcept;
zStatus MxDataMsg_SetEncoder(MxMsg message, z64s encoder) noexcept;

// Surface -------------------------------------------------------------------------------------
// A uniform (resampled) surface of `length` rows by `width` columns of z16s heights, all 0; scale
// 1, offset, box and stamp 0.
zStatus MxSurfaceMsg_ConstructSimple(MxMsg* message, z32u width, z32u length,
                                     zAlloc alloc) noexcept;
// The same for a point cloud: zPoint3d16s points, not resampled.
zStatus MxSurfaceMsg_ConstructUnresampledSimple(MxMsg* message, z32u width, z32u length,
                                                zAlloc alloc) noexcept;
z32u MxSurfaceMsg_Width(MxMsg message) noexcept;
z32u MxSurfaceMsg_Length(MxMsg message) noexcept;
zType MxSurfaceMsg_PointType(MxMsg message) noexcept;
// The points, owned by the message. `index` is not used.
zArray2 MxSurfaceMsg_PointsArray(MxMsg message, z64u index) noexcept;
// Address of the first point of a row; null past the last row.
const void* MxSurfaceMsg_Points(MxMsg message, zSize row) noexcept;
const zPoint3d64f* MxSurfaceMsg_Offset(MxMsg message) noexcept;
const zPoint3d64f* MxSurfaceMsg_Scale(MxMsg message) noexcept;
const BoundingBox6* MxSurfaceMsg_BoundingBox(MxMsg message) noexcept;
bool MxSurfaceMsg_IsResampled(MxMsg message) noexcept;
bool MxSurfaceMsg_HasIntensity(MxMsg message) noexcept;
zArray2 MxSurfaceMsg_Intensities(MxMsg message, z64u index) noexcept;
const z8u* MxSurfaceMsg_IntensityAt(MxMsg message, zSize row, zSize column) noexcept;

zStatus MxSurfaceMsg_SetOffset(MxMsg message, const zPoint3d64f* offset) noexcept;
zStatus MxSurfaceMsg_SetScale(MxMsg message, const zPoint3d64f* scale) noexcept;
zStatus MxSurfaceMsg_SetBoundingBox(MxMsg message, const BoundingBox6* box) noexcept;
zStatus MxSurfaceMsg_SetIsResampled(MxMsg message, bool resampled) noexcept;
// The message takes the items of an array of its own shape and type. They are shared, not copied,
// until one side edits them.
zStatus MxSurfaceMsg_CopyPointsArray(MxMsg message, zArray2 points) noexcept;
zStatus MxSurfaceMsg_AllocateIntensity(MxMsg message, zType itemType) noexcept;  // z8u
zStatus MxSurfaceMsg_CopyIntensityArray(MxMsg message, zArray2 intensities) noexcept;

// Profile -------------------------------------------------------------------------------------
// `profiles` (always 1) profiles of `count` points of type z16s or zPoint16s, all 0.
zStatus MxProfileMsg_Construct(MxMsg* message, zType pointType, z32u profiles, z32u count,
                               zAlloc alloc) noexcept;
z32u MxProfileMsg_PointCount(MxMsg message) noexcept;
zType MxProfileMsg_PointType(MxMsg message) noexcept;
zArray1 MxProfileMsg_PointsArray(MxMsg message, z64u index) noexcept;
bool MxProfileMsg_HasIntensity(MxMsg message) noexcept;
zArray1 MxProfileMsg_IntensityArray(MxMsg message, z64u index) noexcept;
const zPoint3d64f* MxProfileMsg_Offset(MxMsg message) noexcept;
const zPoint3d64f* MxProfileMsg_Scale(MxMsg message) noexcept;
const BoundingBox6* MxProfileMsg_BoundingBox(MxMsg message) noexcept;

zStatus MxProfileMsg_SetOffset(MxMsg message, const zPoint3d64f* offset) noexcept;
zStatus MxProfileMsg_SetScale(MxMsg message, const zPoint3d64f* scale) noexcept;
zStatus MxProfileMsg_SetBoundingBox(MxMsg message, const BoundingBox6* box) noexcept;
zStatus MxProfileMsg_CopyPointsArray(MxMsg message, zArray1 points) noexcept;
zStatus MxProfileMsg_AllocateIntensity(MxMsg message, zType itemType) noexcept;  // z8u
zStatus MxProfileMsg_CopyIntensityArray(MxMsg message, zArray1 intensities) noexcept;

// Array ---------------------------------------------------------------------------------------
zStatus MxArrayMsg_Construct(MxMsg* message, zAlloc alloc) noexcept;
// Appends a surface or profile message, which is shared.
zStatus MxArrayMsg_Add(MxMsg message, MxMsg item) noexcept;
zSize MxArrayMsg_Count(MxMsg message) noexcept;
// The item, owned by the array; null past the end.
MxMsg MxArrayMsg_At(MxMsg message, zSize index) noexcept;
