// SPDX-License-Identifier: MIT
// The readers of single-scan files, from a file to a decoded scan:
// LoadSurFileBuffer, LoadProFileBuffer, LoadSrfFileBuffer, LoadPcdFileBuffer.
#pragma once

#include "formats/digitalsurf/reader.h"
#include "formats/pcd/reader.h"
#include "formats/srf/srf.h"

// What the readers of surfaces fill.
using SurfaceBuffer = Scan;
