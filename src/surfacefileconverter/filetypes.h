// SPDX-License-Identifier: MIT
// Kinds of files and of recorded data.
#pragma once

#include <map>
#include <string>

#include "sdk/core.h"

// Kinds 0 to 3 are single scans, 5 to 7 recordings; CSV is only exported.
enum FileType : z32s { SRF = 0, SUR = 1, PRO = 2, PCD = 3, CSV = 4, REC = 5, REP = 6, OVREC = 7 };

// Data type of a recording's sources.
enum DataSourceType : z16u {
  UNKNOWN_DATA_SOURCE = 10,  // not yet known
  UNIFORM_PROFILE = 12,
  PROFILE_POINT_CLOUD = 13,
  UNIFORM_SURFACE = 14,
  SURFACE_POINT_CLOUD = 15,
};

// Names for the console. Looking an unknown type up with [] gives, and adds, an empty name.
extern std::map<DataSourceType, std::string> dataSourceTypeNames;
