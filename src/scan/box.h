// SPDX-License-Identifier: MIT
#pragma once

#include "scan/heightrange.h"
#include "scan/scan.h"

// Centre and size in mm of the valid points. A uniform scan counts whole cells along its rows and
// columns, and each raw height stands for one step, so a surface of one point has the size of one
// step. The centre x of a uniform profile is its offset, where the scan starts; y of a profile is
// 0. Nothing when no point is valid, and for a surface whose points are all at the largest raw
// value.
std::optional<BoundingBox6> FindBox(const Scan& scan);
// The same of a uniform surface whose range of heights is known.
std::optional<BoundingBox6> FindBox(const Scan& scan, const HeightRange& range);
