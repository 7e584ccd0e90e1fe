// SPDX-License-Identifier: MIT
// Point cloud to surface.
#pragma once

#include <span>

#include "loadfilestream/loadfilestream.h"
#include "loadfilestream/pcdheader.h"

// Puts the points of a cloud into a surface of zPoint3d16s in their order, each axis quantised to
// -32767..32767 between its extremes. This is no resampling.
//
// The record comes with the wished width and length. Where one is 0, the cloud's own size is used,
// and a square one for a cloud of one row or column. Points that do not fit are dropped, cells
// without a point are invalid with intensity 255; a warning line tells both sizes. A point is
// invalid when a coordinate is not finite, or when one of them equals its component of
// `invalidPoint` (x, y, z; null for none). `zoom` (null for none) multiplies all coordinates.
// `swapXZ` exchanges x and z before all else. Intensities are intensity x 255 or the luminance of
// the color; a cloud with both gives two bytes a point, as far as there are cells.
//
// `data` holds PointCount() records, which the caller has checked; it is not read for a cloud in
// text form, which is status -996. Otherwise returns 1 or the status of an array that cannot be
// had.
zStatus PcdPointsToSurface(std::span<const z8u> data, const PcdCloud& cloud, SurfaceBuffer& record,
                           bool swapXZ, const zPoint3d64f* invalidPoint, const z64f* zoom,
                           zAlloc alloc);
