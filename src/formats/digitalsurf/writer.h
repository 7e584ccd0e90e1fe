// SPDX-License-Identifier: MIT
// Surfaces and profiles as Digital Surf files.
#pragma once

#include "scan/heightrange.h"
#include "sdk/pipeline.h"

// Heights that leave room for the value of invalid points, which is the smallest height - 2.
inline constexpr z16s kLowestWritable = -32765;
inline constexpr z16s kHighestWritable = 32766;
constexpr bool IsWritableAsDigitalSurf(const HeightRange& range) {
  return range.lowest >= kLowestWritable && range.highest <= kHighestWritable;
}

// Append a uniform surface or profile, header and samples, to a stream. Return 1; 0 for a null
// message or stream, another kind of message, or heights outside of the range above; or the status
// of the step that failed, when the stream holds a part. Invalid points stand in the file as the
// smallest height - 2.
zStatus GetSurFileStream(const Plovia::SurfaceStream& surface, zStream stream);
zStatus GetSurFileStream(MxMsg message, zStream stream);
zStatus GetProFileStream(MxMsg message, zStream stream);
