// SPDX-License-Identifier: MIT
// Scans in memory as streams of heights, and the other way round.
#pragma once

#include "scan/scan.h"
#include "sdk/pipeline.h"

// The heights of a scan, as often as they are asked for; of points that are more than a height, as
// many bytes of their start.
Plovia::SurfaceStream StreamOf(const Scan& scan);

// All but the points.
Scan ScanOf(const Plovia::SurfaceStream& surface);
