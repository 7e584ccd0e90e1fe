// SPDX-License-Identifier: MIT
// Kinds of files and of recorded data.
#pragma once

#include <optional>
#include <string_view>

#include "sdk/core.h"

// Kinds 0 to 3 are single scans, 5 to 7 recordings; CSV is only exported.
enum FileType : z32s { SRF = 0, SUR = 1, PRO = 2, PCD = 3, CSV = 4, REC = 5, REP = 6, OVREC = 7 };

// The kind that an extension, with its dot, stands for. Exactly some forms are accepted: not every
// one in capitals, and not the same ones in both directions. Nothing for all others.
std::optional<FileType> ImportType(std::string_view extension);
std::optional<FileType> ExportType(std::string_view extension);

// Data type of a recording's sources.
enum DataSourceType : z16u {
  UNKNOWN_DATA_SOURCE = 10,  // not yet known
  UNIFORM_PROFILE = 12,
  PROFILE_POINT_CLOUD = 13,
  UNIFORM_SURFACE = 14,
  SURFACE_POINT_CLOUD = 15,
};

constexpr bool IsProfileType(z16u dataType) {
  return dataType == UNIFORM_PROFILE || dataType == PROFILE_POINT_CLOUD;
}

// A name for the console; empty for an unknown type.
std::string_view DataSourceTypeName(z16u dataType);
