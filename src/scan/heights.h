// SPDX-License-Identifier: MIT
// All heights of a scan in mm.
#pragma once

#include "scan/scan.h"
#include "sdk/vectors.h"

// The z of each point, row by row, as RealPoints has it, and a quiet NaN where the point is
// invalid; `heights` has room for scan.Count() values. A float is the double, rounded.
void FillHeights(const Scan& scan, z32f* heights, zVectors vectors = zVectors_Widest());
void FillHeights(const Scan& scan, z64f* heights, zVectors vectors = zVectors_Widest());
