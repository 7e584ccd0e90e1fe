// SPDX-License-Identifier: MIT
// Scans as they look when they are levelled.
#pragma once

#include "inspect/measure/plane.h"

// The scan with its heights over the plane, rounded to 1/65534 of their range; without its box.
// Its array is changed in place, for all that hold it. Throws std::bad_alloc.
Scan LevelScan(Scan scan, const Plane& plane);
