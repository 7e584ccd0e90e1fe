// SPDX-License-Identifier: MIT
// Scans in the units that their files tell.
#pragma once

#include "scan/scan.h"

// The scan with lengths in its own units, which a conversion takes for mm; then `units` tells what
// scale and offset are in. Metric ones get the prefix that makes their steps readable, and x and y,
// where both are lengths, the same unit.
Scan InOwnUnits(Scan scan);

// How many units of x a unit of z is; 0 where one of them is no length.
z64f HeightUnit(const Scan& scan);
